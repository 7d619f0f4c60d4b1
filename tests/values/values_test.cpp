// Typed values, address text and parameters, by the exports.

#include <gtest/gtest.h>
#include <qzvest/netaddress.h>
#include <qzvest/parameter.h>
#include <qzvest/typedvalue.h>

#include <bit>
#include <cfloat>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;

constexpr uint32_t kOctal = SMXLT_FORMAT_OCTAL, kHex = SMXLT_FORMAT_HEX, kBase2 = SMXLT_FORMAT_BINARY;
constexpr uint32_t kOk = SM_STATUS_OK, kFailed = SM_STATUS_FAILED, kSmall = SM_STATUS_BUFFER_TOO_SMALL;
constexpr uint32_t kBad = SM_STATUS_BAD_ARGUMENT, kInvalid = SM_STATUS_INVALID_PARAMETER;
constexpr uint32_t kLarge = SM_STATUS_VALUE_TOO_LARGE, kBelow = SM_STATUS_VALUE_TOO_SMALL;

template <typename Value>
std::string Bytes(Value value)
{
    return std::string(reinterpret_cast<char *>(&value), sizeof value);
}

std::string Failure(uint32_t status, uint32_t size)
{
    return "status " + std::to_string(status) + ", size " + std::to_string(size);
}

// The value that a text gives with room for 100 bytes, at an odd address where that may be; without success nothing is
// written. That too little room is told of, and how much is needed, is shown for all types in typedvalue_fuzz.cpp.
std::string FromText(std::string text, uint32_t type)
{
    std::string room(102, 'Z');
    const size_t place = type == SMXLT_TYPE_UCS2 ? 2 : 1;
    uint32_t size = 100;
    const uint32_t status = SMXLTUTF8ToTypeValue(text.data(), &room[place], &size, type);
    const uint32_t written = status == kOk ? size : 0;
    EXPECT_EQ(room.find_first_not_of('Z', place + written), room.npos) << text;
    return status == kOk ? room.substr(place, written) : Failure(status, size);
}

