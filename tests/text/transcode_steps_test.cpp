// The conversions from inside: the single steps, and the ways with and without vectors against the model.
#include <gtest/gtest.h>

#include <random>

#include "text/codepoint.h"
#include "text/transcode.h"
#include "text/transcode_model.h"
#include "text/unitcount.h"

namespace {

using qzvest::CodePointToUCS2;
using qzvest::CodePointToUTF8;

TEST(CodePoint, FormsOfUTF8)
{
    const std::tuple<uint32_t, std::string> cases[] = {
        {0, std::string(1, '\0')},
        {0x10000, "\xF0\x90\x80\x80"},
        {0x200000, "\xF8\x88\x80\x80\x80"},
        {0x4000000, "\xFC\x84\x80\x80\x80\x80"},
        {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF"},
    };
    for (const auto &[givenCode, givenBytes] : cases) {
        char bytes[8] = {};
        const auto length = static_cast<uint32_t>(givenBytes.size());
        uint32_t room = 0;
        EXPECT_EQ(CodePointToUTF8(nullptr, &room, givenCode), SM_STATUS_OK);
        EXPECT_EQ(room, length);
        room = length - 1;
        EXPECT_EQ(CodePointToUTF8(bytes, &room, givenCode), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(room, length - 1);
        EXPECT_EQ(bytes[0], '\0');
        room = 8;
        EXPECT_EQ(CodePointToUTF8(bytes, &room, givenCode), SM_STATUS_OK);
        EXPECT_EQ(std::string(bytes, room), givenBytes);
        uint32_t code = 1;
        EXPECT_EQ(qzvest::UTF8ToCodePoint(bytes, &code, &room), SM_STATUS_OK);
        EXPECT_EQ(code, givenCode);
        EXPECT_EQ(room, length);
    }
    uint32_t room = 9;
    EXPECT_EQ(CodePointToUTF8(nullptr, &room, 0x80000000), SM_STATUS_BAD_FORMAT);
    EXPECT_EQ(room, 9u);
}

TEST(CodePoint, UnitsOfUCS2)
{
    uint16_t units[2] = {7, 7};
    for (const auto &[code, length] : {std::pair{0x10000u, 2u}, {0xFFFFu, 1u}}) {
        uint32_t room = length - 1;
        EXPECT_EQ(CodePointToUCS2(units, &room, code), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(units[0], 7);
        EXPECT_EQ(CodePointToUCS2(nullptr, &room, code), SM_STATUS_OK);
        EXPECT_EQ(room, length);
    }
    uint32_t room = 0;
    EXPECT_EQ(CodePointToUCS2(units, &room, 0x110000), SM_STATUS_BAD_FORMAT); // before the room is looked at
}

uint32_t Below(uint32_t bound)
{
    static std::mt19937 engine{20240607};
    return static_cast<uint32_t>(engine() % bound);
}

// Characters of one to three bytes, in some texts longer and refused forms, forms that no encoder makes, and cut ends.
Bytes RandomUTF8()
{
    const char *const pieces[] = {"a",
                                  "b",
                                  "é",
                                  "\xDF\xBF",
                                  "€",
                                  "\xEF\xBF\xBF",
                                  "\U00010000",
                                  "\U0001F600",
                                  "\U0010FFFF",
                                  "\xED\xA0\x80",
                                  "\xC3\x41",
                                  "\xE2\x41\xFF",
                                  "\xC0\x80",
                                  "\xF8\x80\x80\x81\x81",
                                  "\xF8\x84\x8F\xBF\xBF",
                                  "\xFC\x80\x80\x80\x81\x81",
                                  "\x80",
                                  "\xBF",
                                  "\xF4\x90\x80\x80",
                                  "\xF8\x84\x90\x80\x80",
                                  "\xFD\xBF\xBF\xBF\xBF\xBF",
                                  "\xFE\x80\x80\x80\x80\x80",
                                  "\xFF"};
    const uint32_t kinds[] = {2, 4, 6, 9, 16, 23};
    const uint32_t kind = kinds[Below(6)];
    std::string text;
    for (uint32_t length = Below(110); text.size() < length;)
        text += pieces[Below(4) == 0 ? Below(kind) : 0];
    if (kind > 6 && !text.empty())
        text[Below(static_cast<uint32_t>(text.size()))] = static_cast<char>(1 + Below(255));
    return {text.begin(), text.end() - (text.empty() || Below(4) != 0 ? 0 : 1)};
}

Units RandomUCS2()
{
    Units text(Below(70));
    const uint32_t limits[] = {0x7F, 0x7FF, 0xD7FF, 0xFFFF}, limit = limits[Below(4)];
    for (uint16_t &unit : text)
        unit = static_cast<uint16_t>(1 + Below(Below(3) == 0 ? limit : 0x7F));
    for (uint32_t i = Below(4); i < 3 && i < text.size(); ++i) // surrogates, at the beginning too
        text[Below(2) == 0 ? i : text.size() - 1] = static_cast<uint16_t>(0xD800 + Below(0x800));
    return text;
}

// At every capacity: status, size word, what is written and what is not.
template <typename Unit, typename Call, typename Source>
void Compare(Call call, const std::vector<Source> &text, const Converted &model)
{
    const size_t needed = Needed(model, sizeof(Unit));
    const Outcome query = Actual<Unit>(call, text, 0x5555, true);
    ASSERT_EQ(query.status, model.refused ? SM_STATUS_BAD_FORMAT : SM_STATUS_OK) << testing::PrintToString(text);
    ASSERT_EQ(query.size, model.refused ? 0x5555 : needed) << testing::PrintToString(text);
    for (uint32_t step = 0; step <= needed + 2; ++step) {
        const uint32_t capacity = step <= needed + 1 ? step : step + 99; // at last with ample room
        ASSERT_EQ(Actual<Unit>(call, text, capacity), Expected(model, capacity, sizeof(Unit)))
            << "capacity " << capacity << " of " << testing::PrintToString(text);
    }
}

TEST(Transcode, AnyTextAtEveryCapacity)
{
    for (int round = 0; round < 1500 && !testing::Test::HasFatalFailure(); ++round) {
        const Bytes utf8 = RandomUTF8();
        Compare<uint16_t>(qzvest::UTF8ToUCS2Convert, utf8, ModelToUCS2(utf8));
        Compare<uint16_t>(qzvest::UTF8ToUCS2Portable, utf8, ModelToUCS2(utf8));
        const Units ucs2 = RandomUCS2();
        Compare<char>(qzvest::UCS2ToUTF8Convert, ucs2, ModelToUTF8(ucs2));
        Compare<char>(qzvest::UCS2ToUTF8Portable, ucs2, ModelToUTF8(ucs2));
    }
}

// Every place within the blocks of 128 bytes.
TEST(UnitCount, AnyPlace)
{
    alignas(128) uint16_t units[512];
    for (size_t start = 0; start < 64; ++start) {
        for (size_t length = 0; length < 300; length += 1 + length / 70) {
            std::fill(std::begin(units), std::end(units), uint16_t{0x0100}); // one zero byte is no terminator
            units[start + length] = 0;
            units[start + length + 1] = 0;
            ASSERT_EQ(qzvest::UnitCount(units + start), length) << start;
            ASSERT_EQ(qzvest::UnitCountPortable(units + start), length) << start;
        }
    }
}

} // namespace
