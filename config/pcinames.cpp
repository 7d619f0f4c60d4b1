#include "config/pcinames.h"

#include <cstdio>
#include <cstring>
#include <memory>

#include <qzvest/status.h>

#include "frame/heap.h"

namespace qzvest {
namespace {

constexpr size_t kLineRoom = 8451;
constexpr int kLineLimit = 8450; // a longer line comes in pieces, each a line of its own

struct FileClose {
    void operator()(FILE *file) const
    {
        (void)std::fclose(file); // was only read
    }
};

// The caller's buffer and what the search has put into it.
struct Name {
    char *buffer;
    uint32_t size;
    uint32_t length; // of the whole name, also when the buffer holds less
    bool found;
};

// Where in the tree the last line stood, and what is looked for there.
struct Position {
    uint16_t vendor, device, subVendor;
};

struct Search {
    Position wanted;
    uint16_t wantedSubDevice;
    Position at;
    Name vendor, device;
};

struct Record {
    char *kind;
    bool hasId; // one that reads as a number
    uint16_t id;
    const char *name;
};

constexpr uint16_t kNone = 65535;

// The next run of bytes that are not tabs, terminated where it stands; empty when there is none.
char *NextField(char **rest)
{
    char *const field = *rest + std::strspn(*rest, "\t");
    char *const end = field + std::strcspn(field, "\t");
    *rest = *end != '\0' ? end + 1 : end;
    *end = '\0';
    return field;
}

// False for a line of fewer than three fields.
bool ParseLine(char *line, Record *record)
{
    line[std::strcspn(line, ";\r\n")] = '\0';
    record->kind = NextField(&line);
    const char *const idText = NextField(&line);
    record->name = NextField(&line);
    unsigned int id = 0;
    record->hasId = std::sscanf(idText, "%04X", &id) == 1;
    record->id = static_cast<uint16_t>(id);
    return *record->name != '\0';
}

// The buffer's last byte is cleared even where the name ends before it.
void TakeName(Name *name, const char *text)
{
    const size_t length = std::strlen(text);
    const size_t room = name->size - 1;
    const size_t taken = length < room ? length : room;
    std::memcpy(name->buffer, text, taken);
    name->buffer[taken] = '\0';
    name->buffer[room] = '\0';
    name->length = static_cast<uint32_t>(length);
}

// Each of these takes one kind of record and returns false to end the search. A record without a readable id ends it
// like any other of its kind, and does nothing else.

bool VisitVendor(Search *search, const Record &record)
{
    if (search->vendor.found)
        return false;
    if (!record.hasId)
        return true;
    search->at = {record.id, 0, kNone};
    if (record.id == search->wanted.vendor) {
        TakeName(&search->vendor, record.name);
        search->vendor.found = true;
    }
    return true;
}

bool VisitDevice(Search *search, const Record &record)
{
    if (search->device.found)
        return false;
    if (!record.hasId)
        return true;
    search->at.device = record.id;
    search->at.subVendor = kNone;
    if (search->at.vendor == search->wanted.vendor && record.id == search->wanted.device) {
        TakeName(&search->device, record.name);
        search->device.found = true;
    }
    return true;
}

bool InWantedSubVendor(const Search &search)
{
    return search.at.vendor == search.wanted.vendor && search.at.device == search.wanted.device &&
           search.at.subVendor == search.wanted.subVendor;
}

// A more specific name replaces the device's own, but alone it does not make the device found.
bool VisitSubVendor(Search *search, const Record &record)
{
    if (!record.hasId)
        return true;
    search->at.subVendor = record.id;
    if (InWantedSubVendor(*search))
        TakeName(&search->device, record.name);
    return true;
}

bool VisitSubDevice(Search *search, const Record &record)
{
    if (record.hasId && InWantedSubVendor(*search) && record.id == search->wantedSubDevice)
        TakeName(&search->device, record.name);
    return true;
}

struct Kind {
    char capital, small;
    bool (*visit)(Search *search, const Record &record);
};

// clang-format off
constexpr Kind kKinds[] = {
    {'V', 'v', VisitVendor},
    {'D', 'd', VisitDevice},
    {'O', 'o', VisitSubVendor},
    {'S', 's', VisitSubDevice},
};
// clang-format on

bool VisitRecord(Search *search, const Record &record)
{
    for (const Kind &kind : kKinds) {
        if ((record.kind[0] == kind.capital || record.kind[0] == kind.small) && record.kind[1] == '\0')
            return kind.visit(search, record);
    }
    return true;
}

uint32_t SearchFile(const char *path, Search *search)
{
    const HeapPtr<char> line(HeapRoom<char>(kLineRoom));
    if (!line)
        return SM_STATUS_NO_MEMORY;
    const std::unique_ptr<FILE, FileClose> file(std::fopen(path, "re"));
    if (!file)
        return SM_STATUS_FILE_NOT_FOUND;
    Record record;
    while (std::fgets(line.get(), kLineLimit, file.get()) != nullptr) {
        if (ParseLine(line.get(), &record) && !VisitRecord(search, record))
            break;
    }
    return search->vendor.found && search->device.found ? SM_STATUS_OK : SM_STATUS_FILE_NOT_FOUND;
}

} // namespace

uint32_t SMReadPCIDevFile(uint16_t vendorId, uint16_t deviceId, uint16_t subVendorId, uint16_t subDeviceId,
                          const char *pathFileName, char *vendorName, uint32_t *vendorNameSize, char *deviceName,
                          uint32_t *deviceNameSize)
{
    if (pathFileName == nullptr || vendorName == nullptr || vendorNameSize == nullptr || deviceName == nullptr ||
        deviceNameSize == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    Search search = {{vendorId, deviceId, subVendorId},
                     subDeviceId,
                     {kNone, 0, kNone},
                     {vendorName, *vendorNameSize, 0, false},
                     {deviceName, *deviceNameSize, 0, false}};
    uint32_t status = SM_STATUS_INVALID_PARAMETER;
    if (search.vendor.size != 0 && search.device.size != 0) {
        *vendorName = '\0';
        *deviceName = '\0';
        if (*pathFileName != '\0')
            status = SearchFile(pathFileName, &search);
    }
    *vendorNameSize = search.vendor.length;
    *deviceNameSize = search.device.length;
    return status;
}

} // namespace qzvest
