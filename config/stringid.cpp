#include "config/stringid.h"

#include <atomic>
#include <cstring>

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "config/ini.h"
#include "config/product.h"
#include "frame/heap.h"
#include "ipc/filelock.h"
#include "text/format.h"
#include "text/transcode.h"

namespace qzvest {
namespace {

constexpr uint32_t kValueRoom = 2048;
constexpr uint32_t kKeyRoom = 256;
constexpr uint32_t kPathRoom = 256;
constexpr uint32_t kTextRoom = 1024; // of the suite's own table

constexpr char kDefaultSection[] = "ASCII EN_US DEFAULT STRING ID SECTION";
constexpr char kLanguageSection[] = "MISCELLANEOUS STRING ID SECTION";

bool IsDefaultLanguage(uint32_t language)
{
    return language == 0 || language == 437 || language == 1033;
}

uint32_t Refuse(uint32_t *destSize)
{
    if (destSize != nullptr)
        *destSize = 0;
    return 0;
}

// A room that is too small is not told the need: that is for who gives neither room nor size.
uint32_t Deliver(const char *text, char *dest, uint32_t *destSize)
{
    const auto need = static_cast<uint32_t>(std::strlen(text) + 1);
    if (dest == nullptr && destSize == nullptr)
        return need;
    if (dest == nullptr || destSize == nullptr || *destSize < need)
        return Refuse(destSize);
    std::memcpy(dest, text, need);
    *destSize = need;
    return need;
}

// Room for a value and for its key.
struct Lookup {
    char value[kValueRoom];
    char key[kKeyRoom];
};

bool ReadText(Lookup &lookup, const char *section, uint32_t language, uint32_t stringId, const char *path)
{
    (void)SMFormatPrint(lookup.key, kKeyRoom, "%X:%X", language, stringId);
    uint32_t size = kValueRoom;
    return SMReadINIPathFileValue(section, lookup.key, INI_TYPE_UTF8, lookup.value, &size, nullptr, 0, path,
                                  kWaitForLock) == SM_STATUS_OK;
}

// A band of ids that builds for other makers move elsewhere. Nothing guards it: two first callers both read the same.
// The base goes in last, since it says that the others are there.
std::atomic<uint32_t> oemBase;
std::atomic<uint32_t> oemRange;
std::atomic<uint32_t> oemOffset;

bool LoadOemWord(const char *key, uint32_t &word)
{
    uint32_t size = sizeof word;
    return SMReadINIFileValue("OEM Configuration", key, INI_TYPE_UINT32, &word, &size, &word, sizeof word,
                              "qzisdy64.ini", kWaitForLock) == SM_STATUS_OK;
}

uint32_t LoadOemBand()
{
    uint32_t base = 0;
    uint32_t range = oemRange;
    uint32_t offset = oemOffset;
    if (!LoadOemWord("BaseID", base))
        base = 2304;
    if (!LoadOemWord("oemRange", range))
        range = 32;
    (void)LoadOemWord("offset", offset);
    oemRange = range;
    oemOffset = offset;
    oemBase = base;
    return base;
}

uint32_t RemapOemId(uint32_t stringId)
{
    uint32_t base = oemBase;
    if (base == 0)
        base = LoadOemBand();
    const bool inBand = stringId >= base && stringId - base <= oemRange; // both ends belong to it
    return inBand ? stringId + oemOffset : stringId;
}

HeapPtr<char> TablePath()
{
    constexpr char kTable[] = "/ini/qzsdst64.ini";
    HeapPtr<char> path(HeapRoom<char>(kPathRoom));
    uint32_t size = kPathRoom;
    if (!path || SMGetPathByProductIDandType(SM_PRODUCT_DEFAULT, SM_PATH_INI, path.get(), &size) != SM_STATUS_OK)
        return nullptr;
    const size_t length = std::strlen(path.get());
    if (length + sizeof kTable > kPathRoom)
        return nullptr;
    std::memcpy(path.get() + length, kTable, sizeof kTable);
    return path;
}

} // namespace

uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringId, uint32_t *languageId, const char *pathFileName, char *dest,
                                    uint32_t *destSize)
{
    if (pathFileName == nullptr)
        return Deliver("Invalid Path File Name", dest, destSize);
    const HeapPtr<Lookup> lookup(HeapRoom<Lookup>(1));
    if (!lookup)
        return Deliver("Failed to allocate memory", dest, destSize);
    const bool found = languageId != nullptr && !IsDefaultLanguage(*languageId) &&
                       ReadText(*lookup, kLanguageSection, *languageId, stringId, pathFileName);
    if (!found) {
        if (languageId != nullptr) // the caller is told that the default came back
            *languageId = 0;
        if (!ReadText(*lookup, kDefaultSection, 0, stringId, pathFileName))
            return Refuse(destSize);
    }
    lookup->value[std::strcspn(lookup->value, "\r\n")] = '\0';
    return Deliver(lookup->value, dest, destSize);
}

uint32_t SMGetUCS2StrFromID(uint32_t stringId, uint32_t *languageId, uint16_t *dest, uint32_t *destSize)
{
    const uint32_t id = RemapOemId(stringId);
    const HeapPtr<char> path = TablePath();
    const HeapPtr<char> text(path ? HeapRoom<char>(kTextRoom) : nullptr);
    if (!text)
        return Refuse(destSize);
    *text = '\0';
    uint32_t size = kTextRoom;
    const uint32_t count = SMGetUTF8StrFromIDPathFile(id, languageId, path.get(), text.get(), &size);
    if (dest == nullptr || destSize == nullptr) {
        if (destSize != nullptr)
            *destSize = count;
        return count;
    }
    if (count * 2 > *destSize) {
        *destSize = count * 2;
        return count * 2;
    }
    if (UTF8ToUCS2Convert(dest, destSize, text.get()) != SM_STATUS_OK)
        return Refuse(destSize);
    return *destSize;
}

} // namespace qzvest
