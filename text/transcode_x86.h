// The steps of both conversions with AVX2: runs of ASCII, and runs of text that is regular, that is, of sequences of
// one to three bytes, every one whole. Whatever is not is left to the steps of codepoint.h.
#ifndef TEXT_TRANSCODE_X86_H
#define TEXT_TRANSCODE_X86_H

#include "compat/cpu.h"

#if QZVEST_X86

#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "text/ascii.h"
#include "text/target.h"

namespace qzvest {

struct ShuffleTable {
    alignas(16) uint8_t rows[256][16];
};

constexpr uint8_t kShuffleZero = 0x80; // this byte of a row gives a zero

// Row n moves those 16-bit lanes to the front whose bit is set in n.
constexpr ShuffleTable MakeLanePicks()
{
    ShuffleTable table{};
    for (unsigned row = 0; row < 256; ++row) {
        unsigned at = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            if ((row >> lane & 1) == 0)
                continue;
            table.rows[row][at++] = static_cast<uint8_t>(2 * lane);
            table.rows[row][at++] = static_cast<uint8_t>(2 * lane + 1);
        }
        while (at < 16)
            table.rows[row][at++] = kShuffleZero;
    }
    return table;
}

// Row n closes up the sequences of four 32-bit lanes, each of which ends with its lane: two bits of n for each, the
// lower set for two bytes or more, both for three.
constexpr ShuffleTable MakeSequencePicks()
{
    ShuffleTable table{};
    for (unsigned row = 0; row < 256; ++row) {
        unsigned at = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
            const unsigned bits = row >> 2 * lane & 3;
            const unsigned length = 1 + (bits & 1) + (bits >> 1);
            for (unsigned i = 4 - length; i < 4; ++i)
                table.rows[row][at++] = static_cast<uint8_t>(4 * lane + i);
        }
        while (at < 16)
            table.rows[row][at++] = kShuffleZero;
    }
    return table;
}

inline constexpr ShuffleTable kLanePicks = MakeLanePicks();
inline constexpr ShuffleTable kSequencePicks = MakeSequencePicks();

// Stores 16 bytes.
QZVEST_AVX2 inline void StoreShuffled(void *to, __m128i lanes, const ShuffleTable &table, uint32_t row)
{
    const __m128i moves = _mm_load_si128(reinterpret_cast<const __m128i *>(table.rows[row]));
    _mm_storeu_si128(static_cast<__m128i *>(to), _mm_shuffle_epi8(lanes, moves));
}

QZVEST_AVX2 inline __m256i Loaded(const void *place)
{
    return _mm256_loadu_si256(static_cast<const __m256i *>(place));
}

QZVEST_AVX2 inline void Store(void *place, __m256i value)
{
    _mm256_storeu_si256(static_cast<__m256i *>(place), value);
}

QZVEST_AVX2 inline __m256i Widened(const char *place)
{
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(place)));
}

template <bool kWrites>
QZVEST_AVX2 size_t CopyAsciiAVX2(uint16_t *to, const char *from, size_t count)
{
    size_t done = 0;
    for (; count - done >= 32 && _mm256_movemask_epi8(Loaded(from + done)) == 0; done += 32) {
        if constexpr (kWrites) {
            Store(to + done, Widened(from + done));
            Store(to + done + 16, Widened(from + done + 16));
        }
    }
    if constexpr (kWrites) // else there is nowhere to move on
        to += done;
    return done + CopyAscii<kWrites>(to, from + done, count - done);
}

template <bool kWrites>
QZVEST_AVX2 size_t CopyAsciiAVX2(char *to, const uint16_t *from, size_t count)
{
    const __m256i beyond = _mm256_set1_epi16(static_cast<int16_t>(0xFF80));
    size_t done = 0;
    for (; count - done >= 32; done += 32) {
        const __m256i low = Loaded(from + done);
        const __m256i high = Loaded(from + done + 16);
        if (_mm256_testz_si256(_mm256_or_si256(low, high), beyond) == 0)
            break;
        if constexpr (kWrites) // packing works in halves; the permutation puts the quarters in order
            Store(to + done, _mm256_permute4x64_epi64(_mm256_packus_epi16(low, high), 0xD8));
    }
    if constexpr (kWrites) // else there is nowhere to move on
        to += done;
    return done + CopyAscii<kWrites>(to, from + done, count - done);
}

// What kind each of some bytes is, as bits from four masks: a byte's top bit and the three below.
struct ByteKinds {
    uint32_t begins; // no continuation byte: ASCII or lead
    uint64_t owed;   // where the leads call for continuation bytes; two bits lie beyond the block
    uint32_t longer; // leads of four bytes or more

