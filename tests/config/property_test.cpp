// Property files as callers see them: typed values, defaults, failures and locks. Their lines have a model, beside
// which the fuzz target holds them.

#include <sys/resource.h>

#include <csignal>

#include "config/ini_fixture.h"

namespace {

using namespace std::string_literals;

class PropertyFile : public IniFile {
protected:
    uint32_t Write(const char *key, uint32_t type, const void *value, uint32_t size) const
    {
        return SMPropertyFileWriteValue(key, type, value, size, path.c_str(), 1);
    }
    uint32_t Write(const char *key, const char *value) const
    {
        return Write(key, SMXLT_TYPE_UTF8, value, static_cast<uint32_t>(strlen(value) + 1));
    }
};

TEST_F(PropertyFile, DefaultsStandInAfterFailures)
{
    Put("number=17\nword=yes\n");
    const std::string missing = folder + "/missing";
    const struct {
        const char *key;
        uint32_t type, room;
        const std::string &file;
        uint32_t defaultSize, status, size, value;
    } kCases[] = {{"number", SMXLT_TYPE_UINT32, 4, path, 4, SM_STATUS_OK, 4, 17},
                  {"none", SMXLT_TYPE_UINT32, 3, path, 4, SM_STATUS_INI_NO_KEY, 3, 5},
                  {"word", SMXLT_TYPE_BOOL, 4, path, 0, SM_STATUS_INVALID_PARAMETER, 0, 5},
                  {"number", SMXLT_TYPE_UINT64, 4, path, 4, SM_STATUS_BUFFER_TOO_SMALL, 4, 99},
                  {nullptr, SMXLT_TYPE_UTF8, 4, missing, 4, SM_STATUS_INI_OPEN_FAILED, 4, 99},
                  {nullptr, SMXLT_TYPE_UTF8, 4, path, 4, SM_STATUS_BUFFER_TOO_SMALL, 4, 99},
                  {nullptr, SMXLT_TYPE_UINT32, 4, path, 4, SM_STATUS_OK, 4, 5}};
    constexpr uint32_t kDefault = 99;
    uint32_t size = 0;
    const auto read = [&](const char *key, uint32_t type, void *dest, uint32_t defaultSize, const char *file) {
        return SMPropertyFileReadValue(key, type, dest, &size, &kDefault, defaultSize, file, 1);
    };
    for (const auto &row : kCases) {
        uint32_t value = 5;
        size = row.room;
        EXPECT_EQ(read(row.key, row.type, &value, row.defaultSize, row.file.c_str()), row.status);
        EXPECT_EQ(size, row.size) << &row - kCases;
        EXPECT_EQ(value, row.value) << &row - kCases;
    }
    size = 0;
    EXPECT_EQ(read("word", SMXLT_TYPE_UTF8, nullptr, 4, path.c_str()), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(read("word", SMXLT_TYPE_UTF8, nullptr, 0, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(PropertyFile, WritesTypedValuesInPlaceOfTheOld)
{
    Put("# \0\x01\r\n port : 1\\\n  2\\\n3\nrest=\\\nlast"s);
    chmod(path.c_str(), 0604);
    const uint32_t port = 8080;
    EXPECT_EQ(Write("ports", SMXLT_TYPE_UINT32, &port, 0), SM_STATUS_OK);
    EXPECT_EQ(Get(), "# \0\x01\r\nports=8080\nrest=\\\nlast"s);
    EXPECT_EQ(Mode(path), 0604u);

    Put("text=1\n");
    EXPECT_EQ(Write("text", SMXLT_TYPE_UTF8, "cut", 2), SM_STATUS_OK);
    EXPECT_EQ(Get(), "text=cu\n");
    EXPECT_EQ(Write("text", SMXLT_TYPE_BYTES | SMXLT_FORMAT_HEX, "\n\xFF", 2), SM_STATUS_OK);
    EXPECT_EQ(Get(), "text=0x0A,0xFF\n");
    EXPECT_EQ(Write("none", "x"), SM_STATUS_OK); // empties the file
    EXPECT_EQ(Mode(path), 0604u);
}

TEST_F(PropertyFile, FailedWritesLeaveTheFileAndTheTemporaryOne)
{
    EXPECT_EQ(Write("key", "x"), SM_STATUS_INI_OPEN_FAILED);
    EXPECT_EQ(Get(), "(missing)");
    Put("key=1\n");
    EXPECT_EQ(Write(nullptr, "x"), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(Others(), 0);
    EXPECT_EQ(Write("key", SMXLT_TYPE_IPV4, "\x7F\0\0\1", 4), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(Write("key", SMXLT_TYPE_BYTES, "", 0), SM_STATUS_FAILED);
    EXPECT_EQ(Others(), 2);
    EXPECT_EQ(Get(), "key=1\n");
}

// Also of INI files, of which an append is taken back.
TEST_F(PropertyFile, FullDiskIsToldByWhatWasBeingWritten)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const std::string file = "#" + std::string(99, ' ') + "\nkey=1\n#" + std::string(99, ' ');
    const std::string ini = "[a]\nk=1\n;" + std::string(200, 'c') + "\n";
    struct rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const std::tuple<rlim_t, const char *, uint32_t> cases[] = {
        {100, nullptr, SM_STATUS_FAILED},        {105, nullptr, SM_STATUS_LIMIT_REACHED},
        {150, nullptr, SM_STATUS_LIMIT_REACHED}, {211, nullptr, SM_STATUS_OK},
        {150, "a", SM_STATUS_LIMIT_REACHED},     {213, "new", SM_STATUS_LIMIT_REACHED}};
    for (const auto &[size, section, expected] : cases) {
        const std::string &old = section != nullptr ? ini : file;
        Put(old);
        const struct rlimit limit = {size, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const uint32_t status = section != nullptr ? Set(section, "k", "2") : Write("key", "value");
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(status, expected) << size;
        EXPECT_EQ(Get() == old, status != SM_STATUS_OK) << size;
    }
}

// INI and property files alike.
TEST_F(PropertyFile, TakesTheLockOfTheFile)
{
    Put("key=1\n");
    EXPECT_EQ(Write("key", "1"), SM_STATUS_OK); // makes the lock file
    const char *file = path.c_str();
    for (const int kind : {F_RDLCK, F_WRLCK}) {
        ASSERT_EQ(Hold(kind), 0);
        char text[8];
        uint32_t size = sizeof text;
        const uint32_t expected = kind == F_RDLCK ? SM_STATUS_OK : SM_STATUS_TIMEOUT;
        EXPECT_EQ(SMPropertyFileReadValue("key", SMXLT_TYPE_UTF8, text, &size, "d", 2, file, 2), expected);
        EXPECT_EQ(size, kind == F_RDLCK ? 2 : sizeof text); // not even the default
        EXPECT_EQ(SMReadINIPathFileValue("a", "k", 1, text, &(size = 8), nullptr, 0, file, 0) == SM_STATUS_TIMEOUT,
                  kind == F_WRLCK);
        EXPECT_EQ(SMPropertyFileWriteValue("key", SMXLT_TYPE_UTF8, "2", 2, file, 0), SM_STATUS_TIMEOUT);
        EXPECT_EQ(SMWriteINIPathFileValue("a", "k", 1, "2", 2, file, 0), SM_STATUS_TIMEOUT);
    }
    ASSERT_EQ(Hold(F_UNLCK), 0);
    std::filesystem::remove_all(locks);
    EXPECT_EQ(Text("a", "k"), "<4294967295>");
}

} // namespace
