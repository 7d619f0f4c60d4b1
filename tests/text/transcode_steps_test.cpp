// The conversions from inside: the single steps, and the ways with and without vectors against a plain model, which is
// meant to be read beside the comments of qzvest/transcode.h.
#include <gtest/gtest.h>

#include <bit>
#include <iterator>
#include <random>
#include <sstream>

#include "digest/guarded.h"
#include "text/codepoint.h"
#include "text/transcode.h"
#include "text/unitcount.h"

namespace {

using qzvest::CodePointToUCS2;
using qzvest::CodePointToUTF8;

using Bytes = std::vector<uint8_t>;
using Units = std::vector<uint16_t>; // without the terminator

// The characters in the form of the destination, each as its bytes there, up to a refused one.
struct Converted {
    std::vector<Bytes> characters;
    bool refused = false;
};

void Add(Bytes *bytes, uint32_t unit)
{
    bytes->push_back(static_cast<uint8_t>(unit)); // the tests run on little-endian machines
    bytes->push_back(static_cast<uint8_t>(unit >> 8));
}

Converted ModelToUCS2(const Bytes &text)
{
    Converted result;
    for (size_t at = 0; at < text.size();) {
        const auto ones = static_cast<size_t>(std::countl_one(text[at]));
        const size_t length = ones == 0 ? 1 : ones;
        result.refused = ones == 1 || ones > 6 || at + length > text.size();
        if (result.refused)
            return result;
        uint64_t code = text[at] & (0xFFu >> (ones == 0 ? 0 : ones + 1));
        for (size_t i = 1; i < length; ++i)
            code = code * 64 + text[at + i] % 64;
        result.refused = code > 0x10FFFF;
        if (result.refused)
            return result;
        Bytes units;
        if (code >= 0x10000) {
            Add(&units, 0xD800 + (code / 1024) % 1024);
            Add(&units, 0xDC00 + code % 1024);
        } else {
            Add(&units, static_cast<uint32_t>(code));
        }
        result.characters.push_back(units);
        at += length;
    }
    return result;
}

Converted ModelToUTF8(const Units &text)
{
    Converted result;
    for (const uint16_t unit : text) {
        uint32_t code = unit;
        if (code >= 0xD800 && code < 0xE000) {
            code = text[0];
            const uint32_t second = text.size() > 1 ? text[1] : 0;
            const bool pair = code < 0xDC00 && second >= 0xDC00 && second < 0xE000;
            result.refused = code >= 0xD800 && code < 0xE000 && !pair;
            if (result.refused)
                return result;
            if (pair && code >= 0xD800)
                code = 0x10000 + (code - 0xD800) * 1024 + (second - 0xDC00);
        }
        const size_t length = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
        Bytes bytes(length);
        for (size_t i = length - 1; i > 0; --i, code /= 64)
            bytes[i] = static_cast<uint8_t>(0x80 + code % 64);
        constexpr uint8_t kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
        bytes[0] = static_cast<uint8_t>(kLeads[length] + code);
        result.characters.push_back(bytes);
    }
    return result;
}

constexpr uint8_t kUntouched = 0xA5;

struct Outcome {
    uint32_t status;
    uint32_t size;
    Bytes memory; // the destination, of whole units
    bool operator==(const Outcome &) const = default;
};

// What a call with a destination of so many bytes must give.
Outcome Expected(const Converted &text, uint32_t capacity, size_t terminator)
{
    Outcome outcome{SM_STATUS_BUFFER_TOO_SMALL, capacity, Bytes(capacity + capacity % 2, kUntouched)};
    size_t written = 0;
    for (const Bytes &character : text.characters) {
        if (written + character.size() > capacity)
            return outcome;
        std::copy(character.begin(), character.end(), outcome.memory.begin() + static_cast<ptrdiff_t>(written));
        written += character.size();
    }
    if (text.refused) {
        outcome.status = SM_STATUS_BAD_FORMAT;
    } else if (written + terminator <= capacity) {
        std::memset(&outcome.memory[written], 0, terminator);
        outcome.status = SM_STATUS_OK;
        outcome.size = static_cast<uint32_t>(written + terminator);
    }
    return outcome;
}

// The conversions themselves write no form so long.
TEST(CodePoint, LongFormsOfUTF8)
{
    char bytes[8] = {};
    for (const auto &[code, length] : {std::pair{0x200000u, 5u}, {0x4000000u, 6u}, {0x7FFFFFFFu, 6u}}) {
        uint32_t room = length - 1, back = 0;
        EXPECT_EQ(CodePointToUTF8(bytes, &room, code), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(CodePointToUTF8(nullptr, &room, code), SM_STATUS_OK);
        EXPECT_EQ(room, length);
        EXPECT_EQ(CodePointToUTF8(bytes, &room, code), SM_STATUS_OK);
        EXPECT_EQ(qzvest::UTF8ToCodePoint(bytes, &back, &room), SM_STATUS_OK);
        EXPECT_EQ(back, code);
        EXPECT_EQ(room, length);
    }
    EXPECT_STREQ(bytes, "\xFD\xBF\xBF\xBF\xBF\xBF");
    uint32_t room = 0;
    EXPECT_EQ(CodePointToUTF8(nullptr, &room, 0x80000000), SM_STATUS_BAD_FORMAT);
    EXPECT_EQ(CodePointToUCS2(nullptr, &room, 0x110000), SM_STATUS_BAD_FORMAT); // before the room is looked at
    EXPECT_EQ(room, 0u);
}

uint32_t Below(uint32_t bound)
{
    static std::mt19937 engine{20240607};
    return static_cast<uint32_t>(engine() % bound);
}

// Characters of one to three bytes, in some texts longer and refused forms, forms that no encoder makes, and cut ends.
Bytes RandomUTF8()
{
    static const std::vector<std::string> pieces = [] {
        std::istringstream words("a b é \xDF\xBF € \xEF\xBF\xBF \U00010000 \U0001F600 \U0010FFFF \xED\xA0\x80 \xC3\x41 "
                                 "\xE2\x41\xFF \xC0\x80 \xF8\x80\x80\x81\x81 \xF8\x84\x8F\xBF\xBF "
                                 "\xFC\x80\x80\x80\x81\x81 \x80 \xBF \xF4\x90\x80\x80 \xF8\x84\x90\x80\x80 "
                                 "\xFD\xBF\xBF\xBF\xBF\xBF \xFE\x80\x80\x80\x80\x80 \xFF");
        return std::vector<std::string>(std::istream_iterator<std::string>(words), {});
    }();
    const uint32_t kinds[] = {2, 4, 6, 9, 16, 23};
    const uint32_t kind = kinds[Below(6)];
    std::string text;
    for (uint32_t length = Below(200); text.size() < length;)
        text += pieces[Below(4) == 0 ? Below(kind) : 0];
    if (kind > 6 && !text.empty())
        text[Below(static_cast<uint32_t>(text.size()))] = static_cast<char>(1 + Below(255));
    return {text.begin(), text.end() - (text.empty() || Below(4) != 0 ? 0 : 1)};
}

Units RandomUCS2()
{
    Units text(Below(120));
    const uint32_t limits[] = {0x7F, 0x7FF, 0xD7FF, 0xFFFF}, limit = limits[Below(4)];
    for (uint16_t &unit : text)
        unit = static_cast<uint16_t>(1 + Below(Below(3) == 0 ? limit : 0x7F));
    for (uint32_t i = Below(4); i < 3 && i < text.size(); ++i) // surrogates, at the beginning too
        text[Below(2) == 0 ? i : text.size() - 1] = static_cast<uint16_t>(0xD800 + Below(0x800));
    return text;
}

// What a call gives, for a query without a destination. Source and destination end where memory does.
template <typename Unit, typename Call, typename Source>
Outcome Actual(Call call, const Source *source, uint32_t capacity, bool query = false)
{
    static const Guarded room(0x8000);
    Outcome outcome{0, capacity, Bytes(capacity + capacity % 2)};
    char *destination = room.bytes + 0x8000 - outcome.memory.size();
    std::memset(destination, kUntouched, outcome.memory.size());
    outcome.status = call(query ? nullptr : reinterpret_cast<Unit *>(destination), &outcome.size, source);
    std::copy_n(destination, outcome.memory.size(), outcome.memory.begin());
    return outcome;
}

// At every capacity: status, size word, what is written and what is not.
template <typename Unit, typename Source, typename Call, typename Text>
void Compare(Call call, const Text &text, const Converted &model)
{
    const Guarded block(std::string(reinterpret_cast<const char *>(text.data()), text.size() * sizeof(Source)) +
                        std::string(sizeof(Source), '\0'));
    const auto *source = reinterpret_cast<const Source *>(block.bytes);
    size_t needed = sizeof(Unit);
    for (const Bytes &character : model.characters)
        needed += character.size();
    const Outcome query = Actual<Unit>(call, source, 0x5555, true);
    ASSERT_EQ(query.status, model.refused ? SM_STATUS_BAD_FORMAT : SM_STATUS_OK) << testing::PrintToString(text);
    ASSERT_EQ(query.size, model.refused ? 0x5555 : needed) << testing::PrintToString(text);
    for (uint32_t capacity = 0; capacity <= needed + 101; capacity += capacity <= needed ? 1 : 100) // at last ample
        ASSERT_EQ(Actual<Unit>(call, source, capacity), Expected(model, capacity, sizeof(Unit)))
            << "capacity " << capacity << " of " << testing::PrintToString(text);
}

TEST(Transcode, AnyTextAtEveryCapacity)
{
    for (int round = 0; round < 1500 && !HasFatalFailure(); ++round) {
        const Bytes utf8 = RandomUTF8();
        Compare<uint16_t, char>(qzvest::UTF8ToUCS2Convert, utf8, ModelToUCS2(utf8));
        Compare<uint16_t, char>(qzvest::UTF8ToUCS2Portable, utf8, ModelToUCS2(utf8));
        const Units ucs2 = RandomUCS2();
        Compare<char, uint16_t>(qzvest::UCS2ToUTF8Convert, ucs2, ModelToUTF8(ucs2));
        Compare<char, uint16_t>(qzvest::UCS2ToUTF8Portable, ucs2, ModelToUTF8(ucs2));
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
