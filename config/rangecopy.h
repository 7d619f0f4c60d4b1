// Stretches of one open file copied behind another, in large blocks.
#ifndef CONFIG_RANGECOPY_H
#define CONFIG_RANGECOPY_H

#include "frame/heap.h"

namespace qzvest {

enum class CopyResult { kDone, kReadFailed, kWriteFailed };

constexpr int64_t kToEnd = INT64_MAX; // to where the file ends

struct RangeCopier {
    int input;  // read at places, its own place is left alone
    int output; // written from its place on
    HeapPtr<char> block;

    // False when memory runs out; it comes before everything else.
    bool Open();

    // The bytes from begin up to end. A file that ends before cannot be read.
    CopyResult Copy(int64_t begin, int64_t end);
};

} // namespace qzvest

#endif
