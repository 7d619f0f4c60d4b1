// The ID table: worked cases, and every call against a model that goes bit by bit.

#include <gtest/gtest.h>
#include <qzvest/hashid.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

using Words = std::vector<uint32_t>;

constexpr uint32_t kFull = 0xFFFFFFFF;
constexpr uint32_t kFirstFull = 0xFFFFFFFE; // word 0 without ID 0

uint32_t Acquire(Words words, uint32_t mode)
{
    return SMAcquireHashID(words.data(), static_cast<uint32_t>(words.size() * 4), mode);
}

TEST(HashID, BytesNeeded)
{
    constexpr struct {
        int32_t maxID;
        uint32_t bytes;
    } kCases[] = {{0, 0}, {1, 4}, {31, 4}, {32, 8}, {63, 8}, {64, 12}, {65534, 8192}, {INT32_MAX, 1u << 28}};
    for (const auto &c : kCases)
        EXPECT_EQ(SMHashTableBytesNeeded(c.maxID), c.bytes) << c.maxID;
}

TEST(HashID, AcquireInBothModes)
{
    const struct {
        const char *name;
        Words words;
        uint32_t lowest;
        uint32_t above;
    } kCases[] = {
        {"all free", {0, 0, 0, 0}, 1, 1},
        {"1, 2", {0x6, 0, 0, 0}, 3, 3},
        {"1, 3", {0xA, 0, 0, 0}, 2, 4},
        {"5", {0x20, 0, 0, 0}, 1, 6},
        {"first word full", {kFirstFull, 0, 0, 0}, 32, 32},
        {"33, 70", {0, 2, 0x40, 0}, 1, 71},
        {"31", {0x80000000, 0, 0, 0}, 1, 1},
        {"31 and 10", {0x80000400, 0, 0, 0}, 1, 11},
        {"a first word with ID 0 is not full", {kFull, 0, 0, 0}, 32, 0},
        {"unless a later word is partly used", {kFull, 0, 1, 0}, 32, 65},
        {"ID 0 alone", {1, 0, 0, 0}, 1, 1},
        {"empty before partly used", {kFirstFull, 0, 0x10, kFull}, 32, 69},
        {"first of several empty ones", {kFirstFull, kFull, 0, 0}, 64, 64},
        {"hole below a full run", {kFirstFull, 0xFFFFFFF7}, 35, 35},
        {"all used", {kFirstFull, kFull, kFull}, 0, 0},
        {"all used and ID 0", {kFull, kFull}, 0, 0},
        {"one word", {kFirstFull}, 0, 0},
    };
    for (const auto &c : kCases) {
        EXPECT_EQ(Acquire(c.words, 0), c.lowest) << c.name;
        EXPECT_EQ(Acquire(c.words, 1), c.above) << c.name;
        EXPECT_EQ(Acquire(c.words, 2), 0u) << c.name;
    }
}

// A table of this many bytes at an odd address, in a block of its own that ends with it.
class Table {
public:
    explicit Table(uint32_t size) : bytes(size), area(1 + size, 0xA5)
    {
        EXPECT_EQ(SMClearHashTable(at(), bytes), SM_STATUS_OK);
    }

    uint8_t *at()
    {
        return area.data() + 1;
    }

    bool Used(uint32_t id)
    {
        return (at()[id / 8] >> id % 8 & 1) != 0;
    }

    void SetAll(uint32_t firstWord, uint32_t count, bool used)
    {
        std::memset(at() + size_t{firstWord} * 4, used ? 0xFF : 0, size_t{count} * 4);
    }

    const uint32_t bytes;

private:
    std::vector<uint8_t> area;
};

// What the scanning calls are to answer, bit by bit.
struct Model {
    Table &table;
    uint32_t words = table.bytes / 4;

    uint32_t Count(uint32_t word)
    {
        uint32_t used = 0;
        for (uint32_t bit = 0; bit < 32; ++bit)
            used += table.Used(word * 32 + bit);
        return used;
    }

    bool IsFull(uint32_t word)
    {
        return word == 0 ? Count(0) == 31 && !table.Used(0) : Count(word) == 32;
    }

    uint32_t LowestFree()
    {
        for (uint32_t id = 1; id < words * 32; ++id)
            if (!table.Used(id))
                return id;
        return 0;
    }

    uint32_t AboveTop()
    {
        uint32_t chosen = 0;
        bool any = false;
        for (uint32_t word = 0; word < words; ++word) {
            if (IsFull(word) || (Count(word) == 0 && any))
                continue;
            chosen = word;
            any = true;
        }
        uint32_t candidate = 0;
        for (uint32_t id = chosen * 32 + 31; words > 0 && !IsFull(chosen) && id > 0 && id / 32 == chosen; --id) {
            if (!table.Used(id))
                candidate = id;
            else if (candidate != 0)
                break;
        }
        return candidate;
    }

    uint32_t Min()
    {
        for (uint32_t id = 0; id < words * 32; ++id)
            if (table.Used(id) && (id > 0 || Count(0) == 1))
                return id; // for ID 0 alone in its word, that ID itself, which is no ID
        return 0;
    }

    uint32_t Max()
    {
        for (uint32_t id = words * 32; id > 1; --id)
            if (table.Used(id - 1))
                return id - 1;
        return 0;
    }

