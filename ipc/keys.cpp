#include "ipc/keys.h"

#include <algorithm>
#include <cstring>

#include <qzvest/status.h>

#include "config/ini.h"
#include "frame/heap.h"
#include "ipc/filelock.h"
#include "ipc/paths.h"
#include "text/number.h"
#include "values/parse.h"

namespace qzvest {
namespace {

constexpr const char *kNameSection = "Unique String Name Key Section";
constexpr const char *kNumberSection = "Unique Numeric Value Key Section";
constexpr uint32_t kFirstKey = 300001;

// The registry lock, which makes look-up, choice and store one step. A process that may only read the lock file still
// finds the names that there are; a FileLockGuard is of one mode, and two would look for the record twice.
class RegistryLock {
public:
    RegistryLock() : lock_(SMFileLockOpen(IPCRegistryLockPath()))
    {
        held_ = SMFileLockAcquire(lock_, kFileLockWriter, kWaitForLock) == SM_STATUS_OK ||
                SMFileLockAcquire(lock_, kFileLockReader, kWaitForLock) == SM_STATUS_OK;
    }
    ~RegistryLock()
    {
        if (held_)
            (void)SMFileLockRelease(lock_);
        SMFileLockClose(lock_);
    }
    RegistryLock(const RegistryLock &) = delete;
    RegistryLock &operator=(const RegistryLock &) = delete;

    bool Held() const
    {
        return held_;
    }

private:
    SMFileLock *lock_;
    bool held_;
};

struct KeyList {
    HeapPtr<char> names; // a multi-string; none when memory ran out
    uint32_t status;
};

KeyList ListKeys()
{
    uint32_t size = 4;
    KeyList list = {HeapRoom<char>(size), SM_STATUS_NO_MEMORY};
    while (list.names) {
        const uint32_t room = size;
        list.status = SMReadINIPathFileValue(kNumberSection, nullptr, INI_TYPE_UTF8, list.names.get(), &size, nullptr,
                                             0, IPCRegistryFile(), kWaitForLock);
        if (list.status != SM_STATUS_BUFFER_TOO_SMALL || size <= room)
            break;
        list.names = HeapRoom<char>(size);
    }
    return list;
}

// The number behind the largest that was given out; 0 when the numbers have wrapped.
uint32_t KeyBehind(const char *names)
{
    if (*names == '\0') // a line without a name takes the first number
        return kFirstKey + 1;
    uint32_t largest = kFirstKey;
    for (const char *name = names; *name != '\0'; name += std::strlen(name) + 1) {
        uint32_t status;
        const uint32_t key = SMXLTParseUnsigned32(name, SMXLT_FORMAT_DEFAULT, &status);
        if (status == SM_STATUS_OK)
            largest = std::max(largest, key);
    }
    const uint32_t next = largest + 1;
    return next < kFirstKey ? 0 : next;
}

// Both sections, which mirror each other. What is lost when the second write fails is only that the number is seen as
// given out.
uint32_t Store(const char *objectName, uint32_t key)
{
    const char *file = IPCRegistryFile();
    if (SMWriteINIPathFileValue(kNameSection, objectName, INI_TYPE_UINT32, &key, sizeof key, file, kWaitForLock) !=
        SM_STATUS_OK)
        return 0;
    char number[kInt64Text];
    UInt64ToUTF8Str(number, key);
    (void)SMWriteINIPathFileValue(kNumberSection, number, INI_TYPE_UTF8, objectName,
                                  static_cast<uint32_t>(std::strlen(objectName) + 1), file, kWaitForLock);
    return key;
}

uint32_t FindOrGive(const char *objectName)
{
    uint32_t key = 0;
    uint32_t size = sizeof key;
    const uint32_t status = SMReadINIPathFileValue(kNameSection, objectName, INI_TYPE_UINT32, &key, &size, &key, size,
                                                   IPCRegistryFile(), kWaitForLock);
    if (status == SM_STATUS_OK)
        return key;
    if (status == SM_STATUS_INI_OPEN_FAILED || status == SM_STATUS_FILE_NOT_FOUND)
        return Store(objectName, kFirstKey);
    const KeyList list = ListKeys();
    if (!list.names)
        return key;
    switch (list.status) {
    case SM_STATUS_INI_NO_SECTION:
    case SM_STATUS_INI_NO_KEY:
        return Store(objectName, kFirstKey);
    case SM_STATUS_OK:
        key = KeyBehind(list.names.get());
        return key != 0 ? Store(objectName, key) : 0;
    default: // an unreadable registry: the name gets 0, and stays without an object
        return Store(objectName, key);
    }
}

} // namespace

uint32_t SMIPCKeyGet(const char *objectName)
{
    const RegistryLock lock;
    return lock.Held() ? FindOrGive(objectName) : 0;
}

} // namespace qzvest
