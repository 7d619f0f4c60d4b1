// The ID table. A set bit is an ID in use; bit 0 of word 0, which is no ID to be handed out, counts as used for
// the allocators and as unused for the searches.
//
// The area may lie at any address, so words are copied in and out. Tables are long runs of like words (all full,
// all empty): those runs are passed a block at a time, and words are looked at singly only near the goal.

#include "containers/hashid.h"

#include <array>
#include <bit>
#include <cstring>

#include "compat/load.h"

namespace qzvest {
namespace {

constexpr uint32_t kWordBits = 32;
constexpr uint32_t kWordBytes = kWordBits / 8;
constexpr uint32_t kReservedBit = 1;               // ID 0, in word 0
constexpr uint32_t kFirstWordFull = ~kReservedBit; // all that may be handed out of word 0

enum AcquireMode : uint32_t { kLowestFree = 0, kAboveTop = 1 };

using Words = uint32_t __attribute__((vector_size(16)));
constexpr uint32_t kBlockWords = 4 * sizeof(Words) / kWordBytes;

uint32_t LoadWord(const SMHashTable *table, uint32_t index)
{
    return LoadAs<uint32_t>(static_cast<const char *>(table) + size_t{index} * kWordBytes);
}

uint32_t SetBit(SMHashTable *table, uint32_t index, uint32_t bit)
{
    const uint32_t word = LoadWord(table, index) | uint32_t{1} << bit;
    StoreAs(static_cast<char *>(table) + size_t{index} * kWordBytes, word);
    return index * kWordBits + bit;
}

// A goal gives 0 for a word to be passed over. It takes one word or several side by side.
constexpr auto kAnyUsed = [](auto word) { return word; };
constexpr auto kAnyFree = [](auto word) { return ~word; };
constexpr auto kPartlyUsed = [](auto word) { return (word + 1) & 0xFFFFFFFEu; };

Words LoadPart(const char *block, size_t number)
{
    return LoadAs<Words>(block + number * sizeof(Words));
}

template <typename Goal>
bool BlockHas(const SMHashTable *table, uint32_t index, Goal goal)
{
    const char *block = static_cast<const char *>(table) + size_t{index} * kWordBytes;
    const Words hits =
        (goal(LoadPart(block, 0)) | goal(LoadPart(block, 1))) | (goal(LoadPart(block, 2)) | goal(LoadPart(block, 3)));
    const auto halves = std::bit_cast<std::array<uint64_t, 2>>(hits);
    return (halves[0] | halves[1]) != 0;
}

// The first word from `from` on that reaches the goal, or `words`.
template <typename Goal>
uint32_t FirstWord(const SMHashTable *table, uint32_t from, uint32_t words, Goal goal)
{
    uint32_t index = from;
    while (words - index >= kBlockWords && !BlockHas(table, index, goal))
        index += kBlockWords;
    while (index < words && goal(LoadWord(table, index)) == 0)
        ++index;
    return index;
}

// The last word that reaches the goal, or `words`.
template <typename Goal>
uint32_t LastWord(const SMHashTable *table, uint32_t words, Goal goal)
{
    uint32_t end = words;
    while (end >= kBlockWords && !BlockHas(table, end - kBlockWords, goal))
        end -= kBlockWords;
    while (end > 0 && goal(LoadWord(table, end - 1)) == 0)
        --end;
    return end > 0 ? end - 1 : words;
}

uint32_t LowestFree(SMHashTable *table, uint32_t words)
{
    const uint32_t first = LoadWord(table, 0) | kReservedBit;
    if (kAnyFree(first) != 0)
        return SetBit(table, 0, static_cast<uint32_t>(std::countr_one(first)));
    const uint32_t index = FirstWord(table, 1, words, kAnyFree);
    if (index == words)
        return 0;
    return SetBit(table, index, static_cast<uint32_t>(std::countr_one(LoadWord(table, index))));
}

// The ID above those in use in the last word that is partly used. Where there is none, every word is full or
// empty, and the bottom of the first empty one is the lowest free ID.
uint32_t AboveTop(SMHashTable *table, uint32_t words)
{
    uint32_t index = LastWord(table, words, kPartlyUsed);
    if (index == 0 || index == words) {
        // Word 0 has a rule of its own. With ID 0 taken besides all others it is not counted as full; then it is
        // the choice, has nothing to give, and later words are not tried. Settled.
        const uint32_t first = LoadWord(table, 0);
        if (first == 0 || first == kFirstWordFull)
            return LowestFree(table, words);
        index = 0;
    }
    const uint32_t used = LoadWord(table, index) | (index == 0 ? kReservedBit : 0);
    if (kAnyFree(used) == 0)
        return 0;
    // Downward from bit 31: past used bits to the highest free one, then to the bottom of its run.
    const uint32_t upToHighestFree = ~uint32_t{0} >> std::countl_one(used);
    return SetBit(table, index, static_cast<uint32_t>(std::bit_width(used & upToHighestFree)));
}

// The bound wraps when bytes is 0, and then every ID passes. Callers give a real size.
bool IsBeyond(uint32_t bytes, uint32_t id)
{
    return id > bytes * 8 - 1;
}

struct BitPlace {
    size_t byte;
    uint8_t mask;
};

// The bound counts all bytes of the area, and an ID may lie in a last word that is cut short. So the calls by ID
// touch nothing but the byte that holds the bit in its word.
BitPlace PlaceOf(uint32_t id)
{
    constexpr uint32_t kFlip = std::endian::native == std::endian::little ? 0 : kWordBytes - 1;
    return {(id / 8) ^ kFlip, static_cast<uint8_t>(1u << id % 8)};
}

bool IsUsed(const SMHashTable *table, BitPlace place)
{
    return (static_cast<const uint8_t *>(table)[place.byte] & place.mask) != 0;
}

void Toggle(SMHashTable *table, BitPlace place)
{
    static_cast<uint8_t *>(table)[place.byte] ^= place.mask;
}

} // namespace

uint32_t SMHashTableBytesNeeded(int32_t maxID)
{
    if (maxID == 0)
        return 0;
    return ((static_cast<uint32_t>(maxID) & ~(kWordBits - 1)) + kWordBits) / 8;
}

uint32_t SMClearHashTable(SMHashTable *table, uint32_t bytes)
{
    std::memset(table, 0, bytes);
    return SM_STATUS_OK;
}

uint32_t SMAcquireHashID(SMHashTable *table, uint32_t bytes, uint32_t mode)
{
    const uint32_t words = bytes / kWordBytes;
    if (words == 0)
        return 0;
    switch (mode) {
    case kLowestFree:
        return LowestFree(table, words);
    case kAboveTop:
        return AboveTop(table, words);
    default:
        return 0;
    }
}

// ID 0 is not refused here: the one way to set its bit.
uint32_t SMAcquireHashIDByID(SMHashTable *table, uint32_t bytes, uint32_t id)
{
    if (IsBeyond(bytes, id))
        return SM_STATUS_BAD_FORMAT;
    const BitPlace place = PlaceOf(id);
    if (IsUsed(table, place))
        return SM_STATUS_ALREADY_EXISTS;
    Toggle(table, place);
    return SM_STATUS_OK;
}

uint32_t SMVerifyHashID(const SMHashTable *table, uint32_t bytes, uint32_t id)
{
    if (IsBeyond(bytes, id))
        return SM_STATUS_BAD_FORMAT;
    return IsUsed(table, PlaceOf(id)) ? SM_STATUS_OK : SM_STATUS_NOT_IN_USE;
}

uint32_t SMReleaseHashID(SMHashTable *table, uint32_t bytes, uint32_t id)
{
    if (IsBeyond(bytes, id))
        return SM_STATUS_BAD_FORMAT;
    const BitPlace place = PlaceOf(id);
    if (!IsUsed(table, place))
        return SM_STATUS_NOT_IN_USE;
    Toggle(table, place);
    return SM_STATUS_OK;
}

uint32_t SMGetMinInUseID(const SMHashTable *table, uint32_t bytes)
{
    const uint32_t words = bytes / kWordBytes;
    const uint32_t index = FirstWord(table, 0, words, kAnyUsed);
    if (index == words)
        return 0;
    uint32_t word = LoadWord(table, index);
    if (index == 0)
        word &= ~kReservedBit;
    if (word == 0)
        return 0; // ID 0 alone in word 0; what later words hold is not looked at. Settled.
    return index * kWordBits + static_cast<uint32_t>(std::countr_zero(word));
}

uint32_t SMGetMaxInUseID(const SMHashTable *table, uint32_t bytes)
{
    const uint32_t words = bytes / kWordBytes;
    const uint32_t index = LastWord(table, words, kAnyUsed);
    if (index == words)
        return 0;
    return index * kWordBits + static_cast<uint32_t>(std::bit_width(LoadWord(table, index))) - 1;
}

uint32_t SMFindFirstHashID(const SMHashTable *table, uint32_t bytes, uint32_t *wordInOut, uint32_t *bitInOut)
{
    *wordInOut = 0;
    *bitInOut = 0;
    return SMFindNextHashID(table, bytes, wordInOut, bitInOut);
}

uint32_t SMFindNextHashID(const SMHashTable *table, uint32_t bytes, uint32_t *wordInOut, uint32_t *bitInOut)
{
    const uint32_t words = bytes / kWordBytes;
    if (*wordInOut >= words)
        return 0;
    // The place itself is skipped, so ID 0 never comes up: the first place is its own.
    uint32_t index = *wordInOut;
    uint32_t word = 0;
    if (*bitInOut < kWordBits)
        word = LoadWord(table, index) & ~uint32_t{1} << *bitInOut;
    if (word == 0) {
        index = FirstWord(table, index + 1, words, kAnyUsed);
        if (index == words)
            return 0;
        word = LoadWord(table, index);
    }
    *wordInOut = index;
    *bitInOut = static_cast<uint32_t>(std::countr_zero(word));
    return index * kWordBits + *bitInOut;
}

} // namespace qzvest
