// Lists and ID tables as they are used. The peers: the intrusive lists of <sys/queue.h>, which are macros and so
// compiled into their user; std::list; and for the IDs the plain loop over words that one would write by hand.

#include <benchmark/benchmark.h>
#include <qzvest/hashid.h>
#include <qzvest/list.h>
#include <sys/queue.h>

#include <bit>
#include <list>
#include <vector>

namespace {

// ---- Through the list: all in at the tail, all out at the head ----

void QueueSingleOurs(benchmark::State &state)
{
    std::vector<SMSLListEntry> entries(static_cast<size_t>(state.range(0)));
    SMSLList list = {};
    for (auto _ : state) {
        for (SMSLListEntry &entry : entries)
            SMSLListInsertEntryAtTail(&list, &entry);
        while (SMSLListEntry *entry = SMSLListRemoveEntryAtHead(&list))
            benchmark::DoNotOptimize(entry);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(QueueSingleOurs)->Name("slist_queue/ours")->Arg(1000);

struct SingleItem {
    STAILQ_ENTRY(SingleItem) link;
};
STAILQ_HEAD(SingleQueue, SingleItem);

void QueueSingleMacros(benchmark::State &state)
{
    std::vector<SingleItem> items(static_cast<size_t>(state.range(0)));
    SingleQueue queue;
    STAILQ_INIT(&queue);
    for (auto _ : state) {
        for (SingleItem &item : items)
            STAILQ_INSERT_TAIL(&queue, &item, link);
        while (SingleItem *item = STAILQ_FIRST(&queue)) {
            STAILQ_REMOVE_HEAD(&queue, link);
            benchmark::DoNotOptimize(item);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(QueueSingleMacros)->Name("slist_queue/sys_queue")->Arg(1000);

void QueueDoubleOurs(benchmark::State &state)
{
    std::vector<SMDLListEntry> entries(static_cast<size_t>(state.range(0)));
    SMDLList list = {};
    for (auto _ : state) {
        for (SMDLListEntry &entry : entries)
            SMDLListInsertEntryAtTail(&list, &entry);
        while (SMDLListEntry *entry = SMDLListRemoveEntryAtHead(&list))
            benchmark::DoNotOptimize(entry);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(QueueDoubleOurs)->Name("dlist_queue/ours")->Arg(1000);

struct DoubleItem {
    TAILQ_ENTRY(DoubleItem) link;
};
TAILQ_HEAD(DoubleQueue, DoubleItem);

void QueueDoubleMacros(benchmark::State &state)
{
    std::vector<DoubleItem> items(static_cast<size_t>(state.range(0)));
    DoubleQueue queue;
    TAILQ_INIT(&queue);
    for (auto _ : state) {
        for (DoubleItem &item : items)
            TAILQ_INSERT_TAIL(&queue, &item, link);
        while (DoubleItem *item = TAILQ_FIRST(&queue)) {
            TAILQ_REMOVE(&queue, item, link);
            benchmark::DoNotOptimize(item);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(QueueDoubleMacros)->Name("dlist_queue/sys_queue")->Arg(1000);

// ---- The same with the memory of each element: an entry with a payload of 8 bytes ----

void OwnedOurs(benchmark::State &state)
{
    SMDLList list = {};
    for (auto _ : state) {
        for (int64_t value = 0; value < state.range(0); ++value) {
            SMDLListEntry *entry = SMDLListEntryAlloc(sizeof value);
            *static_cast<int64_t *>(entry->data) = value;
            SMDLListInsertEntryAtTail(&list, entry);
        }
        while (SMDLListEntry *entry = SMDLListRemoveEntryAtHead(&list))
            SMDLListEntryFree(entry);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(OwnedOurs)->Name("dlist_owned/ours")->Arg(1000);

void OwnedStd(benchmark::State &state)
{
    std::list<int64_t> list;
    for (auto _ : state) {
        for (int64_t value = 0; value < state.range(0); ++value)
            list.push_back(value);
        while (!list.empty())
            list.pop_front();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(OwnedStd)->Name("dlist_owned/std_list")->Arg(1000);

// ---- A walk to the last entry ----

void WalkOurs(benchmark::State &state)
{
    std::vector<SMSLListEntry> entries(static_cast<size_t>(state.range(0)));
    SMSLList list = {};
    for (SMSLListEntry &entry : entries)
        SMSLListInsertEntryAtTail(&list, &entry);
    const auto compare = [](void *key, SMSLListEntry *entry) -> int32_t { return key != entry; };
    for (auto _ : state)
        benchmark::DoNotOptimize(SMSLListWalkAtHead(&list, &entries.back(), compare));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WalkOurs)->Name("slist_walk/ours")->Arg(1000);

void WalkMacros(benchmark::State &state)
{
    std::vector<SingleItem> items(static_cast<size_t>(state.range(0)));
    SingleQueue queue;
    STAILQ_INIT(&queue);
    for (SingleItem &item : items)
        STAILQ_INSERT_TAIL(&queue, &item, link);
    int32_t (*compare)(void *, SingleItem *) = [](void *key, SingleItem *item) -> int32_t { return key != item; };
    benchmark::DoNotOptimize(compare); // called, as in any list that does not know its user
    for (auto _ : state) {
        SingleItem *item;
        STAILQ_FOREACH(item, &queue, link)
        if (compare(&items.back(), item) == 0)
            break;
        benchmark::DoNotOptimize(item);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WalkMacros)->Name("slist_walk/sys_queue")->Arg(1000);

// ---- IDs: the argument is the number of IDs ----

using Words = std::vector<uint32_t>;

Words FullTable(const benchmark::State &state)
{
    return Words(static_cast<size_t>(state.range(0)) / 32, 0xFFFFFFFF);
}

uint32_t BytesOf(const Words &words)
{
    return static_cast<uint32_t>(words.size() * 4);
}

uint32_t AcquireByWordLoop(Words &words)
{
    for (uint32_t index = 0; index < words.size(); ++index) {
        const uint32_t used = words[index] | (index == 0);
        if (used == 0xFFFFFFFF)
            continue;
        const auto bit = static_cast<uint32_t>(std::countr_one(used));
        words[index] |= 1u << bit;
        return index * 32 + bit;
    }
    return 0;
}

// The last ID alone is free: given out and taken back.
void LowestOurs(benchmark::State &state)
{
    Words words = FullTable(state);
    const auto last = static_cast<uint32_t>(state.range(0) - 1);
    SMReleaseHashID(words.data(), BytesOf(words), last);
    for (auto _ : state) {
        if (SMAcquireHashID(words.data(), BytesOf(words), 0) != last)
            state.SkipWithError("another ID");
        SMReleaseHashID(words.data(), BytesOf(words), last);
    }
}
BENCHMARK(LowestOurs)->Name("id_lowest_last/ours")->Arg(64)->Arg(1024)->Arg(65536);

void LowestLoop(benchmark::State &state)
{
    Words words = FullTable(state);
    const auto last = static_cast<uint32_t>(state.range(0) - 1);
    words.back() &= 0x7FFFFFFF;
    for (auto _ : state) {
        if (AcquireByWordLoop(words) != last)
            state.SkipWithError("another ID");
        benchmark::DoNotOptimize(words.data());
        words.back() &= 0x7FFFFFFF;
        benchmark::ClobberMemory();
    }
}
BENCHMARK(LowestLoop)->Name("id_lowest_last/word_loop")->Arg(64)->Arg(1024)->Arg(65536);

// The one ID in use lies in the first word, so the word that is partly used is the last to be looked at.
void AboveOurs(benchmark::State &state)
{
    Words words(static_cast<size_t>(state.range(0)) / 32);
    words[0] = 2;
    for (auto _ : state) {
        if (SMAcquireHashID(words.data(), BytesOf(words), 1) != 2)
            state.SkipWithError("another ID");
        SMReleaseHashID(words.data(), BytesOf(words), 2);
    }
}
BENCHMARK(AboveOurs)->Name("id_above_top/ours")->Arg(64)->Arg(1024)->Arg(65536);

void AboveLoop(benchmark::State &state)
{
    Words words(static_cast<size_t>(state.range(0)) / 32);
    words[0] = 2;
    for (auto _ : state) {
        size_t index = words.size() - 1;
        while (index > 0 && (words[index] == 0 || words[index] == 0xFFFFFFFF))
            --index;
        words[index] |= 1u << std::bit_width(words[index]);
        benchmark::DoNotOptimize(words.data());
        words[0] = 2;
        benchmark::ClobberMemory();
    }
}
BENCHMARK(AboveLoop)->Name("id_above_top/word_loop")->Arg(64)->Arg(1024)->Arg(65536);

// All IDs in use, one after the other: 16 of them, evenly spread.
Words SparseTable(const benchmark::State &state)
{
    Words words(static_cast<size_t>(state.range(0)) / 32);
    for (size_t index = 0; index < words.size(); index += (words.size() + 15) / 16)
        words[index] = 2;
    return words;
}

void IterateOurs(benchmark::State &state)
{
    const Words words = SparseTable(state);
    for (auto _ : state) {
        uint32_t word;
        uint32_t bit;
        uint32_t id = SMFindFirstHashID(words.data(), BytesOf(words), &word, &bit);
        for (; id != 0; id = SMFindNextHashID(words.data(), BytesOf(words), &word, &bit))
            benchmark::DoNotOptimize(id);
    }
}
BENCHMARK(IterateOurs)->Name("id_iterate/ours")->Arg(1024)->Arg(65536);

void IterateLoop(benchmark::State &state)
{
    const Words words = SparseTable(state);
    for (auto _ : state) {
        for (uint32_t index = 0; index < words.size(); ++index) {
            for (uint32_t left = words[index]; left != 0; left &= left - 1) {
                uint32_t id = index * 32 + static_cast<uint32_t>(std::countr_zero(left));
                benchmark::DoNotOptimize(id);
            }
        }
    }
}
BENCHMARK(IterateLoop)->Name("id_iterate/word_loop")->Arg(1024)->Arg(65536);

} // namespace
