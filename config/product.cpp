// The table of the products' paths, and how a look-up goes on when it has no answer.

#include "config/product.h"

#include <strings.h>
#include <unistd.h>

#include <cstring>
#include <initializer_list>
#include <iterator>
#include <memory>

#include "compat/environment.h"
#include "compat/print.h"
#include "compat/string.h"
#include "config/registration.h"
#include "ipc/mutex.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

struct Product {
    const char *shortId;
    uint32_t number;
};

constexpr Product kProducts[] = {
    {"hmrq", SM_PRODUCT_ANY},
    {"tlvw", 33},
    {"VKRecordBroker", 34},
    {"zorb", 44},
    {"mq7t", 88},
    {"vestlib", 45},
    {"Gaugework", SM_PRODUCT_DEFAULT},
};
constexpr size_t kProductCount = std::size(kProducts);

struct PathKind {
    uint32_t type;
    const char *word; // in a key
};

// In the order in which a row is read: the others fall back to the install path.
constexpr PathKind kPathKinds[] = {
    {SM_PATH_INSTALL, "installpath"}, {SM_PATH_BIN, "binpath"}, {SM_PATH_INI, "inipath"},
    {SM_PATH_VARDATA, "vardatapath"}, {SM_PATH_LOG, "logpath"}, {SM_PATH_CONFIGTOOL, "configtool"},
};
constexpr size_t kPathKindCount = std::size(kPathKinds);
constexpr size_t kInstall = 0;
constexpr uint32_t kTypeInstallAlias = 32; // has no word, and is known to look-ups alone

constexpr size_t kPathRoom = 256;

struct ProductRow {
    char *texts[kPathKindCount];    // NULL: not recorded
    uint32_t sizes[kPathKindCount]; // with terminator; 0 where there is no text
    uint32_t number;
};

SMMutex *tableMutex;
ProductRow *table; // kProductCount rows, or NULL; changed under the mutex

void FreeTable(ProductRow *rows)
{
    if (rows == nullptr)
        return;
    for (size_t row = 0; row < kProductCount; ++row) {
        for (char *text : rows[row].texts)
            std::free(text);
    }
    std::free(rows);
}

struct TableRelease {
    void operator()(ProductRow *rows) const
    {
        FreeTable(rows);
    }
};
using TablePtr = std::unique_ptr<ProductRow, TableRelease>;

void StripSlash(char *path)
{
    const size_t length = std::strlen(path);
    if (length != 0 && path[length - 1] == '/')
        path[length - 1] = '\0';
}

uint32_t ReadKey(RegistrationFile &file, const char *shortId, const char *word, char (&path)[kPathRoom])
{
    char key[kPathRoom];
    (void)sprintf_s(key, sizeof key, "%s.%s", shortId, word); // the longest of the table's are far from the bound
    HeapPtr<char> value;
    if (const uint32_t status = file.Read(key, value); status != SM_STATUS_OK)
        return status;
    if (strcpy_s(path, sizeof path, value.get()) != 0)
        return SM_STATUS_BUFFER_TOO_SMALL;
    StripSlash(path);
    return SM_STATUS_OK;
}

// The folder that the other product's folder is in.
void CutToParent(char *path)
{
    char *slash = std::strrchr(path, '/');
    if (slash != nullptr && slash != path)
        *slash = '\0';
    StripSlash(path);
}

// What SM_PRODUCT_ANY takes for any path that has no key of its own.
uint32_t ReadFallback(RegistrationFile &file, char (&path)[kPathRoom])
{
    const struct {
        const char *shortId;
        bool isSibling;
    } kChain[] = {{"hmrq", false}, {"VKRecordBroker", true}, {"Gaugework", true}};
    for (const auto &link : kChain) {
        const uint32_t status = ReadKey(file, link.shortId, kPathKinds[kInstall].word, path);
        if (status == SM_STATUS_NO_MEMORY)
            return status;
        if (status != SM_STATUS_OK)
            continue;
        if (link.isSibling)
            CutToParent(path);
        return SM_STATUS_OK;
    }
    (void)strcpy_s(path, sizeof path, "/etc");
    return SM_STATUS_OK;
}

uint32_t ReadPath(RegistrationFile &file, const Product &product, const char *word, char (&path)[kPathRoom])
{
    const uint32_t status = ReadKey(file, product.shortId, word, path);
    const bool isFinal = status == SM_STATUS_OK || status == SM_STATUS_NO_MEMORY || product.number != SM_PRODUCT_ANY;
    return isFinal ? status : ReadFallback(file, path);
}

// The environment goes before the file, and its value is taken as it is.
uint32_t ReadInstallPath(RegistrationFile &file, const Product &product, char (&path)[kPathRoom])
{
    char name[kPathRoom];
    (void)sprintf_s(name, sizeof name, "%sinstallpath", product.shortId);
    for (char (*convert)(char) : {AsciiLower, AsciiUpper}) {
        for (char *at = name; *at != '\0'; ++at)
            *at = convert(*at);
        if (getenv_s(nullptr, path, sizeof path, name) == 0 && *path != '\0')
            return SM_STATUS_OK;
    }
    return ReadPath(file, product, kPathKinds[kInstall].word, path);
}

