// The reader where its model does not reach: limits, other texts than values, locks, and where files are looked for.

#include "config/ini_fixture.h"

namespace {

class IniRead : public IniFile {};

TEST_F(IniRead, HoldsLinesAndHeaderNamesToTheirLimits)
{
    Put("[a]\n;" + std::string(8448, 'v') + "k=hidden\n" + std::string(8449, 'v') + "[b]\nk=2\n");
    EXPECT_EQ(Text("a", "k"), "hidden");
    EXPECT_EQ(Text("b", "k"), "2");
    Put("[a]\nk=" + std::string(8450, 'v') + "\n");
    EXPECT_EQ(Text("a", "k").size(), 8447U);

    const std::string longest(255, 'n'), tooLong(256, 'n');
    Put("[" + longest + "]\nk=1\n[" + tooLong + "]\nk=2\n");
    EXPECT_EQ(Text(longest.c_str(), "k"), "1");
    EXPECT_EQ(Text(tooLong.c_str(), "k"), "<261>");
    Put("[a]\n" + tooLong + "=1\n"); // no bound for keys
    EXPECT_EQ(Text("a", tooLong.c_str()), "1");
}

TEST_F(IniRead, RefusesBadArguments)
{
    Put("[a]\nk=1\n");
    char dest[8];
    const auto read = [&](uint32_t type, char *into, uint32_t *size, const char *file) {
        return SMReadINIPathFileValue("a", "k", type, into, size, nullptr, 0, file, 1);
    };
    for (const uint32_t type : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U, 0x101U}) {
        uint32_t size = sizeof dest, none = 0;
        EXPECT_EQ(read(type, nullptr, &size, path.c_str()), SM_STATUS_BAD_ARGUMENT);
        EXPECT_EQ(read(type, dest, nullptr, path.c_str()), SM_STATUS_BAD_ARGUMENT);
        EXPECT_EQ(read(type, dest, &none, path.c_str()), SM_STATUS_BAD_ARGUMENT);
        EXPECT_EQ(read(type, dest, &size, nullptr), SM_STATUS_BAD_ARGUMENT);
        EXPECT_EQ(read(type, dest, &size, ""), SM_STATUS_BAD_ARGUMENT);
        if (type == 0 || type > INI_TYPE_DOUBLE) {
            EXPECT_EQ(read(type, dest, &size, path.c_str()), SM_STATUS_BAD_ARGUMENT);
        }
    }
}

TEST_F(IniRead, GivesHeapTexts)
{
    std::string sections, tooLong;
    for (int i = 0; i < 8000; ++i)
        (i < 2000 ? sections : tooLong) += "[" + std::to_string(1000 + i) + "]\n";
    struct {
        std::string content;
        const char *section, *key, *fallback, *text;
        uint32_t size;
    } const cases[] = {
        {"[a]\nk=value\n", "a", "k", "def", "value", 6},
        {"[a]\nk=\n", "a", "k", "def", "", 1},
        {"[a]\nk=value\n", "a", "x", "def", "def", 4},
        {"[a]\nk=value\n", "x", "k", "", "", 1},
        {"[a]\nk=value\n", "a", "x", nullptr, nullptr, 0},
        {"[a]\nk=" + std::string(8300, 'v') + "\n", "a", "k", "def", nullptr, 8301},
        {sections, nullptr, nullptr, nullptr, "1000", 10001}, // grows beyond the first buffer
        {tooLong + sections, nullptr, nullptr, "def", nullptr, 0},
    };
    for (const auto &row : cases) {
        Put(row.content);
        uint32_t size = 99;
        char *const text = SMReadINISectionKeyUTF8Value(row.section, row.key, row.fallback, &size, path.c_str(), 1);
        EXPECT_EQ(text != nullptr, row.size != 0);
        EXPECT_EQ(size, row.size);
        if (row.text != nullptr) {
            EXPECT_STREQ(text, row.text);
        }
        SMFreeGeneric(text);
    }
    uint32_t size = 99;
    EXPECT_EQ(SMReadINISectionKeyUTF8Value("a", "k", "def", nullptr, nullptr, 1), nullptr);
    EXPECT_EQ(SMReadINISectionKeyUTF8Value("a", "k", "def", &size, (folder + "/none").c_str(), 1), nullptr);
    EXPECT_EQ(size, 0U);
}

