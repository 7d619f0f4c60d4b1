// Paths made from the products' folders: files in them, texts that name them by a macro, and localized files.

#include <unistd.h>

#include <cstring>

#include "compat/print.h"
#include "compat/string.h"
#include "config/product.h"
#include "frame/heap.h"
#include "text/language.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

constexpr char kMacro[] = "@vkinstallpath@";
constexpr size_t kMacroLength = sizeof kMacro - 1;
constexpr size_t kMacroTextRoom = 255;
constexpr size_t kPathRoom = 256;
constexpr size_t kCandidateRoom = 256;
constexpr size_t kLocaleRoom = 9;

uint32_t Refused(uint32_t *destSize, uint32_t status)
{
    *destSize = 0;
    return status;
}

// SM_STATUS_OK when a text of that need may be put into the destination. Leaves the size that goes to the caller.
uint32_t RoomFor(size_t need, const char *dest, uint32_t *destSize)
{
    const uint32_t room = *destSize;
    *destSize = static_cast<uint32_t>(need);
    if (room < need)
        return SM_STATUS_BUFFER_TOO_SMALL;
    return dest != nullptr ? SM_STATUS_OK : Refused(destSize, SM_STATUS_INVALID_PARAMETER);
}

bool IsGiven(const char *text)
{
    return text != nullptr && *text != '\0';
}

char *Append(char *end, const char *text)
{
    return stpcpy(stpcpy(end, "/"), text);
}

// Where a locale's files are looked for below the directory, most special first; NULL closes the list.
struct LocalePlaces {
    char language[kLocaleRoom + 1]; // "de" of "de_AT"; empty where the locale is not in two parts
    char whole[kLocaleRoom];        // "de/AT", or the locale as it is
    const char *list[4];

    explicit LocalePlaces(const char *locale) : language(), whole(), list()
    {
        (void)strcpy_s(whole, sizeof whole, locale); // its length is known to fit
        size_t count = 0;
        list[count++] = whole;
        if (char *mark = std::strchr(whole, '_'); mark != nullptr) {
            std::memcpy(language, whole, static_cast<size_t>(mark - whole));
            *mark = '/';
            list[count++] = language;
        }
        list[count++] = "";
        list[count] = nullptr;
    }
};

} // namespace

uint32_t SMGetInstallPath(char *dest, uint32_t *destSize)
{
    return SMGetInstallPathByProductID(SM_PRODUCT_DEFAULT, dest, destSize);
}

uint32_t SMGetInstallPathByProductID(uint32_t productId, char *dest, uint32_t *destSize)
{
    return SMGetPathByProductIDandType(productId, SM_PATH_INSTALL, dest, destSize);
}

uint32_t SMExpandVkInstallPathString(const char *text, char *dest, uint32_t *destSize)
{
    if (destSize == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (text == nullptr)
        return Refused(destSize, SM_STATUS_INVALID_PARAMETER);
    char folded[kMacroTextRoom];
    const size_t size = strnlen(text, sizeof folded) + 1;
    if (strcpy_s(folded, sizeof folded, text) != 0)
        return Refused(destSize, SM_STATUS_FAILED);
    for (char *at = folded; *at != '\0'; ++at)
        *at = AsciiLower(*at); // whatever the locale says
    const char *macro = std::strstr(folded, kMacro);
    if (macro == nullptr) {
        const uint32_t status = RoomFor(size, dest, destSize);
        if (status == SM_STATUS_OK)
            std::memcpy(dest, text, size);
        return status;
    }

    char path[kPathRoom];
    uint32_t pathSize = sizeof path;
    if (const uint32_t status = SMGetInstallPathByProductID(SM_PRODUCT_ANY, path, &pathSize); status != SM_STATUS_OK)
        return Refused(destSize, status);
    if (const uint32_t status = RoomFor(size + pathSize - 1 - kMacroLength, dest, destSize); status != SM_STATUS_OK)
        return status;
    const auto before = static_cast<size_t>(macro - folded);
    std::memcpy(dest, text, before);
    (void)stpcpy(stpcpy(dest + before, path), text + before + kMacroLength);
    return SM_STATUS_OK;
}

char *SMMakePathFileNameByPID(uint32_t productId, const char *subDirectory, const char *fileName)
{
    return SMMakePathFileNameByPIDAndType(productId, SM_PATH_INSTALL, subDirectory, fileName);
}

char *SMMakePathFileNameByPIDAndType(uint32_t productId, uint32_t pathType, const char *subDirectory,
                                     const char *fileName)
{
    if (fileName == nullptr)
        return nullptr;
    uint32_t pathSize = 0;
    (void)SMGetPathByProductIDandType(productId, pathType, nullptr,
                                      &pathSize); // the status would say that it is too small
    if (pathSize == 0)
        return nullptr;
    const size_t below = IsGiven(subDirectory) ? std::strlen(subDirectory) + 1 : 0;
    HeapPtr<char> result = HeapRoom<char>(pathSize + below + std::strlen(fileName) + 2);
    if (!result || SMGetPathByProductIDandType(productId, pathType, result.get(), &pathSize) != SM_STATUS_OK)
        return nullptr;
    char *end = result.get() + pathSize - 1;
    if (below != 0)
        end = Append(end, subDirectory);
    (void)Append(end, fileName);
    return result.release();
}

char *SMGetLocalizedPathFileName(const char *rootPath, const char *directory, const char *locale,
                                 const char *subDirectory, const char *fileName)
{
    if (directory == nullptr || fileName == nullptr)
        return nullptr;
    HeapPtr<char> local;
    if (locale == nullptr) {
        local.reset(LocalLanguageNameDup());
        locale = local.get();
    }
    if (locale == nullptr || strnlen(locale, kLocaleRoom) == kLocaleRoom)
        return nullptr;
    HeapPtr<char> result = HeapRoom<char>(kCandidateRoom);
    if (!result)
        return nullptr;

    const char *root = rootPath != nullptr ? rootPath : ".";
    const char *below = subDirectory != nullptr ? subDirectory : "";
    const char *belowSlash = subDirectory != nullptr ? "/" : "";
    const LocalePlaces places(locale);
    for (const char *const *place = places.list; *place != nullptr; ++place) {
        const char *placeSlash = place[1] != nullptr ? "/" : ""; // the last is the directory itself
        const int length = sprintf_s(result.get(), kCandidateRoom, "%s/%s/%s%s%s%s%s", root, directory, *place,
                                     placeSlash, below, belowSlash, fileName);
        if (length > 0 && access(result.get(), F_OK) == 0) // one that is too long is no candidate
            return result.release();
    }
    return nullptr;
}

} // namespace qzvest
