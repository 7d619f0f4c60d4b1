// The objects that every row of sdo_bench works on, and how a row is registered.
#ifndef BENCH_SDO_DATA_H
#define BENCH_SDO_DATA_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Entry {
    uint16_t id;
    uint8_t type;
    std::vector<uint8_t> value;
};

// What a service might report: of five entries three are numbers of 4 bytes and two are texts of 12 to 20. In
// ascending ID order, the IDs with gaps between them. The same for every program and run.
const std::vector<Entry> &Entries(int64_t count);

// IDs of that object in random order, so many that the processor cannot learn the sequence; a power of two.
const std::vector<uint16_t> &WantedIDs(int64_t count);

// The object in our flat form.
const std::vector<uint8_t> &Block(int64_t count);

// What a walk adds up for each entry, and what it comes to for the whole object.
inline uint64_t SumOf(uint16_t id, uint8_t type, size_t size, const void *value)
{
    return id + type + size + *static_cast<const uint8_t *>(value);
}
uint64_t WalkSum(int64_t count);

// The bytes that reading all of WantedIDs hands over.
uint64_t ReadSum(int64_t count);

// Registers "operation/who" for objects of 20, 200 and 2,000 entries.
benchmark::internal::Benchmark *Row(const std::string &name, void (*run)(benchmark::State &));

// One read a round. find(id, buffer) copies the value out and gives its length; a reader that does not find
// every value is no reader.
template <typename Find>
void ReadByID(benchmark::State &state, Find find)
{
    const std::vector<uint16_t> &wanted = WantedIDs(state.range(0));
    alignas(8) uint8_t buffer[64];
    uint64_t sum = 0;
    for (const uint16_t id : wanted)
        sum += find(id, buffer);
    if (sum != ReadSum(state.range(0)))
        return state.SkipWithError("wrong values");
    size_t next = 0;
    for (auto _ : state) {
        sum += find(wanted[next], buffer);
        next = (next + 1) & (wanted.size() - 1);
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(sum);
}

// One walk over all entries a round. walk() gives the sum.
template <typename WalkAll>
void Walk(benchmark::State &state, WalkAll walk)
{
    if (walk() != WalkSum(state.range(0)))
        return state.SkipWithError("wrong sum");
    for (auto _ : state) {
        uint64_t sum = walk();
        benchmark::DoNotOptimize(sum);
        benchmark::ClobberMemory();
    }
}

} // namespace bench

#endif