TEST_F(IniRead, TurnsWordsIntoValues)
{
    static const SMINIEnumEntry kTable[] = {{"none", 100}, {"red", 1}, {"Green", 2}, {"blue", 4}, {"blue", 8}};
    Put("[a]\none=GREEN\nfirst=none\ndouble=blue\npadded= red\nlist= blue ,RED,, other\nempty=\n");
    struct {
        const char *key;
        int32_t count;
        uint16_t multiple;
        uint32_t value;
    } const cases[] = {
        {"one", 5, 0, 2},
        {"first", 5, 0, 100},
        {"double", 5, 0, 4},
        {"padded", 5, 0, 100},
        {"empty", 5, 0, 100},
        {"missing", 5, 0, 1},
        {"first", 5, 1, 0},
        {"list", 5, 1, 5},
        {"list", 5, 2, 100},
        {"double", 3, 0, 100},
        {"missing", 5, 1, 1},
        {"one", 1, 0, SM_ENUM_UNREADABLE},
        {"one", -5, 0, SM_ENUM_UNREADABLE},
        {nullptr, 5, 0, SM_ENUM_UNREADABLE},
    };
    const char *const file = path.c_str();
    for (const auto &row : cases)
        EXPECT_EQ(SMReadINIEnums32Value("a", row.key, kTable, row.count, row.multiple, file, 1), row.value)
            << &row - cases;
    EXPECT_EQ(SMReadINIEnums32Value(nullptr, "one", kTable, 5, 0, file, 1), SM_ENUM_UNREADABLE);
    EXPECT_EQ(SMReadINIEnums32Value("a", "one", nullptr, 5, 0, file, 1), SM_ENUM_UNREADABLE);
    EXPECT_EQ(SMReadINIEnums32Value("a", "one", kTable, 5, 0, nullptr, 1), SM_ENUM_UNREADABLE);
}

TEST_F(IniRead, TakesTheLockOfTheFile)
{
    Put("[a]\nk=1\n");
    ASSERT_EQ(Text("a", "k"), "1"); // makes the lock file
    for (const int kind : {F_RDLCK, F_WRLCK}) {
        ASSERT_EQ(Hold(kind), 0);
        char dest[4];
        uint32_t size = sizeof dest;
        EXPECT_EQ(SMReadINIPathFileValue("a", "k", 1, dest, &size, nullptr, 0, path.c_str(), 0),
                  kind == F_RDLCK ? SM_STATUS_OK : SM_STATUS_TIMEOUT);
        EXPECT_EQ(SMWriteINIPathFileValue("a", "k", 1, "2", 2, path.c_str(), 0), SM_STATUS_TIMEOUT);
    }
    ASSERT_EQ(Hold(F_UNLCK), 0);
    EXPECT_EQ(Text("a", "k"), "1");
    std::filesystem::remove_all(locks);
    EXPECT_EQ(Text("a", "k"), "<4294967295>");
}

TEST_F(IniRead, FindsFilesByNameBelowTheIniPath)
{
    char dest[8] = "";
    uint32_t size = sizeof dest;
    EXPECT_EQ(SMReadINIFileValue("a", "k", 1, dest, &size, nullptr, 0, "f", 1), SM_STATUS_FAILED);
    EXPECT_EQ(SMWriteINIFileValue("a", "k", 1, "1", 2, "f", 1), SM_STATUS_FAILED);
    setenv("gaugeworkinstallpath", folder.c_str(), 1);
    uint32_t none = 0; // a place that is new since the attach is refused once
    EXPECT_NE(SMGetPathByProductIDandType(SM_PRODUCT_DEFAULT, SM_PATH_INI, nullptr, &none), SM_STATUS_OK);
    EXPECT_EQ(SMWriteINIFileValue("a", "k", INI_TYPE_UTF8, "text", 5, "f", 1), SM_STATUS_OK);
    EXPECT_EQ(Get(folder + "/ini/f"), "[a]\nk=text\n");
    EXPECT_EQ(SMReadINIFileValue("a", "k", INI_TYPE_UTF8, dest, &size, nullptr, 0, "f", 1), SM_STATUS_OK);
    EXPECT_STREQ(dest, "text");

    // 10 bytes and terminator of the folder, 6, and the name: 256 at most.
    const std::string longest(239, 'f'), tooLong(240, 'f');
    size = sizeof dest;
    EXPECT_EQ(SMReadINIFileValue("a", "k", 1, dest, &size, nullptr, 0, longest.c_str(), 1), SM_STATUS_INI_OPEN_FAILED);
    EXPECT_EQ(SMReadINIFileValue("a", "k", 1, dest, &size, nullptr, 0, tooLong.c_str(), 1), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(SMWriteINIFileValue("a", "k", 1, nullptr, 0, longest.c_str(), 1), SM_STATUS_INI_BAD_VALUE);
    EXPECT_EQ(SMWriteINIFileValue("a", "k", 1, nullptr, 0, tooLong.c_str(), 1), SM_STATUS_BUFFER_TOO_SMALL);
}

} // namespace
