// FlatBuffers. It has no object in memory to build: its own way is the builder that writes the block at once,
// and its object interface stands for building, flattening and rebuilding one by one.

#include <flatbuffers/minireflect.h>

#include "object_generated.h"

#include <cstring>
#include <memory>

#include "sdo_data.h"

namespace bench {
namespace {

void Pack(flatbuffers::FlatBufferBuilder &builder, int64_t count)
{
    std::vector<flatbuffers::Offset<fb::Entry>> offsets;
    offsets.reserve(Entries(count).size());
    for (const Entry &entry : Entries(count))
        offsets.push_back(fb::CreateEntry(builder, entry.id, entry.type, builder.CreateVector(entry.value)));
    builder.Finish(fb::CreateObject(builder, builder.CreateVector(offsets)));
}

std::vector<uint8_t> MakeBlock(int64_t count)
{
    flatbuffers::FlatBufferBuilder builder;
    Pack(builder, count);
    return {builder.GetBufferPointer(), builder.GetBufferPointer() + builder.GetSize()};
}

fb::ObjectT Build(int64_t count)
{
    fb::ObjectT object;
    for (const Entry &entry : Entries(count)) {
        auto added = std::make_unique<fb::EntryT>();
        added->id = entry.id;
        added->type = entry.type;
        added->value = entry.value;
        object.entries.push_back(std::move(added));
    }
    return object;
}

void BuildRow(benchmark::State &state)
{
    for (auto _ : state) {
        fb::ObjectT object = Build(state.range(0));
        benchmark::DoNotOptimize(object);
    }
}

void FlattenRow(benchmark::State &state)
{
    const fb::ObjectT object = Build(state.range(0));
    flatbuffers::FlatBufferBuilder builder;
    for (auto _ : state) {
        builder.Clear();
        builder.Finish(fb::Object::Pack(builder, &object));
        benchmark::DoNotOptimize(builder.GetBufferPointer());
        benchmark::ClobberMemory();
    }
}

void BuildFlattenRow(benchmark::State &state)
{
    flatbuffers::FlatBufferBuilder builder; // keeps its memory, as our row keeps its buffer
    for (auto _ : state) {
        builder.Clear();
        Pack(builder, state.range(0));
        benchmark::DoNotOptimize(builder.GetBufferPointer());
        benchmark::ClobberMemory();
    }
}

void ReadRow(benchmark::State &state)
{
    const std::vector<uint8_t> block = MakeBlock(state.range(0));
    ReadByID(state, [&block](uint16_t id, uint8_t *buffer) -> uint32_t {
        const fb::Entry *entry = fb::GetObject(block.data())->entries()->LookupByKey(id);
        if (entry == nullptr || entry->type() == 0 || entry->value()->size() > 64)
            return 0;
        std::memcpy(buffer, entry->value()->data(), entry->value()->size());
        return entry->value()->size();
    });
}

void WalkRow(benchmark::State &state)
{
    const std::vector<uint8_t> block = MakeBlock(state.range(0));
    Walk(state, [&block] {
        uint64_t sum = 0;
        for (const fb::Entry *entry : *fb::GetObject(block.data())->entries())
            sum += SumOf(entry->id(), entry->type(), entry->value()->size(), entry->value()->data());
        return sum;
    });
}

// Its own walk with callbacks, which knows the fields from a table at run time.
struct Visitor : flatbuffers::IterationVisitor {
    uint64_t sum = 0;
    uint16_t id = 0;
    uint8_t type = 0;

    void UShort(uint16_t value, const char *) override
    {
        id = value;
    }
    void UChar(uint8_t value, const char *) override
    {
        type = value;
    }
    void String(const flatbuffers::String *value) override
    {
        sum += SumOf(id, type, value->size(), value->data());
    }
};

void VisitorRow(benchmark::State &state)
{
    flatbuffers::FlatBufferBuilder builder;
    std::vector<flatbuffers::Offset<fb::TextEntry>> offsets;
    for (const Entry &entry : Entries(state.range(0))) {
        const auto *text = reinterpret_cast<const char *>(entry.value.data());
        offsets.push_back(
            fb::CreateTextEntry(builder, entry.id, entry.type, builder.CreateString(text, entry.value.size())));
    }
    builder.Finish(fb::CreateTextObject(builder, builder.CreateVector(offsets)));
    Walk(state, [&builder] {
        Visitor visitor;
        flatbuffers::IterateFlatBuffer(builder.GetBufferPointer(), fb::TextObjectTypeTable(), &visitor);
        return visitor.sum;
    });
}

void RebuildRow(benchmark::State &state)
{
    const std::vector<uint8_t> block = MakeBlock(state.range(0));
    for (auto _ : state) {
        const std::unique_ptr<fb::ObjectT> object(fb::GetObject(block.data())->UnPack());
        benchmark::DoNotOptimize(object.get());
    }
}

[[maybe_unused]] const benchmark::internal::Benchmark *const kRows[] = {
    Row("build/FlatBuffers", BuildRow),
    Row("flatten/FlatBuffers", FlattenRow),
    Row("build_flatten/FlatBuffers", BuildFlattenRow),
    Row("read_by_id/FlatBuffers", ReadRow),
    Row("walk/FlatBuffers", WalkRow),
    Row("walk/FlatBuffers visitor", VisitorRow),
    Row("rebuild/FlatBuffers", RebuildRow),
};

} // namespace
} // namespace bench
