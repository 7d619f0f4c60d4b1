// Lines of a configuration file, read in blocks.
//
// A line is read with a limit: one of more bytes comes in pieces, and each piece is a line of its own to everybody. A
// line ends behind its line feed, or where the file ends.
#ifndef CONFIG_LINEREADER_H
#define CONFIG_LINEREADER_H

#include <string_view>

#include "frame/heap.h"

namespace qzvest {

constexpr uint32_t kLineLimit = 8450; // a piece has one byte less

// bytes[0..size), the line feed included. Zero bytes may be among them; what reads the line as text sees it up to the
// first. It lives to the next call.
struct Line {
    const char *bytes;
    uint32_t size;
};

inline bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

inline std::string_view SkipBlanks(std::string_view text)
{
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

class LineReader {
public:
    // Reads from the descriptor's place on, which has to be 0; the descriptor stays the caller's.
    // False when memory runs out.
    bool Open(int descriptor, uint32_t limit = kLineLimit);

    // The next line. False at the end of the file, and after a read error.
    bool Next(Line &line);

    // The next line whose first byte that is no space or tab is this one. The lines before it are passed without being
    // looked at one by one.
    bool NextWith(char first, Line &line);

    // Back to the first line. Of a file that fits a block nothing is read again.
    void Rewind();

    bool Failed() const
    {
        return failed_;
    }

    // Where the line that Next gives next begins, in bytes from the start of the file.
    int64_t Place() const
    {
        return place_;
    }

private:
    bool Fill();
    void SkipTo(uint32_t place);
    bool FindInBlock(char first, uint32_t &lineStart) const;

    HeapPtr<char> block_;
    uint32_t begin_ = 0; // of what is read and not handed out yet
    uint32_t end_ = 0;
    uint32_t limit_ = kLineLimit;
    int64_t place_ = 0;
    int descriptor_ = -1;
    bool atEnd_ = false;
    bool failed_ = false;
};

} // namespace qzvest

#endif
