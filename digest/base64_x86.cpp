// Base64 by vectors of 16 and 32 bytes, where the processor has them.
//
// Encoding: a shuffle brings the three bytes of a group into each 32-bit lane, two multiplications move the
// four fields of six bits to a byte of their own, and a look-up of 16 entries gives what to add for a
// character. Decoding is the way back. Whether a character belongs to the alphabet is told by two look-ups, by
// its high and its low four bits, that have a bit in common for each pair which does not; the pad character and
// bytes of 0x80 and above are among these. A vector with one of them is left to the caller.
//
// Loads never pass the end of the source and stores write what the result holds and no byte more.

#include "digest/base64.h"

#include "compat/cpu.h"

#if QZVEST_X86

#include <immintrin.h>

namespace qzvest {
namespace {

// Shuffles and look-ups, the same in each half of a 32-byte vector.
struct alignas(16) Row {
    int8_t at[16];
};
constexpr Row kSpread = {{1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10}};
constexpr Row kGather = {{2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1}};
// From value to character: by 13 for A to Z, by 0 for a to z, by 1 to 10 for the digits, 11 for +, 12 for /.
constexpr Row kToText = {{'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                          '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0}};
// From character to value: by the high four bits, one less for /.
constexpr Row kToValue = {{0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0}};
constexpr Row kBadLow = {
    {0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A}};
constexpr Row kBadHigh = {
    {0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10}};

// Fields of six bits in a 32-bit lane, and the factors that move them.
constexpr int kFieldsAC = 0x0FC0FC00;
constexpr int kFieldsBD = 0x003F03F0;
constexpr int kMoveAC = 0x04000040;
constexpr int kMoveBD = 0x01000010;
constexpr int kPairValues = 0x01400140; // 64 and 1: two values of six bits to one of twelve
constexpr int kPairPairs = 0x00011000;  // 4096 and 1: two of twelve to one of 24
constexpr char kNibble = 0x2F;          // 0x20 drops out: a shuffle looks at the low four bits and the top one

QZVEST_SSSE3 inline __m128i Load16(const void *from)
{
    return _mm_loadu_si128(static_cast<const __m128i *>(from));
}

QZVEST_SSSE3 inline void Store16(void *to, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i *>(to), value);
}

QZVEST_SSSE3 inline __m128i Entries16(const Row &row)
{
    return _mm_load_si128(reinterpret_cast<const __m128i *>(row.at));
}

QZVEST_AVX2 inline __m256i Entries32(const Row &row)
{
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i *>(row.at)));
}

// The low 12 bytes to 16 characters.
QZVEST_SSSE3 inline __m128i Encode16(__m128i in)
{
    in = _mm_shuffle_epi8(in, Entries16(kSpread));
    const __m128i ac = _mm_mulhi_epu16(_mm_and_si128(in, _mm_set1_epi32(kFieldsAC)), _mm_set1_epi32(kMoveAC));
    const __m128i bd = _mm_mullo_epi16(_mm_and_si128(in, _mm_set1_epi32(kFieldsBD)), _mm_set1_epi32(kMoveBD));
    const __m128i values = _mm_or_si128(ac, bd);
    const __m128i aboveLower = _mm_subs_epu8(values, _mm_set1_epi8(51));
    const __m128i upper = _mm_and_si128(_mm_cmpgt_epi8(_mm_set1_epi8(26), values), _mm_set1_epi8(13));
    return _mm_add_epi8(values, _mm_shuffle_epi8(Entries16(kToText), _mm_or_si128(aboveLower, upper)));
}

// The low 12 bytes of each half to 16 characters there.
QZVEST_AVX2 inline __m256i Encode32(__m256i in)
{
    in = _mm256_shuffle_epi8(in, Entries32(kSpread));
    const __m256i ac =
        _mm256_mulhi_epu16(_mm256_and_si256(in, _mm256_set1_epi32(kFieldsAC)), _mm256_set1_epi32(kMoveAC));
    const __m256i bd =
        _mm256_mullo_epi16(_mm256_and_si256(in, _mm256_set1_epi32(kFieldsBD)), _mm256_set1_epi32(kMoveBD));
    const __m256i values = _mm256_or_si256(ac, bd);
    const __m256i aboveLower = _mm256_subs_epu8(values, _mm256_set1_epi8(51));
    const __m256i upper = _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), values), _mm256_set1_epi8(13));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(Entries32(kToText), _mm256_or_si256(aboveLower, upper)));
}

