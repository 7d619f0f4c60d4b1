// Typed values: their texts, sizes, defaults and statuses, in both directions.

#include <cfloat>

#include "config/ini_fixture.h"

namespace {

constexpr uint64_t kUntouched = 0x5A5A5A5A5A5A5A5A;

uint64_t BitsOf(double value)
{
    uint64_t bits;
    memcpy(&bits, &value, sizeof bits);
    return bits;
}

uint32_t BytesOf(uint32_t type)
{
    return type == INI_TYPE_BOOL ? 2 : type < INI_TYPE_UINT64 ? 4 : 8;
}

class IniValue : public IniFile {};

TEST_F(IniValue, ReadsNumbersAndBooleans)
{
    struct {
        uint32_t type;
        std::string text;
        uint64_t value; // the bytes that dest gets, in front of untouched ones
        uint32_t status = SM_STATUS_OK;
    } const cases[] = {
        {INI_TYPE_BOOL, "  tRuE  more", 1},
        {INI_TYPE_BOOL, "false", 0},
        {INI_TYPE_BOOL, "TRUE\t", 7, SM_STATUS_INI_BAD_VALUE},
        {INI_TYPE_BOOL, "   ", 7, SM_STATUS_INI_BAD_VALUE},
        {INI_TYPE_UINT32, "4294967297", 1},
        {INI_TYPE_UINT32, "99999999999999999999", 0xFFFFFFFF},
        {INI_TYPE_UINT32, " +5x\r", 5},
        {INI_TYPE_UINT32, "-1", 0xFFFFFFFF},
        {INI_TYPE_UINT32, "0x10", 0},
        {INI_TYPE_INT32, "2147483648", 0x80000000},
        {INI_TYPE_INT32, "-99999999999999999999", 0},
        {INI_TYPE_INT32, "", 0},
        {INI_TYPE_UINT64, " \t\v18446744073709551615", UINT64_MAX},
        {INI_TYPE_UINT64, "18446744073709551618", 2},
        {INI_TYPE_UINT64, "+7x", 7},
        {INI_TYPE_UINT64, "-7", 0},
        {INI_TYPE_INT64, "-9223372036854775808", UINT64_C(1) << 63},
        {INI_TYPE_INT64, "9223372036854775808", UINT64_C(1) << 63},
        {INI_TYPE_INT64, "+-7", 0},
        {INI_TYPE_DOUBLE, " -1.5e3x", BitsOf(-1500)},
        {INI_TYPE_DOUBLE, "0x1p4", BitsOf(16)},
        {INI_TYPE_DOUBLE, "1,5", BitsOf(1)},
        {INI_TYPE_UINT32, std::string(8192, '0'), 0},
        {INI_TYPE_UINT32, std::string(8193, '0'), 7, SM_STATUS_BUFFER_TOO_SMALL},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(testing::Message() << "type " << row.type << " \"" << row.text.substr(0, 40) << "\"");
        Put("[a]\nk=" + row.text + "\n");
        const uint32_t bytes = BytesOf(row.type);
        const uint64_t fallback = 7;
        uint64_t dest = kUntouched, expected = kUntouched;
        memcpy(&expected, &row.value, bytes);
        uint32_t size = row.status == SM_STATUS_OK ? bytes : 8;
        EXPECT_EQ(SMReadINIPathFileValue("a", "k", row.type, &dest, &size, &fallback, 8, path.c_str(), 1), row.status);
        EXPECT_EQ(dest, expected);
        EXPECT_EQ(size, bytes);
    }
}

TEST_F(IniValue, AppliesDefaultsOfTheTypesSize)
{
    Put("[a]\nk=1\n");
    const std::string none = folder + "/none";
    for (uint32_t type = INI_TYPE_BOOL; type <= INI_TYPE_DOUBLE; ++type) {
        const uint32_t bytes = BytesOf(type);
        struct {
            const char *section, *key, *file;
            uint32_t size, defaultSize, status, sizeAfter;
        } const cases[] = {
            {"a", "k", path.c_str(), bytes - 1, 8, SM_STATUS_BAD_ARGUMENT, bytes - 1},
            {"a", "x", path.c_str(), 8, bytes - 1, SM_STATUS_INI_NO_KEY, 0}, // too small a default is none
            {"a", "x", path.c_str(), 8, 8, SM_STATUS_INI_NO_KEY, bytes},
            {"b", "x", path.c_str(), 8, 8, SM_STATUS_INI_NO_SECTION, bytes},
            {"a", "x", none.c_str(), 8, 8, SM_STATUS_INI_OPEN_FAILED, bytes},
        };
        for (const auto &row : cases) {
            SCOPED_TRACE(testing::Message() << "type " << type << " row " << &row - cases);
            const uint64_t fallback = 0x0101010101010101;
            uint64_t dest = kUntouched, expected = kUntouched;
            uint32_t size = row.size;
            memcpy(&expected, &fallback, row.sizeAfter == bytes ? bytes : 0);
            EXPECT_EQ(SMReadINIPathFileValue(row.section, row.key, type, &dest, &size, &fallback, row.defaultSize,
                                             row.file, 1),
                      row.status);
            EXPECT_EQ(size, row.sizeAfter);
            EXPECT_EQ(dest, expected);
        }
    }
}

TEST_F(IniValue, AnEmptyPathGivesTheDefaultOfATypedValue)
{
    for (const uint32_t type : {INI_TYPE_UINT64, INI_TYPE_BINARY}) {
        uint64_t value = 1;
        const uint64_t fallback = 7;
        uint32_t size = 10;
        EXPECT_EQ(SMReadINIPathFileValue("a", "k", type, &value, &size, &fallback, 8, "", 1), SM_STATUS_BAD_ARGUMENT);
        EXPECT_EQ(value, 7u);
        EXPECT_EQ(size, 8u);
    }
}

TEST_F(IniValue, ReadsBytesAndTexts)
{
    struct {
        uint32_t type;
        const char *text, *fallback;
        uint32_t room, defaultSize, status, size;
        const char *dest;
    } const cases[] = {
        {3, "0x41,0x42", "def", 2, 3, SM_STATUS_OK, 2, "ABzzzzz"},
        {3, "0X4a,4B  ,  4c", "def", 8, 3, SM_STATUS_OK, 3, "JKLzzzz"},
        {3, "0x41,zzzz,0x42", "def", 8, 3, SM_STATUS_OK, 1, "Azzzzzz"},
        {3, "0x41,0x42", "def", 1, 3, SM_STATUS_BUFFER_TOO_SMALL, 2, "zzzzzzz"},
        {3, "zzzz", "def", 8, 3, SM_STATUS_INI_BAD_VALUE, 3, "defzzzz"},
        {3, "zzzz", "def", 2, 3, SM_STATUS_INI_BAD_VALUE, 2, "dezzzzz"},
        {3, "zzzz", "def", 8, 0, SM_STATUS_INI_BAD_VALUE, 0, "zzzzzzz"},
        {3, "", "def", 8, 3, SM_STATUS_FAILED, 3, "defzzzz"},
        {3, "0x41,0x42,", "def", 8, 3, SM_STATUS_FAILED, 3, "defzzzz"},
        {3, "0x41,1FFF", "def", 8, 3, SM_STATUS_FAILED, 3, "defzzzz"},
        {INI_TYPE_UCS2, "0x41,0x42,0x00,0x00", "d\0\0", 8, 4, SM_STATUS_OK, 4, "AB"}, // a default is a whole text
        {INI_TYPE_UCS2, "zzzz", "de\0", 8, 4, SM_STATUS_INI_BAD_VALUE, 4, "de"},
        {INI_TYPE_UCS2, "0x41,0x42", "de\0", 8, 2, SM_STATUS_BAD_ARGUMENT, 8, "zzzzzzz"},
        {INI_TYPE_UCS2, "0x41,0x42", "de\0", 8, 6, SM_STATUS_BAD_ARGUMENT, 8, "zzzzzzz"},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &row - cases);
        Put(std::string("[a]\nk=") + row.text + "\n");
        char dest[] = "zzzzzzz";
        uint32_t size = row.room;
        EXPECT_EQ(
            SMReadINIPathFileValue("a", "k", row.type, dest, &size, row.fallback, row.defaultSize, path.c_str(), 1),
            row.status);
        EXPECT_EQ(size, row.size);
        EXPECT_STREQ(dest, row.dest);
    }
}

