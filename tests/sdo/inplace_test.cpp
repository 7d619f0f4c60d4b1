// Reading and patching flat objects where they lie. How values of every length read is in roundtrip_test.cpp.

#include <gtest/gtest.h>

#include "sdo/objects.h"

namespace {

TEST(SDOInPlace, CountAndSize)
{
    const auto read = [](const char *block) {
        uint16_t arrays[] = {7, 7};
        const uint32_t count = SMSDOBinaryGetCount(Block(block).data(), &arrays[0]);
        const uint32_t size = SMSDOBinaryGetSize(Block(block).data(), &arrays[1]);
        return Text(count, ' ', size, ' ', arrays[0], ' ', arrays[1]);
    };
    EXPECT_EQ(read("'BADS FFFF 0800"), "65535 8 1 1");
    for (const char *none : {"'BXDS 0200 0800", ""}) // NULL
        EXPECT_EQ(read(none), Text(SM_SDO_NO_COUNT, " 0 0 0"));
}

TEST(SDOInPlace, ReadsNoOtherBlocks)
{
    const Bytes array = Block("'BADS 0100 1000 'BODS 0000 0800");
    EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, array.data(), 1, 1), "257 EE 1 EE");
    EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, Bytes().data(), 1, 1), "271 EE 1 EE"); // NULL
    EXPECT_EQ(ByIndex(SMSDOBinaryGetDataByIndex, array.data(), 0, 1), "0 257 EE 1 EE");
    EXPECT_EQ(ByIndex(SMSDOBinaryGetDataByIndex, array.data(), 1, 1), "0 12 EE 1 EE"); // the index comes first
    // The search trusts the order and halves from the middle: 3 is there, but not where it looks.
    const Bytes unsorted = Block("'BODS 0300 2000 0300 01 00 33000000 0100 01 00 11000000 0200 01 00 22000000");
    EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, unsorted.data(), 2, 4), "0 01 4 22000000");
    EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, unsorted.data(), 3, 4), "256 EE 4 EEEEEEEE");
}

TEST(SDOInPlace, SetData)
{
    // In so much room: status and size, and the block unless it is as before.
    const auto check = [](const char *before, uint16_t id, uint8_t type, const Bytes &value, uint32_t room,
                          const char *result, const char *after = nullptr) {
        const auto set = [&](void *memory, uint32_t *size) {
            return SMSDOBinarySetData(memory, size, id, type, value.data(), static_cast<uint32_t>(value.size()));
        };
        EXPECT_EQ(InRoom(Block(before), room, set), Text(result, ' ', Hex(Block(after != nullptr ? after : before))));
    };
    const char *const word = "'BODS 0100 1000 0200 05 03 44332211";
    const char *const text = "'BODS 0200 2200 0200 05 00 11000000 0300 06 04 0A00 0800 'abcdefghij";
    const char *const nested = "'BODS 0100 1800 0200 0C 04 0800 0800 'BODS 0000 0800";
    check(word, 2, 5, Block("AA"), 16, "0 16", "'BODS 0100 1000 0200 05 00 AA332211"); // the old bytes stay
    // The value changes its room: the block is made anew. An empty array over another leaves none of its objects.
    check("'BODS 0100 2800 0200 1C 04 1800 0800 'BADS 0200 1800 'BODS 0000 0800 'BODS 0000 0800", 2, 0x1C,
          Block("'BADS 0000 0800"), 40, "0 24", "'BODS 0100 1800 0200 1C 04 0800 0800 'BADS 0000 0800");
    check(text, 2, 5, Block("AABBCCDDEEFF"), 40, "0 40",
          "'BODS 0200 2800 0200 05 04 0600 1000 0300 06 04 0A00 0E00 AABBCCDDEEFF 'abcdefghij");
    check(text, 3, 6, Block("'ABC"), 34, "0 24", "'BODS 0200 1800 0200 05 00 11000000 0300 06 02 'ABC 00");
    check(nested, 2, 0x0C, Block("'BODS 0100 1000 0100 01 00 99000000"), 32, "0 32",
          "'BODS 0100 2000 0200 0C 04 1000 0800 'BODS 0100 1000 0100 01 00 99000000");
    check(text, 2, 5, Block("AABBCCDDEEFF"), 39, "16 40"); // the needed size is told
    check(text, 2, 5, Bytes(65500), 34, "19 34");
    check(nested, 2, 0x0C, Block("'BOOS 0000 0800 FF"), 60, "271 60");
    check("'BODS 0200 1800 0200 05 00 11000000 0200 05 00 22000000", 2, 5, Bytes(6), 60, "16 60"); // no object
    check(word, 2, 5, Bytes(1), 15, "16 15");
    check(text, 4, 5, Bytes(1), 34, "256 34");
    check(text, 2, 6, Bytes(1), 34, "256 34"); // another type
    check("'BADS 0100 1000 'BODS 0000 0800", 1, 5, Bytes(1), 16, "271 16");
    check(word, 2, 0, Bytes(1), 16, "271 16");
    check(word, 2, 5, Bytes(), 16, "271 16"); // NULL
}

} // namespace
