// CRC-32, RFC 1321 digest and Base64 over buffers of 64 bytes, 4 KB and 1 MB, beside the libraries that offer
// the same. Each row works on the same bytes; each digest is started anew, as a caller with one message does.

#include <benchmark/benchmark.h>
#include <qzvest/qzvest.h>

#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#if defined(BENCH_ZLIB)
#include <zlib.h>
#endif
#if defined(BENCH_LIBDEFLATE)
#include <libdeflate.h>
#endif
#if defined(BENCH_OPENSSL)
#include <openssl/evp.h>
#endif
#if defined(BENCH_LIBB64)
extern "C" { // its headers are plain C
#include <b64/cdecode.h>
#include <b64/cencode.h>
}
#endif

namespace {

using Bytes = std::vector<unsigned char>;

Bytes RandomBytes(size_t size)
{
    std::mt19937 random(1);
    Bytes bytes(size);
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>(random());
    return bytes;
}

void Finish(benchmark::State &state, size_t size)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(size));
}

// ---- CRC-32 ----

uint32_t CrcBytewise(const unsigned char *bytes, size_t size)
{
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> entries{};
        for (uint32_t i = 0; i < 256; ++i) {
            entries[i] = i;
            for (int bit = 0; bit < 8; ++bit)
                entries[i] = (entries[i] >> 1) ^ ((entries[i] & 1) != 0 ? 0xEDB88320 : 0);
        }
        return entries;
    }();
    uint32_t value = 0xFFFFFFFF;
    for (size_t i = 0; i < size; ++i)
        value = table[(value ^ bytes[i]) & 0xFF] ^ (value >> 8);
    return ~value;
}

uint32_t CrcOurs(const unsigned char *bytes, size_t size)
{
    return SMCRC32Compute_vn(bytes, static_cast<uint32_t>(size));
}

template <typename Sum>
void CrcRow(benchmark::State &state, Sum sum, size_t size)
{
    const Bytes bytes = RandomBytes(size);
    if (sum(bytes.data(), size) != CrcBytewise(bytes.data(), size))
        return state.SkipWithError("another sum");
    for (auto _ : state)
        benchmark::DoNotOptimize(sum(bytes.data(), size));
    Finish(state, size);
}

// ---- RFC 1321 digest ----

using Digest = std::array<unsigned char, 16>;

Digest DigestOurs(const Bytes &bytes)
{
    SMRFC1321Ctx ctx;
    Digest digest;
    SMRFC1321Load(&ctx);
    SMRFC1321AddMsg(&ctx, bytes.data(), static_cast<uint32_t>(bytes.size()));
    SMRFC1321ComputeMsgDigest(&ctx);
    std::memcpy(digest.data(), ctx.digest, digest.size());
    SMRFC1321UnLoad(&ctx);
    return digest;
}

template <typename Sum>
void DigestRow(benchmark::State &state, Sum sum, size_t size)
{
    const Bytes bytes = RandomBytes(size);
    if (sum(bytes) != DigestOurs(bytes))
        return state.SkipWithError("another digest");
    for (auto _ : state)
        benchmark::DoNotOptimize(sum(bytes));
    Finish(state, size);
}

// ---- Base64 ----

std::string TextOurs(const Bytes &bytes)
{
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    SMBase64Encode(text.data(), bytes.data(), static_cast<int32_t>(bytes.size()), nullptr);
    text.pop_back();
    return text;
}

// encode(text, bytes, size) and decode(bytes, text, length) write to rooms that take any peer's line breaks.
template <typename Encode>
void EncodeRow(benchmark::State &state, Encode encode, size_t size)
{
    const Bytes bytes = RandomBytes(size);
    std::vector<char> text(size * 2 + 64);
    for (auto _ : state) {
        encode(text.data(), bytes.data(), size);
        benchmark::ClobberMemory();
    }
    std::string got(text.data(), strlen(text.data()));
    std::erase(got, '\n');
    if (got != TextOurs(bytes))
        state.SkipWithError("another text");
    Finish(state, size);
}

// size counts the decoded bytes.
template <typename Decode>
void DecodeRow(benchmark::State &state, Decode decode, size_t size)
{
    const Bytes bytes = RandomBytes(size);
    const std::string text = TextOurs(bytes);
    Bytes room(size + 64);
    for (auto _ : state) {
        decode(room.data(), text.data(), text.size());
        benchmark::ClobberMemory();
    }
    if (memcmp(room.data(), bytes.data(), size) != 0)
        state.SkipWithError("other bytes");
    Finish(state, size);
}

