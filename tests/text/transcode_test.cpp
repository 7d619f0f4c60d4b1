#include <gtest/gtest.h>
#include <iconv.h>
#include <qzvest/transcode.h>
#include <sys/mman.h>

#include <string>

#include "text/transcode_model.h"

namespace {

Bytes Of(const char *text)
{
    return {text, text + std::strlen(text)};
}

// The result as a whole, or nothing when the call fails; by the usual two calls, with a buffer of just the size.
template <typename Unit, typename Call, typename Source>
std::vector<Unit> Convert(Call call, const std::vector<Source> &text)
{
    const Outcome query = Queried<Unit>(call, text);
    if (query.status != SM_STATUS_OK)
        return {};
    const Outcome outcome = Actual<Unit>(call, text, query.size);
    EXPECT_EQ(outcome.status, SM_STATUS_OK);
    EXPECT_EQ(outcome.size, query.size);
    std::vector<Unit> result(query.size / sizeof(Unit));
    std::memcpy(result.data(), outcome.memory.data(), query.size);
    EXPECT_EQ(result.back(), 0);
    result.pop_back();
    return result;
}

std::string ToUTF8(const Units &text)
{
    const std::vector<char> bytes = Convert<char>(SMUCS2StrToUTF8Str, text);
    return {bytes.begin(), bytes.end()};
}

Units ToUCS2(const std::string &text)
{
    return Convert<uint16_t>(SMUTF8StrToUCS2Str, Bytes(text.begin(), text.end()));
}

struct TextPair {
    const char *utf8;
    Units ucs2;
};

TEST(Transcode, ToUCS2)
{
    const TextPair cases[] = {
        {"", {}},
        {"aé€", {0x61, 0xE9, 0x20AC}},
        {"\U0001F600", {0xD87D, 0xDE00}}, // nothing is subtracted
        {"\U00010000", {0xD840, 0xDC00}},
        {"\U00100000", {0xD800, 0xDC00}},
        {"\U0010FFFF", {0xD83F, 0xDFFF}},
        {"\xED\xA0\x80", {0xD800}},
        {"\xEF\xBF\xBE\xEF\xBF\xBF", {0xFFFE, 0xFFFF}},
        {"\xC3\x41", {0xC1}}, // any byte but zero continues a sequence
        {"\xE2\x41\xFF", {0x207F}},
        {"a\xC0\x80z", {0x61, 0, 0x7A}}, // an overlong zero ends the text for its readers
        {"\xF8\x80\x80\x81\x81", {0x41}},
        {"\xF8\x84\x8F\xBF\xBF", {0xD83F, 0xDFFF}},
        {"\xFC\x80\x80\x80\x81\x81", {0x41}},
    };
    for (const TextPair &c : cases)
        EXPECT_EQ(ToUCS2(c.utf8), c.ucs2) << c.utf8;
}

TEST(Transcode, ToUTF8)
{
    const TextPair cases[] = {
        {"", {}},
        {"aé€\xEF\xBF\xBF", {0x61, 0xE9, 0x20AC, 0xFFFF}},
        {"AAAB", {0x41, 0xD83D, 0xDE00, 0x42}}, // surrogates repeat the first character
        {"\xE2\x82\xAC\xE2\x82\xAC", {0x20AC, 0xDE00}},
        {"\U0001F600\U0001F600", {0xD83D, 0xDE00}}, // the pair's character for each half
        {"\U0001F600\U0001F600-\U0001F600", {0xD83D, 0xDE00, 0x2D, 0xD812}},
        {"\U0002F600\U0002F600", {0xD87D, 0xDE00}}, // what U+1F600 comes back as
        {"\U0010FFFF\U0010FFFF", {0xDBFF, 0xDFFF}},
    };
    for (const TextPair &c : cases)
        EXPECT_EQ(ToUTF8(c.ucs2), c.utf8) << c.utf8;
}

TEST(Transcode, Refused)
{
    for (const char *text : {"\xC3", "ab\xE2\x82", "\x80", "\x80 and more", "\xBF", "\xFE\x80\x80\x80\x80\x80",
                             "\xFF\x80\x80\x80\x80\x80\x80", "\xF4\x90\x80\x80", "\xF8\x84\x90\x80\x80",
                             "\xFD\xBF\xBF\xBF\xBF\xBF", "\xFC\x80\x80\x80\x80"})
        EXPECT_EQ(Queried<uint16_t>(SMUTF8StrToUCS2Str, Of(text)), (Outcome{SM_STATUS_BAD_FORMAT, 0x5555, {}})) << text;
    for (const Units &text :
         {Units{0xD83D}, Units{0xDE00}, Units{0xDE00, 0x41}, Units{0xD83D, 0x41}, Units{0xD83D, 0xD83D}})
        EXPECT_EQ(Queried<char>(SMUCS2StrToUTF8Str, text), (Outcome{SM_STATUS_BAD_FORMAT, 0x5555, {}})) << text[0];
}

TEST(Transcode, NullArguments)
{
    uint32_t size = 7;
    char bytes[8] = "old";
    uint16_t units[4] = {1};
    EXPECT_EQ(SMUCS2StrToUTF8Str(bytes, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(units, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUCS2StrToUTF8Str(bytes, nullptr, units), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(units, nullptr, bytes), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(size, 7u);
    EXPECT_STREQ(bytes, "old");
    EXPECT_EQ(units[0], 1);
}

// All of the plane that is no surrogate, in one text, both ways.
TEST(Transcode, AgreesWithIconv)
{
    Units units;
    for (uint32_t unit = 1; unit < 0x10000; ++unit) {
        if (unit < 0xD800 || unit > 0xDFFF)
            units.push_back(static_cast<uint16_t>(unit));
    }
    std::string bytes(units.size() * 3, '\0');
    const iconv_t converter = iconv_open("UTF-8", "UTF-16LE");
    char *in = reinterpret_cast<char *>(units.data());
    char *out = bytes.data();
    size_t inLeft = units.size() * 2;
    size_t outLeft = bytes.size();
    ASSERT_EQ(iconv(converter, &in, &inLeft, &out, &outLeft), 0u);
    iconv_close(converter);
    bytes.resize(bytes.size() - outLeft);
    EXPECT_TRUE(ToUTF8(units) == bytes);
    EXPECT_TRUE(ToUCS2(bytes) == units);
}

// Every unit by itself, and in a text long enough for whole blocks on both its sides.
TEST(Transcode, EveryUnitAloneAndInContext)
{
    for (uint32_t unit = 1; unit < 0x10000; ++unit) {
        const auto value = static_cast<uint16_t>(unit);
        Units context(21, 0xE9);
        context.push_back(value);
        context.insert(context.end(), 20, 0x4E2D);
        for (const Units &text : {Units{value}, context}) {
            const Converted model = ModelToUTF8(text);
            const auto capacity = static_cast<uint32_t>(Needed(model, 1));
            ASSERT_EQ(Actual<char>(SMUCS2StrToUTF8Str, text, capacity), Expected(model, capacity, 1)) << unit;
        }
    }
}

// A page with none before and none behind it.
class LonePage {
public:
    LonePage() : memory(static_cast<char *>(mmap(nullptr, 3 * kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        EXPECT_EQ(mprotect(memory + kSize, kSize, PROT_READ | PROT_WRITE), 0);
    }
    LonePage(const LonePage &) = delete;
    ~LonePage()
    {
        munmap(memory, 3 * kSize);
    }
    // Room at the page's beginning or end.
    template <typename Unit>
    Unit *Room(size_t bytes, bool atEnd) const
    {
        return reinterpret_cast<Unit *>(memory + kSize + (atEnd ? kSize - bytes : 0));
    }

private:
    static constexpr size_t kSize = 4096;
    char *memory;
};

// Source and destination at either edge of their pages: nothing beyond is read or written, not even for a moment.
TEST(Transcode, StaysWithinThePage)
{
    const LonePage from, to;
    for (size_t length = 0; length < 800; ++length) {
        const char *const characters[] = {"a", "é", "中"};
        std::string text = length % 4 < 2 ? "" : "é";
        while (text.size() < length / 4)
            text += characters[length % 3];
        const bool atEnd = length % 2 != 0;
        const size_t bytes = text.size() + 1;
        const Units units = ToUCS2(text);
        const size_t unitBytes = (units.size() + 1) * 2;
        uint32_t size = static_cast<uint32_t>(unitBytes);
        char *source = from.Room<char>(bytes, atEnd);
        std::memcpy(source, text.c_str(), bytes);
        ASSERT_EQ(SMUTF8StrToUCS2Str(to.Room<uint16_t>(unitBytes, true), &size, source), SM_STATUS_OK);
        ASSERT_EQ(size, unitBytes);

        auto *wide = from.Room<uint16_t>(unitBytes, atEnd);
        std::copy(units.begin(), units.end(), wide);
        wide[units.size()] = 0;
        size = static_cast<uint32_t>(bytes);
        ASSERT_EQ(SMUCS2StrToUTF8Str(to.Room<char>(bytes, true), &size, wide), SM_STATUS_OK);
        ASSERT_EQ(to.Room<char>(bytes, true), text);
    }
}

} // namespace
