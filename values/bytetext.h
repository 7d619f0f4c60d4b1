// Bytes as text and back: plain hexadecimal digits, a comma list, a dump. Results are heap blocks; an empty one
// stands for a failure.
#ifndef VALUES_BYTETEXT_H
#define VALUES_BYTETEXT_H

#include <qzvest/types.h>

#include "frame/heap.h"

namespace qzvest {

// The size word: in, bytes at data; out, bytes of the text with its terminator. The first two know no text of no
// bytes and fail.
HeapPtr<char> SMXLTBytesToHexText(const uint8_t *data, uint32_t *sizeInOut);
HeapPtr<char> SMXLTBytesToCommaList(const uint8_t *data, uint32_t *sizeInOut);
HeapPtr<char> SMXLTBytesToDump(const uint8_t *data, uint32_t *sizeInOut, uint32_t firstAddress);

// Writes the two upper-case digits of each byte, and no terminator; gives the place behind them.
char *PutHexDigits(char *to, const uint8_t *data, size_t size);

// Stores the bytes that the text stands for; 0 after text that is none. When memory runs out, or the length of a
// comma list is wrong, the size stays as it is. The comma list has its commas replaced, and is spent by this.
HeapPtr<uint8_t> SMXLTHexTextToBytes(const char *text, uint32_t *sizeOut);
HeapPtr<uint8_t> SMXLTCommaListToBytes(char *text, uint32_t *sizeOut);

// Appends a line of 16 bytes each to the text: address, digits, characters. 0, or -1 when an append fails; the lines
// before it stay. No data appends nothing.
int32_t SMXLTDumpToSizedString(SMSSUTF8Str *sized, const uint8_t *data, uint32_t size, uint32_t firstAddress);

} // namespace qzvest

#endif
