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
    const struct {
        uint32_t code;
        std::string bytes;
    } cases[] = {
        {0, std::string(1, '\0')},
        {0x7F, "\x7F"},
        {0x80, "\xC2\x80"},
        {0x7FF, "\xDF\xBF"},
        {0x800, "\xE0\xA0\x80"},
        {0xD800, "\xED\xA0\x80"},
        {0xFFFF, "\xEF\xBF\xBF"},
        {0x10000, "\xF0\x90\x80\x80"},
        {0x1FFFFF, "\xF7\xBF\xBF\xBF"},
        {0x200000, "\xF8\x88\x80\x80\x80"},
        {0x3FFFFFF, "\xFB\xBF\xBF\xBF\xBF"},
        {0x4000000, "\xFC\x84\x80\x80\x80\x80"},
        {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF"},
    };
    for (const auto &c : cases) {
        char bytes[8] = {};
        const auto length = static_cast<uint32_t>(c.bytes.size());
        uint32_t room = 0;
        EXPECT_EQ(CodePointToUTF8(nullptr, &room, c.code), SM_STATUS_OK);
        EXPECT_EQ(room, length);
        room = length - 1;
        EXPECT_EQ(CodePointToUTF8(bytes, &room, c.code), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(room, length - 1);
        EXPECT_EQ(bytes[0], '\0');
        room = 8;
        EXPECT_EQ(CodePointToUTF8(bytes, &room, c.code), SM_STATUS_OK);
        EXPECT_EQ(std::string(bytes, room), c.bytes);
        uint32_t code = 1;
        EXPECT_EQ(qzvest::UTF8ToCodePoint(bytes, &code, &room), SM_STATUS_OK);
        EXPECT_EQ(code, c.code);
        EXPECT_EQ(room, length);
    }
    uint32_t room = 9;
    EXPECT_EQ(CodePointToUTF8(nullptr, &room, 0x80000000), SM_STATUS_BAD_FORMAT);
    EXPECT_EQ(room, 9u);
}

TEST(CodePoint, UnitsOfUCS2)
{
    uint16_t units[2] = {7, 7};
    for (const uint32_t code : {0x10000u, 0xFFFFu}) {
        const uint32_t length = code > 0xFFFF ? 2 : 1;
        uint32_t room = length - 1;
        EXPECT_EQ(CodePointToUCS2(units, &room, code), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(room, length - 1);
        EXPECT_EQ(CodePointToUCS2(nullptr, &room, code), SM_STATUS_OK);
        EXPECT_EQ(room, length);
    }
    EXPECT_EQ(units[0], 7);
    uint32_t room = 0;
    EXPECT_EQ(CodePointToUCS2(units, &room, 0x110000), SM_STATUS_BAD_FORMAT); // before the room is looked at

    const uint16_t zero[] = {0};
    uint32_t code = 1;
    EXPECT_EQ(qzvest::UCS2ToCodePoint(zero, &code), SM_STATUS_OK);
    EXPECT_EQ(code, 0u);
}

class RandomText {
public:
    uint32_t Below(uint32_t bound)
    {
        return static_cast<uint32_t>(engine() % bound);
    }

    // Of a kind each: regular text of one to three bytes a character, the same with longer forms in it, or with bytes
    // and units at random.
    Bytes UTF8()
    {
        Bytes text;
        const uint32_t kind = Below(3);
        const uint32_t widest = kind == 0 ? 1 + Below(3) : 1 + Below(4);
        const auto length = Below(110);
        while (text.size() < length) {
            const uint32_t limits[] = {0x80, 0x800, 0x10000, 0x110000};
            char bytes[8];
            uint32_t room = 8;
            (void)CodePointToUTF8(bytes, &room, 1 + Below(limits[Below(widest)] - 1));
            text.insert(text.end(), bytes, bytes + room);
        }
        if (kind == 2 && !text.empty())
            text[Below(static_cast<uint32_t>(text.size()))] = static_cast<uint8_t>(1 + Below(255));
        if (Below(4) == 0 && !text.empty())
            text.pop_back();
        return text;
    }

    Units UCS2()
    {
        Units text(Below(70));
        const uint32_t limits[] = {0x7F, 0x7FF, 0xD7FF, 0xFFFF};
        const uint32_t limit = limits[Below(4)];
        for (uint16_t &unit : text)
            unit = static_cast<uint16_t>(1 + Below(Below(3) == 0 ? limit : 0x7F));
        if (!text.empty() && Below(4) == 0)
            text[Below(static_cast<uint32_t>(text.size()))] = static_cast<uint16_t>(0xD800 + Below(0x800));
        return text;
    }

private:
    std::mt19937 engine{20240607};
};

// At every capacity: status, size word, what is written and what is not.
template <typename Unit, typename Call, typename Source>
void Compare(Call call, const std::vector<Source> &text, const Converted &model)
{
    const size_t needed = Needed(model, sizeof(Unit));
    const Outcome query{model.refused ? SM_STATUS_BAD_FORMAT : SM_STATUS_OK,
                        model.refused ? 0x5555 : static_cast<uint32_t>(needed),
                        {}};
    ASSERT_EQ(Queried<Unit>(call, text), query) << testing::PrintToString(text);
    for (uint32_t step = 0; step <= needed + 2; ++step) {
        const uint32_t capacity = step <= needed + 1 ? step : step + 99; // at last with ample room
        ASSERT_EQ(Actual<Unit>(call, text, capacity), Expected(model, capacity, sizeof(Unit)))
            << "capacity " << capacity << " of " << testing::PrintToString(text);
    }
}

TEST(Transcode, AnyTextAtEveryCapacity)
{
    RandomText random;
    for (int round = 0; round < 600 && !testing::Test::HasFatalFailure(); ++round) {
        const Bytes utf8 = random.UTF8();
        Compare<uint16_t>(qzvest::UTF8ToUCS2Convert, utf8, ModelToUCS2(utf8));
        Compare<uint16_t>(qzvest::UTF8ToUCS2Portable, utf8, ModelToUCS2(utf8));
        const Units ucs2 = random.UCS2();
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
