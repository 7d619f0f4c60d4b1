// What the cache of libraries holds when memory runs out, and what it leaves behind.
#include <gtest/gtest.h>

#include "frame/module.h"
#include "os/library.h"
#include "os/sample.h"
#include "os/thread.h"
#include "support/faults.h"

namespace {

void *Link(const char *client, const char *symbol)
{
    return qzvest::SMFLibLinkToExportFN(client, kSample.c_str(), symbol);
}

// Takes clients away until the library goes; how many that were.
int ClientsOfSample()
{
    int clients = 0;
    for (; IsLoaded(); ++clients)
        EXPECT_EQ(qzvest::SMFLibUnLoad("stranger", kSample.c_str()), SM_STATUS_OK);
    return clients;
}

TEST(LibraryFault, FirstRequestOfALibrary)
{
    // By the allocation that fails: entry, library, path and their node; the client and its node; the symbol, its
    // name and their node.
    constexpr struct {
        bool loaded, address, client;
    } kCases[] = {
        {false, false, false}, {false, false, false}, {false, false, false}, {false, false, false},
        {true, true, false},   {true, true, false},   {true, false, true},   {true, false, true},
        {true, false, true},   {true, true, true}, // none fails
    };
    const long before = LiveBlocks();
    int nth = 0;
    for (const auto &c : kCases) {
        FailAllocation(++nth);
        EXPECT_EQ(Answer(Link("a", "SampleAnswer")), c.address ? 42 : -1) << nth;
        EXPECT_EQ(StopFault(), &c != std::end(kCases) - 1) << nth;
        EXPECT_EQ(IsLoaded(), c.loaded) << nth;
        if (c.loaded) {
            EXPECT_EQ(Answer(Link("b", "SampleAnswer")), 42) << nth;
            EXPECT_EQ(ClientsOfSample(), c.client ? 2 : 1) << nth;
        }
        EXPECT_EQ(LiveBlocks(), before) << nth;
    }
}

TEST(LibraryFault, LaterClientComesInWholeOrNotAtAll)
{
    const long before = LiveBlocks();
    for (int nth = 1; nth <= 3; ++nth) {
        void *address = Link("a", "SampleAnswer");
        FailAllocation(nth);
        EXPECT_EQ(Link("b", "SampleAnswer"), nth <= 2 ? nullptr : address) << nth;
        EXPECT_EQ(StopFault(), nth <= 2) << nth;
        EXPECT_EQ(ClientsOfSample(), nth <= 2 ? 1 : 2) << nth;
        EXPECT_EQ(LiveBlocks(), before) << nth;
    }
}

TEST(LibraryFault, SingleLibraryOrThread)
{
    const long before = LiveBlocks();
    FailAllocation(1);
    EXPECT_EQ(qzvest::SMLibLoad(kSample.c_str()), nullptr);
    EXPECT_TRUE(StopFault());
    for (const int nth : {1, 2}) {
        FailAllocation(nth);
        EXPECT_EQ(qzvest::SMThreadStart([](void *argument) { return argument; }, nullptr), nullptr);
        EXPECT_TRUE(StopFault());
    }
    EXPECT_EQ(LiveBlocks(), before);
}

// The cache is attached once at a time; a detach unloads what is in it, clients or not.
TEST(LibraryCacheAttach, DetachUnloadsAll)
{
    const long before = LiveBlocks();
    EXPECT_EQ(qzvest::LibraryCacheAttach(), 0);
    EXPECT_NE(Link("a", "SampleAnswer"), nullptr);
    EXPECT_NE(Link("b", "SampleResolved"), nullptr);
    EXPECT_EQ(qzvest::SMModuleStop(), 1);
    EXPECT_FALSE(IsLoaded());
    EXPECT_EQ(qzvest::SMModuleStart(), 1);
    EXPECT_EQ(LiveBlocks(), before);
    EXPECT_EQ(Answer(Link("a", "SampleAnswer")), 42);
    EXPECT_EQ(ClientsOfSample(), 1);
}

} // namespace
