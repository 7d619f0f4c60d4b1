#include "config/registration.h"

#include <unistd.h>

#include <cstring>
#include <string_view>

#include "text/utf8.h"

namespace qzvest {
namespace {

constexpr const char *kPlaces[] = {"/etc/vkreg.cfg", "/usr/lib/ext/brio/vkreg.cfg"};
constexpr uint32_t kReadLimit = 8451;

const char *chosen; // one of the places, or NULL

// True when the line gives the key's value, which points into the line.
bool ValueOfLine(const Line &line, std::string_view key, std::string_view &value)
{
    std::string_view text = SkipBlanks({line.bytes, strnlen(line.bytes, line.size)});
    if (text.empty() || text.front() == ';' || text.front() == '#')
        return false;
    const size_t sign = text.find('=');
    if (sign == std::string_view::npos || std::string_view(text.data(), sign) != key)
        return false;
    text.remove_prefix(sign + 1);
    value = SkipBlanks(text);
    if (!value.empty() && value.back() == '\n')
        value.remove_suffix(1);
    while (value.size() > 1 && IsBlank(value.back()))
        value.remove_suffix(1);
    return true;
}

Descriptor OpenIfAny(const char *path)
{
    return path != nullptr ? OpenToRead(path) : Descriptor();
}

} // namespace

int RegistrationAttach()
{
    chosen = nullptr;
    for (const char *place : kPlaces) {
        if (access(place, F_OK) == 0) {
            chosen = place;
            break;
        }
    }
    return 1;
}

void RegistrationDetach()
{
    chosen = nullptr;
}

RegistrationFile::RegistrationFile(const char *path)
    : file_(OpenIfAny(path != nullptr ? path : chosen)), ready_(file_ && lines_.Open(file_.Get(), kReadLimit))
{
}

uint32_t RegistrationFile::Read(const char *key, HeapPtr<char> &value)
{
    if (!file_)
        return SM_STATUS_NOT_FOUND;
    if (!ready_)
        return SM_STATUS_NO_MEMORY;
    lines_.Rewind();
    Line line;
    std::string_view found;
    while (lines_.Next(line)) {
        if (ValueOfLine(line, key, found)) {
            value = UTF8Copy(found);
            return value ? SM_STATUS_OK : SM_STATUS_NO_MEMORY;
        }
    }
    return SM_STATUS_NOT_FOUND;
}

char *SMRegistrationKeyRead(const char *key, const char *defaultText)
{
    HeapPtr<char> value;
    if (RegistrationFile().Read(key, value) == SM_STATUS_NOT_FOUND)
        return SMUTF8Strdup(defaultText);
    return value.release();
}

} // namespace qzvest