TEST_F(IniValue, WritesTexts)
{
    static const uint16_t kTrue = 1, kOther = 2, kText[] = {0xE9, 0x4E2D, 0};
    static const uint32_t kWord = 0xFFFFFFFF;
    static const uint64_t kQuad = UINT64_C(1) << 63;
    static const double kTenth = -0.1, kLargest = DBL_MAX;
    static const std::string kBytes(2049, '\xAB');
    struct {
        uint32_t type;
        const void *value;
        uint32_t size, status;
        const char *text; // NULL: no value for this key
    } const cases[] = {
        {INI_TYPE_UTF8, " a=b ", 6, SM_STATUS_OK, " a=b "},
        {INI_TYPE_UTF8, "abc", 3, SM_STATUS_INI_BAD_VALUE, nullptr},
        {INI_TYPE_UTF8, "ab\0c", 5, SM_STATUS_INI_BAD_VALUE, nullptr},
        {INI_TYPE_UTF8, nullptr, 1, SM_STATUS_INI_BAD_VALUE, nullptr},
        {INI_TYPE_UCS2, kText, 6, SM_STATUS_OK, "0xE9,0x00,0x2D,0x4E,0x00,0x00"},
        {INI_TYPE_UCS2, kText, 4, SM_STATUS_INI_BAD_VALUE, nullptr},
        {INI_TYPE_BINARY, "\x01\xAB", 2, SM_STATUS_OK, "0x01,0xAB"},
        {INI_TYPE_BINARY, "", 0, SM_STATUS_INI_BAD_VALUE, nullptr},
        {INI_TYPE_BINARY, nullptr, 1, SM_STATUS_INI_BAD_VALUE, nullptr},
        {INI_TYPE_BINARY, kBytes.data(), 1639, SM_STATUS_INI_BAD_VALUE, nullptr},
        {INI_TYPE_BINARY, kBytes.data(), 2049, SM_STATUS_INI_BAD_VALUE, nullptr},
        {INI_TYPE_BOOL, &kTrue, 2, SM_STATUS_OK, "TRUE"},
        {INI_TYPE_BOOL, &kOther, 2, SM_STATUS_OK, "FALSE"},
        {INI_TYPE_UINT32, &kWord, 8, SM_STATUS_OK, "4294967295"},
        {INI_TYPE_INT32, &kWord, 4, SM_STATUS_OK, "-1"},
        {INI_TYPE_UINT64, &kQuad, 8, SM_STATUS_OK, "9223372036854775808"},
        {INI_TYPE_INT64, &kQuad, 8, SM_STATUS_OK, "-9223372036854775808"},
        {INI_TYPE_DOUBLE, &kTenth, 8, SM_STATUS_OK, "-0.10000000"},
        {0, "1", 2, SM_STATUS_BAD_ARGUMENT, nullptr},
        {10, "1", 2, SM_STATUS_BAD_ARGUMENT, nullptr},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &row - cases);
        Put("[a]\n");
        EXPECT_EQ(SMWriteINIPathFileValue("a", "k", row.type, row.value, row.size, path.c_str(), 1), row.status);
        EXPECT_EQ(Get(), "[a]\n" + (row.text != nullptr ? "k=" + std::string(row.text) + "\n" : std::string()));
    }
    double back = 0;
    uint32_t size = sizeof back;
    EXPECT_EQ(SMWriteINIPathFileValue("a", "k", INI_TYPE_DOUBLE, &kLargest, 8, path.c_str(), 1), SM_STATUS_OK);
    EXPECT_EQ(SMReadINIPathFileValue("a", "k", INI_TYPE_DOUBLE, &back, &size, nullptr, 0, path.c_str(), 1),
              SM_STATUS_OK);
    EXPECT_EQ(back, DBL_MAX);
    std::string bytes(size = 1638, '\0'); // the text of more would be too long
    EXPECT_EQ(SMWriteINIPathFileValue("a", "k", INI_TYPE_BINARY, kBytes.data(), size, path.c_str(), 1), SM_STATUS_OK);
    EXPECT_EQ(SMReadINIPathFileValue("a", "k", INI_TYPE_BINARY, bytes.data(), &size, nullptr, 0, path.c_str(), 1),
              SM_STATUS_OK);
    EXPECT_EQ(bytes, kBytes.substr(0, 1638));
}

