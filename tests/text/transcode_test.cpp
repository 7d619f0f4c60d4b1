#include <gtest/gtest.h>
#include <iconv.h>
#include <qzvest/transcode.h>

#include <string>
#include <vector>

#include "digest/guarded.h"

namespace {

TEST(Transcode, NullArguments)
{
    uint32_t size = 7;
    char bytes[8] = "";
    uint16_t units[4] = {};
    EXPECT_EQ(SMUCS2StrToUTF8Str(bytes, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(units, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUCS2StrToUTF8Str(bytes, nullptr, units), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(units, nullptr, bytes), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(size, 7u);
}

// All of the plane that is no surrogate, in one text, both ways.
TEST(Transcode, AgreesWithIconv)
{
    std::vector<uint16_t> units;
    for (uint32_t unit = 1; unit < 0x10000; ++unit) {
        if (unit < 0xD800 || unit > 0xDFFF)
            units.push_back(static_cast<uint16_t>(unit));
    }
    units.push_back(0);
    std::string bytes(units.size() * 3, '\0');
    const iconv_t converter = iconv_open("UTF-8", "UTF-16LE");
    char *in = reinterpret_cast<char *>(units.data()), *out = bytes.data();
    size_t inLeft = units.size() * 2, outLeft = bytes.size();
    ASSERT_EQ(iconv(converter, &in, &inLeft, &out, &outLeft), 0u);
    iconv_close(converter);
    bytes.resize(bytes.size() - outLeft);

    uint32_t size = 0;
    EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, units.data()), SM_STATUS_OK);
    std::string ours(size, '\0');
    EXPECT_EQ(SMUCS2StrToUTF8Str(ours.data(), &size, units.data()), SM_STATUS_OK);
    EXPECT_TRUE(ours == bytes);
    EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, bytes.data()), SM_STATUS_OK);
    std::vector<uint16_t> back(size / 2);
    EXPECT_EQ(SMUTF8StrToUCS2Str(back.data(), &size, bytes.data()), SM_STATUS_OK);
    EXPECT_TRUE(back == units);
}

// Source and destination end where memory does: nothing beyond is read or written, not even for a moment.
TEST(Transcode, StaysWithinMemory)
{
    for (size_t length = 0; length < 600; ++length) {
        const char *const characters[] = {"a", "é", "中"};
        std::string text = length % 2 == 0 ? "" : "é";
        while (text.size() < length / 3)
            text += characters[length % 3];
        const Guarded bytes(text + '\0'), back(text.size() + 1);
        uint32_t size = 0;
        ASSERT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, bytes.Bytes()), SM_STATUS_OK);
        const Guarded wide(size);
        auto *units = reinterpret_cast<uint16_t *>(wide.Bytes());
        ASSERT_EQ(SMUTF8StrToUCS2Str(units, &size, bytes.Bytes()), SM_STATUS_OK);
        size = static_cast<uint32_t>(text.size() + 1);
        ASSERT_EQ(SMUCS2StrToUTF8Str(back.Bytes(), &size, units), SM_STATUS_OK);
        ASSERT_EQ(back.Content(), bytes.Content());
    }
}

} // namespace
