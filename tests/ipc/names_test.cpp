#include "ipc/names.h"

#include <filesystem>
#include <fstream>

#include "frame/module.h"
#include "ipc/paths.h"

namespace {

// The library starts over with its files below this folder; NULL: nothing is registered.
void UseDataPath(const char *path)
{
    std::filesystem::remove("/etc/vkreg.cfg");
    if (path != nullptr)
        std::ofstream("/etc/vkreg.cfg") << "vestlib.vardatapath=" << path << '\n';
    qzvest::SMModuleStop();
    qzvest::SMModuleStart();
}

std::string NameOf(const char *name, uint32_t kind)
{
    constexpr size_t kRecordSize = 40;
    const qzvest::HeapPtr<qzvest::IPCNameRecord> record(qzvest::SMIPCNameRecordAlloc(name, kRecordSize, kind));
    if (!record)
        return "none";
    EXPECT_EQ(record->kind, kind);
    if (record->name == nullptr)
        return "anonymous";
    EXPECT_EQ(record->name, reinterpret_cast<char *>(record.get()) + kRecordSize);
    return record->name;
}

TEST(NameDigest, CoversTheTerminator)
{
    const std::pair<std::string, const char *> cases[] = {{"", "93B885ADFE0DA089CDF634904FD59F71"},
                                                          {"/var/log/messages", "79655898DCC399C3806C72405774C29F"},
                                                          {std::string(55, 'a'), "F27045573C791FD5264B9DDD1C892132"},
                                                          {std::string(63, 'a'), "8C2306035D2453ACA8E95FD422DCEC4E"}};
    for (const auto &[name, expected] : cases) {
        char digest[qzvest::kNameDigestSize + 1] = {};
        uint32_t size = sizeof digest;
        EXPECT_EQ(qzvest::SMNameDigest(name.c_str(), digest, &size), SM_STATUS_OK);
        EXPECT_STREQ(digest, expected);
        EXPECT_EQ(size, 33u);
    }
    char digest[33] = "x";
    uint32_t size = 32;
    EXPECT_EQ(qzvest::SMNameDigest("X", digest, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 33u);
    EXPECT_STREQ(digest, "x");
    EXPECT_EQ(qzvest::SMNameDigest(nullptr, digest, &size), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(qzvest::SMNameDigest("X", nullptr, &size), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(qzvest::SMNameDigest("X", digest, nullptr), SM_STATUS_INVALID_PARAMETER);
}

TEST(AccessMask, NibblesBecomeModes)
{
    const mode_t rights[16] = {0, 7, 4, 7, 2, 7, 6, 7, 1, 7, 5, 7, 3, 7, 6 + 1, 7};
    for (uint32_t nibble = 0; nibble < 16; ++nibble) {
        constexpr uint32_t kNoNibbleOfOurs = 0xF0F0F0FF; // keeps the mask from being 0, and means nothing
        EXPECT_EQ(qzvest::SMIPCAccessMaskToMode(kNoNibbleOfOurs | nibble << 8), rights[nibble]);
        EXPECT_EQ(qzvest::SMIPCAccessMaskToMode(kNoNibbleOfOurs | nibble << 16), rights[nibble] << 3);
        EXPECT_EQ(qzvest::SMIPCAccessMaskToMode(kNoNibbleOfOurs | nibble << 24), rights[nibble] << 6);
    }
    const std::pair<uint32_t, mode_t> cases[] = {{0, 0600}, {0xFFFFFFFF, 0664}, {0xFFFFFFFE, 0777}, {0x06020200, 0644},
                                                 {1, 0},    {0xF0F0F000, 0}};
    for (const auto &[mask, mode] : cases)
        EXPECT_EQ(qzvest::SMIPCAccessMaskToMode(mask), mode) << std::hex << mask;
}

TEST(ObjectName, IsMadeByKind)
{
    UseDataPath("/run/data");
    const std::string digest = "D59C7440D368FAED532F6FB6CDDD865F";
    const std::string prefixes[] = {"/run/data/.ipc/.qzvesmtx", "qzvessmp", "qzvesshm", "qzvesevt", "qzvesrwl",
                                    "/run/data/.ipc/.qzvesflk"};
    for (uint32_t kind = 1; kind <= 6; ++kind) {
        EXPECT_EQ(NameOf("X", kind), prefixes[kind - 1] + digest);
        EXPECT_EQ(NameOf("", kind), "none");
        EXPECT_EQ(NameOf(nullptr, kind), "anonymous");
    }
    for (const uint32_t kind : {0u, 7u, 0xFFFFFFFFu})
        EXPECT_EQ(NameOf("X", kind), "none");
}

TEST(ObjectName, LongDirectoriesHaveNoFiles)
{
    const std::string longest = "/run/" + std::string(203, 'd'); // with "/.ipc" 213 characters
    UseDataPath(longest.c_str());
    EXPECT_EQ(NameOf("X", 1).size(), 255u);
    UseDataPath((longest + "d").c_str());
    EXPECT_EQ(NameOf("X", 1), "none");
    EXPECT_EQ(NameOf("X", 2).size(), 40u); // has no path
}

TEST(IPCPaths, FollowTheRegisteredDataPath)
{
    const std::pair<const char *, std::string> cases[] = {
        {nullptr, "/var/run/qz/.ipc"}, {"/run/data/", "/run/data//.ipc"}, {"", "/.ipc"}}; // the slash stays
    for (const auto &[dataPath, directory] : cases) {
        UseDataPath(dataPath);
        EXPECT_EQ(qzvest::IPCDirectory(), directory);
        EXPECT_EQ(qzvest::IPCRegistryFile(), directory + "/.lxvestIPCini");
        EXPECT_EQ(qzvest::IPCRegistryLockPath(), directory + "/.lxvestIPCiniSem");
    }
    EXPECT_FALSE(std::filesystem::exists("/run/data")); // nothing is made
}

} // namespace
