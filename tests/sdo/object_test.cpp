// Objects in memory, their flat form against blocks written by hand, flat arrays, and blocks that are read and patched
// where they lie. Each test shows who frees what. How values of every length are stored is in roundtrip_test.cpp.

#include <gtest/gtest.h>

#include "sdo/objects.h"
#include "support/faults.h"

namespace {

class SDO : public testing::Test {
protected:
    void TearDown() override
    {
        EXPECT_EQ(LiveBlocks(), blocksBefore);
    }

    const long blocksBefore = LiveBlocks();
};

// A value of plain bytes stands beside a nested object that is changed behind its parent's back, so that the sum
// which the parent keeps no longer agrees with the total.
TEST_F(SDO, FailsWithinTheBufferWhenTheSizeIsWrong)
{
    const auto check = [](size_t plain, uint32_t grows, auto then, uint32_t kept, uint32_t total) {
        SCOPED_TRACE(Text(plain, ' ', grows, ' ', kept));
        const Object object = Make();
        Object nested = Make({{1, 1, "1111111111"}});
        SMSDOConfig *const inner = nested.get();
        EXPECT_EQ(Add(object, 9, 1, Bytes(plain)) + Adopt(object, 2, 0x0D, {&nested}), SM_STATUS_OK);
        (void)SMSDOConfigAddData(inner, 2, 1, Bytes(60000).data(), grows, 0); // refused when it is 0
        (void)then(object.get());
        ASSERT_EQ(SMSDOConfigGetBinarySize(object.get()), kept);
        uint32_t size = kept;
        Bytes buffer(kept + 99, 0xEE);
        EXPECT_EQ(SMSDOConfigToBinary(object.get(), buffer.data(), &size), SM_STATUS_FAILED);
        EXPECT_EQ(size, total);
        EXPECT_EQ(Bytes(buffer.begin() + kept, buffer.end()), Bytes(99, 0xEE));
        EXPECT_EQ(SMSDOConfigClone(object.get()), nullptr);
    };
    const auto remove = [](SMSDOConfig *object) { return SMSDOConfigRemoveData(object, 2, 0, 0); };
    check(1, 1, SMSDOConfigGetCount, 45, 45 + 8);
    check(1, 60000, SMSDOConfigGetCount, 45, 45 + 60008);
    check(1, 0, SMSDOConfigReCalcBinarySize, 46, 45);
    check(1, 8, remove, 0, 16);                                     // with a share that it never added
    check(40000, 30000, SMSDOConfigReCalcBinarySize, 70053, 70053); // the sum agrees, but no block is as large

    // The writing ends at the first entry with just as many bytes as the object says it has.
    const Object object = Make({{2, 1, "22"}});
    Object first = Make({{1, 1, "11"}}), removed = Make();
    SMSDOConfig *const grows = removed.get();
    (void)SMSDOConfigReCalcBinarySize(first.get()); // cannot be flattened any more
    EXPECT_EQ(Adopt(object, 1, 0x0D, {&first}) + Adopt(object, 3, 0x0D, {&removed}), SM_STATUS_OK);
    EXPECT_EQ(SMSDOConfigAddData(grows, 1, 1, "9 bytes..", 9, 0), SM_STATUS_OK);
    EXPECT_EQ(SMSDOConfigRemoveData(object.get(), 3, 0, 0), SM_STATUS_OK); // with a share that it never added
    ASSERT_EQ(SMSDOConfigGetBinarySize(object.get()), 24u);
    const auto flatten = [&](void *memory, uint32_t *size) { return SMSDOConfigToBinary(object.get(), memory, size); };
    EXPECT_TRUE(InRoom(Bytes(8), 24, flatten).starts_with(Text(SM_STATUS_FAILED, " 24 ")));
}

TEST_F(SDO, RefusesWhatIsNoObject)
{
    const auto check = [](const char *block, uint32_t addedAsFlatValue) {
        SCOPED_TRACE(block);
        EXPECT_EQ(SMSDOBinaryToConfig(Block(block).data()), nullptr);
        const Object object = Make();
        EXPECT_EQ(Add(object, 1, 0x0C, Block(block)), addedAsFlatValue);
    };
    check("", SM_STATUS_INVALID_PARAMETER); // NULL
    check("'BODT 0000 0800", SM_STATUS_INVALID_PARAMETER);
    check("'BADS 0000 0800", SM_STATUS_OK);
    check("'BADS 0200 1800 'BODS 0000 0800 'BADS 0000 0800", SM_STATUS_BAD_FORMAT);
    check("'BODS 0200 1800 0100 01 00 11000000 0100 01 00 22000000", SM_STATUS_FAILED); // an ID twice
    check("'BODS 0100 1000 FEFF 01 00 11000000", SM_STATUS_FAILED);                     // a bad ID
    check("'BODS 0100 1000 0100 0D 03 11000000", SM_STATUS_FAILED);                     // pointers in a block
    check("'BODS 0200 2800 0100 0C 04 0800 1000 0200 0C 04 0800 1000 'BODS 0000 0800 'BOBS 0000 0800",
          SM_STATUS_FAILED);
}

const char *const kPair = "'BADS 0200 2000 'BODS 0000 0800 'BODS 0100 1000 0100 01 00 11000000";
const char *const kEmpty = "'BADS 0000 0800";

TEST_F(SDO, ArraysGrowByElements)
{
    const Object large = Make();
    EXPECT_EQ(Add(large, 1, 1, Bytes(32752)), SM_STATUS_OK); // 32768 flat
    const Bytes element = Flatten(large);
    Bytes array(70000);
    const auto add = [&](uint32_t size, uint32_t room) {
        const uint32_t status = SMSDOBinaryArrayAddData(array.data(), &room, element.data(), size);
        return Text(status, ' ', room, ' ', Hex(Bytes(array.begin(), array.begin() + 8)));
    };
    EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 7), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(add(32768, 70000), "271 70000 0000000000000000"); // no array yet
    EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 8), SM_STATUS_OK);
    EXPECT_EQ(add(32768, 70000), "0 70000 4241445301000880"); // the size keeps the room
    EXPECT_EQ(Bytes(array.begin() + 8, array.begin() + 32776), element);
    EXPECT_EQ(add(32760, 70000), "16 70000 4241445301000880"); // never 65536 bytes
    EXPECT_EQ(add(32760, 65535), "16 65536 4241445301000880"); // room is tested first
    EXPECT_EQ(add(32759, 65535), "0 65535 424144530200FFFF");
    EXPECT_TRUE(std::equal(element.begin(), element.end() - 9, array.begin() + 32776));
}

