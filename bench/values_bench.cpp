// Typed values from text and back, beside the C library's call for each alone. Each row goes over the same 1,000 texts
// or values, of all lengths.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <qzvest/qzvest.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t kCount = 1000;
constexpr uint32_t kHex = SMXLT_FORMAT_HEX;
constexpr uint32_t kDump = SMXLT_FORMAT_BINARY;
constexpr uint32_t kBytes = SMXLT_TYPE_BYTES;
constexpr uint32_t kUInt32 = SMXLT_TYPE_UINT32;

void Finish(benchmark::State &state)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kCount));
}

std::vector<uint32_t> Numbers()
{
    std::mt19937 random(1);
    std::vector<uint32_t> numbers(kCount);
    for (uint32_t &number : numbers)
        number = static_cast<uint32_t>(random()) >> random() % 32;
    return numbers;
}

// In a format of printf for the number as unsigned, signed or double.
template <typename Value>
std::vector<std::string> Texts(const char *format)
{
    std::vector<std::string> texts;
    for (uint32_t number : Numbers()) {
        std::array<char, 64> text;
        std::snprintf(text.data(), text.size(), format, static_cast<Value>(number));
        texts.emplace_back(text.data());
    }
    return texts;
}

std::vector<std::string> Addresses()
{
    std::vector<std::string> texts;
    for (uint32_t number : Numbers()) {
        std::array<char, INET_ADDRSTRLEN> text;
        texts.emplace_back(inet_ntop(AF_INET, &number, text.data(), text.size()));
    }
    return texts;
}

// ---- From text ----

void OursFrom(benchmark::State &state, std::vector<std::string> texts, uint32_t typeAndFormat)
{
    for (auto _ : state) {
        for (std::string &text : texts) {
            uint64_t value;
            uint32_t size = sizeof value;
            benchmark::DoNotOptimize(SMXLTUTF8ToTypeValue(text.data(), &value, &size, typeAndFormat));
            benchmark::DoNotOptimize(value);
        }
    }
    Finish(state);
}

template <typename Parse>
void PeerFrom(benchmark::State &state, const std::vector<std::string> &texts, Parse parse)
{
    for (auto _ : state) {
        for (const std::string &text : texts)
            benchmark::DoNotOptimize(parse(text.c_str()));
    }
    Finish(state);
}

// As a caller must who wants to know whether it was a number.
template <int kBase>
long CheckedLong(const char *text)
{
    char *end;
    errno = 0;
    const long value = std::strtol(text, &end, kBase);
    return errno != 0 || end == text || *end != '\0' ? 0 : value;
}

template <int kBase>
unsigned long CheckedUnsigned(const char *text)
{
    char *end;
    errno = 0;
    const unsigned long value = std::strtoul(text, &end, kBase);
    return errno != 0 || end == text || *end != '\0' ? 0 : value;
}

double PlainDouble(const char *text)
{
    return std::strtod(text, nullptr);
}

uint32_t PlainAddress(const char *text)
{
    uint32_t address = 0;
    return inet_pton(AF_INET, text, &address) == 1 ? address : 0;
}

BENCHMARK_CAPTURE(OursFrom, int32, Texts<int32_t>("%d"), SMXLT_TYPE_INT32)->Name("from_int32/ours/1000");
BENCHMARK_CAPTURE(PeerFrom, int32, Texts<int32_t>("%d"), CheckedLong<10>)->Name("from_int32/strtol/1000");
BENCHMARK_CAPTURE(OursFrom, uint64, Texts<uint32_t>("%u"), SMXLT_TYPE_UINT64)->Name("from_uint64/ours/1000");
BENCHMARK_CAPTURE(PeerFrom, uint64, Texts<uint32_t>("%u"), CheckedUnsigned<10>)->Name("from_uint64/strtoul/1000");
BENCHMARK_CAPTURE(OursFrom, hex, Texts<uint32_t>("%#x"), kUInt32 | kHex)->Name("from_hex/ours/1000");
BENCHMARK_CAPTURE(PeerFrom, hex, Texts<uint32_t>("%#x"), CheckedUnsigned<16>)->Name("from_hex/strtoul/1000");
BENCHMARK_CAPTURE(OursFrom, double, Texts<double>("%.3f"), SMXLT_TYPE_DOUBLE)->Name("from_double/ours/1000");
BENCHMARK_CAPTURE(PeerFrom, double, Texts<double>("%.3f"), PlainDouble)->Name("from_double/strtod/1000");
BENCHMARK_CAPTURE(OursFrom, ipv4, Addresses(), SMXLT_TYPE_IPV4)->Name("from_ipv4/ours/1000");
BENCHMARK_CAPTURE(PeerFrom, ipv4, Addresses(), PlainAddress)->Name("from_ipv4/inet_pton/1000");

// ---- To text ----