    ByteKinds(int bit7, int bit6, int bit5, int bit4)
    {
        const auto lead = static_cast<uint32_t>(bit7 & bit6);
        begins = static_cast<uint32_t>(~bit7) | lead;
        owed = uint64_t{lead} << 1 | uint64_t{lead & static_cast<uint32_t>(bit5)} << 2;
        longer = lead & static_cast<uint32_t>(bit5 & bit4);
    }
};

// Shifting brings one bit of all bytes after another to the place that movemask takes.
QZVEST_AVX2 inline ByteKinds KindsOf(__m128i block)
{
    return {_mm_movemask_epi8(block), _mm_movemask_epi8(_mm_slli_epi16(block, 1)),
            _mm_movemask_epi8(_mm_slli_epi16(block, 2)), _mm_movemask_epi8(_mm_slli_epi16(block, 3))};
}

QZVEST_AVX2 inline ByteKinds KindsOf(__m256i block)
{
    return {_mm256_movemask_epi8(block), _mm256_movemask_epi8(_mm256_slli_epi16(block, 1)),
            _mm256_movemask_epi8(_mm256_slli_epi16(block, 2)), _mm256_movemask_epi8(_mm256_slli_epi16(block, 3))};
}

// Sixteen bytes and, for each, the two behind it.
struct ByteBlock {
    __m128i first, second, third;
};

// Looks at 18 bytes.
QZVEST_AVX2 inline ByteBlock BytesAt(const char *place)
{
    const auto load = [place](int offset)
                          QZVEST_AVX2 { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(place + offset)); };
    return {load(0), load(1), load(2)};
}

// The last bytes of a text, at most 16, with zeros behind them. The text has 16 bytes or more.
QZVEST_AVX2 inline ByteBlock BytesBefore(const char *end, size_t count)
{
    alignas(16) static constexpr uint8_t kMoves[32] = {0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,
                                                       11,   12,   13,   14,   15,   0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
                                                       0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
    const __m128i moves = _mm_loadu_si128(reinterpret_cast<const __m128i *>(kMoves + 16 - count));
    const __m128i first = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(end - 16)), moves);
    return {first, _mm_bsrli_si128(first, 1), _mm_bsrli_si128(first, 2)};
}

// The unit of each byte, as if a sequence began there.
QZVEST_AVX2 inline __m256i UnitsOf(const ByteBlock &block)
{
    const __m256i sixBits = _mm256_set1_epi16(0x3F);
    const __m256i first = _mm256_cvtepu8_epi16(block.first);
    const __m256i second = _mm256_and_si256(_mm256_cvtepu8_epi16(block.second), sixBits);
    const __m256i third = _mm256_and_si256(_mm256_cvtepu8_epi16(block.third), sixBits);
    const __m256i both = _mm256_or_si256(_mm256_slli_epi16(first, 6), second);
    const __m256i two = _mm256_and_si256(both, _mm256_set1_epi16(0x7FF));
    const __m256i three = _mm256_or_si256(_mm256_slli_epi16(both, 6), third);
    const __m256i isLead = _mm256_cmpgt_epi16(first, _mm256_set1_epi16(0xBF));
    const __m256i isThree = _mm256_cmpgt_epi16(first, _mm256_set1_epi16(0xDF));
    return _mm256_blendv_epi8(_mm256_blendv_epi8(first, two, isLead), three, isThree);
}

QZVEST_AVX2 inline uint32_t BitsSet(uint32_t bits)
{
    return static_cast<uint32_t>(_mm_popcnt_u32(bits));
}

// Stores those of sixteen units whose bit is set; writes up to 32 bytes.
QZVEST_AVX2 QZVEST_INLINE void StorePicked(uint16_t *to, __m256i units, uint32_t bits)
{
    StoreShuffled(to, _mm256_castsi256_si128(units), kLanePicks, bits & 0xFF);
    StoreShuffled(to + BitsSet(bits & 0xFF), _mm256_extracti128_si256(units, 1), kLanePicks, bits >> 8 & 0xFF);
}

// Has `write` put count units at the destination, where there is room for 16 bytes more. Vectors are stored whole, and
// so beyond a block's result; what lies there goes back behind it. A block is longer than 16 bytes, so no load waits
// for what the block before has put back.
template <bool kWrites, typename Unit, typename Write>
QZVEST_AVX2 QZVEST_INLINE void PutBlock(Target<kWrites, Unit> *to, size_t count, Write write)
{
    if constexpr (kWrites) {
        Bytes16 behind;
        std::memcpy(&behind, to->next + count, sizeof behind);
        write(to->next);
        std::memcpy(to->next + count, &behind, sizeof behind);
    }
    to->Advance(count);
}