// 16 characters to 12 bytes, low in values; false when one is not of the alphabet.
QZVEST_SSSE3 inline bool Decode16(__m128i in, __m128i &values)
{
    const __m128i nibble = _mm_set1_epi8(kNibble);
    const __m128i high = _mm_and_si128(_mm_srli_epi32(in, 4), nibble);
    const __m128i bad = _mm_and_si128(_mm_shuffle_epi8(Entries16(kBadLow), _mm_and_si128(in, nibble)),
                                      _mm_shuffle_epi8(Entries16(kBadHigh), high));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(bad, _mm_setzero_si128())) != 0xFFFF)
        return false;
    const __m128i slash = _mm_cmpeq_epi8(in, _mm_set1_epi8('/'));
    const __m128i six = _mm_add_epi8(in, _mm_shuffle_epi8(Entries16(kToValue), _mm_add_epi8(slash, high)));
    const __m128i twelve = _mm_maddubs_epi16(six, _mm_set1_epi32(kPairValues));
    values = _mm_shuffle_epi8(_mm_madd_epi16(twelve, _mm_set1_epi32(kPairPairs)), Entries16(kGather));
    return true;
}

// 32 characters to 24 bytes, low in values.
QZVEST_AVX2 inline bool Decode32(__m256i in, __m256i &values)
{
    const __m256i nibble = _mm256_set1_epi8(kNibble);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(in, 4), nibble);
    const __m256i badLow = _mm256_shuffle_epi8(Entries32(kBadLow), _mm256_and_si256(in, nibble));
    if (_mm256_testz_si256(badLow, _mm256_shuffle_epi8(Entries32(kBadHigh), high)) == 0)
        return false;
    const __m256i slash = _mm256_cmpeq_epi8(in, _mm256_set1_epi8('/'));
    const __m256i six = _mm256_add_epi8(in, _mm256_shuffle_epi8(Entries32(kToValue), _mm256_add_epi8(slash, high)));
    const __m256i twelve = _mm256_maddubs_epi16(six, _mm256_set1_epi32(kPairValues));
    const __m256i halves =
        _mm256_shuffle_epi8(_mm256_madd_epi16(twelve, _mm256_set1_epi32(kPairPairs)), Entries32(kGather));
    values = _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    return true;
}

QZVEST_SSSE3 size_t EncodeSSSE3(char *text, const uint8_t *bytes, size_t size)
{
    size_t taken = 0;
    for (; size - taken >= 16; taken += 12, text += 16)
        Store16(text, Encode16(Load16(bytes + taken)));
    return taken;
}

QZVEST_AVX2 size_t EncodeAVX2(char *text, const uint8_t *bytes, size_t size)
{
    size_t taken = 0;
    for (; size - taken >= 28; taken += 24, text += 32) {
        const __m256i in = _mm256_set_m128i(Load16(bytes + taken + 12), Load16(bytes + taken));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(text), Encode32(in));
    }
    return taken;
}

QZVEST_SSSE3 size_t DecodeSSSE3(uint8_t *bytes, const char *text, size_t groups)
{
    size_t taken = 0;
    __m128i values;
    for (; groups - taken >= 4 && Decode16(Load16(text + taken * 4), values); taken += 4, bytes += 12) {
        const int last = _mm_cvtsi128_si32(_mm_srli_si128(values, 8));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(bytes), values);
        __builtin_memcpy(bytes + 8, &last, sizeof last);
    }
    return taken;
}

QZVEST_AVX2 size_t DecodeAVX2(uint8_t *bytes, const char *text, size_t groups)
{
    size_t taken = 0;
    __m256i values;
    for (; groups - taken >= 8; taken += 8, bytes += 24) {
        if (!Decode32(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(text + taken * 4)), values))
            break;
        Store16(bytes, _mm256_castsi256_si128(values));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(bytes + 16), _mm256_extracti128_si256(values, 1));
    }
    return taken;
}

} // namespace

size_t Base64EncodeVectors(char *text, const uint8_t *bytes, size_t size)
{
    size_t taken = 0;
    if (HasAVX2())
        taken = EncodeAVX2(text, bytes, size);
    if (HasSSSE3())
        taken += EncodeSSSE3(text + taken / 3 * 4, bytes + taken, size - taken);
    return taken;
}

size_t Base64DecodeVectors(uint8_t *bytes, const char *text, size_t groups)
{
    size_t taken = 0;
    if (HasAVX2())
        taken = DecodeAVX2(bytes, text, groups);
    if (HasSSSE3())
        taken += DecodeSSSE3(bytes + taken * 3, text + taken * 4, groups - taken);
    return taken;
}

} // namespace qzvest

#else

namespace qzvest {

size_t Base64EncodeVectors(char *, const uint8_t *, size_t)
{
    return 0;
}

size_t Base64DecodeVectors(uint8_t *, const char *, size_t)
{
    return 0;
}

} // namespace qzvest

#endif