    std::vector<uint32_t> Found()
    {
        std::vector<uint32_t> ids;
        for (uint32_t id = 1; id < words * 32; ++id)
            if (table.Used(id))
                ids.push_back(id);
        return ids;
    }
};

std::vector<uint32_t> FoundIn(Table &table)
{
    std::vector<uint32_t> ids;
    uint32_t word = 77;
    uint32_t bit = 77;
    uint32_t id = SMFindFirstHashID(table.at(), table.bytes, &word, &bit);
    for (; id != 0; id = SMFindNextHashID(table.at(), table.bytes, &word, &bit)) {
        EXPECT_EQ(word * 32 + bit, id);
        ids.push_back(id);
    }
    EXPECT_EQ(word * 32 + bit, ids.empty() ? 0 : ids.back()) << "the end leaves the place";
    return ids;
}

void CheckScans(Table &table)
{
    Model model{table};
    ASSERT_EQ(SMGetMinInUseID(table.at(), table.bytes), model.Min());
    ASSERT_EQ(SMGetMaxInUseID(table.at(), table.bytes), model.Max());
    ASSERT_EQ(FoundIn(table), model.Found());
}

void CheckAcquire(Table &table, uint32_t mode)
{
    Model model{table};
    const uint32_t wanted = mode == 0 ? model.LowestFree() : model.AboveTop();
    ASSERT_EQ(SMAcquireHashID(table.at(), table.bytes, mode), wanted) << "mode " << mode;
    ASSERT_TRUE(wanted == 0 || table.Used(wanted));
}

void CheckByID(Table &table, uint32_t id, bool acquire)
{
    const bool inside = id < table.bytes * 8;
    const bool used = inside && table.Used(id);
    const uint32_t verified = used ? SM_STATUS_OK : SM_STATUS_NOT_IN_USE;
    const uint32_t done = acquire ? (used ? SM_STATUS_ALREADY_EXISTS : SM_STATUS_OK) : verified;
    ASSERT_EQ(SMVerifyHashID(table.at(), table.bytes, id), inside ? verified : SM_STATUS_BAD_FORMAT);
    const auto call = acquire ? SMAcquireHashIDByID : SMReleaseHashID;
    ASSERT_EQ(call(table.at(), table.bytes, id), inside ? done : SM_STATUS_BAD_FORMAT);
    ASSERT_TRUE(!inside || table.Used(id) == acquire);
}

TEST(HashID, DoesAsTheModelDoes)
{
    std::mt19937 engine(43);
    const auto random = [&](uint32_t below) { return static_cast<uint32_t>(engine() % below); };
    for (const uint32_t bytes : {3u, 4u, 8u, 15u, 61u, 64u, 67u, 68u, 132u, 275u}) {
        SCOPED_TRACE(bytes);
        Table table(bytes);
        const uint32_t words = bytes / 4;
        for (int step = 0; step < 800; ++step) {
            SCOPED_TRACE(step);
            const uint32_t choice = random(8);
            if (choice < 2)
                CheckAcquire(table, choice);
            else if (choice < 6)
                CheckByID(table, random(bytes * 8 + 2), choice == 2);
            else if (words > 0) { // long runs, as the allocators make them
                const uint32_t first = random(words);
                table.SetAll(first, random(words - first + 1), choice == 7);
            }
            CheckScans(table);
            if (HasFatalFailure())
                return;
        }
    }
}

TEST(HashID, BytesBehindTheLastWordCountForCallsByIDAlone)
{
    Table table(7);
    std::memset(table.at() + 4, 0xFF, 3);
    EXPECT_EQ(SMGetMaxInUseID(table.at(), 7), 0u);
    EXPECT_EQ(SMGetMinInUseID(table.at(), 7), 0u);
    EXPECT_EQ(SMVerifyHashID(table.at(), 7, 55), SM_STATUS_OK);
    EXPECT_EQ(SMVerifyHashID(table.at(), 7, 56), SM_STATUS_BAD_FORMAT);
    std::memset(table.at(), 0xFF, 4);
    std::memset(table.at() + 4, 0, 3);
    EXPECT_EQ(SMAcquireHashID(table.at(), 7, 0), 0u);
}

TEST(HashID, FindNextStartsBehindItsPlace)
{
    constexpr struct {
        uint32_t word, bit, id, newWord, newBit;
    } kCases[] = {
        {0, 0, 31, 0, 31}, {0, 30, 31, 0, 31}, {0, 31, 64, 2, 0},       {0, 32, 64, 2, 0}, {1, kFull, 64, 2, 0},
        {2, 0, 66, 2, 2},  {2, 2, 99, 3, 3},   {3, 0, 99, 3, 3},        {3, 3, 100, 3, 4}, {3, 4, 0, 3, 4},
        {3, 32, 0, 3, 32}, {4, 0, 0, 4, 0},    {kFull, 0, 0, kFull, 0},
    };
    const Words words = {0x80000001, 0, 0x5, 0x18}; // IDs 0, 31, 64, 66, 99, 100
    for (const auto &c : kCases) {
        uint32_t word = c.word;
        uint32_t bit = c.bit;
        EXPECT_EQ(SMFindNextHashID(words.data(), 16, &word, &bit), c.id) << c.word << ' ' << c.bit;
        EXPECT_EQ(word, c.newWord) << c.word << ' ' << c.bit;
        EXPECT_EQ(bit, c.newBit) << c.word << ' ' << c.bit;
    }
}

} // namespace