// The last blocks of a run gather here, where there is no harm in what is stored beyond them.
template <bool kWrites, typename Unit>
struct Stage {
    static constexpr size_t kFull = 64; // a block more may come before it is full

    Unit units[kFull + 64];
    size_t count = 0;

    template <typename Write>
    QZVEST_AVX2 QZVEST_INLINE void Put(size_t more, Write write)
    {
        if constexpr (kWrites)
            write(units + count);
        count += more;
    }

    void HandOver(Target<kWrites, Unit> *to) const
    {
        if constexpr (kWrites)
            std::memcpy(to->next, units, count * sizeof(Unit));
        to->Advance(count);
    }
};

// The bytes of a text that a run goes over, from where a sequence begins; `start` is where the whole text does.
// A block's last sequence may reach into the next block. If that one turns out not to be regular, nothing is lost: the
// unit is the same whatever the continuation bytes are.
struct ByteRun {
    const char *at;
    const char *start;
    const char *end;
    uint32_t owed = 0; // continuation bytes at the head of the next block, as bits

    // Blocks of 32 bytes, which look at 34.
    template <bool kWrites>
    QZVEST_AVX2 QZVEST_INLINE void DecodeWhole(Target<kWrites, uint16_t> *to)
    {
        for (; end - at >= 34 && to->room >= 40; at += 32) {
            const ByteKinds kinds = KindsOf(Loaded(at));
            const uint64_t expected = owed | kinds.owed;
            if (static_cast<uint32_t>(expected) != ~kinds.begins || kinds.longer != 0)
                break;
            owed = static_cast<uint32_t>(expected >> 32);
            PutBlock(to, BitsSet(kinds.begins), [&](uint16_t *place) QZVEST_AVX2 {
                StorePicked(place, UnitsOf(BytesAt(at)), kinds.begins & 0xFFFF);
                StorePicked(place + BitsSet(kinds.begins & 0xFFFF), UnitsOf(BytesAt(at + 16)), kinds.begins >> 16);
            });
        }
    }

    // Blocks of 16 bytes, which look at 18, and the last bytes of the text. These must not want more than there are.
    template <bool kWrites>
    QZVEST_AVX2 QZVEST_INLINE void DecodeLast(Target<kWrites, uint16_t> *to)
    {
        Stage<kWrites, uint16_t> stage;
        while (at != end && stage.count < stage.kFull) {
            const auto left = static_cast<size_t>(end - at);
            if (left < 17 && end - start < 16)
                break;
            const ByteBlock block = left < 17 ? BytesBefore(end, left) : BytesAt(at);
            const ByteKinds kinds = KindsOf(block.first);
            const uint64_t expected = owed | kinds.owed;
            if (((expected ^ ~kinds.begins) & 0xFFFF) != 0 || kinds.longer != 0 || (left < 18 && expected >> left != 0))
                break;
            const size_t read = std::min<size_t>(left, 16);
            const size_t count = BitsSet(kinds.begins & 0xFFFF) - (16 - read);
            if (count > to->room - stage.count)
                break;
            owed = static_cast<uint32_t>(expected >> 16);
            at += read;
            stage.Put(count, [&](uint16_t *place) QZVEST_AVX2 { StorePicked(place, UnitsOf(block), kinds.begins); });
        }
        stage.HandOver(to);
    }
};

// Decodes as long as the text is regular and fits; gives the bytes read.
template <bool kWrites>
QZVEST_AVX2 size_t RunAVX2(Target<kWrites, uint16_t> *to, const char *from, const char *start, const char *end)
{
    Target<kWrites, uint16_t> target = *to;
    ByteRun run{from, start, end};
    run.DecodeWhole(&target);
    run.DecodeLast(&target);
    *to = target;
    return static_cast<size_t>(run.at - from) + BitsSet(run.owed);
}

// Up to sixteen units with zeros behind them. Fewer than sixteen are the last of their text, and the terminator is
// read with them where that makes their number even.
QZVEST_AVX2 inline __m256i UnitsAt(const uint16_t *place, size_t count)
{
    alignas(32) static constexpr int32_t kPairs[16] = {-1, -1, -1, -1, -1, -1, -1, -1};
    if (count == 16)
        return Loaded(place);
    return _mm256_maskload_epi32(reinterpret_cast<const int *>(place), Loaded(kPairs + 8 - (count + 1) / 2));
}

QZVEST_AVX2 inline bool HasSurrogate(__m256i units)
{
    const __m256i fiveBits = _mm256_and_si256(units, _mm256_set1_epi16(static_cast<int16_t>(0xF800)));
    return _mm256_movemask_epi8(_mm256_cmpeq_epi16(fiveBits, _mm256_set1_epi16(static_cast<int16_t>(0xD800)))) != 0;
}

