// Self-describing objects as they are used, and the bare loop that no search of the same block can do without.
// The peers stand in the sdo_*.cpp files.

#include <qzvest/qzvest.h>

#include <cstring>

#include "sdo_data.h"

namespace bench {
namespace {

SMSDOConfig *Build(int64_t count)
{
    SMSDOConfig *config = SMSDOConfigAlloc();
    for (const Entry &entry : Entries(count))
        SMSDOConfigAddData(config, entry.id, entry.type, entry.value.data(), static_cast<uint32_t>(entry.value.size()),
                           0);
    return config;
}

void BuildRow(benchmark::State &state)
{
    for (auto _ : state) {
        SMSDOConfig *config = Build(state.range(0));
        benchmark::DoNotOptimize(config);
        SMSDOConfigFree(config);
    }
}

// Into a buffer of the caller's, as long as the object asks for.
void FlattenInto(std::vector<uint8_t> &buffer, const SMSDOConfig *config)
{
    uint32_t size = SMSDOConfigGetBinarySize(config);
    buffer.resize(size);
    SMSDOConfigToBinary(config, buffer.data(), &size);
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
}

void FlattenRow(benchmark::State &state)
{
    SMSDOConfig *config = Build(state.range(0));
    std::vector<uint8_t> buffer;
    for (auto _ : state)
        FlattenInto(buffer, config);
    SMSDOConfigFree(config);
    if (buffer != Block(state.range(0)))
        state.SkipWithError("wrong block");
}

void BuildFlattenRow(benchmark::State &state)
{
    std::vector<uint8_t> buffer;
    for (auto _ : state) {
        SMSDOConfig *config = Build(state.range(0));
        FlattenInto(buffer, config);
        SMSDOConfigFree(config);
    }
}

void ReadRow(benchmark::State &state)
{
    const uint8_t *block = Block(state.range(0)).data();
    ReadByID(state, [block](uint16_t id, uint8_t *buffer) {
        uint8_t type;
        uint32_t size = 64;
        return SMSDOBinaryGetDataByID(block, id, &type, buffer, &size) == SM_STATUS_OK ? size : 0;
    });
}

struct Descriptor {
    uint16_t id;
    uint8_t type;
    uint8_t storage;
    uint16_t length;
    uint16_t offset;
};

uint32_t HalvingRead(const uint8_t *block, uint16_t id, uint8_t *buffer)
{
    uint16_t count;
    std::memcpy(&count, block + 4, sizeof count);
    uint32_t low = 0;
    uint32_t high = count;
    while (low < high) {
        const uint32_t mid = (low + high) / 2;
        const uint8_t *at = block + 8 + mid * sizeof(Descriptor);
        Descriptor there;
        std::memcpy(&there, at, sizeof there);
        if (there.id < id) {
            low = mid + 1;
        } else if (there.id > id) {
            high = mid;
        } else {
            const bool isLong = (there.storage & 4) != 0;
            const uint32_t length = isLong ? there.length : 4;
            std::memcpy(buffer, isLong ? at + there.offset : at + 4, length);
            return length;
        }
    }
    return 0;
}

void HalvingRow(benchmark::State &state)
{
    const uint8_t *block = Block(state.range(0)).data();
    ReadByID(state, [block](uint16_t id, uint8_t *buffer) { return HalvingRead(block, id, buffer); });
}

uint32_t OnBegin(void *, uint64_t, uint16_t, uint32_t, uint32_t, const SMSDOBinary *)
{
    return SM_STATUS_OK;
}

uint32_t OnEntry(void *sum, uint64_t *, uint16_t id, uint8_t, uint8_t, uint8_t, uint8_t kind, uint32_t size,
                 const void *data)
{
    *static_cast<uint64_t *>(sum) += SumOf(id, kind, size, data);
    return SM_STATUS_OK;
}

void WalkRow(benchmark::State &state)
{
    const uint8_t *block = Block(state.range(0)).data();
    Walk(state, [block] {
        uint64_t sum = 0;
        SMSDOBinaryWalk(block, &sum, OnBegin, OnEntry, nullptr, nullptr, 0);
        return sum;
    });
}

void RebuildRow(benchmark::State &state)
{
    const uint8_t *block = Block(state.range(0)).data();
    for (auto _ : state) {
        SMSDOConfig *config = SMSDOBinaryToConfig(block);
        benchmark::DoNotOptimize(config);
        SMSDOConfigFree(config);
    }
}

[[maybe_unused]] const benchmark::internal::Benchmark *const kRows[] = {
    Row("build/ours", BuildRow),
    Row("flatten/ours", FlattenRow),
    Row("build_flatten/ours", BuildFlattenRow),
    Row("read_by_id/ours", ReadRow),
    Row("read_by_id/bare halving", HalvingRow),
    Row("walk/ours", WalkRow),
    Row("rebuild/ours", RebuildRow),
};

} // namespace
} // namespace bench
