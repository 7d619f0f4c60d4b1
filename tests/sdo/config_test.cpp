// Objects in memory. The program counts heap blocks, so that each test also shows who frees what.

#include <gtest/gtest.h>

#include "sdo/objects.h"
#include "support/faults.h"

namespace {

class SDOConfig : public testing::Test {
protected:
    void TearDown() override
    {
        EXPECT_EQ(LiveBlocks(), blocksBefore);
    }

    const long blocksBefore = LiveBlocks();
};

TEST_F(SDOConfig, EntriesTakeTheirShareWithThem)
{
    const auto check = [](uint8_t type, const char *value, uint32_t share, const char *readOfFive) {
        const Object object = Make({{7, 1, "00"}, {9, type, value}});
        EXPECT_EQ(Flatten(object).size(), 16 + share);
        EXPECT_EQ(ByID(SMSDOConfigGetDataByID, object.get(), 9, 5), readOfFive);
        EXPECT_EQ(SMSDOConfigRemoveData(object.get(), 9, 0, 0), SM_STATUS_OK);
        EXPECT_EQ(Flatten(object), Block("'BODS 0100 1000 0700 01 00 00000000"));
    };
    check(0xEF, "11223344", 8, "0 EF 4 11223344EE");
    check(0x9C, "'BODS 0000 0800", 24, "16 9D 8 EEEEEEEEEE"); // the flag makes it an array of one
    check(0x0C, "'BADS 0000 0800", 16, "0 1D 0 EEEEEEEEEE");  // no objects, no pointers
    check(0x3C, "'BADS 0200 1800 'BODS 0000 0800 'BODS 0000 0800", 32, "16 3D 16 EEEEEEEEEE");
}

TEST_F(SDOConfig, RefusesBadArguments)
{
    const Object object = Make({{1, 1, "00"}});
    const std::tuple<uint16_t, uint8_t, const void *, uint32_t> cases[] = {
        {0, 1, "1", 1},
        {65534, 1, "1", 1},
        {65535, 1, "1", 1},
        {2, 0, "1", 1},
        {2, 1, nullptr, 1},
        {2, 0x0D, object.get(), 8},
        {2, 1, "1", 0},
        {2, 0x0D, "1234567", 7},
        {2, 0x1D, "\0\0\0\0\0\0\0", 8},
        {2, 0x0C, "BOBS\0\0\10", 8},
    };
    for (const auto &[id, type, data, size] : cases)
        EXPECT_EQ(SMSDOConfigAddData(object.get(), id, type, data, size, 0), SM_STATUS_INVALID_PARAMETER) << id;
    EXPECT_EQ(Flatten(object), Block("'BODS 0100 1000 0100 01 00 00000000"));
    EXPECT_EQ(SMSDOConfigGetCount(nullptr), SM_SDO_NO_COUNT);
    EXPECT_EQ(SMSDOConfigGetBinarySize(nullptr), 0u);
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(nullptr), 0u);
}

TEST_F(SDOConfig, ReadsByIDAndByPlaceInIDOrder)
{
    const Object object = Make({{300, 3, "3333333333"}, {100, 0xF1, "11"}, {65533, 2, "2222"}});
    const auto byID = [&](unsigned id, uint32_t room) { return ByID(SMSDOConfigGetDataByID, object.get(), id, room); };
    EXPECT_EQ(byID(300, 4), "16 03 5 EEEEEEEE"); // type and size are told all the same
    EXPECT_EQ(byID(299, 2), "256 EE 2 EEEE");
    EXPECT_EQ(byID(65534, 2), "271 EE 2 EEEE");
    const auto byIndex = [&](uint32_t i, uint32_t room) {
        return ByIndex(SMSDOConfigGetDataByIndex, object.get(), i, room);
    };
    EXPECT_EQ(byIndex(0, 2), "100 0 F1 1 11EE");
    EXPECT_EQ(byIndex(1, 0), "300 16 03 5 ");
    EXPECT_EQ(byIndex(3, 2), "0 12 EE 2 EEEE");
}

