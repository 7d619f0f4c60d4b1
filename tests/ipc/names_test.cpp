#include "ipc/names.h"

#include "config/places.h"
#include "ipc/paths.h"

namespace {

// The library starts over with its files below this folder; empty: nothing is registered.
void UseDataPath(const std::string &path)
{
    WriteText(kRegistrationFile, path.empty() ? "" : "vestlib.vardatapath=" + path + '\n');
    Reattach();
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
    char digest[qzvest::kNameDigestSize + 1] = "x";
    uint32_t size = 32;
    EXPECT_EQ(qzvest::SMNameDigest("X", digest, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_STREQ(digest, "x");
    EXPECT_EQ(qzvest::SMNameDigest("/var/log/messages", digest, &size), SM_STATUS_OK); // with the size asked for
    EXPECT_STREQ(digest, "79655898DCC399C3806C72405774C29F");
}

TEST(AccessMask, NibblesBecomeModes)
{
    const mode_t rights[16] = {0, 7, 4, 7, 2, 7, 6, 7, 1, 7, 5, 7, 3, 7, 7, 7};
    constexpr uint32_t kNoNibbleOfOurs = 0xF0F0F0FF; // keeps the mask from being 0, and means nothing
    for (uint32_t nibble = 0; nibble < 16; ++nibble)
        for (const uint32_t place : {0u, 1u, 2u})
            EXPECT_EQ(qzvest::SMIPCAccessMaskToMode(kNoNibbleOfOurs | nibble << (8 + 8 * place)),
                      rights[nibble] << 3 * place);
    const std::pair<uint32_t, mode_t> cases[] = {{0, 0600}, {0xFFFFFFFF, 0664}, {0xFFFFFFFE, 0777}, {0x06020200, 0644}};
    for (const auto &[mask, mode] : cases)
        EXPECT_EQ(qzvest::SMIPCAccessMaskToMode(mask), mode) << std::hex << mask;
}

TEST(ObjectName, IsMadeByKind)
{
    UseDataPath("/run/data");
    const std::string prefixes[] = {"/run/data/.ipc/.qzvesmtx", "qzvessmp", "qzvesshm", "qzvesevt", "qzvesrwl",
                                    "/run/data/.ipc/.qzvesflk"};
    for (uint32_t kind = 1; kind <= 6; ++kind)
        EXPECT_EQ(NameOf("X", kind), prefixes[kind - 1] + "D59C7440D368FAED532F6FB6CDDD865F");
    EXPECT_EQ(NameOf("", 1), "none");
    EXPECT_EQ(NameOf(nullptr, 1), "anonymous");
    for (const uint32_t kind : {0u, 7u})
        EXPECT_EQ(NameOf("X", kind), "none");
}

TEST(IPCPaths, FollowTheRegisteredDataPath)
{
    const std::string longest = "/run/" + std::string(203, 'd'); // with "/.ipc" 213 characters
    // With the size of a mutex's name; a slash stays.
    const std::pair<std::string, size_t> cases[] = {{"", 58}, {"/run/data/", 57}, {longest, 255}, {longest + "d", 4}};
    for (const auto &[dataPath, nameSize] : cases) {
        UseDataPath(dataPath);
        const std::string directory = (dataPath.empty() ? "/var/run/qz" : dataPath) + "/.ipc";
        EXPECT_EQ(qzvest::IPCDirectory(), directory);
        EXPECT_EQ(qzvest::IPCRegistryFile(), directory + "/.lxvestIPCini");
        EXPECT_EQ(qzvest::IPCRegistryLockPath(), directory + "/.lxvestIPCiniSem");
        EXPECT_EQ(NameOf("X", 1).size(), nameSize) << "or none";
        EXPECT_EQ(NameOf("X", 2).size(), 40u); // has no path
    }
}

} // namespace
