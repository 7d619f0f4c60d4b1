// The elements and keys that every tree of containers_bench works on, and the rows made of a tree.
//
// A tree under measurement is a type with Element (a record that begins with its key), Insert(Element *),
// Find(const Element *), Erase(const Element *), each false when nothing came of it, and Clear().
#ifndef BENCH_CONTAINERS_DATA_H
#define BENCH_CONTAINERS_DATA_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace bench {

struct Keyed {
    uint32_t key;
};

// The callback that orders Keyed, in a file of its own so that no peer has it compiled into its loop.
int32_t Compare(void *key, void *data);
int CompareConst(const void *key, const void *data); // the same with the C library's types

// So many different random keys, in two unrelated orders.
struct Keys {
    explicit Keys(int64_t count);

    // New orders for each round: a processor learns a thousand searches by heart when they come again and again.
    void Shuffle();

    std::vector<uint32_t> inserted;
    std::vector<uint32_t> wanted;

private:
    std::minstd_rand random;
};

inline double ThreadSeconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename Tree>
class Grove {
public:
    explicit Grove(const Keys &keys) : elements(std::make_unique<typename Tree::Element[]>(keys.inserted.size()))
    {
        for (size_t i = 0; i < keys.inserted.size(); ++i)
            elements[i].key = keys.inserted[i];
        count = keys.inserted.size();
    }

    ~Grove()
    {
        tree.Clear();
    }

    bool InsertAll()
    {
        bool all = true;
        for (size_t i = 0; i < count; ++i)
            all &= tree.Insert(&elements[i]);
        return all;
    }

    Tree tree;

private:
    std::unique_ptr<typename Tree::Element[]> elements;
    size_t count;
};

// The time of count inserts; a round is one of them.
template <typename Tree>
void InsertRow(benchmark::State &state)
{
    Keys keys(state.range(0));
    while (state.KeepRunningBatch(state.range(0))) {
        keys.Shuffle();
        Grove<Tree> grove(keys);
        const double start = ThreadSeconds();
        if (!grove.InsertAll())
            return state.SkipWithError("not inserted");
        state.SetIterationTime(ThreadSeconds() - start);
    }
}

template <typename Tree>
void SearchRow(benchmark::State &state)
{
    Keys keys(state.range(0));
    Grove<Tree> grove(keys);
    grove.InsertAll();
    bool all = true;
    while (state.KeepRunningBatch(state.range(0))) {
        keys.Shuffle();
        const double start = ThreadSeconds();
        for (const uint32_t key : keys.wanted) {
            typename Tree::Element wanted;
            wanted.key = key;
            all &= grove.tree.Find(&wanted);
        }
        state.SetIterationTime(ThreadSeconds() - start);
    }
    if (!all)
        state.SkipWithError("not found");
}

template <typename Tree>
void DeleteRow(benchmark::State &state)
{
    Keys keys(state.range(0));
    bool all = true;
    while (state.KeepRunningBatch(state.range(0))) {
        keys.Shuffle();
        Grove<Tree> grove(keys);
        grove.InsertAll();
        const double start = ThreadSeconds();
        for (const uint32_t key : keys.wanted) {
            typename Tree::Element wanted;
            wanted.key = key;
            all &= grove.tree.Erase(&wanted);
        }
        state.SetIterationTime(ThreadSeconds() - start);
    }
    if (!all)
        state.SkipWithError("not deleted");
}

// Registers the three rows of a tree for 1,000 and 100,000 elements.
template <typename Tree>
bool Rows(const std::string &who)
{
    for (const int64_t count : {1000, 100000}) {
        benchmark::RegisterBenchmark(("tree_insert/" + who).c_str(), InsertRow<Tree>)->Arg(count)->UseManualTime();
        benchmark::RegisterBenchmark(("tree_search/" + who).c_str(), SearchRow<Tree>)->Arg(count)->UseManualTime();
        benchmark::RegisterBenchmark(("tree_delete/" + who).c_str(), DeleteRow<Tree>)->Arg(count)->UseManualTime();
    }
    return true;
}

} // namespace bench

#endif