TEST_F(SDOConfig, RemovesByIDByPlaceAndAll)
{
    const Object object = Make({{30, 3, "33"}, {10, 1, "11"}, {20, 2, "2222222222"}, {40, 4, "44"}});
    const auto remove = [&](uint16_t id, uint32_t index, uint16_t all) {
        return SMSDOConfigRemoveData(object.get(), id, index, all);
    };
    EXPECT_EQ(remove(11, 0, 0), SM_STATUS_NOT_FOUND); // with a valid ID the place is not looked at
    EXPECT_EQ(remove(10, 3, 0), SM_STATUS_OK);
    EXPECT_EQ(remove(65535, 3, 0), SM_STATUS_NOT_IN_USE);
    EXPECT_EQ(remove(65534, 0, 0), SM_STATUS_OK);
    EXPECT_EQ(remove(0, 1, 0), SM_STATUS_OK);
    EXPECT_EQ(Flatten(object), Block("'BODS 0100 1000 1E00 03 00 33000000"));
    EXPECT_EQ(Add(object, 5, 0x0C, Block("'BODS 0000 0800")), SM_STATUS_OK);
    EXPECT_EQ(remove(1, 99, 7), SM_STATUS_OK);
    EXPECT_EQ(Flatten(object), Block("'BODS 0000 0800"));
}

TEST_F(SDOConfig, LimitIsTheFlatSize)
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

TEST_F(SDOConfig, OnlyReplaceOneReplaces)
{
    const Object object = Make({{5, 1, "11"}});
    Object nested = Make({{1, 1, "22"}});
    for (const int16_t replace : {int16_t{0}, int16_t{2}}) {
        EXPECT_EQ(Add(object, 5, 0x0C, Block("'BADS 0100 1000 'BODS 0000 0800"), replace), SM_STATUS_ALREADY_EXISTS);
        EXPECT_EQ(Adopt(object, 5, 0x1D, {&nested}, replace), SM_STATUS_ALREADY_EXISTS);
    }
    EXPECT_EQ(Flatten(object), Block("'BODS 0100 1000 0500 01 00 11000000"));
    EXPECT_EQ(Flatten(nested), Block("'BODS 0100 1000 0100 01 00 22000000")); // it is still ours
}

TEST_F(SDOConfig, ReplacedNestedObjectsGoOnlyUnderOtherNestedObjects)
{
    const Object object = Make();
    Object nested[] = {Make({{1, 1, "11"}}), Make({{2, 1, "2222222222"}}), Make()};
    SMSDOConfig *const second = nested[1].get();
    SMSDOConfig *const third = nested[2].get();
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

TEST_F(SDOConfig, TheTwoSums)
{
    const Object object = Make({{1, 1, "11"}, {2, 1, "22222222"}, {3, 1, "3333333333"}});
    Object nested[] = {Make({{1, 1, "11"}}), Make(), Make({{1, 1, "1111111111"}})};
    EXPECT_EQ(Adopt(object, 4, 0x0D, {&nested[0]}), SM_STATUS_OK);
    EXPECT_EQ(Adopt(object, 5, 0x1D, {&nested[1], &nested[2]}), SM_STATUS_OK);
    EXPECT_EQ(SMSDOConfigGetBinarySize(object.get()), 8u + 8 + 8 + 13 + (8 + 16) + (8 + 8 + 8 + 21));
    const uint32_t other = 8 + (8 + 1) + (8 + 4) + 13 + (8 + 16) + (8 + 8 + 21);
    EXPECT_EQ(SMSDOConfigReCalcBinarySize(object.get()), other);
    EXPECT_EQ(SMSDOConfigGetBinarySize(object.get()), other);
    EXPECT_EQ(SMSDOConfigCompareByValue(object.get(), object.get()), 0u); // it cannot be flattened any more
}

} // namespace