// False when memory runs out; what the row has by then stays in it.
bool FillRow(RegistrationFile &file, const Product &product, ProductRow &row)
{
    for (size_t kind = 0; kind < kPathKindCount; ++kind) {
        char path[kPathRoom];
        const uint32_t status = kind == kInstall ? ReadInstallPath(file, product, path)
                                                 : ReadPath(file, product, kPathKinds[kind].word, path);
        if (status == SM_STATUS_NO_MEMORY)
            return false;
        const char *text = status == SM_STATUS_OK ? path : row.texts[kInstall];
        row.texts[kind] = UTF8StrdupSized(text, &row.sizes[kind]);
        if (text != nullptr && row.texts[kind] == nullptr)
            return false;
    }
    row.number = product.number;
    return true;
}

// Empty when memory runs out.
TablePtr BuildTable()
{
    TablePtr rows(static_cast<ProductRow *>(std::calloc(kProductCount, sizeof(ProductRow))));
    if (!rows)
        return nullptr;
    RegistrationFile file;
    for (size_t product = 0; product < kProductCount; ++product) {
        if (!FillRow(file, kProducts[product], rows.get()[product]))
            return nullptr;
    }
    return rows;
}

bool HasTable()
{
    return __atomic_load_n(&table, __ATOMIC_RELAXED) != nullptr;
}

// The old table stands until the new one is there, so that nobody meanwhile takes it for missing; without memory for
// the new one there is none.
void Rebuild()
{
    const MutexGuard lock(tableMutex);
    ProductRow *rows = BuildTable().release();
    FreeTable(table);
    __atomic_store_n(&table, rows, __ATOMIC_RELAXED);
}

// kPathKindCount for a type that is none.
size_t KindOfType(uint32_t type)
{
    if (type == kTypeInstallAlias)
        return kInstall;
    size_t kind = 0;
    while (kind < kPathKindCount && kPathKinds[kind].type != type)
        ++kind;
    return kind;
}

const ProductRow *FindRow(uint32_t number)
{
    for (size_t row = 0; table != nullptr && row < kProductCount; ++row) {
        if (table[row].number == number)
            return &table[row];
    }
    return nullptr;
}

uint32_t LookUp(uint32_t productId, uint32_t pathType, char *dest, uint32_t *destSize)
{
    const MutexGuard lock(tableMutex);
    const ProductRow *row = FindRow(productId);
    if (row == nullptr)
        return SM_STATUS_NOT_FOUND;
    const uint32_t room = *destSize;
    *destSize = 0;
    const size_t kind = KindOfType(pathType);
    if (kind == kPathKindCount)
        return SM_STATUS_INVALID_PARAMETER;
    const char *path = row->texts[kind];
    if (path == nullptr)
        return SM_STATUS_NOT_FOUND;
    if (access(path, F_OK) != 0)
        return SM_STATUS_BAD_FORMAT;
    *destSize = row->sizes[kind];
    if (room < *destSize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    if (dest != nullptr)
        std::memcpy(dest, path, *destSize);
    return SM_STATUS_OK;
}

} // namespace

uint32_t SMGetPathByProductIDandType(uint32_t productId, uint32_t pathType, char *dest, uint32_t *destSize)
{
    if (destSize == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (dest != nullptr)
        *dest = '\0';
    if (HasTable()) {
        const uint32_t status = LookUp(productId, pathType, dest, destSize);
        if (status != SM_STATUS_NOT_FOUND)
            return status;
    } else {
        *destSize = 0;
    }
    Rebuild(); // the registration file may have changed
    if (HasTable())
        return LookUp(productId, pathType, dest, destSize); // a path that is new by now finds room for nothing
    *destSize = 0;
    return SM_STATUS_NOT_FOUND;
}

uint32_t SMProductSIDToID(const char *shortId)
{
    for (const Product &product : kProducts) {
        if (shortId != nullptr && strcasecmp(shortId, product.shortId) == 0)
            return product.number;
    }
    return 0;
}

char *SMProductIDToSID(uint32_t productId)
{
    for (const Product &product : kProducts) {
        if (product.number == productId)
            return SMUTF8Strdup(product.shortId);
    }
    return nullptr;
}

int ProductPathsAttach()
{
    tableMutex = SMMutexCreate(nullptr);
    if (tableMutex == nullptr)
        return 0;
    table = BuildTable().release();
    if (table != nullptr)
        return 1;
    ProductPathsDetach();
    return 0;
}

void ProductPathsDetach()
{
    FreeTable(table);
    table = nullptr;
    SMMutexDestroy(tableMutex);
    tableMutex = nullptr;
}

} // namespace qzvest