void EncodeOurs(char *text, const unsigned char *bytes, size_t size)
{
    SMBase64Encode(text, bytes, static_cast<int32_t>(size), nullptr);
}

void DecodeOurs(unsigned char *bytes, const char *text, size_t length)
{
    SMBase64Decode(bytes, text, static_cast<int32_t>(length));
}

// ---- Peers ----

#if defined(BENCH_ZLIB)
uint32_t CrcZlib(const unsigned char *bytes, size_t size)
{
    return static_cast<uint32_t>(crc32_z(0, bytes, size));
}
#endif

#if defined(BENCH_LIBDEFLATE)
uint32_t CrcLibdeflate(const unsigned char *bytes, size_t size)
{
    return libdeflate_crc32(0, bytes, size);
}
#endif

#if defined(BENCH_OPENSSL)
Digest DigestOpenssl(const Bytes &bytes)
{
    static EVP_MD_CTX *const ctx = EVP_MD_CTX_new(); // kept, with its look-up of the algorithm
    static const EVP_MD *const md5 = EVP_MD_fetch(nullptr, "MD5", nullptr);
    Digest digest;
    EVP_DigestInit_ex(ctx, md5, nullptr);
    EVP_DigestUpdate(ctx, bytes.data(), bytes.size());
    EVP_DigestFinal_ex(ctx, digest.data(), nullptr);
    return digest;
}

void EncodeOpenssl(char *text, const unsigned char *bytes, size_t size)
{
    EVP_EncodeBlock(reinterpret_cast<unsigned char *>(text), bytes, static_cast<int>(size));
}

void DecodeOpenssl(unsigned char *bytes, const char *text, size_t length)
{
    EVP_DecodeBlock(bytes, reinterpret_cast<const unsigned char *>(text), static_cast<int>(length));
}
#endif

#if defined(BENCH_LIBB64)
void EncodeLibb64(char *text, const unsigned char *bytes, size_t size)
{
    base64_encodestate state;
    base64_init_encodestate(&state);
    int used = base64_encode_block(reinterpret_cast<const char *>(bytes), static_cast<int>(size), text, &state);
    used += base64_encode_blockend(text + used, &state);
    text[used] = '\0';
}

void DecodeLibb64(unsigned char *bytes, const char *text, size_t length)
{
    base64_decodestate state;
    base64_init_decodestate(&state);
    base64_decode_block(text, static_cast<int>(length), reinterpret_cast<char *>(bytes), &state);
}
#endif

template <typename Row, typename Call>
void Register(const char *operation, const char *who, Row row, Call call)
{
    for (const size_t size : {size_t{64}, size_t{4096}, size_t{1} << 20}) {
        const std::string name = std::string(operation) + "/" + who + "/" + std::to_string(size);
        benchmark::RegisterBenchmark(name.c_str(),
                                     [row, call, size](benchmark::State &state) { row(state, call, size); });
    }
}

bool RegisterAll()
{
    const auto crc = [](benchmark::State &state, auto call, size_t size) { CrcRow(state, call, size); };
    const auto digest = [](benchmark::State &state, auto call, size_t size) { DigestRow(state, call, size); };
    const auto encode = [](benchmark::State &state, auto call, size_t size) { EncodeRow(state, call, size); };
    const auto decode = [](benchmark::State &state, auto call, size_t size) { DecodeRow(state, call, size); };
    Register("crc32", "ours", crc, CrcOurs);
    Register("crc32", "byte by byte", crc, CrcBytewise);
    Register("rfc1321", "ours", digest, DigestOurs);
    Register("base64_encode", "ours", encode, EncodeOurs);
    Register("base64_decode", "ours", decode, DecodeOurs);
#if defined(BENCH_ZLIB)
    Register("crc32", "zlib", crc, CrcZlib);
#endif
#if defined(BENCH_LIBDEFLATE)
    Register("crc32", "libdeflate", crc, CrcLibdeflate);
#endif
#if defined(BENCH_OPENSSL)
    Register("rfc1321", "OpenSSL", digest, DigestOpenssl);
    Register("base64_encode", "OpenSSL", encode, EncodeOpenssl);
    Register("base64_decode", "OpenSSL", decode, DecodeOpenssl);
#endif
#if defined(BENCH_LIBB64)
    Register("base64_encode", "libb64", encode, EncodeLibb64);
    Register("base64_decode", "libb64", decode, DecodeLibb64);
#endif
    return true;
}

[[maybe_unused]] const bool kRegistered = RegisterAll();

} // namespace
