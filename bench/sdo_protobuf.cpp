// Protocol Buffers. A block cannot be read in place, so there is no reading by ID, and a walk parses first.

#include "object.pb.h"

#include "sdo_data.h"

namespace bench {
namespace {

void BuildInto(pb::Object &object, int64_t count)
{
    for (const Entry &entry : Entries(count)) {
        pb::Entry *added = object.add_entries();
        added->set_id(entry.id);
        added->set_type(entry.type);
        added->set_value(entry.value.data(), entry.value.size());
    }
}

void FlattenInto(std::vector<uint8_t> &buffer, const pb::Object &object)
{
    buffer.resize(object.ByteSizeLong());
    object.SerializeWithCachedSizesToArray(buffer.data());
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
}

std::vector<uint8_t> MakeBlock(int64_t count)
{
    pb::Object object;
    std::vector<uint8_t> block;
    BuildInto(object, count);
    FlattenInto(block, object);
    return block;
}

void BuildRow(benchmark::State &state)
{
    for (auto _ : state) {
        pb::Object object;
        BuildInto(object, state.range(0));
        benchmark::DoNotOptimize(object);
    }
}

void FlattenRow(benchmark::State &state)
{
    pb::Object object;
    BuildInto(object, state.range(0));
    std::vector<uint8_t> buffer;
    for (auto _ : state)
        FlattenInto(buffer, object);
}

void BuildFlattenRow(benchmark::State &state)
{
    std::vector<uint8_t> buffer;
    for (auto _ : state) {
        pb::Object object;
        BuildInto(object, state.range(0));
        FlattenInto(buffer, object);
    }
}

void WalkRow(benchmark::State &state)
{
    const std::vector<uint8_t> block = MakeBlock(state.range(0));
    pb::Object object; // parsed into again and again, which spares it its allocations
    Walk(state, [&block, &object] {
        uint64_t sum = 0;
        if (!object.ParseFromArray(block.data(), static_cast<int>(block.size())))
            return sum;
        for (const pb::Entry &entry : object.entries())
            sum += SumOf(static_cast<uint16_t>(entry.id()), static_cast<uint8_t>(entry.type()), entry.value().size(),
                         entry.value().data());
        return sum;
    });
}

void RebuildRow(benchmark::State &state)
{
    const std::vector<uint8_t> block = MakeBlock(state.range(0));
    for (auto _ : state) {
        pb::Object object;
        benchmark::DoNotOptimize(object.ParseFromArray(block.data(), static_cast<int>(block.size())));
        benchmark::DoNotOptimize(object);
    }
}

[[maybe_unused]] const benchmark::internal::Benchmark *const kRows[] = {
    Row("build/protobuf", BuildRow),
    Row("flatten/protobuf", FlattenRow),
    Row("build_flatten/protobuf", BuildFlattenRow),
    Row("walk/protobuf", WalkRow),
    Row("rebuild/protobuf", RebuildRow),
};

} // namespace
} // namespace bench