// Units without a bit from this one up.
QZVEST_AVX2 inline __m256i Below(__m256i units, int bit)
{
    return _mm256_cmpeq_epi16(_mm256_srli_epi16(units, bit), _mm256_setzero_si256());
}

// Of sixteen units two bits each: whether it takes two bytes or more, and three.
QZVEST_AVX2 inline uint32_t LengthsOf(__m256i units)
{
    const __m256i upperBytes = _mm256_set1_epi16(static_cast<int16_t>(0xFF00));
    const __m256i shorter = _mm256_blendv_epi8(Below(units, 7), Below(units, 11), upperBytes);
    return ~static_cast<uint32_t>(_mm256_movemask_epi8(shorter));
}

// Four sequences, each at the end of its 32-bit lane, closed up; gives their end.
QZVEST_AVX2 QZVEST_INLINE char *StoreFour(char *to, __m128i lanes, uint32_t lengths)
{
    StoreShuffled(to, lanes, kSequencePicks, lengths);
    return to + 4 + BitsSet(lengths);
}

// Sixteen units as UTF-8; writes up to 52 bytes. A lane of 32 bits holds nothing, the lead of three, the middle byte
// or the lead of two, the last byte.
QZVEST_AVX2 QZVEST_INLINE void StoreEncoded(char *to, __m256i units, uint32_t lengths)
{
    const __m256i sixBits = _mm256_set1_epi16(0x3F);
    const __m256i follows = _mm256_set1_epi16(0x80);
    const __m256i upper = _mm256_srli_epi16(units, 6);
    const __m256i last =
        _mm256_blendv_epi8(_mm256_or_si256(_mm256_and_si256(units, sixBits), follows), units, Below(units, 7));
    const __m256i middle = _mm256_blendv_epi8(_mm256_or_si256(_mm256_and_si256(upper, sixBits), follows),
                                              _mm256_or_si256(upper, _mm256_set1_epi16(0xC0)), Below(units, 11));
    const __m256i tail = _mm256_or_si256(middle, _mm256_slli_epi16(last, 8));
    const __m256i lead = _mm256_or_si256(_mm256_slli_epi16(_mm256_srli_epi16(units, 12), 8),
                                         _mm256_set1_epi16(static_cast<int16_t>(0xE000)));
    const __m256i low = _mm256_unpacklo_epi16(lead, tail); // units 0 to 3, and 8 to 11
    const __m256i high = _mm256_unpackhi_epi16(lead, tail);
    to = StoreFour(to, _mm256_castsi256_si128(low), lengths & 0xFF);
    to = StoreFour(to, _mm256_castsi256_si128(high), lengths >> 8 & 0xFF);
    to = StoreFour(to, _mm256_extracti128_si256(low, 1), lengths >> 16 & 0xFF);
    (void)StoreFour(to, _mm256_extracti128_si256(high, 1), lengths >> 24);
}

// The units of a text that a run goes over.
struct UnitRun {
    const uint16_t *at;
    const uint16_t *end;

    template <bool kWrites>
    QZVEST_AVX2 QZVEST_INLINE void EncodeWhole(Target<kWrites, char> *to)
    {
        for (; end - at >= 16 && to->room >= 64; at += 16) {
            const __m256i units = Loaded(at);
            if (HasSurrogate(units))
                break;
            const uint32_t lengths = LengthsOf(units);
            PutBlock(to, 16 + BitsSet(lengths), [&](char *place) QZVEST_AVX2 { StoreEncoded(place, units, lengths); });
        }
    }

    template <bool kWrites>
    QZVEST_AVX2 QZVEST_INLINE void EncodeLast(Target<kWrites, char> *to)
    {
        Stage<kWrites, char> stage;
        while (at != end && stage.count < stage.kFull) {
            const size_t read = std::min<size_t>(16, static_cast<size_t>(end - at));
            const __m256i units = UnitsAt(at, read);
            const uint32_t lengths = LengthsOf(units);
            const size_t count = read + BitsSet(lengths);
            if (HasSurrogate(units) || count > to->room - stage.count)
                break;
            at += read;
            stage.Put(count, [&](char *place) QZVEST_AVX2 { StoreEncoded(place, units, lengths); });
        }
        stage.HandOver(to);
    }
};

// Encodes as long as no surrogate comes and all fits; gives the units read.
template <bool kWrites>
QZVEST_AVX2 size_t RunAVX2(Target<kWrites, char> *to, const uint16_t *from, const uint16_t *end)
{
    Target<kWrites, char> target = *to;
    UnitRun run{from, end};
    run.EncodeWhole(&target);
    run.EncodeLast(&target);
    *to = target;
    return static_cast<size_t>(run.at - from);
}

} // namespace qzvest

#endif

#endif
