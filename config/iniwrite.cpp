// Changes of INI files: a new section is appended, anything else is a rewrite to a temporary file and a swap.
//
// Every rewrite comes down to three parts: the input up to a place, new text, and the input from a place on. Where the
// places lie is what callers count on, losses included.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "config/ini.h"
#include "config/inicore.h"
#include "config/rangecopy.h"
#include "ipc/filelock.h"
#include "os/descriptor.h"
#include "os/file.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

constexpr mode_t kDefaultMode = 0644;
constexpr mode_t kOwnerBits = 0700;

bool WriteText(int file, std::string_view text)
{
    return WriteFully(file, text.data(), text.size());
}

// ---- Rewrite ----

class Rewrite {
public:
    Rewrite(int input, int output) : copier_{input, output, {}} {}

    // False when memory runs out.
    bool Open()
    {
        return copier_.Open();
    }

    uint32_t SetKey(LineReader &reader, const char *key, const char *value);
    uint32_t DeleteSection(LineReader &reader, int64_t headerStart);

    // Copies the input from where the last copy ended up to this place.
    bool CopyTo(int64_t end);

private:
    uint32_t WriteKeyAndRest(const char *key, const char *value, int64_t restStart);
    uint32_t PassKeyLine(int64_t lineEnd);

    // Comment and blank lines that wait for the line behind them.
    struct Pending {
        int64_t start;
        int64_t end;
        bool any;
    };

    RangeCopier copier_;
    int64_t copied_ = 0;
    Pending pending_ = {0, 0, false};
};

bool Rewrite::CopyTo(int64_t end)
{
    const int64_t begin = copied_;
    copied_ = end;
    return copier_.Copy(begin, end) == CopyResult::kDone;
}

uint32_t Rewrite::WriteKeyAndRest(const char *key, const char *value, int64_t restStart)
{
    if (value != nullptr) {
        const HeapPtr<char> line = UTF8Join({key, "=", value, "\n"});
        if (!line)
            return SM_STATUS_NO_MEMORY;
        if (!WriteText(copier_.output, line.get()))
            return SM_STATUS_LIMIT_REACHED;
    }
    copied_ = restStart;
    return CopyTo(kToEnd) ? SM_STATUS_OK : SM_STATUS_LIMIT_REACHED;
}

// Another key: what waited in front of it goes with it.
uint32_t Rewrite::PassKeyLine(int64_t lineEnd)
{
    if (pending_.any) {
        if (!CopyTo(pending_.start))
            return SM_STATUS_LIMIT_REACHED;
        if (!CopyTo(pending_.end))
            return SM_STATUS_FAILED;
        pending_.any = false;
    }
    pending_.start = lineEnd;
    return SM_STATUS_OK;
}

enum class WriterLine { kComment, kHeader, kKey };

// A line within a section, as the writer sees it, which is not as the reader does: comments may be indented, and a line
// without an equals sign is a key.
WriterLine Classify(const Line &line, std::string_view &key)
{
    std::string_view text(line.bytes, strnlen(line.bytes, line.size));
    while (!text.empty() && IsTextSpace(text.front()))
        text.remove_prefix(1);
    if (text.empty() || text[0] == ';' || text[0] == '#')
        return WriterLine::kComment;
    if (text[0] == '[')
        return WriterLine::kHeader;
    key = {text.data(), std::min(text.find_first_of("=\n"), text.size())};
    return WriterLine::kKey;
}

uint32_t Rewrite::SetKey(LineReader &reader, const char *key, const char *value)
{
    pending_.start = reader.Place();
    Line line;
    std::string_view found;
    for (int64_t lineStart = reader.Place(); reader.Next(line); lineStart = reader.Place()) {
        const WriterLine kind = Classify(line, found);
        if (kind == WriterLine::kComment) {
            pending_.end = reader.Place();
            pending_.any = true;
            continue;
        }
        if (kind == WriterLine::kHeader) {
            // A new key goes in front of the lines that wait. With none, the header just read is lost, and its keys
            // fall to this section: files that were written here have a blank line in front of each header.
            const int64_t keyStart = pending_.any ? pending_.start : lineStart;
            const int64_t restStart = pending_.any ? pending_.start : reader.Place();
            return CopyTo(keyStart) ? WriteKeyAndRest(key, value, restStart) : SM_STATUS_LIMIT_REACHED;
        }
        if (found == key) {
            if (const uint32_t status = PassKeyLine(lineStart); status != SM_STATUS_OK)
                return status;
            return CopyTo(lineStart) ? WriteKeyAndRest(key, value, reader.Place()) : SM_STATUS_LIMIT_REACHED;
        }
        if (const uint32_t status = PassKeyLine(reader.Place()); status != SM_STATUS_OK)
            return status;
    }
    if (reader.Failed())
        return SM_STATUS_INI_BAD_SECTION;
    // Lines that wait at the end of the file are dropped.
    const int64_t end = reader.Place();
    return CopyTo(pending_.any ? pending_.start : end) ? WriteKeyAndRest(key, value, end) : SM_STATUS_LIMIT_REACHED;
}

// The body ends at a line that begins with "[" or, so it is settled, with "#".
uint32_t Rewrite::DeleteSection(LineReader &reader, int64_t headerStart)
{
    if (!CopyTo(headerStart))
        return SM_STATUS_LIMIT_REACHED;
    Line line;
    for (copied_ = reader.Place(); reader.Next(line); copied_ = reader.Place())
        if (line.bytes[0] == '[' || line.bytes[0] == '#')
            return CopyTo(kToEnd) ? SM_STATUS_OK : SM_STATUS_LIMIT_REACHED;
    return reader.Failed() ? SM_STATUS_INI_BAD_SECTION : SM_STATUS_OK;
}

