// The ID table against a model that goes bit by bit.

#include <gtest/gtest.h>
#include <qzvest/hashid.h>

#include <array>
#include <cstring>
#include <random>
#include <vector>

namespace {

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

    const uint32_t bytes;
    const uint32_t words = bytes / 4;

    // What the scanning calls are to answer, bit by bit.

    uint32_t Word(uint32_t index)
    {
        uint32_t word;
        std::memcpy(&word, at() + index * 4, 4);
        return word;
    }

    // The lowest free ID above all used ones of the last word that is partly used; else of the first empty one.
    uint32_t AboveTop()
    {
        uint32_t chosen = words;
        for (uint32_t word = 0; word < words; ++word)
            if (~Word(word) != (word == 0 ? 1 : 0) && (Word(word) != 0 || chosen == words)) // ID 0 is none
                chosen = word;
        uint32_t candidate = 0;
        for (uint32_t id = chosen * 32 + 31; chosen < words && id > 0 && id / 32 == chosen; --id) {
            if (!Used(id))
                candidate = id;
            else if (candidate != 0)
                break;
        }
        return candidate;
    }

    std::vector<uint32_t> Select(bool used)
    {
        std::vector<uint32_t> ids;
        for (uint32_t id = 1; id < words * 32; ++id)
            if (Used(id) == used)
                ids.push_back(id);
        return ids;
    }

private:
    std::vector<uint8_t> area;
};

void CheckScans(Table &table)
{
    const std::vector<uint32_t> found = table.Select(true);
    const bool zeroAlone = table.words > 0 && table.Word(0) == 1; // told as it is, though no ID
    ASSERT_EQ(SMGetMinInUseID(table.at(), table.bytes), found.empty() || zeroAlone ? 0 : found.front());
    ASSERT_EQ(SMGetMaxInUseID(table.at(), table.bytes), found.empty() ? 0 : found.back());
    uint32_t word = 77, bit = 77;
    uint32_t id = SMFindFirstHashID(table.at(), table.bytes, &word, &bit);
    for (const uint32_t wanted : found) {
        ASSERT_EQ(id, wanted);
        ASSERT_EQ(word * 32 + bit, id);
        id = SMFindNextHashID(table.at(), table.bytes, &word, &bit);
    }
    ASSERT_EQ(id, 0u);
    ASSERT_EQ(word * 32 + bit, found.empty() ? 0 : found.back()) << "the end leaves the place";
}

void CheckAcquire(Table &table, uint32_t mode)
{
    const std::vector<uint32_t> unused = table.Select(false);
    const uint32_t wanted = mode != 0 ? table.AboveTop() : unused.empty() ? 0 : unused.front();
    ASSERT_EQ(SMAcquireHashID(table.at(), table.bytes, 2), 0u); // there is no such mode
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
                std::memset(table.at() + first * 4, choice == 7 ? 0xFF : 0, random(words - first + 1) * 4);
            }
            CheckScans(table);
            if (HasFatalFailure())
                return;
        }
    }
}

TEST(HashID, SizesAndPlaces)
{
    EXPECT_EQ(SMHashTableBytesNeeded(31), 4u);
    EXPECT_EQ(SMHashTableBytesNeeded(32), 8u);
    EXPECT_EQ(SMHashTableBytesNeeded(INT32_MAX), 1u << 28);
    const std::vector<uint32_t> words = {0x80000001, 0, 0x5, 0x18}; // IDs 0, 31, 64, 66, 99, 100
    const auto next = [&](uint32_t word, uint32_t bit) {
        const uint32_t id = SMFindNextHashID(words.data(), 16, &word, &bit);
        return std::array{id, word, bit};
    };
    EXPECT_EQ(next(0, 32), (std::array{64u, 2u, 0u}));
    EXPECT_EQ(next(1, UINT32_MAX), (std::array{64u, 2u, 0u}));
    EXPECT_EQ(next(3, 32), (std::array{0u, 3u, 32u}));
    EXPECT_EQ(next(UINT32_MAX, 0), (std::array{0u, UINT32_MAX, 0u}));
}

} // namespace
