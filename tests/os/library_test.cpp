// Libraries by themselves and in the cache: when they come and go, and what is asked of the loader.
#include <gtest/gtest.h>
#include <qzvest/library.h>

#include <cstring>

#include "os/sample.h"

namespace {

TEST(Library, LoadsResolvesAndUnloadsWhatIsALibrary)
{
    EXPECT_EQ(SMLibLoad((kFolder + "/missing.so").c_str()), nullptr);
    EXPECT_EQ(SMLibUnLoad(nullptr), SM_STATUS_INVALID_PARAMETER);
    SMLibHandle *handle = SMLibLoad(kSample.c_str());
    ASSERT_NE(handle, nullptr);
    void *address = SMLibLinkToExportFN(handle, "SampleAnswer");
    EXPECT_EQ(Answer(address), 42);
    EXPECT_EQ(SMLibUnLinkFromExportFN(handle, address), SM_STATUS_OK);
    EXPECT_EQ(SMLibUnLinkFromExportFN(handle, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMLibLinkToExportFN(handle, "SampleMissing"), nullptr);
    EXPECT_EQ(SMLibLinkToExportFN(handle, "SampleAnswer"), address) << "after a failure";

    constexpr size_t kKind = 0, kLoaderHandle = 16; // where a handle has them
    for (const size_t place : {kKind, kLoaderHandle}) {
        const uint64_t wrong = place == kKind ? 1 : 0;
        uint64_t content;
        void *const field = reinterpret_cast<char *>(handle) + place;
        std::memcpy(&content, field, sizeof content);
        std::memcpy(field, &wrong, sizeof wrong);
        EXPECT_EQ(SMLibUnLoad(handle), SM_STATUS_BAD_FORMAT) << place;
        EXPECT_EQ(SMLibUnLinkFromExportFN(handle, nullptr), SM_STATUS_BAD_FORMAT) << place;
        EXPECT_EQ(SMLibLinkToExportFN(handle, "SampleAnswer"), nullptr) << place;
        std::memcpy(field, &content, sizeof content);
    }
    EXPECT_TRUE(IsLoaded());
    EXPECT_EQ(SMLibUnLoad(handle), SM_STATUS_OK);
    EXPECT_FALSE(IsLoaded());
}

// Who asks ('?': for what is missing) and who goes, in turn; a '!' at the end tells that the library is unloaded then.
TEST(LibraryCache, LeavesWithTheLastClient)
{
    constexpr const char *kCases[] = {
        "+a +b -b -a!",
        "+a +a -a!",    // a client is one client, however often it asks
        "+a -x!",       // a stranger counts too
        "+a +b -a -a!", // and so does one that has gone already
        "-a! +a -a! -a! +a -a!",
        "?a +b -b -a!", // the client with the missing symbol is one
    };
    for (const char *steps : kCases) {
        int loads = sampleLoads;
        for (const char *step = steps; step != nullptr; step = std::strchr(step + 1, ' ')) {
            step += *step == ' ' ? 1 : 0;
            const char client[] = {step[1], '\0'};
            loads += *step == '-' || IsLoaded() ? 0 : 1;
            if (*step == '-')
                EXPECT_EQ(SMFLibUnLoad(client, kSample.c_str()), SM_STATUS_OK) << steps;
            else
                EXPECT_EQ(Answer(SMFLibLinkToExportFN(client, kSample.c_str(),
                                                      *step == '?' ? "SampleMissing" : "SampleAnswer")),
                          *step == '?' ? -1 : 42);
            EXPECT_EQ(IsLoaded(), step[2] != '!') << steps << " at " << step;
        }
        EXPECT_EQ(sampleLoads, loads) << steps;
    }
    auto *handle = static_cast<SMLibHandle *>(SMFLibLinkToExportFN("a", kSample.c_str(), nullptr));
    EXPECT_EQ(Answer(SMLibLinkToExportFN(handle, "SampleAnswer")), 42);
    EXPECT_EQ(SMFLibUnLoad("a", kSample.c_str()), SM_STATUS_OK);
    EXPECT_EQ(SMFLibLinkToExportFN("a", (kFolder + "/missing.so").c_str(), nullptr), nullptr);
    EXPECT_EQ(SMFLibUnLoad(nullptr, kSample.c_str()), SM_STATUS_INVALID_PARAMETER);
}

} // namespace
