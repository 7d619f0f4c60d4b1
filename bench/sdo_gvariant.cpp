// GVariant: a dictionary from ID to type and bytes. Its own look-up wants text keys, so a read by ID halves over
// the children. A value made from a block is read in place: there is nothing to rebuild.

#include <glib.h>

#include <cstring>

#include "sdo_data.h"

namespace bench {
namespace {

GVariant *Build(int64_t count)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{q(yay)}"));
    for (const Entry &entry : Entries(count)) {
        GVariant *value = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, entry.value.data(), entry.value.size(), 1);
        GVariant *pair[] = {g_variant_new_byte(entry.type), value};
        g_variant_builder_add_value(
            &builder, g_variant_new_dict_entry(g_variant_new_uint16(entry.id), g_variant_new_tuple(pair, 2)));
    }
    return g_variant_ref_sink(g_variant_builder_end(&builder));
}

void FlattenInto(std::vector<uint8_t> &buffer, GVariant *object)
{
    buffer.resize(g_variant_get_size(object));
    g_variant_store(object, buffer.data());
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
}

// A value that reads from its own flat block.
GVariant *FromBlock(int64_t count)
{
    GVariant *object = Build(count);
    GBytes *bytes = g_bytes_new(g_variant_get_data(object), g_variant_get_size(object));
    GVariant *flat = g_variant_ref_sink(g_variant_new_from_bytes(G_VARIANT_TYPE("a{q(yay)}"), bytes, TRUE));
    g_bytes_unref(bytes);
    g_variant_unref(object);
    return flat;
}

struct Visited {
    guint16 id;
    guchar type;
    gsize size;
    const guint8 *bytes; // in the block, good as long as that
};

Visited Visit(GVariant *child)
{
    Visited visited;
    GVariant *value;
    g_variant_get(child, "{q(y@ay)}", &visited.id, &visited.type, &value);
    visited.bytes = static_cast<const guint8 *>(g_variant_get_fixed_array(value, &visited.size, 1));
    g_variant_unref(value);
    return visited;
}

uint32_t Find(GVariant *object, uint16_t id, uint8_t *buffer)
{
    gsize low = 0;
    gsize high = g_variant_n_children(object);
    while (low < high) {
        const gsize mid = (low + high) / 2;
        GVariant *child = g_variant_get_child_value(object, mid);
        GVariant *key = g_variant_get_child_value(child, 0);
        const guint16 there = g_variant_get_uint16(key);
        g_variant_unref(key);
        gsize size = 0;
        if (there == id) {
            const Visited visited = Visit(child);
            std::memcpy(buffer, visited.bytes, size = visited.size);
        }
        g_variant_unref(child);
        if (there == id)
            return static_cast<uint32_t>(size);
        if (there < id)
            low = mid + 1;
        else
            high = mid;
    }
    return 0;
}

void BuildRow(benchmark::State &state)
{
    for (auto _ : state)
        g_variant_unref(Build(state.range(0)));
}

void FlattenRow(benchmark::State &state)
{
    GVariant *object = Build(state.range(0));
    std::vector<uint8_t> buffer;
    for (auto _ : state)
        FlattenInto(buffer, object);
    g_variant_unref(object);
}

void BuildFlattenRow(benchmark::State &state)
{
    std::vector<uint8_t> buffer;
    for (auto _ : state) {
        GVariant *object = Build(state.range(0));
        FlattenInto(buffer, object);
        g_variant_unref(object);
    }
}

void ReadRow(benchmark::State &state)
{
    GVariant *object = FromBlock(state.range(0));
    ReadByID(state, [object](uint16_t id, uint8_t *buffer) { return Find(object, id, buffer); });
    g_variant_unref(object);
}

void WalkRow(benchmark::State &state)
{
    GVariant *object = FromBlock(state.range(0));
    Walk(state, [object] {
        uint64_t sum = 0;
        GVariantIter iter;
        g_variant_iter_init(&iter, object);
        while (GVariant *child = g_variant_iter_next_value(&iter)) {
            const Visited visited = Visit(child);
            sum += SumOf(visited.id, visited.type, visited.size, visited.bytes);
            g_variant_unref(child);
        }
        return sum;
    });
    g_variant_unref(object);
}

[[maybe_unused]] const benchmark::internal::Benchmark *const kRows[] = {
    Row("build/GVariant", BuildRow),
    Row("flatten/GVariant", FlattenRow),
    Row("build_flatten/GVariant", BuildFlattenRow),
    Row("read_by_id/GVariant", ReadRow),
    Row("walk/GVariant", WalkRow),
};

} // namespace
} // namespace bench