TEST(TypedValue, FromText)
{
    // Ranges are those of the low 32 bits of what fits into 64.
    const std::pair<std::string, std::string> cases[] = {
        {FromText("TRUE", 0), Bytes<int16_t>(1)},
        {FromText("fAlse", 0), Bytes<int16_t>(0)},
        {FromText("0xFFFFFF80", 1 | kHex), Bytes<int8_t>(-128)},
        {FromText("4294967297", 3 | 0xABCD0000), Bytes(1)},
        {FromText("9223372036854775807", 3), Bytes(-1)},
        {FromText("37777777777", 3 | kOctal), Bytes(-1)},
        {FromText("18446744073709551621", 4), Bytes<int64_t>(5)},
        {FromText("-", 4), Bytes<int64_t>(0)},
        {FromText("-18446744073709551361", 5), "\xFF"},
        {FromText("-1", 7), Bytes(UINT32_MAX)},
        {FromText("-5", 8), Bytes<uint64_t>(0)},
        {FromText("0x123456789abcdef", 8 | kHex), Bytes<uint64_t>(0x123456789ABCDEF)},
        {FromText("zh_TW", 10), Bytes(1028)},
        {FromText("010.001.000.099", 15), Bytes(0x6300010A)},
        {FromText("0xff.0xFF.0Xff.0xff", 15), "\xFF\xFF\xFF\xFF"},
        {FromText("1.2", 15), "\1\0\0\2"s},
        // A decimal integer goes by the reader that wraps.
        {FromText("-2.25kg", 9 | kOctal), Bytes(-2.25)},
        {FromText("-0", 9), Bytes(0.0)},
        {FromText("-0", 9 | kHex), Bytes(-0.0)},
        {FromText("0x10", 9), Bytes(16.0)},
        {FromText("18446744073709551618", 9), Bytes(2.0)},
        {FromText("18446744073709551618", 9 | kHex), Bytes(18446744073709551616.0)},
        {FromText("0A0b", 12), "\x0A\x0B"},
        {FromText("FFfe", 16 | kOctal), "\xFF\xFE"},
        {FromText("0x0A,zzzz,0x01", 12 | kHex), "\x0A"},
        {FromText("1,2,3,4,5", 12 | kHex), "\1\2\3\4\5"},
        {FromText("a\xC3\xA9", 13), "a\xC3\xA9\0"s},
        {FromText("a\xC3\xA9", 14), "a\0\xE9\0\0\0"s},
    };
    for (const auto &[value, expected] : cases)
        EXPECT_EQ(value, expected);
    const std::tuple<uint32_t, uint32_t, uint32_t, std::vector<const char *>> refusals[] = {
        {0, kInvalid, 2, {"1", "truer", "tru", ""}},
        {1, kLarge, 1, {"128"}},
        {1, kBelow, 1, {"-129"}},
        {2, kLarge, 2, {"32768"}},
        {3, kInvalid, 4, {"", "+", "+-1", " 1", "1 ", "0x1", "9223372036854775808", "-9223372036854775809"}},
        {3 | kBase2, kInvalid, 4, {"101"}},
        {3 | kOctal, kInvalid, 4, {"", "8", "-1"}},
        {3 | kHex, kInvalid, 4, {"", "0x", "x1", "0x0x1", "-1", "000000001"}},
        {4 | kOctal, SM_STATUS_UNSUPPORTED, 8, {"1"}},
        {5, kLarge, 1, {"-1", "256"}},
        {7, kInvalid, 4, {"18446744073709551616"}},
        {8 | kHex, kInvalid, 8, {"", "0x", "10000000000000000"}},
        {10, kFailed, 4, {"ZH_TW", ""}},
        {11, kBad, 0, {"Thu Jan  1 00:00:00 1970"}},
        {12, kFailed, 0, {"0x"}},
        {12 | SMXLT_FORMAT_DECIMAL, kBad, 3, {"00"}},
        {12 | kHex, kFailed, 0, {"0x0A,0x1FF,00x"}},
        {12 | kHex, kFailed, 100, {""}},
        {14, SM_STATUS_BAD_FORMAT, 100, {"\xC3"}},
        {15, kFailed, 4, {"300.1.1.1", "4294967295", "0X10.0.0.1", "0x", ""}},
        {17, kBad, 0, {"1"}},
    };
    for (const auto &[type, status, size, texts] : refusals)
        for (const char *text : texts)
            EXPECT_EQ(FromText(text, type), Failure(status, size)) << text << " as " << type;
    char list[] = "0x0A,0xFF", shifted[] = "overlap";
    uint32_t size = sizeof shifted;
    SMXLTUTF8ToTypeValue(list, shifted, &size, SMXLT_TYPE_BYTES | kHex);
    EXPECT_EQ(std::string(list, sizeof list), "0x0A\0\x30xFF\0"s);
    strcpy(shifted, "overlap");
    EXPECT_EQ(SMXLTUTF8ToTypeValue(shifted + 1, shifted, &(size = 8), SMXLT_TYPE_UTF8), kOk);
    EXPECT_STREQ(shifted, "verlap");
}

