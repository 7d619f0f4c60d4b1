#include <dirent.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "frame/heap.h"
#include "os/file.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

constexpr uint32_t kManyEntries = 100;

struct DirectoryClose {
    void operator()(DIR *stream) const
    {
        closedir(stream);
    }
};

struct ListRelease {
    void operator()(SMFileList *list) const
    {
        SMFileListFree(list);
    }
};

using ListPtr = std::unique_ptr<SMFileList, ListRelease>;

bool IsWanted(const dirent *entry, uint32_t flags)
{
    return entry->d_type == DT_REG || (entry->d_type == DT_LNK && (flags & SM_FILE_LIST_LINKS) != 0);
}

HeapPtr<char> EntryDup(const char *directory, const char *name, uint32_t flags)
{
    return (flags & SM_FILE_LIST_NAMES) != 0 ? UTF8Copy(name) : UTF8Join({directory, "/", name});
}

bool Grow(ListPtr &list, uint32_t flags)
{
    const uint32_t step = (flags & SM_FILE_LIST_SPARING) != 0 ? 1 : kManyEntries;
    const uint32_t count = list ? list->count : 0;
    const uint32_t capacity = count + step;
    // Two words more than the entries: one is the head, and one has always been to spare.
    void *block = std::realloc(list.get(), (static_cast<size_t>(capacity) + 2) * sizeof(char *));
    if (block == nullptr)
        return false;
    (void)list.release(); // realloc has taken it
    list.reset(static_cast<SMFileList *>(block));
    list->count = count;
    list->capacity = capacity;
    return true;
}

bool Append(ListPtr &list, const char *directory, const char *name, uint32_t flags)
{
    HeapPtr<char> text = EntryDup(directory, name, flags);
    if (!text || ((!list || list->count == list->capacity) && !Grow(list, flags)))
        return false;
    list->entries[list->count++] = text.release();
    return true;
}

int Ascending(const void *first, const void *second)
{
    return std::strcmp(*static_cast<char *const *>(first), *static_cast<char *const *>(second));
}

int Descending(const void *first, const void *second)
{
    return Ascending(second, first);
}

} // namespace

uint32_t SMFileListGet(const char *directory, uint32_t flags, SMFileList **list)
{
    constexpr uint32_t kBothWays = SM_FILE_LIST_ASCENDING | SM_FILE_LIST_DESCENDING;
    if (directory == nullptr || list == nullptr || (flags & kBothWays) == kBothWays)
        return SM_STATUS_INVALID_PARAMETER;
    std::unique_ptr<DIR, DirectoryClose> stream(opendir(directory));
    if (!stream)
        return SM_STATUS_FILE_NOT_FOUND;
    ListPtr found;
    while (const dirent *entry = readdir(stream.get())) {
        if (IsWanted(entry, flags) && !Append(found, directory, entry->d_name, flags))
            return SM_STATUS_NO_MEMORY;
    }
    stream.reset();
    if (!found)
        return SM_STATUS_NO_ENTRY;
    if ((flags & kBothWays) != 0) {
        const bool ascending = (flags & SM_FILE_LIST_ASCENDING) != 0;
        std::qsort(found->entries, found->count, sizeof(char *), ascending ? Ascending : Descending);
    }
    *list = found.release();
    return SM_STATUS_OK;
}

void SMFileListFree(SMFileList *list)
{
    if (list == nullptr)
        return;
    for (uint32_t i = 0; i < list->count; ++i)
        std::free(list->entries[i]);
    std::free(list);
}

} // namespace qzvest
