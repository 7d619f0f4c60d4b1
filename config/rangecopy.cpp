#include "config/rangecopy.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "os/file.h"

namespace qzvest {
namespace {

constexpr int64_t kBlock = int64_t{128} * 1024;

} // namespace

bool RangeCopier::Open()
{
    block = HeapRoom<char>(kBlock);
    return block != nullptr;
}

CopyResult RangeCopier::Copy(int64_t begin, int64_t end)
{
    while (begin < end) {
        const ssize_t got = pread(input, block.get(), static_cast<size_t>(std::min(end - begin, kBlock)), begin);
        if (got < 0 && errno == EINTR)
            continue;
        if (got == 0 && end == kToEnd)
            break;
        if (got <= 0)
            return CopyResult::kReadFailed;
        if (!WriteFully(output, block.get(), static_cast<size_t>(got)))
            return CopyResult::kWriteFailed;
        begin += got;
    }
    return CopyResult::kDone;
}

} // namespace qzvest