TEST(TypedValue, ToText)
{
    const std::string line = "0x00000000: 41 7A 7B 7E:00 1F 20 FF:01 02 03 04:05 06 07 08   Az.... .........  \n";
    const std::string dump = "Az{~" + std::string("\0\x1F \xFF\1\2\3\4\5\6\7\x08", 12);
    const std::tuple<uint32_t, std::string, uint32_t, std::string> cases[] = {
        {0, Bytes<int16_t>(1), 5, "true"},
        {0, Bytes<int16_t>(2), 6, "false"},
        {1 | kHex, "\xFF", 17, "0xffffffff"},
        {1 | kBase2, "\x80", 33, std::string(25, '1') + "0000000"},
        {3 | 0x0700, Bytes<int32_t>(INT32_MIN), 17, "-2147483648"},
        {4 | kBase2, Bytes<int64_t>(INT64_MIN), 33, "-9223372036854775808"},
        {8 | kHex, Bytes<uint64_t>(UINT64_MAX), 32, "18446744073709551615"},
        {9 | kHex, Bytes(-1.0625), 32, "-1.062"},
        {9, Bytes(1e40), 32, "1000000000000000030378602842700"},
        {10, Bytes<uint32_t>(1042), 16, "en_US"},
        {11, Bytes<time_t>(0), 64, "Thu Jan  1 00:00:00 1970"},
        {12, "\x0A\xFF", 5, "0AFF"},
        {12 | kHex, "\x0A\xFF", 10, "0x0A,0xFF"},
        {12 | kBase2, dump, 82, line},
        {12 | kBase2, dump + "z", 163,
         line + "0x00000010: 7A" + std::string(48, ' ') + "z" + std::string(17, ' ') + "\n"},
        {13, std::string("ab\0cd", 6), 6, "ab"},
        {14, Bytes<uint64_t>(0xE9), 3, "\xC3\xA9"},
        {15, "\x0A\x01\x02\xFF", 11, "10.1.2.255"},
        {16, std::string(100, '\xAA'), 127, std::string(126, 'A')},
    };
    setenv("TZ", "UTC", 1);
    for (const auto &[type, givenValue, needed, givenText] : cases) {
        SCOPED_TRACE(type);
        // UCS-2 wants its units aligned, as any heap block has them.
        const std::vector<char> value(givenValue.begin(), givenValue.end() + 1);
        const auto valueSize = static_cast<uint32_t>(givenValue.size());
        const bool isAddress = type == SMXLT_TYPE_IPV4;
        uint32_t size = 0;
        EXPECT_EQ(SMXLTTypeValueToUTF8(value.data(), valueSize, nullptr, &size, type), isAddress ? kBad : kSmall);
        EXPECT_EQ(size, isAddress ? 0 : needed);
        std::vector<char> text(size = needed);
        EXPECT_EQ(SMXLTTypeValueToUTF8(value.data(), valueSize, text.data(), &size, type), kOk);
        EXPECT_EQ(size, givenText.size() + 1);
        EXPECT_STREQ(text.data(), givenText.c_str());
    }
}

TEST(TypedValue, LimitsAndBadArguments)
{
    char text[400] = "1";
    uint32_t size = UINT32_MAX; // a caller who knows the room is there
    const double largest = -DBL_MAX;
    const time_t never = INT64_MAX;
    const auto toText = [&](const void *value, uint32_t valueSize, uint32_t room, uint32_t type) {
        return SMXLTTypeValueToUTF8(value, valueSize, text, &(size = room), type);
    };
    EXPECT_EQ(SMXLTUTF8ToTypeValue(text, nullptr, &size, 17), kInvalid); // the size word is looked at first
    EXPECT_EQ(toText(&largest, 8, UINT32_MAX, SMXLT_TYPE_DOUBLE), kOk);
    EXPECT_EQ(size, 315u);
    EXPECT_EQ(toText(&never, 8, 400, SMXLT_TYPE_TIME), kFailed);
    EXPECT_EQ(SMXLTTypeValueToUTF8(&never, 0, nullptr, &(size = 0), SMXLT_TYPE_UTF8), kSmall);
    EXPECT_EQ(toText("abcd", 4, 4, SMXLT_TYPE_UTF8), kOk); // no terminator in sight
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(toText(nullptr, 4, 400, 17), kInvalid);
    EXPECT_EQ(toText("abcd", 4, 400, 17), kBad);
    EXPECT_EQ(toText("abcd", 4, 400, SMXLT_TYPE_BYTES | kOctal), kBad);
    EXPECT_EQ(toText("abcd", 0, 400, SMXLT_TYPE_BYTES), kFailed);
}

TEST(NetworkAddress, ThereAndBack)
{
    uint32_t address = 77, size = 16;
    char text[16];
    EXPECT_EQ(SMIPAddrASCIIToNetwork("0x", &address), kFailed);
    EXPECT_EQ(address, 77u);
    EXPECT_EQ(SMIPAddrASCIIToNetwork("100.020.1x0.255", &address), kOk);
    EXPECT_EQ(SMIPAddrNetworkToASCII(address, text, &size), kOk);
    EXPECT_STREQ(text, "100.20.10.255");
    EXPECT_EQ(size, 14u);
}

struct Vector {
    Vector(std::initializer_list<const char *> list) : texts(list.begin(), list.end())
    {
        for (std::string &text : texts)
            pointers.push_back(text.data());
    }

    std::vector<std::string> texts;
    std::vector<char *> pointers;
    const int32_t count = static_cast<int32_t>(texts.size());
};

