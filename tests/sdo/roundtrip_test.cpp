// Random nested objects against a model that writes the flat form by itself.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "sdo/objects.h"
#include "support/faults.h"

namespace {

std::mt19937 source(7);

int Draw(int below)
{
    return static_cast<int>(source() % static_cast<unsigned>(below));
}

struct Model {
    struct Entry {
        uint8_t type;              // as in the block
        Bytes value;               // when it is not nested
        std::vector<Model> nested; // one, or the elements of an array
    };
    std::map<uint16_t, Entry> entries;
};
using ModelEntry = Model::Entry;

void Append(Bytes &to, const Bytes &more)
{
    to.insert(to.end(), more.begin(), more.end());
}

Bytes Words(size_t first, size_t second)
{
    return {uint8_t(first), uint8_t(first >> 8), uint8_t(second), uint8_t(second >> 8)};
}

Bytes FlatBlock(const char *magic, size_t count, const Bytes &body)
{
    Bytes block = Block(magic);
    Append(block, Words(count, 8 + body.size()));
    Append(block, body);
    return block;
}

Bytes FlatForm(const Model &model);
Model RandomModel(int depth);
Object BuildObject(const Model &model);

Bytes FlatValue(const ModelEntry &entry)
{
    if ((entry.type & 15) != 12)
        return entry.value;
    Bytes elements;
    for (const Model &model : entry.nested)
        Append(elements, FlatForm(model));
    return (entry.type & 16) != 0 ? FlatBlock("'BADS", entry.nested.size(), elements) : elements;
}

Bytes FlatForm(const Model &model)
{
    Bytes descriptors;
    Bytes data;
    for (const auto &[id, entry] : model.entries) {
        Bytes value = FlatValue(entry);
        const size_t offset = 8 * model.entries.size() - descriptors.size() + data.size();
        const bool isShort = value.size() <= 4;
        Append(descriptors, Words(id, entry.type | (isShort ? value.size() - 1 : 4) << 8));
        Append(isShort ? value : data, isShort ? Bytes(4 - value.size()) : value);
        Append(descriptors, isShort ? value : Words(value.size(), offset));
    }
    Append(descriptors, data);
    return FlatBlock("'BODS", model.entries.size(), descriptors);
}

ModelEntry RandomEntry(int depth)
{
    ModelEntry entry{static_cast<uint8_t>(Draw(256)), {}, {}};
    if (depth > 0 && Draw(3) == 0) {
        entry.type = static_cast<uint8_t>((entry.type & 0xF0) | 12);
        const int count = (entry.type & 16) != 0 ? Draw(4) : 1;
        for (int i = 0; i < count; ++i)
            entry.nested.push_back(RandomModel(depth - 1));
        return entry;
    }
    if ((entry.type & 15) >= 12 || entry.type == 0)
        entry.type = static_cast<uint8_t>((entry.type & 0xF0) | 1);
    entry.value = Bytes(static_cast<size_t>(1 + Draw(Draw(2) == 0 ? 8 : 200)));
    std::generate(entry.value.begin(), entry.value.end(), [] { return static_cast<uint8_t>(Draw(256)); });
    return entry;
}

uint16_t RandomID()
{
    return static_cast<uint16_t>(Draw(4) == 0 ? 65533 - Draw(20) : 1 + Draw(20));
}

Model RandomModel(int depth)
{
    Model model;
    for (int i = Draw(12); i > 0; --i)
        model.entries[RandomID()] = RandomEntry(depth);
    return model;
}

// Nested values go in as objects or as their flat form.
uint32_t AddEntry(const Object &object, uint16_t id, const ModelEntry &entry, int16_t replace)
{
    if ((entry.type & 15) != 12 || entry.nested.empty() || Draw(2) == 0)
        return Add(object, id, entry.type, FlatValue(entry), replace);
    std::vector<Object> nested;
    std::vector<Object *> table;
    for (const Model &model : entry.nested)
        nested.push_back(BuildObject(model));
    for (Object &one : nested)
        table.push_back(&one);
    return Adopt(object, id, entry.type | 13, table, replace);
}

Object BuildObject(const Model &model)
{
    Object object = Make();
    std::vector<std::pair<uint16_t, ModelEntry>> entries(model.entries.begin(), model.entries.end());
    std::shuffle(entries.begin(), entries.end(), source);
    for (const auto &[id, entry] : entries)
        EXPECT_EQ(AddEntry(object, id, entry, 0), SM_STATUS_OK);
    return object;
}

// The block is read at an odd address, in memory that ends with it.
void CheckReads(const Object &object, const Bytes &block, const Model &model)
{
    Bytes memory(block.size() + 1);
    std::copy(block.begin(), block.end(), memory.begin() + 1);
    const uint8_t *odd = memory.data() + 1;
    EXPECT_EQ(SMSDOBinaryGetCount(odd, nullptr), model.entries.size());
    EXPECT_EQ(SMSDOBinaryGetSize(odd, nullptr), block.size());
    uint32_t index = 0;
    for (const auto &[id, entry] : model.entries) {
        Bytes value = FlatValue(entry);
        const auto expected = [&, type = entry.type] {
            return Text("0 ", Hex({type}), ' ', value.size(), ' ', Hex(value));
        };
        // With a byte too few the size is told; unlike in an object, the type is not.
        const auto little = [&] { return Text("16 EE ", value.size(), ' ', std::string(2 * value.size() - 2, 'E')); };
        auto size = static_cast<uint32_t>(value.size());
        EXPECT_EQ(ByIndex(SMSDOBinaryGetDataByIndex, odd, index, size - 1), "0 " + little());
        EXPECT_EQ(ByIndex(SMSDOBinaryGetDataByIndex, odd, index++, size), Text(id, ' ', expected()));
        const bool isNested = (entry.type & 15) == 12;
        const size_t stored = isNested ? 8 * entry.nested.size() : size;
        EXPECT_EQ(ByIndex(SMSDOConfigGetDataByIndex, object.get(), index - 1, 0),
                  Text(id, " 16 ", Hex({uint8_t(entry.type | isNested)}), ' ', stored, ' '));
        EXPECT_TRUE(isNested || ByID(SMSDOConfigGetDataByID, object.get(), id, size) == expected());
        value.resize(size = std::max(4u, size)); // a short value counts as four bytes
        EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, odd, id, size - 1), little());
        EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, odd, id, size), expected());
    }
    for (const auto id : {RandomID(), RandomID(), uint16_t{0}, uint16_t{65534}, uint16_t{65535}}) {
        if (model.entries.contains(id))
            continue;
        const char *const none = id != 0 && id < 65534 ? "256 EE 1 EE" : "271 EE 1 EE";
        EXPECT_EQ(ByID(SMSDOBinaryGetDataByID, odd, id, 1), none);
        EXPECT_EQ(ByID(SMSDOConfigGetDataByID, object.get(), id, 1), none);
    }
    EXPECT_EQ(ByIndex(SMSDOBinaryGetDataByIndex, odd, index, 1), "0 12 EE 1 EE");
    EXPECT_EQ(ByIndex(SMSDOConfigGetDataByIndex, object.get(), index, 1), "0 12 EE 1 EE");
    auto little = static_cast<uint32_t>(block.size() - 1); // unlike elsewhere, the size stays
    EXPECT_EQ(SMSDOConfigToBinary(object.get(), memory.data(), &little), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(little, block.size() - 1);
    EXPECT_EQ(Flatten(Object(SMSDOBinaryToConfig(odd))), block);
}

