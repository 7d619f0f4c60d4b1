#include "ipc/names.h"

#include <cstdio>
#include <cstring>
#include <iterator>

#include "digest/rfc1321.h"
#include "ipc/paths.h"
#include "values/bytetext.h"

namespace qzvest {
namespace {

constexpr size_t kLargestObjectName = 256; // with its terminator

// By kind; an object that lives in a file has a path for a name.
struct ObjectNaming {
    const char *infix; // NULL: has no name
    bool isPath;
};

constexpr ObjectNaming kNamings[] = {
    {nullptr, false},    // library
    {"qzvesmtx", true},  // mutex
    {"qzvessmp", false}, // semaphore
    {"qzvesshm", false}, // shared memory
    {"qzvesevt", false}, // event
    {"qzvesrwl", false}, // read-write lock
    {"qzvesflk", true},  // file lock
};
static_assert(std::size(kNamings) == kKindFileLock + 1);

// How far to shift: the class's nibble in a mask, and its bits in a mode.
struct AccessClass {
    uint32_t nibble;
    uint32_t mode;
};

constexpr AccessClass kClasses[] = {{8, 0}, {16, 3}, {24, 6}}; // other, group, owner

uint32_t RightsOfNibble(uint32_t nibble)
{
    constexpr uint32_t kAll = 1;
    if ((nibble & kAll) != 0)
        return 07;
    constexpr uint32_t kRead = 2;
    constexpr uint32_t kWrite = 4;
    constexpr uint32_t kExecute = 8;
    return ((nibble & kRead) != 0 ? 04u : 0) | ((nibble & kWrite) != 0 ? 02u : 0) |
           ((nibble & kExecute) != 0 ? 01u : 0);
}

IPCNameRecord *RecordWithRoom(size_t recordSize, size_t nameSize, uint32_t kind)
{
    HeapPtr<char> block = HeapRoom<char>(recordSize + nameSize);
    if (!block)
        return nullptr;
    char *name = nameSize != 0 ? block.get() + recordSize : nullptr;
    auto *record = reinterpret_cast<IPCNameRecord *>(block.release());
    record->kind = kind;
    record->name = name;
    return record;
}

} // namespace

uint32_t SMNameDigest(const char *name, char *buffer, uint32_t *sizeInOut)
{
    if (name == nullptr || buffer == nullptr || sizeInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const uint32_t room = *sizeInOut;
    *sizeInOut = kNameDigestSize;
    if (room < kNameDigestSize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    SMRFC1321Ctx context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, name, static_cast<uint32_t>(std::strlen(name)) + 1);
    SMRFC1321ComputeMsgDigest(&context);
    *PutHexDigits(buffer, context.digest, sizeof context.digest) = '\0';
    return SM_STATUS_OK;
}

mode_t SMIPCAccessMaskToMode(uint32_t accessMask)
{
    if (accessMask == SM_ACCESS_GROUP)
        return 0664;
    if (accessMask == SM_ACCESS_OWNER)
        return 0600;
    uint32_t mode = 0;
    for (const AccessClass &accessClass : kClasses)
        mode |= RightsOfNibble(accessMask >> accessClass.nibble) << accessClass.mode;
    return mode;
}

IPCNameRecord *SMIPCNameRecordAlloc(const char *name, size_t recordSize, uint32_t kind)
{
    if (name == nullptr)
        return RecordWithRoom(recordSize, 0, kind);
    if (*name == '\0' || kind >= std::size(kNamings) || kNamings[kind].infix == nullptr)
        return nullptr;
    char digest[kNameDigestSize];
    uint32_t digestSize = sizeof digest;
    if (SMNameDigest(name, digest, &digestSize) != SM_STATUS_OK)
        return nullptr;

    const ObjectNaming &naming = kNamings[kind];
    const char *directory = naming.isPath ? IPCDirectory() : "";
    if (directory == nullptr)
        return nullptr;
    const char *between = naming.isPath ? "/." : "";
    const size_t nameSize = std::strlen(directory) + std::strlen(between) + std::strlen(naming.infix) + kNameDigestSize;
    if (nameSize > kLargestObjectName)
        return nullptr;
    IPCNameRecord *record = RecordWithRoom(recordSize, nameSize, kind);
    if (record != nullptr)
        (void)std::snprintf(record->name, nameSize, "%s%s%s%s", directory, between, naming.infix, digest); // fits
    return record;
}

} // namespace qzvest