TEST(Parameter, NameAndValue)
{
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {"a=b=c", "a", "b=c"},      {"a=", "a", ""},        {"==", nullptr, nullptr}, {"=b", nullptr, nullptr},
        {"name", nullptr, nullptr}, {"", nullptr, nullptr}, {" =b", " ", "b"},
    };
    for (const auto &[givenText, givenName, givenValue] : cases) {
        std::string text = givenText;
        const char *value = SMNVPGetUTF8ParamValue(text.data());
        EXPECT_EQ(SMIsValidParam(text.c_str()), givenName != nullptr ? 1u : 0u) << givenText;
        EXPECT_STREQ(value, givenValue);
        EXPECT_STREQ(SMNVPGetUTF8ParamName(text.data()), givenName);
        EXPECT_STREQ(value, givenValue); // still there
        EXPECT_TRUE(givenName != nullptr || text == givenText);
    }
}

TEST(Parameter, SearchByName)
{
    const Vector vector = {"", "=x", "alone", "x=1", "x=2", "Long Name=a=b", "empty=", "xy=3", "\xC4=4"};
    const std::tuple<const char *, int16_t, int32_t> cases[] = {
        {"x", 0, 3},           {"X", 0, -1},    {"X", 1, 3},      {"X", 2, -1},     {"xy", 0, 7},
        {"", 0, -1},           {"=", 0, -1},    {"alone", 0, -1}, {"x=2", 0, 3},    {"LONG NAME=", 1, 5},
        {"Long Name=a", 0, 5}, {"Long", 0, -1}, {"=x", 0, -1},    {"empty=", 0, 6}, {"\xC4", 1, 8},
    };
    for (const auto &[name, ignoreCase, index] : cases) {
        EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(vector.count, vector.pointers.data(), name, ignoreCase), index) << name;
        const char *value = SMNVPGetUTF8ParamValueByUTF8Name(vector.count, vector.pointers.data(), name, ignoreCase);
        EXPECT_EQ(value, index < 0 ? nullptr : SMNVPGetUTF8ParamValue(vector.pointers[index])) << name;
    }
    EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(3, vector.pointers.data(), "x", 0), -1);
}

TEST(Parameter, TypedValue)
{
    const Vector vector = {"wide=65536", "empty="};
    const auto read = [&](const char *name, void *value, uint32_t type) {
        uint32_t size = 8;
        return SMNVPUTF8ToTypeValue(vector.count, vector.pointers.data(), name, 1, value, &size, type);
    };
    char text[8] = "#";
    EXPECT_EQ(read("WIDE", text, SMXLT_TYPE_UINT16), SM_STATUS_VALUE_TOO_LARGE);
    EXPECT_EQ(read("absent", text, SMXLT_TYPE_UINT16), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(read("wide", nullptr, SMXLT_TYPE_UINT32), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(read("empty", text, SMXLT_TYPE_UTF8), SM_STATUS_OK); // there, if empty
    EXPECT_STREQ(text, "");
}

const SMNVPEnumEntry kTable[] = {{nullptr, 99}, {"none", 1}, {"read", 2}, {"write", 4}, {"READ", 8}, {"a,b", 16}};
const int32_t kRows = 6;

TEST(ParameterEnum, WordsAndMasks)
{
    const Vector none = {"e=none"};
    for (const auto &[rows, value] : {std::pair{1, 0x80000000u}, {2, 1u}})
        EXPECT_EQ(SMNVPGetEnums32Value(1, none.pointers.data(), "e", 0, kTable, rows, 0), value);
    // Where there is a "|", only that splits; a trimmed blank counts as a split.
    const std::tuple<const char *, uint32_t, uint32_t> cases[] = {
        {"e=none", 1, 1},       {"e=READ", 2, 2},         {"e=writes", 99, 0},          {"e=", 99, 0},
        {"e= read", 99, 2},     {"f=read", 1, 1},         {"e= Read | WRITE ", 99, 6},  {"e=read,write|none", 99, 1},
        {"e=a,b|none", 99, 17}, {"e=read,write ", 99, 0}, {"e=|read||unknown|", 99, 2}, {"e=read,", 99, 2},
        {"e=,", 99, 0},
    };
    for (const auto &[parameter, word, mask] : cases) {
        const Vector vector = {parameter};
        for (const uint16_t mode : {uint16_t{0}, uint16_t{1}, uint16_t{2}})
            EXPECT_EQ(SMNVPGetEnums32Value(1, vector.pointers.data(), "e", 0, kTable, kRows, mode),
                      mode == 1 ? mask : word)
                << parameter;
    }
}

} // namespace
