// Both list families against std::list. The payload of an entry is its key; a list and an entry are one heap block
// each.

#include <gtest/gtest.h>
#include <qzvest/list.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <list>
#include <random>

#include "support/faults.h"

namespace {

#define FAMILY_CALLS(family)                                                                                           \
    using List = SM##family##List;                                                                                     \
    using Entry = SM##family##ListEntry;                                                                               \
    static constexpr auto Alloc = SM##family##ListAlloc;                                                               \
    static constexpr auto Free = SM##family##ListFree;                                                                 \
    static constexpr auto Init = SM##family##ListInitNoAlloc;                                                          \
    static constexpr auto EntryAlloc = SM##family##ListEntryAlloc;                                                     \
    static constexpr auto EntryFree = SM##family##ListEntryFree;                                                       \
    static constexpr auto EntryInit = SM##family##ListEntryInitNoAlloc;                                                \
    static constexpr auto InsertAtHead = SM##family##ListInsertEntryAtHead;                                            \
    static constexpr auto InsertAtTail = SM##family##ListInsertEntryAtTail;                                            \
    static constexpr auto Insert = SM##family##ListInsertEntry;                                                        \
    static constexpr auto WalkAtHead = SM##family##ListWalkAtHead;                                                     \
    static constexpr auto Replace = SM##family##ListReplaceEntry;                                                      \
    static constexpr auto RemoveAtHead = SM##family##ListRemoveEntryAtHead;                                            \
    static constexpr auto RemoveAtTail = SM##family##ListRemoveEntryAtTail;                                            \
    static constexpr auto IsEmpty = SM##family##ListIsEmpty;

struct Single {
    FAMILY_CALLS(SL)
    static constexpr auto Delete = SMSLListDeleteEntry;
    // There is no way back.
    static constexpr auto WalkAtTail = [](const List *, void *, auto, Entry *expected) { return expected; };
    static constexpr auto LeadsBackTo = [](const Entry *, const Entry *) { return true; };
};

struct Double {
    FAMILY_CALLS(DL)
    static constexpr auto Delete = [](List *list, Entry *, Entry *entry) { SMDLListDeleteEntry(list, entry); };
    static constexpr auto WalkAtTail = [](const List *list, void *key, auto compare, Entry *) {
        return SMDLListWalkAtTail(list, key, compare);
    };
    static constexpr auto LeadsBackTo = [](const Entry *entry, const Entry *previous) {
        return entry->prev == previous;
    };
};

template <typename Family>
class Lists : public ::testing::Test {
protected:
    using List = typename Family::List;
    using Entry = typename Family::Entry;
    using Model = std::list<Entry *>;

    static int KeyOf(const Entry *entry)
    {
        return *static_cast<const int *>(entry->data);
    }

    static int32_t Compare(void *key, Entry *entry)
    {
        const int wanted = *static_cast<int *>(key);
        return wanted < KeyOf(entry) ? -70000 : wanted > KeyOf(entry); // any negative or positive number
    }

    static Entry *NewEntry(int key)
    {
        Entry *entry = Family::EntryAlloc(sizeof key);
        *static_cast<int *>(entry->data) = key;
        return entry;
    }

    // Is the list the model's, link by link?
    static bool Agree(const List &list, const Model &model)
    {
        const Entry *previous = nullptr, *entry = list.head;
        for (const Entry *wanted : model) {
            if (entry != wanted || !Family::LeadsBackTo(entry, previous))
                return false;
            previous = entry;
            entry = entry->next;
        }
        return entry == nullptr && list.tail == previous;
    }

