// Reading and patching flat objects where they lie. How values of every length read is in roundtrip_test.cpp.

#include <gtest/gtest.h>

#include "sdo/objects.h"

namespace {

// ID 2 inline with 2 bytes, ID 6 out of line with 5.
const Bytes kBlock = Block("'BODS 0200 1D00  0200 02 01 22220000  0600 F6 04 0500 0800  6666666666");
const Bytes kArray = Block("'BADS 0100 1000 'BODS 0000 0800");

TEST(SDOInPlace, CountAndSize)
{
    const auto read = [](const char *block) {
        uint16_t arrays[] = {7, 7};
        const uint32_t count = SMSDOBinaryGetCount(Block(block).data(), &arrays[0]);
        const uint32_t size = SMSDOBinaryGetSize(Block(block).data(), &arrays[1]);
        return Text(count, ' ', size, ' ', arrays[0], ' ', arrays[1]);
    };
    EXPECT_EQ(read("'BODS 0200 FFFF"), "2 65535 0 0");
    EXPECT_EQ(read("'BADS FFFF 0800"), "65535 8 1 1");
    for (const char *none : {"'BXDS 0200 0800", ""}) // NULL
        EXPECT_EQ(read(none), Text(SM_SDO_NO_COUNT, " 0 0 0"));
}

TEST(SDOInPlace, ReadsByID)
{
    const auto read = [](const Bytes &block, unsigned id, uint32_t room) {
        return ByID(SMSDOBinaryGetDataByID, block.data(), id, room);
    };
    EXPECT_EQ(read(kBlock, 2, 5), "0 02 4 22220000EE"); // a short value counts as four bytes
    EXPECT_EQ(read(kBlock, 2, 3), "16 EE 4 EEEEEE");    // unlike in an object, the type is not told
    EXPECT_EQ(read(kBlock, 6, 4), "16 EE 5 EEEEEEEE");
    for (const unsigned absent : {1u, 3u, 7u, 65533u})
        EXPECT_EQ(read(kBlock, absent, 1), "256 EE 1 EE");
    for (const unsigned bad : {0u, 65534u, 65535u})
        EXPECT_EQ(read(kBlock, bad, 1), "271 EE 1 EE");
    EXPECT_EQ(read(kArray, 1, 1), "257 EE 1 EE");
    EXPECT_EQ(read(Bytes(), 1, 1), "271 EE 1 EE"); // NULL
    // The search trusts the order and halves from the middle: 3 is there, but not where it looks.
    const Bytes unsorted = Block("'BODS 0300 2000 0300 01 00 33000000 0100 01 00 11000000 0200 01 00 22000000");
    EXPECT_EQ(read(unsorted, 2, 4), "0 01 4 22000000");
    EXPECT_EQ(read(unsorted, 3, 4), "256 EE 4 EEEEEEEE");
}

TEST(SDOInPlace, ReadsByIndexWithTheTrueLength)
{
    const auto read = [](const Bytes &block, uint32_t index, uint32_t room) {
        return ByIndex(SMSDOBinaryGetDataByIndex, block.data(), index, room);
    };
    EXPECT_EQ(read(kBlock, 0, 1), "0 16 EE 2 EE");
    EXPECT_EQ(read(kBlock, 1, 5), "6 0 F6 5 6666666666");
    EXPECT_EQ(read(kBlock, 2, 1), "0 12 EE 1 EE");
    EXPECT_EQ(read(kArray, 0, 1), "0 257 EE 1 EE");
    EXPECT_EQ(read(kArray, 1, 1), "0 12 EE 1 EE"); // the index comes first
    EXPECT_EQ(read(Bytes(), 0, 1), "0 271 EE 1 EE");
}

// SMSDOBinarySetData in so much room, and what it gives: status and size, and the block unless it is as before.
void CheckSet(const char *before, unsigned id, unsigned type, const Bytes &value, uint32_t room, const char *result,
              const char *after = nullptr)
{
    const auto set = [&](void *memory, uint32_t *size) {
        return SMSDOBinarySetData(memory, size, static_cast<uint16_t>(id), static_cast<uint8_t>(type), value.data(),
                                  static_cast<uint32_t>(value.size()));
    };
    EXPECT_EQ(InRoom(Block(before), room, set), Text(result, ' ', Hex(Block(after != nullptr ? after : before))));
}

TEST(SDOInPlace, SetData)
{
    const char *const word = "'BODS 0100 1000 0200 05 03 44332211";
    const char *const text = "'BODS 0200 2200 0200 05 00 11000000 0300 06 04 0A00 0800 'abcdefghij";
    const char *const nested = "'BODS 0100 1800 0200 0C 04 0800 0800 'BODS 0000 0800";
    CheckSet(word, 2, 5, Block("AA"), 16, "0 16", "'BODS 0100 1000 0200 05 00 AA332211"); // the old bytes stay
    // The value changes its room: the block is made anew. An empty array over another leaves none of its objects.
    CheckSet("'BODS 0100 2800 0200 1C 04 1800 0800 'BADS 0200 1800 'BODS 0000 0800 'BODS 0000 0800", 2, 0x1C,
             Block("'BADS 0000 0800"), 40, "0 24", "'BODS 0100 1800 0200 1C 04 0800 0800 'BADS 0000 0800");
    CheckSet(text, 2, 5, Block("AABBCCDDEEFF"), 40, "0 40",
             "'BODS 0200 2800 0200 05 04 0600 1000 0300 06 04 0A00 0E00 AABBCCDDEEFF 'abcdefghij");
    CheckSet(text, 3, 6, Block("'ABC"), 34, "0 24", "'BODS 0200 1800 0200 05 00 11000000 0300 06 02 'ABC 00");
    CheckSet(nested, 2, 0x0C, Block("'BODS 0100 1000 0100 01 00 99000000"), 32, "0 32",
             "'BODS 0100 2000 0200 0C 04 1000 0800 'BODS 0100 1000 0100 01 00 99000000");
    CheckSet(text, 2, 5, Block("AABBCCDDEEFF"), 39, "16 40"); // the needed size is told
    CheckSet(text, 2, 5, Bytes(65500), 34, "19 34");
    CheckSet(nested, 2, 0x0C, Block("'BOOS 0000 0800 FF"), 60, "271 60");
    CheckSet("'BODS 0200 1800 0200 05 00 11000000 0200 05 00 22000000", 2, 5, Bytes(6), 60, "16 60"); // no object
    CheckSet(word, 2, 5, Bytes(1), 15, "16 15");
    CheckSet(text, 4, 5, Bytes(1), 34, "256 34");
    CheckSet(text, 2, 6, Bytes(1), 34, "256 34"); // another type
    CheckSet("'BADS 0100 1000 'BODS 0000 0800", 1, 5, Bytes(1), 16, "271 16");
    CheckSet(word, 2, 0, Bytes(1), 16, "271 16");
    CheckSet(word, 2, 5, Bytes(), 16, "271 16"); // NULL
}

} // namespace
