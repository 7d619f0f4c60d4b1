// Reads of typed values, heap texts and words, and where files are looked for. Plain texts have their model.

#include <bit>

#include "config/ini_fixture.h"

namespace {

constexpr uint64_t kUntouched = 0x5A5A5A5A5A5A5A5A;

uint32_t BytesOf(uint32_t type)
{
    return type == INI_TYPE_BOOL ? 2 : type < INI_TYPE_UINT64 ? 4 : 8;
}

using IniRead = IniFile;

TEST_F(IniRead, TurnsTextsIntoNumbersAndBooleans)
{
    const struct {
        uint32_t type;
        std::string text;
        uint64_t value; // the bytes that dest gets, in front of untouched ones
        uint32_t status = SM_STATUS_OK;
    } cases[] = {
        {INI_TYPE_BOOL, "  tRuE  more", 1},
        {INI_TYPE_BOOL, "false", 0},
        {INI_TYPE_BOOL, "TRUE\t", 7, SM_STATUS_INI_BAD_VALUE},
        {INI_TYPE_BOOL, "   ", 7, SM_STATUS_INI_BAD_VALUE},
        {INI_TYPE_UINT32, "99999999999999999999", 0xFFFFFFFF},
        {INI_TYPE_UINT32, "-1", 0xFFFFFFFF},
        {INI_TYPE_INT32, "2147483648", 0x80000000},
        {INI_TYPE_INT32, "-99999999999999999999", 0},
        {INI_TYPE_UINT64, " \t\v18446744073709551615", UINT64_MAX},
        {INI_TYPE_INT64, "-9223372036854775808", UINT64_C(1) << 63},
        {INI_TYPE_DOUBLE, " -1.5e3x", std::bit_cast<uint64_t>(-1500.0)},
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
        EXPECT_EQ(SMReadINIPathFileValue("a", "k", row.type, &dest, &--size, &fallback, 8, path.c_str(), 1),
                  SM_STATUS_BAD_ARGUMENT);
        EXPECT_EQ(dest, expected);
    }
}

TEST_F(IniRead, DefaultsHaveTheSizeOfTheType)
{
    Put("[a]\nk=1\n");
    const std::tuple<std::string, uint32_t, uint32_t> cases[] = {
        {path, 3, SM_STATUS_INI_NO_KEY}, // too small a default is none
        {path, 4, SM_STATUS_INI_NO_KEY},
        {folder + "/none", 8, SM_STATUS_INI_OPEN_FAILED},
        {"", 8, SM_STATUS_BAD_ARGUMENT},
    };
    for (const auto &[file, defaultSize, status] : cases) {
        const uint64_t fallback = 7;
        uint64_t dest = kUntouched;
        uint32_t size = 8;
        EXPECT_EQ(
            SMReadINIPathFileValue("a", "x", INI_TYPE_UINT32, &dest, &size, &fallback, defaultSize, file.c_str(), 1),
            status);
        EXPECT_EQ(size, defaultSize < 4 ? 0u : 4u);
        EXPECT_EQ(dest, defaultSize < 4 ? kUntouched : 0x5A5A5A5A00000007);
    }
}

TEST_F(IniRead, TurnsTextsIntoBytes)
{
    const struct {
        uint32_t type;
        const char *text, *fallback;
        uint32_t room, defaultSize, status, size;
        const char *dest;
    } cases[] = {
        {3, "0X4a,4B  ,  4c", "def", 3, 3, SM_STATUS_OK, 3, "JKLzzzz"},
        {3, "0x41,zzzz,0x42", "def", 8, 3, SM_STATUS_OK, 1, "Azzzzzz"},
        {3, "0x41,0x42", "def", 1, 3, SM_STATUS_BUFFER_TOO_SMALL, 2, "zzzzzzz"},
        {3, "zzzz", "def", 8, 3, SM_STATUS_INI_BAD_VALUE, 3, "defzzzz"},
        {3, "zzzz", "def", 2, 3, SM_STATUS_INI_BAD_VALUE, 2, "dezzzzz"},
        {3, "0x41,1FFF", "def", 8, 3, SM_STATUS_FAILED, 3, "defzzzz"},
        {3, "0x41", "def", 0, 3, SM_STATUS_BAD_ARGUMENT, 0, "zzzzzzz"},
        {INI_TYPE_UTF8, "text", "def", 0, 3, SM_STATUS_BAD_ARGUMENT, 0, "zzzzzzz"},
        {10, "1", "def", 8, 3, SM_STATUS_BAD_ARGUMENT, 8, "zzzzzzz"}, // no such type
        {0x103, "0x41", "def", 8, 3, SM_STATUS_BAD_ARGUMENT, 8, "zzzzzzz"},
        {INI_TYPE_UCS2, "0x41,0x42,0x00,0x00", "d\0\0", 8, 4, SM_STATUS_OK, 4, "AB"}, // a default is a whole text
        {INI_TYPE_UCS2, "zzzz", "de\0", 8, 4, SM_STATUS_INI_BAD_VALUE, 4, "de"},
        {INI_TYPE_UCS2, "0x41,0x42", "de\0", 8, 2, SM_STATUS_BAD_ARGUMENT, 8, "zzzzzzz"},
        {INI_TYPE_UCS2, "0x41,0x42", "de\0", 8, 6, SM_STATUS_BAD_ARGUMENT, 8, "zzzzzzz"},
    };
    const auto read = [](const auto &row, char *dest, uint32_t *size, const std::string &file) {
        return SMReadINIPathFileValue("a", "k", row.type, dest, size, row.fallback, row.defaultSize, file.c_str(), 1);
    };
    char dest[8];
    uint32_t size = 8;
    for (const auto &row : cases) {
        SCOPED_TRACE(&row - cases);
        Put(std::string("[a]\nk=") + row.text + "\n");
        strcpy(dest, "zzzzzzz");
        size = row.room;
        EXPECT_EQ(read(row, dest, &size, path), row.status);
        EXPECT_EQ(size, row.size);
        EXPECT_STREQ(dest, row.dest);
    }
    EXPECT_EQ(read(cases[0], dest, &(size = 8), ""), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(std::string(dest, size), "def");
}

TEST_F(IniRead, GivesHeapTexts)
{
    std::string sections, tooLong;
    for (int i = 0; i < 8000; ++i)
        (i < 2000 ? sections : tooLong) += "[" + std::to_string(1000 + i) + "]\n";
    const std::tuple<std::string, const char *, const char *, const char *, const char *, uint32_t> cases[] = {
        {"[a]\nk=value\n", "a", "k", "def", "value", 6},
        {"[a]\nk=value\n", "a", "x", "def", "def", 4},
        {"[a]\nk=value\n", "a", "x", nullptr, nullptr, 0},
        {"[a]\nk=" + std::string(8300, 'v') + "\n", "a", "k", "def", nullptr, 8301},
        {sections, nullptr, nullptr, nullptr, "1000", 10001}, // grows beyond the first buffer
        {tooLong + sections, nullptr, nullptr, "def", nullptr, 0},
    };
    for (const auto &[content, section, key, fallback, expected, expectedSize] : cases) {
        Put(content);
        uint32_t size = 99;
        char *const text = SMReadINISectionKeyUTF8Value(section, key, fallback, &size, path.c_str(), 1);
        EXPECT_EQ(text != nullptr, expectedSize != 0);
        EXPECT_EQ(size, expectedSize);
        EXPECT_TRUE(expected == nullptr || strcmp(text, expected) == 0) << size;
        SMFreeGeneric(text);
    }
    EXPECT_EQ(SMReadINISectionKeyUTF8Value("a", "k", "def", nullptr, (folder + "/none").c_str(), 1), nullptr);
}

TEST_F(IniRead, TurnsWordsIntoValues)
{
    static const SMINIEnumEntry kTable[] = {{"none", 100}, {"red", 1}, {"Green", 2}, {"blue", 4}, {"blue", 8}};
    Put("[a]\none=GREEN\nfirst=none\ndouble=blue\npadded= red\nlist= blue ,RED,, other\n");
    const std::tuple<const char *, int32_t, uint16_t, uint32_t> cases[] = {{"one", 5, 0, 2},
                                                                           {"double", 5, 0, 4},
                                                                           {"padded", 5, 0, 100},
                                                                           {"missing", 5, 0, 1},
                                                                           {"first", 5, 1, 0},
                                                                           {"list", 5, 1, 5},
                                                                           {"list", 5, 2, 100},
                                                                           {"double", 3, 0, 100},
                                                                           {"one", 1, 0, SM_ENUM_UNREADABLE},
                                                                           {nullptr, 5, 0, SM_ENUM_UNREADABLE}};
    for (const auto &[key, count, multiple, value] : cases)
        EXPECT_EQ(SMReadINIEnums32Value("a", key, kTable, count, multiple, path.c_str(), 1), value) << key << count;
}

TEST_F(IniRead, FindsFilesByNameBelowTheIniPath)
{
    char dest[8] = "";
    uint32_t size = sizeof dest;
    const auto read = [&](const std::string &name) {
        return SMReadINIFileValue("a", "k", INI_TYPE_UTF8, dest, &(size = sizeof dest), nullptr, 0, name.c_str(), 1);
    };
    const auto write = [](const std::string &name) {
        return SMWriteINIFileValue("a", "k", INI_TYPE_UTF8, "text", 5, name.c_str(), 1);
    };
    EXPECT_EQ(read("f") & write("f"), SM_STATUS_FAILED);
    SetIniPath();
    // 10 bytes and terminator of the folder, 6, and the name: 256 at most.
    const std::string longest(239, 'f'), longer = longest + "f";
    EXPECT_EQ(write(longest) | read(longest), SM_STATUS_OK);
    EXPECT_STREQ(dest, "text");
    EXPECT_EQ(Get(folder + "/ini/" + longest), "[a]\nk=text\n");
    EXPECT_EQ(read(longer), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(write(longer), SM_STATUS_BUFFER_TOO_SMALL);
}

} // namespace
