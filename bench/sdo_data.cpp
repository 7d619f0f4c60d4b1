#include "sdo_data.h"

#include <qzvest/qzvest.h>

#include <cstdlib>
#include <map>
#include <random>

namespace bench {
namespace {

struct Data {
    std::vector<Entry> entries;
    std::vector<uint16_t> wanted;
    std::vector<uint8_t> block;
    uint64_t walkSum = 0;
    uint64_t readSum = 0;
};

std::vector<uint8_t> RandomBytes(std::mt19937 &random, size_t size)
{
    std::vector<uint8_t> bytes(size);
    for (uint8_t &byte : bytes)
        byte = static_cast<uint8_t>('a' + random() % 26);
    return bytes;
}

std::vector<uint8_t> Flatten(const std::vector<Entry> &entries)
{
    SMSDOConfig *config = SMSDOConfigAlloc();
    for (const Entry &entry : entries) {
        if (SMSDOConfigAddData(config, entry.id, entry.type, entry.value.data(),
                               static_cast<uint32_t>(entry.value.size()), 0) != SM_STATUS_OK)
            std::abort();
    }
    uint32_t size = SMSDOConfigGetBinarySize(config);
    std::vector<uint8_t> block(size);
    if (SMSDOConfigToBinary(config, block.data(), &size) != SM_STATUS_OK)
        std::abort();
    SMSDOConfigFree(config);
    return block;
}

Data MakeData(int64_t count)
{
    constexpr uint8_t kNumber = 1;
    constexpr uint8_t kText = 2;
    constexpr size_t kReads = 1 << 16;
    Data data;
    std::mt19937 random(static_cast<uint32_t>(count));
    uint16_t id = 0;
    for (int64_t i = 0; i < count; ++i) {
        id = static_cast<uint16_t>(id + 1 + random() % 16);
        const bool isText = random() % 5 < 2;
        data.entries.push_back({id, isText ? kText : kNumber, RandomBytes(random, isText ? 12 + random() % 9 : 4)});
        const Entry &added = data.entries.back();
        data.walkSum += SumOf(added.id, added.type, added.value.size(), added.value.data());
    }
    for (size_t i = 0; i < kReads; ++i) {
        const Entry &entry = data.entries[random() % data.entries.size()];
        data.wanted.push_back(entry.id);
        data.readSum += entry.value.size();
    }
    data.block = Flatten(data.entries);
    return data;
}

const Data &DataOf(int64_t count)
{
    static std::map<int64_t, Data> made;
    const auto found = made.find(count);
    return found != made.end() ? found->second : made.emplace(count, MakeData(count)).first->second;
}

} // namespace

const std::vector<Entry> &Entries(int64_t count)
{
    return DataOf(count).entries;
}

const std::vector<uint16_t> &WantedIDs(int64_t count)
{
    return DataOf(count).wanted;
}

const std::vector<uint8_t> &Block(int64_t count)
{
    return DataOf(count).block;
}

uint64_t WalkSum(int64_t count)
{
    return DataOf(count).walkSum;
}

uint64_t ReadSum(int64_t count)
{
    return DataOf(count).readSum;
}

benchmark::internal::Benchmark *Row(const std::string &name, void (*run)(benchmark::State &))
{
    return benchmark::RegisterBenchmark(name.c_str(), run)->Arg(20)->Arg(200)->Arg(2000);
}

} // namespace bench
