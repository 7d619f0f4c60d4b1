// Numbers and times to and from text of both encodings.
#ifndef TEXT_NUMBER_H
#define TEXT_NUMBER_H

#include <cstdint>
#include <ctime>

namespace qzvest {

// The decimal number behind white space of the locale; what follows the digits is not looked at. 0 without digits;
// an overflow wraps. The signed form takes one sign, the unsigned one a plus alone: a minus gives 0.
int64_t UTF8StrToInt64(const char *string);
uint64_t UTF8StrToUInt64(const char *string);

// Decimal digits, terminated. The destination has room for kInt64Text bytes.
constexpr uint32_t kInt64Text = 21;
void Int64ToUTF8Str(char *destination, int64_t value);
void UInt64ToUTF8Str(char *destination, uint64_t value);

// The C library's time text without its line feed. 0, or -1 for a time that has none. A bound, in bytes, that is too
// small gives 0 and an empty text; with a bound of 0 nothing is written.
int32_t TimeToUTF8Str(const time_t *time, char *destination, uint32_t bound);

// 0 also for NULL, for text with anything beyond ASCII, and when memory runs out. The forms of 32 bits keep the low
// half of what the C library's long parsers give.
int32_t UCS2StrToInt32(const uint16_t *string);
uint32_t UCS2StrToUInt32(const uint16_t *string);
int64_t UCS2StrToInt64(const uint16_t *string);
uint64_t UCS2StrToUInt64(const uint16_t *string);
double UCS2StrToDouble(const uint16_t *string);

// 0, or -1. The size word is that of UTF8ToUCS2Convert; a NULL destination asks for the size. A text of a double
// that is longer than 127 characters becomes an empty one.
int32_t Int32ToUCS2Str(int32_t value, int32_t radix, uint16_t *destination, uint32_t *sizeInOut);
int32_t UInt32ToUCS2Str(uint32_t value, int32_t radix, uint16_t *destination, uint32_t *sizeInOut);
int32_t DoubleToUCS2Str(int32_t precision, uint16_t *destination, uint32_t *sizeInOut, double value);
int32_t TimeToUCS2Str(const time_t *time, uint16_t *destination, uint32_t *sizeInOut);

} // namespace qzvest

#endif
