// Every exported function, with its first, second, third ... allocation failing until it gets through: it gives the
// status that its header tells, leaves nothing behind, and all objects and files as they were.

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "faults/rows.h"
#include "frame/module.h"
#include "support/faults.h"

namespace {

namespace fs = std::filesystem;

// What a process has beside its memory.
std::string Belongings()
{
    const auto descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), {});
    return testing::PrintToString(std::tuple(descriptors, SysVObjects("sem").size(), SysVObjects("shm").size()));
}

char LetterOf(uint32_t result)
{
    constexpr std::pair<uint32_t, char> kLetters[] = {{SM_STATUS_OK, 'O'},
                                                      {SM_STATUS_NO_MEMORY, 'M'},
                                                      {SM_STATUS_FAILED, 'F'},
                                                      {SM_STATUS_NOT_FOUND, 'N'},
                                                      {SM_ENUM_UNREADABLE, 'U'},
                                                      {SM_STATUS_BUFFER_TOO_SMALL, 'B'},
                                                      {kPart, 'p'}};
    for (const auto &[known, letter] : kLetters)
        if (known == result)
            return letter;
    return '?';
}

// The letter of what came of it, 0 when no allocation failed.
char Attempt(const Row &row, int nth, const std::string &before)
{
    Things things;
    FailAllocation(nth);
    const uint32_t result = row.call(things);
    const bool failed = StopFault();
    const std::string letters = row.failures;
    char letter = LetterOf(result);
    if (letters.find(letter) == std::string::npos)
        letter = static_cast<char>(std::tolower(letter));
    EXPECT_TRUE(failed ? letters.find(letter) != std::string::npos : result == SM_STATUS_OK) << result;
    const bool isDone = result == SM_STATUS_OK;
    if (!letters.empty() && (!failed || std::isupper(letter))) {
        const std::string state = things.State();
        if (!isDone || row.after == nullptr) {
            EXPECT_EQ(state, before);
        } else {
            EXPECT_TRUE(state != before && state.find(row.after) != std::string::npos) << state;
        }
    }
    return failed ? letter : '\0';
}

// How many allocations failed.
int Sweep(const Row &row, const std::string &before)
{
    std::set<char> seen;
    for (int nth = 1;; ++nth) {
        SCOPED_TRACE(std::string(row.name) + ", allocation " + std::to_string(nth));
        const long blocks = LiveBlocks();
        const std::string belongings = Belongings();
        const char letter = Attempt(row, nth, before);
        EXPECT_EQ(LiveBlocks(), blocks);
        EXPECT_EQ(Belongings(), belongings);
        if (letter == '\0') {
            EXPECT_EQ(std::string(seen.begin(), seen.end()), row.failures);
            return nth - 1;
        }
        seen.insert(letter);
    }
}

std::set<std::string> Exports()
{
    std::ifstream list(EXPORT_LIST);
    std::set<std::string> names;
    for (std::string word; list >> word;)
        if (word.back() == ';' && std::isupper(word[0]))
            names.insert(word.substr(0, word.size() - 1));
    return names;
}

TEST(EveryExport, CopesWithEachAllocationThatFails)
{
    qzvest::SMModuleStop(); // each scene begins with a start
    const std::string before = Things().State();
    std::set<std::string> names, allocating;
    int failures = 0;
    for (const Rows &rows : {RowsOfObjects(), RowsOfTexts(), RowsOfStores(), RowsOfSystem()}) {
        for (const Row &row : rows) {
            const int failed = Sweep(row, before);
            names.insert(row.name);
            if (failed > 0)
                allocating.insert(row.name);
            failures += failed;
        }
    }
    qzvest::SMModuleStart();
    EXPECT_EQ(names, Exports());
    printf("COUNT failing allocations: %zu exported functions, %zu of them allocate, %d allocations failed in turn\n",
           names.size(), allocating.size(), failures);
}

} // namespace