TEST_F(IniValue, RequiresPointersByType)
{
    static const uint64_t kValue = 1;
    for (uint32_t type = INI_TYPE_UTF8; type <= INI_TYPE_DOUBLE; ++type) {
        SCOPED_TRACE(type);
        Put("[a]\nk=1\n");
        const uint32_t size = type == INI_TYPE_UTF8 ? 2 : type == INI_TYPE_UCS2 ? 4 : 8;
        const auto write = [&](const char *section, const char *key, const void *value, uint32_t bytes,
                               const char *file) {
            return SMWriteINIPathFileValue(section, key, type, value, bytes, file, 1);
        };
        EXPECT_EQ(write(nullptr, "k", &kValue, size, path.c_str()), SM_STATUS_BAD_ARGUMENT);
        EXPECT_EQ(write("a", "k", &kValue, size, nullptr), SM_STATUS_BAD_ARGUMENT);
        EXPECT_EQ(write("a", "k", &kValue, size, ""), SM_STATUS_BAD_ARGUMENT);
        if (type != INI_TYPE_UTF8) {
            EXPECT_EQ(write("a", nullptr, &kValue, size, path.c_str()), SM_STATUS_BAD_ARGUMENT);
        }
        const bool deletes = type <= INI_TYPE_BINARY;
        if (!deletes) {
            EXPECT_EQ(write("a", "k", &kValue, BytesOf(type) - 1, path.c_str()), SM_STATUS_INI_BAD_VALUE);
        }
        EXPECT_EQ(write("a", "k", nullptr, 0, path.c_str()), deletes ? SM_STATUS_OK : SM_STATUS_INI_BAD_VALUE);
        EXPECT_EQ(Get(), deletes ? "[a]\n" : "[a]\nk=1\n");
    }
}

} // namespace
