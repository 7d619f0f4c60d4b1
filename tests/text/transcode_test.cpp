#include <gtest/gtest.h>
#include <iconv.h>
#include <qzvest/transcode.h>

#include <string>
#include <vector>

namespace {

// All of the plane that is no surrogate, in one text, both ways.
TEST(Transcode, AgreesWithIconv)
{
    std::vector<uint16_t> units;
    for (uint32_t unit = 1; unit < 0x10000; unit += unit == 0xD7FF ? 0x801 : 1)
        units.push_back(static_cast<uint16_t>(unit));
    units.push_back(0);
    std::string bytes(units.size() * 3, '\0');
    const iconv_t converter = iconv_open("UTF-8", "UTF-16LE");
    char *in = reinterpret_cast<char *>(units.data()), *out = bytes.data();
    size_t inLeft = units.size() * 2, outLeft = bytes.size();
    ASSERT_EQ(iconv(converter, &in, &inLeft, &out, &outLeft), 0u);
    iconv_close(converter);
    bytes.resize(bytes.size() - outLeft);

    std::string ours(bytes.size(), '\0');
    auto size = static_cast<uint32_t>(ours.size());
    EXPECT_EQ(SMUCS2StrToUTF8Str(ours.data(), &size, units.data()), SM_STATUS_OK);
    EXPECT_TRUE(ours == bytes);
    std::vector<uint16_t> back(units.size());
    size = static_cast<uint32_t>(2 * back.size());
    EXPECT_EQ(SMUTF8StrToUCS2Str(back.data(), &size, bytes.data()), SM_STATUS_OK);
    EXPECT_TRUE(back == units);
    EXPECT_EQ(SMUCS2StrToUTF8Str(ours.data(), &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(back.data(), nullptr, bytes.data()), SM_STATUS_INVALID_PARAMETER);
}

} // namespace
