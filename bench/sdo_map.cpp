// A std::map with a vector for each value, and by hand the same flat form as ours.

#include <cstring>
#include <map>

#include "sdo_data.h"

namespace bench {
namespace {

struct Value {
    uint8_t type;
    std::vector<uint8_t> bytes;
};

using Object = std::map<uint16_t, Value>;

struct Descriptor {
    uint16_t id;
    uint8_t type;
    uint8_t storage;
    uint16_t length;
    uint16_t offset;
};

Object Build(int64_t count)
{
    Object object;
    for (const Entry &entry : Entries(count))
        object.try_emplace(entry.id, Value{entry.type, {entry.value.begin(), entry.value.end()}});
    return object;
}

void FlattenInto(std::vector<uint8_t> &buffer, const Object &object)
{
    size_t size = 8;
    for (const auto &[id, value] : object)
        size += 8 + (value.bytes.size() > 4 ? value.bytes.size() : 0);
    buffer.resize(size);
    const uint16_t header[] = {0x4F42, 0x5344, static_cast<uint16_t>(object.size()), static_cast<uint16_t>(size)};
    std::memcpy(buffer.data(), header, sizeof header);
    uint8_t *at = buffer.data() + 8;
    uint8_t *data = at + 8 * object.size();
    for (const auto &[id, value] : object) {
        const size_t length = value.bytes.size();
        Descriptor descriptor{id, value.type, 4, static_cast<uint16_t>(length), static_cast<uint16_t>(data - at)};
        if (length > 4) {
            std::memcpy(data, value.bytes.data(), length);
            data += length;
        } else {
            descriptor.storage = static_cast<uint8_t>(length - 1);
            descriptor.length = descriptor.offset = 0;
            std::memcpy(&descriptor.length, value.bytes.data(), length);
        }
        std::memcpy(at, &descriptor, sizeof descriptor);
        at += sizeof descriptor;
    }
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
}

Object Rebuild(const uint8_t *block)
{
    Object object;
    uint16_t count;
    std::memcpy(&count, block + 4, sizeof count);
    for (const uint8_t *at = block + 8; at < block + 8 + count * sizeof(Descriptor); at += sizeof(Descriptor)) {
        Descriptor entry;
        std::memcpy(&entry, at, sizeof entry);
        const bool isLong = (entry.storage & 4) != 0;
        const uint8_t *bytes = isLong ? at + entry.offset : at + 4;
        const size_t length = isLong ? entry.length : (entry.storage & 3u) + 1;
        object.try_emplace(entry.id, Value{entry.type, {bytes, bytes + length}});
    }
    return object;
}

void BuildRow(benchmark::State &state)
{
    for (auto _ : state) {
        Object object = Build(state.range(0));
        benchmark::DoNotOptimize(object);
    }
}

void FlattenRow(benchmark::State &state)
{
    const Object object = Build(state.range(0));
    std::vector<uint8_t> buffer;
    for (auto _ : state)
        FlattenInto(buffer, object);
    if (buffer != Block(state.range(0)))
        state.SkipWithError("wrong block");
}

void BuildFlattenRow(benchmark::State &state)
{
    std::vector<uint8_t> buffer;
    for (auto _ : state)
        FlattenInto(buffer, Build(state.range(0)));
}

void RebuildRow(benchmark::State &state)
{
    for (auto _ : state) {
        Object object = Rebuild(Block(state.range(0)).data());
        benchmark::DoNotOptimize(object);
    }
}

[[maybe_unused]] const benchmark::internal::Benchmark *const kRows[] = {
    Row("build/std::map", BuildRow),
    Row("flatten/std::map", FlattenRow),
    Row("build_flatten/std::map", BuildFlattenRow),
    Row("rebuild/std::map", RebuildRow),
};

} // namespace
} // namespace bench