TEST_F(SDO, FromObjects)
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
    check(3, 31, "0 32", "'BADS 0100 1000 'BODS 0000 0800");
    check(3, 15, "0 32", kEmpty);
    check(3, 7, "16 7", "0000000000000000");
    check(3, 0, "0 24", "0000000000000000"); // no array: the objects alone
    check(4, 65548, "16 65548", kPair);      // beyond the limit the size stays
    check(5, 32, "4294967295 32", kPair);
}

TEST_F(SDO, ToObjects)
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
    // The whole table is swept, the slot that was not reached too.
    check("'BADS 0200 1800 'BODS 0000 0800 'BADS 0000 0800", 3, "257 3: - - -");
    check("'BADS 0200 2000 'BODS 0000 0800 'BODS 0100 1000 0000 01 00 11000000", 3, "4294967295 3: - - -");
}

TEST_F(SDO, ReadsNoOtherBlocks)
{
    const Bytes array = Block("'BADS 0100 1000 'BODS 0000 0800");
    uint16_t isArray = 7, isOther = 7;
    EXPECT_EQ(SMSDOBinaryGetCount(array.data(), &isArray), 1u);
    EXPECT_EQ(SMSDOBinaryGetCount(Block("'BXDS 0200 0800").data(), &isOther), SM_SDO_NO_COUNT);
    EXPECT_EQ(Text(isArray, isOther), "10");
    const auto get = [](const char *from, uint32_t index, uint32_t room) {
        const auto call = [&](const void *block, uint16_t, uint8_t *, void *buffer, uint32_t *size) {
            return SMSDOBinaryArrayGetByIndex(block, 0, index, buffer, size);
        };
        return ByID(call, Block(from).data(), 0, room);
    };
    EXPECT_EQ(get(kPair, 1, 16), "0 EE 16 424F4453010010000100010011000000");
    EXPECT_EQ(get(kPair, 1, 15), "16 EE 16 EEEEEEEEEEEEEEEEEEEEEEEEEEEEEE");
    EXPECT_EQ(get(kPair, 2, 1), "256 EE 1 EE");
    EXPECT_EQ(get("'BADS 0200 1800 'BODS 0000 0800 'BADS 0000 0800", 1, 1), "257 EE 1 EE");
    EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, array.data(), 1, 1), "257 EE 1 EE");
    EXPECT_EQ(ByIndex(SMSDOBinaryGetDataByIndex, array.data(), 0, 1), "0 257 EE 1 EE");
    EXPECT_EQ(ByIndex(SMSDOBinaryGetDataByIndex, array.data(), 1, 1), "0 12 EE 1 EE"); // the index comes first
    // The search trusts the order and halves from the middle: 3 is there, but not where it looks.
    const Bytes unsorted = Block("'BODS 0300 2000 0300 01 00 33000000 0100 01 00 11000000 0200 01 00 22000000");
    EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, unsorted.data(), 2, 4), "0 01 4 22000000");
    EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, unsorted.data(), 3, 4), "256 EE 4 EEEEEEEE");
}

