// The flat form, there and back, against blocks written by hand.

#include <gtest/gtest.h>

#include "sdo/objects.h"

namespace {

TEST(SDOBinary, NeedsRoom)
{
    const Object object = Make({{1, 1, "1111111111"}}); // 21 bytes
    const auto flatten = [&](void *memory, uint32_t *size) { return SMSDOConfigToBinary(object.get(), memory, size); };
    EXPECT_EQ(InRoom(Bytes(8), 20, flatten), "16 20 0000000000000000"); // unlike elsewhere, the size stays
    EXPECT_EQ(InRoom(Bytes(8), 99, flatten), "0 21 " + Hex(Flatten(object)));
}

// A value of plain bytes stands beside a nested object that is changed behind its parent's back, so that the sum
// which the parent keeps no longer agrees with the total.
TEST(SDOBinary, FailsWithinTheBufferWhenTheSizeIsWrong)
{
    enum Then { kNothing, kRecalculate, kRemove };
    const auto check = [](size_t plain, uint32_t grows, Then then, uint32_t kept, uint32_t total) {
        SCOPED_TRACE(Text(plain, ' ', grows, ' ', then));
        const Object object = Make();
        Object nested = Make({{1, 1, "1111111111"}});
        SMSDOConfig *const inner = nested.get();
        EXPECT_EQ(Add(object, 9, 1, Bytes(plain)), SM_STATUS_OK);
        EXPECT_EQ(Adopt(object, 2, 0x0D, {&nested}), SM_STATUS_OK);
        (void)SMSDOConfigAddData(inner, 2, 1, Bytes(60000).data(), grows, 0); // refused when it is 0
        if (then == kRecalculate)
            (void)SMSDOConfigReCalcBinarySize(object.get());
        if (then == kRemove)
            (void)SMSDOConfigRemoveData(object.get(), 2, 0, 0);
        ASSERT_EQ(SMSDOConfigGetBinarySize(object.get()), kept);
        uint32_t size = kept;
        Bytes buffer(kept + 99, 0xEE);
        EXPECT_EQ(SMSDOConfigToBinary(object.get(), buffer.data(), &size), SM_STATUS_FAILED);
        EXPECT_EQ(size, total);
        EXPECT_EQ(Bytes(buffer.begin() + kept, buffer.end()), Bytes(99, 0xEE));
        EXPECT_EQ(SMSDOConfigClone(object.get()), nullptr);
    };
    check(1, 1, kNothing, 45, 45 + 8);
    check(1, 60000, kNothing, 45, 45 + 60008);
    check(1, 0, kRecalculate, 46, 45);
    check(1, 8, kRemove, 0, 16);                     // with a share that it never added
    check(40000, 30000, kRecalculate, 70053, 70053); // the sum agrees, but no block is as large
}

// The writing ends at the first entry with just as many bytes as the object says it has.
TEST(SDOBinary, AnEndBeforeTheLastEntryIsAFailure)
{
    const Object object = Make();
    Object inner = Make(), nested = Make(), other = Make(), removed = Make();
    SMSDOConfig *const grows = inner.get(), *const shrinks = removed.get();
    Adopt(nested, 1, 0x0D, {&inner});
    Adopt(object, 1, 0x0D, {&nested});
    Adopt(object, 2, 0x0D, {&other});
    Adopt(object, 3, 0x0D, {&removed});
    ASSERT_EQ(SMSDOConfigAddData(grows, 1, 1, "four", 4, 0), SM_STATUS_OK);
    ASSERT_EQ(SMSDOConfigAddData(shrinks, 1, 1, "twenty-four bytes of it.", 24, 0), SM_STATUS_OK);
    ASSERT_EQ(SMSDOConfigRemoveData(object.get(), 3, 0, 0), SM_STATUS_OK); // with a share that it never added
    ASSERT_EQ(SMSDOConfigGetBinarySize(object.get()), 24u);
    const auto flatten = [&](void *memory, uint32_t *size) { return SMSDOConfigToBinary(object.get(), memory, size); };
    EXPECT_TRUE(InRoom(Bytes(8), 24, flatten).starts_with(Text(SM_STATUS_FAILED, " 24 ")));
}

TEST(SDOBinary, RefusesWhatIsNoObject)
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
    check("'BADS 0200 2000 'BODS 0000 0800 'BODS 0100 1000 0000 01 00 11000000", SM_STATUS_FAILED);
    check("'BODS 0200 1800 0100 01 00 11000000 0100 01 00 22000000", SM_STATUS_FAILED); // an ID twice
    check("'BODS 0100 1000 FEFF 01 00 11000000", SM_STATUS_FAILED);                     // a bad ID
    check("'BODS 0100 1000 0100 0D 03 11000000", SM_STATUS_FAILED);                     // pointers in a block
    check("'BODS 0200 2800 0100 0C 04 0800 1000 0200 0C 04 0800 1000 'BODS 0000 0800 'BOBS 0000 0800",
          SM_STATUS_FAILED);
}

TEST(SDOBinary, ComparesByValue)
{
    const Object object = Make({{1, 1, "11"}, {2, 2, "2222222222"}});
    const auto compare = [&](const Object &other) { return SMSDOConfigCompareByValue(object.get(), other.get()); };
    EXPECT_EQ(compare(Make({{2, 2, "2222222222"}, {1, 1, "11"}})), 1u);    // the order of adding
    EXPECT_EQ(compare(Make({{1, 0x81, "11"}, {2, 2, "2222222222"}})), 0u); // a type byte
    EXPECT_EQ(compare(Make({{1, 1, "1100"}, {2, 2, "2222222222"}})), 0u);  // a length, the bytes being equal
    EXPECT_EQ(compare(nullptr), 0u);
    EXPECT_EQ(SMSDOConfigCompareByValue(nullptr, object.get()), 0u);
    EXPECT_EQ(SMSDOConfigCompareByValue(nullptr, nullptr), 1u);
    EXPECT_EQ(SMSDOConfigClone(nullptr), nullptr);
}

} // namespace