    // One random operation on both.
    void Step()
    {
        int key = static_cast<int>(random() % 5); // few, so that the list is often short
        const auto is = [=](Entry *entry) { return KeyOf(entry) == key; };
        const auto found = std::find_if(model.begin(), model.end(), is);
        Entry *match = found == model.end() ? nullptr : *found;
        switch (random() % 9) {
        case 0:
            return Family::InsertAtHead(&list, model.emplace_front(NewEntry(key)));
        case 1:
            return Family::InsertAtTail(&list, model.emplace_back(NewEntry(key)));
        case 2:
        case 3: {
            const auto place =
                std::find_if(model.begin(), model.end(), [=](Entry *other) { return KeyOf(other) >= key; });
            const bool taken = place != model.end() && KeyOf(*place) == key;
            Entry *entry = NewEntry(key);
            EXPECT_EQ(Family::Insert(&list, entry, &key, Compare), taken ? SM_STATUS_ALREADY_EXISTS : SM_STATUS_OK);
            taken ? Family::EntryFree(entry) : void(model.insert(place, entry));
            return;
        }
        case 4: {
            const auto last = std::find_if(model.rbegin(), model.rend(), is);
            Entry *lastMatch = last == model.rend() ? nullptr : *last;
            EXPECT_EQ(Family::WalkAtHead(&list, &key, Compare), match);
            EXPECT_EQ(Family::WalkAtTail(&list, &key, Compare, lastMatch), lastMatch);
            return;
        }
        case 5: {
            Entry *entry = NewEntry(static_cast<int>(random() % 5));
            EXPECT_EQ(Family::Replace(&list, entry, &key, Compare), match);
            if (match != nullptr)
                *found = entry;
            return Family::EntryFree(match != nullptr ? match : entry);
        }
        case 6:
            Family::Delete(&list, found == model.begin() ? nullptr : *std::prev(found), match); // a NULL is no entry
            return Removed(match, found);
        case 7:
            return Removed(Family::RemoveAtHead(&list), model.begin());
        default:
            return Removed(Family::RemoveAtTail(&list), model.empty() ? model.end() : std::prev(model.end()));
        }
    }

    void Removed(Entry *entry, typename Model::iterator place)
    {
        EXPECT_EQ(entry, place == model.end() ? nullptr : *place);
        if (place != model.end())
            model.erase(place);
        Family::EntryFree(entry);
    }

    List list = {};
    Model model;
    std::mt19937 random{41};
};

using Families = ::testing::Types<Single, Double>;
TYPED_TEST_SUITE(Lists, Families);

TYPED_TEST(Lists, DoAsTheModelDoes)
{
    const long blocks = LiveBlocks();
    for (int step = 0; step < 20000; ++step) {
        this->Step();
        ASSERT_TRUE(this->Agree(this->list, this->model)) << step;
        ASSERT_FALSE(this->HasFailure()) << step;
        ASSERT_EQ(TypeParam::IsEmpty(&this->list), this->model.empty() ? 1u : 0u) << step;
    }
    while (auto *entry = TypeParam::RemoveAtTail(&this->list))
        TypeParam::EntryFree(entry);
    EXPECT_EQ(LiveBlocks(), blocks);
}

TYPED_TEST(Lists, RecordsFromTheHeapAndOfTheCaller)
{
    const long blocks = LiveBlocks();
    auto *made = TypeParam::Alloc();
    EXPECT_TRUE(this->Agree(*made, {}));
    auto *bare = TypeParam::EntryAlloc(0), *entry = TypeParam::EntryAlloc(3);
    EXPECT_EQ(bare->data, nullptr);
    EXPECT_EQ(entry->data, entry + 1) << "behind the fields";
    TypeParam::InsertAtHead(made, entry);
    TypeParam::Free(made); // and not the entry
    TypeParam::EntryFree(entry);
    TypeParam::EntryFree(bare);
    EXPECT_EQ(LiveBlocks(), blocks);

    int payload = 7;
    typename TypeParam::Entry own;
    std::memset(&own, 0xEE, sizeof own);
    own.data = &payload;
    TypeParam::EntryInit(&own);
    EXPECT_EQ(own.data, &payload);
    std::memset(&this->list, 0xEE, sizeof this->list);
    TypeParam::Init(&this->list);
    EXPECT_EQ(TypeParam::RemoveAtHead(&this->list), nullptr);
    EXPECT_EQ(TypeParam::Insert(&this->list, &own, nullptr, this->Compare), SM_STATUS_INVALID_PARAMETER);
    // An empty list has nothing to compare with: this callback would be a jump into nowhere.
    const auto never = [](void *, typename TypeParam::Entry *) -> int32_t { std::abort(); };
    EXPECT_EQ(TypeParam::Insert(&this->list, &own, &payload, never), SM_STATUS_OK);
    EXPECT_TRUE(this->Agree(this->list, {&own}));
}

TEST(SList, KeepsABrokenTail)
{
    SMSLListEntry stray = {}, entry = {};
    SMSLList list = {&entry, &stray};
    EXPECT_EQ(SMSLListRemoveEntryAtTail(&list), nullptr);
    EXPECT_EQ(list.head, &entry);
    EXPECT_EQ(list.tail, &stray);
}

} // namespace
