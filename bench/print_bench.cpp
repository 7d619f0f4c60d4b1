// The formatted print beside the C library's, fmt and std::to_chars, by one thread and by two at once. The process has
// several threads in all rows: in one of a single thread the C library leaves the locked instructions out.

#include <benchmark/benchmark.h>
#include <qzvest/print.h>
#include <unistd.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <thread>
#include <vector>

#ifdef BENCH_FMT
#include <fmt/format.h>
#endif

namespace {

constexpr size_t kValues = 1024; // a power of two
constexpr uint32_t kRoom = 128;

// Doubles of all 53 bits, between two powers of ten.
std::vector<double> Between(double low, double high)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> exponent(low, high);
    std::vector<double> values(kValues);
    for (double &value : values)
        value = std::pow(10.0, exponent(random));
    return values;
}

// What machines measure: few digits, two behind the point.
std::vector<double> Readings()
{
    std::mt19937_64 random(1);
    std::vector<double> values(kValues);
    for (double &value : values)
        value = static_cast<double>(random() % 1000000) / 100;
    return values;
}

struct Job {
    const char *name;
    const char *format;                   // ours and the C library's
    [[maybe_unused]] const char *fmtForm; // the same to fmt
    std::chars_format form;
    int precision;
    std::vector<double> values;
};

const Job kJobs[] = {
    {"print_fixed", "%.3f", "{:.3f}", std::chars_format::fixed, 3, Readings()},
    {"print_general", "%g", "{:g}", std::chars_format::general, 6, Readings()},
    {"print_exact", "%.17g", "{:.17g}", std::chars_format::general, 17, Between(-5, 15)},
    {"print_tiny", "%e", "{:e}", std::chars_format::scientific, 6, Between(-300, -250)},
    {"print_huge", "%e", "{:e}", std::chars_format::scientific, 6, Between(250, 300)},
};

// Calls work(room, index) for each of the values in turn.
template <typename Work>
void Repeat(benchmark::State &state, Work work)
{
    char room[kRoom];
    size_t next = 0;
    for (auto _ : state) {
        work(room, next++ % kValues);
        benchmark::DoNotOptimize(room);
        benchmark::ClobberMemory();
    }
}

template <typename Work>
void Register(const std::string &operation, const std::string &who, Work work)
{
    const auto repeat = [work](benchmark::State &state) { Repeat(state, work); };
    benchmark::RegisterBenchmark((operation + "/" + who + "/1").c_str(), repeat);
    benchmark::RegisterBenchmark((operation + "/" + who).c_str(), repeat)->Threads(2)->UseRealTime();
}

void RegisterIntegers()
{
    static const char *const kWords[] = {"fan", "temperature", "power supply", "voltage"};
    Register("print_int", "ours", [](char *room, size_t i) {
        SMsnprintf(room, kRoom, "%d %s %08x", static_cast<int>(i * 7919), kWords[i % 4],
                   static_cast<unsigned>(i << 12));
    });
    Register("print_int", "snprintf", [](char *room, size_t i) {
        snprintf(room, kRoom, "%d %s %08x", static_cast<int>(i * 7919), kWords[i % 4], static_cast<unsigned>(i << 12));
    });
#ifdef BENCH_FMT
    Register("print_int", "fmt", [](char *room, size_t i) {
        *fmt::format_to_n(room, kRoom - 1, "{} {} {:08x}", static_cast<int>(i * 7919), kWords[i % 4],
                          static_cast<unsigned>(i << 12))
             .out = '\0';
    });
#endif
}

void RegisterDoubles(const Job &job)
{
    Register(job.name, "ours", [&job](char *room, size_t i) { SMsnprintf(room, kRoom, job.format, job.values[i]); });
    Register(job.name, "snprintf", [&job](char *room, size_t i) { snprintf(room, kRoom, job.format, job.values[i]); });
#ifdef BENCH_FMT
    Register(job.name, "fmt", [&job](char *room, size_t i) {
        *fmt::format_to_n(room, kRoom - 1, fmt::runtime(job.fmtForm), job.values[i]).out = '\0';
    });
#endif
    Register(job.name, "to_chars", [&job](char *room, size_t i) {
        *std::to_chars(room, room + kRoom - 1, job.values[i], job.form, job.precision).ptr = '\0';
    });
}

[[maybe_unused]] const bool kRegistered = [] {
    std::thread([] { pause(); }).detach();
    RegisterIntegers();
    for (const Job &job : kJobs)
        RegisterDoubles(job);
    return true;
}();

} // namespace
