#include "config/linereader.h"

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qzvest {
namespace {

constexpr uint32_t kBlock = 64 * 1024; // bytes asked for at a time, and more than any line

// As memchr for a line feed. Lines are short, and for those a call costs more than the search.
const char *FindLineFeed(const char *at, const char *end)
{
#if defined(__SSE2__)
    const __m128i feeds = _mm_set1_epi8('\n');
    for (; end - at >= 16; at += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
        const int found = _mm_movemask_epi8(_mm_cmpeq_epi8(block, feeds));
        if (found != 0)
            return at + std::countr_zero(static_cast<unsigned>(found));
    }
#endif
    return at != end ? static_cast<const char *>(std::memchr(at, '\n', static_cast<size_t>(end - at))) : nullptr;
}

} // namespace

bool LineReader::Open(int descriptor, uint32_t limit)
{
    block_ = HeapRoom<char>(kBlock);
    descriptor_ = descriptor;
    limit_ = limit;
    return block_ != nullptr;
}

// Reads on behind what is there; in a full block what is left is moved to the front. False at the end of the file.
bool LineReader::Fill()
{
    if (atEnd_)
        return false;
    if (end_ == kBlock) {
        end_ -= begin_;
        std::memmove(block_.get(), block_.get() + begin_, end_);
        begin_ = 0;
    }
    ssize_t got;
    do
        got = read(descriptor_, block_.get() + end_, kBlock - end_);
    while (got < 0 && errno == EINTR);
    failed_ = got < 0;
    atEnd_ = got <= 0;
    if (!atEnd_)
        end_ += static_cast<uint32_t>(got);
    return !atEnd_;
}

void LineReader::Rewind()
{
    if (place_ != begin_ || failed_) { // the block does not begin with the file any more
        end_ = 0;
        failed_ = lseek(descriptor_, 0, SEEK_SET) != 0;
        atEnd_ = failed_;
    }
    begin_ = 0;
    place_ = 0;
}

bool LineReader::Next(Line &line)
{
    for (;;) {
        const char *bytes = block_.get() + begin_;
        const uint32_t most = std::min(end_ - begin_, limit_ - 1);
        const char *feed = FindLineFeed(bytes, bytes + most);
        uint32_t size = most;
        if (feed != nullptr)
            size = static_cast<uint32_t>(feed - bytes) + 1;
        else if (most < limit_ - 1 && Fill())
            continue;
        if (size == 0 || failed_)
            return false;
        line = {block_.get() + begin_, size};
        begin_ += size;
        place_ += size;
        return true;
    }
}

void LineReader::SkipTo(uint32_t place)
{
    place_ += place - begin_;
    begin_ = place;
}

// Where the line begins in the block that has this byte first. False if there is none; then it is where the last line
// begins, of which more may follow.
bool LineReader::FindInBlock(char first, uint32_t &lineStart) const
{
    const char *const block = block_.get();
    const uint32_t piece = limit_ - 1;
    uint32_t start = begin_; // of the last line, its pieces not told apart
    for (uint32_t from = begin_, seen = begin_;;) {
        const auto *mark = static_cast<const char *>(std::memchr(block + from, first, end_ - from));
        const uint32_t at = mark != nullptr ? static_cast<uint32_t>(mark - block) : end_;
        if (const auto *feed = static_cast<const char *>(memrchr(block + seen, '\n', at - seen)))
            start = static_cast<uint32_t>(feed - block) + 1;
        seen = at;
        lineStart = start + (at - start) / piece * piece;
        if (mark == nullptr)
            return false;
        if (std::all_of(block + lineStart, mark, IsBlank))
            return true;
        // What else there is of this mark on the line is not the first byte either.
        const uint32_t lineEnd = std::min(lineStart + piece, end_);
        const char *feed = FindLineFeed(mark, block + lineEnd);
        from = feed != nullptr ? static_cast<uint32_t>(feed - block) + 1 : lineEnd;
    }
}

bool LineReader::NextWith(char first, Line &line)
{
    for (;;) {
        uint32_t lineStart;
        const bool found = FindInBlock(first, lineStart);
        SkipTo(lineStart);
        if (found)
            return Next(line);
        if (!Fill())
            return false;
    }
}

} // namespace qzvest