void Mutate(const Object &object, Model &model)
{
    const uint16_t id = RandomID();
    const bool known = model.entries.contains(id);
    if (Draw(2) == 0) {
        // By place when the ID is none; else the place is not looked at.
        const bool isByPlace = Draw(2) == 0;
        const auto place = static_cast<uint32_t>(std::distance(model.entries.begin(), model.entries.find(id)));
        const uint32_t absent = isByPlace ? SM_STATUS_NOT_IN_USE : SM_STATUS_NOT_FOUND;
        const auto key = isByPlace ? static_cast<uint16_t>(65534 + Draw(3)) : id;
        EXPECT_EQ(SMSDOConfigRemoveData(object.get(), key, isByPlace ? place : 99, 0), known ? SM_STATUS_OK : absent);
        model.entries.erase(id);
        return;
    }
    // Nested objects under a plain value or an empty array would be left to us.
    ModelEntry entry = RandomEntry(1);
    if (known && !model.entries[id].nested.empty() && entry.nested.empty())
        return;
    EXPECT_TRUE(!known || AddEntry(object, id, entry, Draw(2) == 0 ? 0 : 2) == SM_STATUS_ALREADY_EXISTS);
    EXPECT_EQ(AddEntry(object, id, entry, 1), SM_STATUS_OK);
    model.entries[id] = std::move(entry);
}

TEST(SDORoundTrip, RandomObjects)
{
    const long blocks = LiveBlocks();
    for (int round = 0; round < 40 && !testing::Test::HasFailure(); ++round) {
        Model model = RandomModel(3);
        if (FlatForm(model).size() > 50000)
            continue; // near the limit a replacement may be refused
        const Object object = BuildObject(model);
        for (int change = 0; change < 10; ++change) {
            const Bytes block = Flatten(object);
            ASSERT_EQ(block, FlatForm(model));
            CheckReads(object, block, model);
            const Object clone(SMSDOConfigClone(object.get()));
            EXPECT_EQ(SMSDOConfigCompareByValue(object.get(), clone.get()), 1u);
            Mutate(object, model);
            EXPECT_EQ(SMSDOConfigCompareByValue(object.get(), clone.get()), FlatForm(model) == block ? 1u : 0u);
            EXPECT_EQ(Flatten(clone), block);
        }
        EXPECT_EQ(SMSDOConfigRemoveData(object.get(), 1, 99, 7), SM_STATUS_OK);
        EXPECT_EQ(Flatten(object), Block("'BODS 0000 0800"));
    }
    EXPECT_EQ(LiveBlocks(), blocks);
}

} // namespace