// ---- The road of a change ----

// A file that cannot be examined may be there; the rewrite will see.
bool IsMissing(const char *path)
{
    if (access(path, F_OK) == 0)
        return false;
    return errno == ENOENT || errno == ENOTDIR || errno == ELOOP || errno == ENAMETOOLONG;
}

struct SplitPath {
    HeapPtr<char> directory; // for the temporary file
    uint32_t status;
};

SplitPath MakeDirectoryOf(const char *path)
{
    const char *slash = std::strrchr(path, '/');
    if (slash != nullptr && slash[1] == '\0')
        return {nullptr, SM_STATUS_BAD_ARGUMENT};
    const bool named = slash != nullptr && slash != path;
    const std::string_view text = named ? std::string_view(path, static_cast<size_t>(slash - path)) : ".";
    HeapPtr<char> directory = UTF8Copy(text);
    if (!directory)
        return {nullptr, SM_STATUS_NO_MEMORY};
    if (named && SMMkDir(directory.get()) != SM_STATUS_OK)
        return {nullptr, SM_STATUS_FAILED};
    return {std::move(directory), SM_STATUS_OK};
}

uint32_t AppendSection(const char *section, const char *key, const char *value, const char *path)
{
    if (value == nullptr)
        return SM_STATUS_INI_BAD_VALUE;
    if (key == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    const HeapPtr<char> header = UTF8Join({"[", section, "]\n"});
    const HeapPtr<char> line = UTF8Join({key, "=", value, "\n"});
    if (!header || !line)
        return SM_STATUS_NO_MEMORY;
    uint32_t size = 0;
    if (SMGetSizeOfFile(path, &size) != SM_STATUS_OK || size == UINT32_MAX)
        size = 0;
    const mode_t mode = SMFileModeGet(path, kDefaultMode, kKeepSticky);
    Descriptor file(open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, mode));
    if (!file)
        return SM_STATUS_FILE_NOT_FOUND;
    (void)fchmod(file.Get(), mode); // of somebody else's file it stays as it is
    struct stat before;
    const bool known = fstat(file.Get(), &before) == 0;
    const bool written = (size == 0 || WriteText(file.Get(), "\n")) && WriteText(file.Get(), header.get()) &&
                         WriteText(file.Get(), line.get());
    if (!written && known)
        (void)ftruncate(file.Get(), before.st_size); // a part of a header would spoil the sections behind it
    return file.Close() && written ? SM_STATUS_OK : SM_STATUS_LIMIT_REACHED;
}

// Gives SM_STATUS_INI_NO_SECTION, with the temporary file gone, when there is no such section. After any other failure
// the temporary file stays; nothing ever reads it.
uint32_t RewriteFile(const char *section, const char *key, const char *value, const char *path, const char *directory)
{
    uint32_t status;
    HeapPtr<char> temporary = TmpPathIn(directory, status);
    if (!temporary)
        return status == SM_STATUS_NO_MEMORY ? status : SM_STATUS_FAILED;
    const mode_t mode = SMFileModeGet(path, kDefaultMode, kKeepSticky);
    const Descriptor input = OpenToRead(path);
    if (!input)
        return SM_STATUS_INI_OPEN_FAILED;
    Descriptor output = CreateTmpFile(directory, temporary, mode & kOwnerBits, status);
    if (!output)
        return status;
    (void)fchmod(output.Get(), mode);
    status = INIRewrite(input.Get(), output.Get(), section, key, value);
    const bool closed = output.Close();
    if (status == SM_STATUS_INI_NO_SECTION)
        (void)unlink(temporary.get());
    if (status != SM_STATUS_OK)
        return status;
    return closed ? SMSafeFileReplace(path, temporary.get()) : SM_STATUS_LIMIT_REACHED;
}

} // namespace

uint32_t INIRewrite(int input, int output, const char *section, const char *key, const char *value)
{
    LineReader reader;
    Rewrite rewrite(input, output);
    if (!reader.Open(input) || !rewrite.Open())
        return SM_STATUS_NO_MEMORY;
    int64_t headerStart;
    const uint32_t status = FindSection(reader, section, headerStart);
    if (status == SM_STATUS_INI_BAD_SECTION)
        return rewrite.CopyTo(reader.Place()) ? status : SM_STATUS_LIMIT_REACHED;
    if (status != SM_STATUS_OK)
        return reader.Failed() ? SM_STATUS_INI_BAD_SECTION : status;
    return key != nullptr ? rewrite.SetKey(reader, key, value) : rewrite.DeleteSection(reader, headerStart);
}

uint32_t INIWrite(const char *section, const char *key, const char *value, uint32_t valueSize, const char *path,
                  int16_t wait)
{
    if (std::strlen(section) >= kININameRoom || (key != nullptr && std::strlen(key) >= kININameRoom))
        return SM_STATUS_BAD_ARGUMENT;
    if (value != nullptr ? valueSize > kINIValueRoom || std::strlen(value) + 1 != valueSize : valueSize != 0)
        return SM_STATUS_INI_BAD_VALUE;
    const SplitPath split = MakeDirectoryOf(path);
    if (split.status != SM_STATUS_OK)
        return split.status;
    const FileLockGuard lock(path, kFileLockWriter, wait);
    if (lock.Status() != SM_STATUS_OK)
        return lock.Status();
    if (!RollBack(path))
        return SM_STATUS_NO_MEMORY;
    if (IsMissing(path))
        return AppendSection(section, key, value, path);
    const uint32_t status = RewriteFile(section, key, value, path, split.directory.get());
    return status == SM_STATUS_INI_NO_SECTION ? AppendSection(section, key, value, path) : status;
}

} // namespace qzvest
