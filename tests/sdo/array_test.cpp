// Flat arrays: built, taken apart, and where they end.

#include <gtest/gtest.h>

#include "sdo/objects.h"

namespace {

const char *const kPair = "'BADS 0200 2000 'BODS 0000 0800 'BODS 0100 1000 0100 01 00 11000000";
const char *const kEmpty = "'BADS 0000 0800";

TEST(SDOArray, AddData)
{
    const auto check = [](const char *before, uint32_t room, const char *result, const char *after) {
        const Bytes element = Block("'BODS 0100 1000 0100 01 00 11000000");
        const auto add = [&](void *memory, uint32_t *size) {
            return SMSDOBinaryArrayAddData(memory, size, element.data(), 16);
        };
        EXPECT_EQ(InRoom(Block(before), room, add), Text(result, ' ', Hex(Block(after))));
    };
    check(kEmpty, 24, "0 24", "'BADS 0100 1800 'BODS 0100 1000 0100 01 00 11000000");
    check("'BADS 0100 1000 'BODS 0000 0800", 99, "0 99", kPair); // the size keeps the room
    check(kEmpty, 23, "16 24", kEmpty);
    check("'BODS 0000 0800", 99, "271 99", "'BODS 0000 0800");
}

TEST(SDOArray, NeverReaches65536Bytes)
{
    const Object large = Make();
    EXPECT_EQ(Add(large, 1, 1, Bytes(32752)), SM_STATUS_OK); // 32768 flat
    Bytes array(70000);
    const auto add = [&](uint32_t size, uint32_t room) {
        const uint32_t status = SMSDOBinaryArrayAddData(array.data(), &room, Flatten(large).data(), size);
        return Text(status, ' ', room, ' ', SMSDOBinaryGetSize(array.data(), nullptr));
    };
    EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 7), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 8), SM_STATUS_OK);
    EXPECT_EQ(add(32768, 70000), "0 70000 32776");
    EXPECT_EQ(add(32760, 70000), "16 70000 32776");
    EXPECT_EQ(add(32760, 65535), "16 65536 32776"); // room is tested first
    EXPECT_EQ(add(32759, 65535), "0 65535 65535");
}

TEST(SDOArray, GetByIndex)
{
    const auto check = [](const char *array, uint32_t index, uint32_t room, const char *result) {
        const auto get = [&](const void *from, uint16_t, uint8_t *, void *buffer, uint32_t *size) {
            return SMSDOBinaryArrayGetByIndex(from, 0, index, buffer, size);
        };
        EXPECT_EQ(ByID(get, Block(array).data(), 0, room), result);
    };
    check(kPair, 1, 16, "0 EE 16 424F4453010010000100010011000000");
    check(kPair, 1, 15, "16 EE 16 EEEEEEEEEEEEEEEEEEEEEEEEEEEEEE");
    check(kPair, 2, 1, "256 EE 1 EE");
    check("'BADS 0200 1800 'BODS 0000 0800 'BADS 0000 0800", 1, 1, "257 EE 1 EE");
    check("", 0, 1, "271 EE 1 EE"); // NULL
}

TEST(SDOArray, FromObjects)
{
    const Object objects[] = {Make(), Make({{1, 1, "11"}}), Make(), Make({{1, 1, "11"}})};
    EXPECT_EQ(Add(objects[2], 1, 1, Bytes(65500)), SM_STATUS_OK);
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(objects[3].get()), 17u); // cannot be flattened any more
    SMSDOConfig *const table[] = {objects[0].get(), nullptr, objects[1].get(), objects[2].get(), objects[3].get()};
    const auto check = [&](int32_t count, uint32_t room, const char *result, const char *array) {
        const auto flatten = [&](void *memory, uint32_t *size) {
            return SMSDOConfigArrayToBinaryArray(table, count, room != 0 ? memory : nullptr, size);
        };
        EXPECT_EQ(InRoom(Bytes(8), room, flatten), Text(result, ' ', Hex(Block(array)))) << count << ' ' << room;
    };
    const char *const untouched = "0000000000000000";
    check(3, 31, "0 32", "'BADS 0100 1000 'BODS 0000 0800");
    check(3, 15, "0 32", kEmpty);
    check(3, 7, "16 7", untouched);
    check(3, 0, "0 24", untouched); // no array: the objects alone
    check(0, 8, "0 8", kEmpty);
    check(4, 65548, "16 65548", kPair); // beyond the limit the size stays
    check(4, 0, "0 65540", untouched);
    check(5, 32, "4294967295 32", kPair);
}

TEST(SDOArray, ToObjects)
{
    // The objects in a table of three, the last of which held one beforehand.
    const auto check = [](const char *array, uint32_t slots, const char *result) {
        SMSDOConfig *table[3] = {nullptr, nullptr, SMSDOConfigAlloc()};
        uint32_t count = slots;
        const uint32_t status = SMSDOBinaryArrayToConfigArray(Block(array).data(), table, &count);
        std::string found = Text(status, ' ', count, ':');
        for (SMSDOConfig *config : table)
            found += config != nullptr ? Text(' ', SMSDOConfigGetBinarySize(Object(config).get())) : " -";
        EXPECT_EQ(found, result) << array;
    };
    check(kPair, 3, "0 2: 8 16 8");
    check(kPair, 1, "16 2: - - 8");
    check(kEmpty, 3, "0 0: - - 8");
    check("", 3, "271 3: - - 8"); // NULL
    // The whole table is swept, the slot that was not reached too.
    check("'BADS 0200 1800 'BODS 0000 0800 'BADS 0000 0800", 3, "257 3: - - -");
    check("'BADS 0200 2000 'BODS 0000 0800 'BODS 0100 1000 0000 01 00 11000000", 3, "4294967295 3: - - -");
}

} // namespace