TEST_F(SDO, SetData)
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
    check(word, 2, 5, Block("AA"), 16, "0 16", "'BODS 0100 1000 0200 05 00 AA332211"); // the old bytes stay
    check(text, 3, 6, Block("'ABCDEFGHIJ"), 99, "0 34",
          "'BODS 0200 2200 0200 05 00 11000000 0300 06 04 0A00 0800 'ABCDEFGHIJ");
    // The value changes its room: the block is made anew. An empty array over another leaves none of its objects.
    check("'BODS 0100 2800 0200 1C 04 1800 0800 'BADS 0200 1800 'BODS 0000 0800 'BODS 0000 0800", 2, 0x1C,
          Block("'BADS 0000 0800"), 40, "0 24", "'BODS 0100 1800 0200 1C 04 0800 0800 'BADS 0000 0800");
    check(text, 2, 5, Block("AABBCCDDEEFF"), 40, "0 40",
          "'BODS 0200 2800 0200 05 04 0600 1000 0300 06 04 0A00 0E00 AABBCCDDEEFF 'abcdefghij");
    check(text, 3, 6, Block("'ABC"), 34, "0 24", "'BODS 0200 1800 0200 05 00 11000000 0300 06 02 'ABC 00");
    check(text, 2, 5, Block("AABBCCDDEEFF"), 39, "16 40"); // the needed size is told
    check(text, 2, 5, Bytes(65500), 34, "19 34");
    check("'BODS 0200 1800 0200 05 00 11000000 0200 05 00 22000000", 2, 5, Bytes(6), 60, "16 60"); // no object
    check(word, 2, 5, Bytes(1), 15, "16 15");
    check(text, 4, 5, Bytes(1), 34, "256 34");
    check(text, 2, 6, Bytes(1), 34, "256 34"); // another type
    check("'BADS 0100 1000 'BODS 0000 0800", 1, 5, Bytes(1), 16, "271 16");
    check(word, 2, 5, Bytes(), 16, "271 16"); // NULL
}

TEST_F(SDO, RefusesBadArguments)
{
    const Object object = Make({{1, 1, "00"}});
    const std::tuple<uint16_t, uint8_t, const void *, uint32_t> cases[] = {{0, 1, "1", 1},
                                                                           {65534, 1, "1", 1},
                                                                           {2, 0, "1", 1},
                                                                           {2, 1, nullptr, 1},
                                                                           {2, 0x0D, object.get(), 8},
                                                                           {2, 1, "1", 0},
                                                                           {2, 0x0D, "1234567", 7},
                                                                           {2, 0x1D, "\0\0\0\0\0\0\0", 8},
                                                                           {2, 0x0C, "BOBS\0\0\10", 8}};
    for (const auto &[id, type, data, size] : cases)
        EXPECT_EQ(SMSDOConfigAddData(object.get(), id, type, data, size, 0), SM_STATUS_INVALID_PARAMETER) << id;
    EXPECT_EQ(Flatten(object), Block("'BODS 0100 1000 0100 01 00 00000000"));
    EXPECT_EQ(SMSDOConfigCompareByValue(nullptr, object.get()), 0u);
    EXPECT_EQ(SMSDOConfigCompareByValue(nullptr, nullptr), 1u);
}