template <typename Value>
void OursTo(benchmark::State &state, uint32_t typeAndFormat)
{
    const std::vector<uint32_t> numbers = Numbers();
    for (auto _ : state) {
        for (uint32_t number : numbers) {
            const auto value = static_cast<Value>(number);
            std::array<char, 64> text;
            uint32_t size = text.size();
            benchmark::DoNotOptimize(SMXLTTypeValueToUTF8(&value, sizeof value, text.data(), &size, typeAndFormat));
            benchmark::DoNotOptimize(text);
        }
    }
    Finish(state);
}

template <typename Value>
void PrintTo(benchmark::State &state, const char *format)
{
    const std::vector<uint32_t> numbers = Numbers();
    for (auto _ : state) {
        for (uint32_t number : numbers) {
            std::array<char, 64> text;
            benchmark::DoNotOptimize(std::snprintf(text.data(), text.size(), format, static_cast<Value>(number)));
            benchmark::DoNotOptimize(text);
        }
    }
    Finish(state);
}

void AddressTo(benchmark::State &state)
{
    const std::vector<uint32_t> numbers = Numbers();
    for (auto _ : state) {
        for (uint32_t number : numbers) {
            std::array<char, INET_ADDRSTRLEN> text;
            benchmark::DoNotOptimize(inet_ntop(AF_INET, &number, text.data(), text.size()));
            benchmark::DoNotOptimize(text);
        }
    }
    Finish(state);
}

constexpr auto OursInt32 = OursTo<int32_t>;
constexpr auto OursUInt64 = OursTo<uint64_t>;
constexpr auto OursUInt32 = OursTo<uint32_t>;
constexpr auto OursDouble = OursTo<double>;
constexpr auto PrintInt32 = PrintTo<int32_t>;
constexpr auto PrintUInt64 = PrintTo<unsigned long>;
constexpr auto PrintUInt32 = PrintTo<uint32_t>;
constexpr auto PrintDouble = PrintTo<double>;

BENCHMARK_CAPTURE(OursInt32, int32, SMXLT_TYPE_INT32)->Name("to_int32/ours/1000");
BENCHMARK_CAPTURE(PrintInt32, int32, "%d")->Name("to_int32/snprintf/1000");
BENCHMARK_CAPTURE(OursUInt64, uint64, SMXLT_TYPE_UINT64)->Name("to_uint64/ours/1000");
BENCHMARK_CAPTURE(PrintUInt64, uint64, "%lu")->Name("to_uint64/snprintf/1000");
BENCHMARK_CAPTURE(OursUInt32, hex, kUInt32 | kHex)->Name("to_hex/ours/1000");
BENCHMARK_CAPTURE(PrintUInt32, hex, "%#x")->Name("to_hex/snprintf/1000");
BENCHMARK_CAPTURE(OursDouble, double, SMXLT_TYPE_DOUBLE)->Name("to_double/ours/1000");
BENCHMARK_CAPTURE(PrintDouble, double, "%.3f")->Name("to_double/snprintf/1000");
BENCHMARK_CAPTURE(OursUInt32, ipv4, SMXLT_TYPE_IPV4)->Name("to_ipv4/ours/1000");
BENCHMARK(AddressTo)->Name("to_ipv4/inet_ntop/1000");

// ---- Bytes, 4 KB of them ----

void BytesTo(benchmark::State &state, uint32_t format)
{
    const std::vector<uint32_t> numbers = Numbers();
    const auto bytes = static_cast<uint32_t>(numbers.size() * sizeof numbers[0]);
    std::vector<char> text(bytes * 6);
    for (auto _ : state) {
        auto size = static_cast<uint32_t>(text.size());
        benchmark::DoNotOptimize(SMXLTTypeValueToUTF8(numbers.data(), bytes, text.data(), &size, kBytes | format));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void PrintBytes(benchmark::State &state)
{
    const std::vector<uint32_t> numbers = Numbers();
    const auto *bytes = reinterpret_cast<const unsigned char *>(numbers.data());
    const size_t size = numbers.size() * sizeof numbers[0];
    std::vector<char> text(size * 2 + 1);
    for (auto _ : state) {
        for (size_t i = 0; i < size; ++i)
            std::snprintf(text.data() + i * 2, 3, "%02X", bytes[i]);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}

void BytesFrom(benchmark::State &state)
{
    std::string text;
    while (text.size() < 8000)
        text += "0A1b2C3d4E5f6789";
    std::vector<char> bytes(text.size() / 2);
    for (auto _ : state) {
        auto size = static_cast<uint32_t>(bytes.size());
        benchmark::DoNotOptimize(SMXLTUTF8ToTypeValue(text.data(), bytes.data(), &size, SMXLT_TYPE_BYTES));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

BENCHMARK_CAPTURE(BytesTo, digits, 0u)->Name("to_bytes/ours/4000");
BENCHMARK_CAPTURE(BytesTo, list, kHex)->Name("to_commalist/ours/4000");
BENCHMARK_CAPTURE(BytesTo, dump, kDump)->Name("to_dump/ours/4000");
BENCHMARK(PrintBytes)->Name("to_bytes/snprintf/4000");
BENCHMARK(BytesFrom)->Name("from_bytes/ours/4000");

} // namespace
