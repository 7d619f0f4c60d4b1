// Libraries by themselves and in the cache: when they come and go, and what is asked of the loader.
#include <gtest/gtest.h>
#include <qzvest/library.h>

#include <cstring>

#include "os/sample.h"

namespace {

class Library : public testing::Test {
protected:
    void SetUp() override
    {
        sampleLoads = sampleUnloads = sampleLookUps = 0;
    }
    void TearDown() override
    {
        EXPECT_FALSE(IsLoaded());
    }
};
using LibraryCache = Library;

TEST_F(Library, LoadsResolvesAndUnloads)
{
    SMLibHandle *handle = SMLibLoad(kSample.c_str());
    ASSERT_NE(handle, nullptr);
    void *address = SMLibLinkToExportFN(handle, "SampleAnswer");
    EXPECT_EQ(Answer(address), 42);
    EXPECT_EQ(SMLibUnLinkFromExportFN(handle, address), SM_STATUS_OK);
    EXPECT_EQ(SMLibUnLinkFromExportFN(handle, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMLibLinkToExportFN(handle, "SampleMissing"), nullptr);
    EXPECT_EQ(SMLibLinkToExportFN(handle, "SampleAnswer"), address) << "after a failure";
    EXPECT_TRUE(IsLoaded());
    EXPECT_EQ(SMLibUnLoad(handle), SM_STATUS_OK);
}

TEST_F(Library, RefusesWhatIsNoLibrary)
{
    EXPECT_EQ(SMLibLoad((kFolder + "/missing.so").c_str()), nullptr);
    EXPECT_EQ(SMLibUnLoad(nullptr), SM_STATUS_INVALID_PARAMETER);

    constexpr size_t kKind = 0, kLoaderHandle = 16; // where a handle has them
    SMLibHandle *handle = SMLibLoad(kSample.c_str());
    ASSERT_NE(handle, nullptr);
    for (const size_t place : {kKind, kLoaderHandle}) {
        void *content;
        void *const field = reinterpret_cast<char *>(handle) + place;
        std::memcpy(&content, field, sizeof content);
        if (place == kKind)
            std::memset(field, 1, 1);
        else
            std::memset(field, 0, sizeof content);
        EXPECT_EQ(SMLibUnLoad(handle), SM_STATUS_BAD_FORMAT) << place;
        EXPECT_EQ(SMLibUnLinkFromExportFN(handle, nullptr), SM_STATUS_BAD_FORMAT) << place;
        EXPECT_EQ(SMLibLinkToExportFN(handle, "SampleAnswer"), nullptr) << place;
        std::memcpy(field, &content, sizeof content);
    }
    EXPECT_EQ(SMLibUnLoad(handle), SM_STATUS_OK);
}

// Who asks and who goes, in turn; a '!' at the end tells that the library is unloaded then.
TEST_F(LibraryCache, LeavesWithTheLastClient)
{
    constexpr const char *kCases[] = {
        "+a -a!",
        "+a +b -b -a!",
        "+a +a -a!",    // a client is one client, however often it asks
        "+a -x!",       // a stranger counts too
        "+a +b -a -a!", // and so does one that has gone already
        "-a! +a -a! -a! +a -a!",
    };
    for (const char *steps : kCases) {
        int loads = sampleLoads;
        for (const char *step = steps; step != nullptr && *step != '\0';) {
            const char client[] = {step[1], '\0'};
            if (*step == '+') {
                loads += IsLoaded() ? 0 : 1;
                EXPECT_EQ(Answer(SMFLibLinkToExportFN(client, kSample.c_str(), "SampleAnswer")), 42) << steps;
            } else {
                EXPECT_EQ(SMFLibUnLoad(client, kSample.c_str()), SM_STATUS_OK) << steps;
            }
            EXPECT_EQ(IsLoaded(), step[2] != '!') << steps << " at " << step;
            step = std::strchr(step, ' ');
            step += step != nullptr ? 1 : 0;
        }
        EXPECT_EQ(sampleLoads, loads) << steps;
    }
}

TEST_F(LibraryCache, AsksTheLoaderOnceForASymbol)
{
    void *first = SMFLibLinkToExportFN("a", kSample.c_str(), "SampleResolved");
    EXPECT_EQ(Answer(first), 42);
    const int lookUps = sampleLookUps; // the loader may have asked more often
    EXPECT_GT(lookUps, 0);
    EXPECT_EQ(SMFLibLinkToExportFN("b", kSample.c_str(), "SampleResolved"), first);
    EXPECT_EQ(sampleLookUps, lookUps);

    auto *handle = static_cast<SMLibHandle *>(SMFLibLinkToExportFN("a", kSample.c_str(), nullptr));
    EXPECT_EQ(SMLibLinkToExportFN(handle, "SampleResolved"), first);
    EXPECT_EQ(SMFLibUnLoad("a", kSample.c_str()), SM_STATUS_OK);
    EXPECT_EQ(SMFLibUnLoad("b", kSample.c_str()), SM_STATUS_OK);
}

TEST_F(LibraryCache, RefusalsAndAMissingSymbol)
{
    EXPECT_EQ(SMFLibUnLoad(nullptr, kSample.c_str()), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFLibLinkToExportFN("a", (kFolder + "/missing.so").c_str(), nullptr), nullptr);
    EXPECT_EQ(sampleLoads, 0);

    EXPECT_EQ(SMFLibLinkToExportFN("a", kSample.c_str(), "SampleMissing"), nullptr);
    EXPECT_TRUE(IsLoaded());
    EXPECT_EQ(Answer(SMFLibLinkToExportFN("b", kSample.c_str(), "SampleAnswer")), 42);
    EXPECT_EQ(SMFLibUnLoad("b", kSample.c_str()), SM_STATUS_OK);
    EXPECT_TRUE(IsLoaded()) << "the client with the missing symbol is one";
    EXPECT_EQ(SMFLibUnLoad("a", kSample.c_str()), SM_STATUS_OK);
}

} // namespace