TEST_F(SDO, LimitIsTheFlatSize)
{
    const Object object = Make();
    EXPECT_EQ(Add(object, 1, 1, Bytes(65520)), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(Add(object, 1, 1, Bytes(65519)), SM_STATUS_OK);
    EXPECT_EQ(Flatten(object).size(), 65535u);
    EXPECT_EQ(Add(object, 1, 1, Bytes(1), 1), SM_STATUS_LIMIT_REACHED); // the new share counts in full
    EXPECT_EQ(ByID(SMSDOConfigGetDataByID, object.get(), 1, 0), "16 01 65519 ");
    EXPECT_EQ(SMSDOConfigRemoveData(object.get(), 1, 0, 0), SM_STATUS_OK);
    EXPECT_EQ(Add(object, 1, 1, Bytes(65512)), SM_STATUS_OK);
    EXPECT_EQ(Add(object, 2, 1, Bytes(1)), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(Add(object, 2, 0x0C, Block("'BADS 0100 1000 'BODS 0000 0800")), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(SMSDOConfigGetBinarySize(object.get()), 65528u);
}

TEST_F(SDO, ReplacedNestedObjectsGoOnlyUnderOtherNestedObjects)
{
    const Object object = Make();
    Object nested[] = {Make({{1, 1, "11"}}), Make({{2, 1, "2222222222"}}), Make()};
    SMSDOConfig *const second = nested[1].get(), *const third = nested[2].get();
    EXPECT_EQ(Adopt(object, 5, 0x0D, {&nested[0]}), SM_STATUS_OK);
    EXPECT_EQ(Adopt(object, 5, 0x0D, {&nested[1]}, 1), SM_STATUS_OK);                 // the first is freed
    EXPECT_EQ(SMSDOConfigAddData(object.get(), 5, 0x2D, second, 8, 1), SM_STATUS_OK); // the same: it lives on
    EXPECT_EQ(Flatten(object),
              Block("'BODS 0100 2500 0500 2C 04 1500 0800 'BODS 0100 1500 0200 01 04 0500 0800 2222222222"));
    EXPECT_EQ(Add(object, 5, 1, Block("00"), 1), SM_STATUS_OK); // a plain value frees nothing
    nested[1].reset(second);
    EXPECT_EQ(Adopt(object, 5, 0x1D, {&nested[1], &nested[2]}, 1), SM_STATUS_OK);
    EXPECT_EQ(SMSDOConfigGetBinarySize(object.get()), 8u + 8 + (8 + 21 + 8));
    // A shorter table that begins alike frees nothing either.
    EXPECT_EQ(SMSDOConfigAddData(object.get(), 5, 0x1D, &second, 8, 1), SM_STATUS_OK);
    EXPECT_EQ(SMSDOConfigGetCount(third), 0u);
    SMSDOConfigFree(third);
}

TEST_F(SDO, TheTwoSums)
{
    const Object object = Make({{1, 1, "11"}, {2, 1, "22222222"}, {3, 1, "3333333333"}});
    Object nested[] = {Make({{1, 1, "11"}}), Make(), Make({{1, 1, "1111111111"}})};
    EXPECT_EQ(Adopt(object, 4, 0x0D, {&nested[0]}) + Adopt(object, 5, 0x1D, {&nested[1], &nested[2]}), SM_STATUS_OK);
    EXPECT_EQ(SMSDOConfigGetBinarySize(object.get()), 8u + 8 + 8 + 13 + (8 + 16) + (8 + 8 + 8 + 21));
    const uint32_t other = 8 + (8 + 1) + (8 + 4) + 13 + (8 + 16) + (8 + 8 + 21);
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(object.get()), other);
    EXPECT_EQ(SMSDOConfigGetBinarySize(object.get()), other);
    EXPECT_EQ(SMSDOConfigCompareByValue(object.get(), object.get()), 0u); // it cannot be flattened any more
}

} // namespace
