// A plain model of both conversions: what a call has to give, and what a destination holds then. Independent of the
// library, and meant to be read beside the comments of qzvest/transcode.h.
#ifndef TESTS_TEXT_TRANSCODE_MODEL_H
#define TESTS_TEXT_TRANSCODE_MODEL_H

#include <qzvest/status.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

using Bytes = std::vector<uint8_t>;
using Units = std::vector<uint16_t>; // without the terminator

// The characters in the form of the destination, each as its bytes there, up to a refused one.
struct Converted {
    std::vector<Bytes> characters;
    bool refused = false;
};

inline void Add(Bytes *bytes, uint32_t unit)
{
    bytes->push_back(static_cast<uint8_t>(unit)); // the tests run on little-endian machines
    bytes->push_back(static_cast<uint8_t>(unit >> 8));
}

inline Converted ModelToUCS2(const Bytes &text)
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

inline Converted ModelToUTF8(const Units &text)
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
constexpr size_t kGuard = 80; // bytes behind the capacity that no call may change

struct Outcome {
    uint32_t status;
    uint32_t size;
    Bytes memory; // the destination and the guard behind it
    bool operator==(const Outcome &) const = default;
};

inline size_t Needed(const Converted &text, size_t terminator)
{
    for (const Bytes &character : text.characters)
        terminator += character.size();
    return terminator;
}

// What a call with a destination of so many bytes must give.
inline Outcome Expected(const Converted &text, uint32_t capacity, size_t terminator)
{
    Outcome outcome{SM_STATUS_BUFFER_TOO_SMALL, capacity, Bytes(capacity + kGuard, kUntouched)};
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

// What a call gives, for a query without a destination. The source lies in a block of just its size, so that a
// sanitizer sees every step beyond it.
template <typename Unit, typename Call, typename Source>
Outcome Actual(Call call, const std::vector<Source> &text, uint32_t capacity, bool query = false)
{
    std::vector<Source> source(text);
    source.push_back(0);
    source.shrink_to_fit();
    Outcome outcome{0, capacity, Bytes(capacity + kGuard, kUntouched)};
    Units aligned((capacity + kGuard + 1) / 2);
    std::memset(aligned.data(), kUntouched, aligned.size() * 2);
    using SourceUnit = std::conditional_t<sizeof(Source) == 1, char, uint16_t>;
    outcome.status = call(query ? nullptr : reinterpret_cast<Unit *>(aligned.data()), &outcome.size,
                          reinterpret_cast<const SourceUnit *>(source.data()));
    std::memcpy(outcome.memory.data(), aligned.data(), outcome.memory.size());
    return outcome;
}

#endif
