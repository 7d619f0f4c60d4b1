// What a change makes of a file's mode, its names and its neighbours, and of typed values. Lines have their model.

#include <cfloat>

#include "config/ini_fixture.h"

namespace {

using IniWrite = IniFile;

TEST_F(IniWrite, WritesTexts)
{
    static const uint16_t kTrue = 1, kOther = 2, kText[] = {0xE9, 0x4E2D, 0};
    static const uint32_t kWord = 0xFFFFFFFF;
    static const uint64_t kQuad = UINT64_C(1) << 63;
    static const double kTenth = -0.1, kLargest = DBL_MAX;
    static const std::string kBytes(1639, '\xAB'), kLong(8193, 'v');
    std::string digits;
    for (int i = 0; i < 1638; ++i)
        digits += i == 0 ? "0xAB" : ",0xAB";
    const std::string before = "[a]\nk=1\n";
    char largest[400];
    snprintf(largest, sizeof largest, "%.8f", kLargest);
    const struct {
        uint32_t type;
        const void *value;
        uint32_t size, status;
        std::string text;
    } cases[] = {
        {INI_TYPE_UTF8, " a=b ", 6, SM_STATUS_OK, " a=b "},
        {INI_TYPE_UTF8, "abc", 3, SM_STATUS_INI_BAD_VALUE, ""},
        {INI_TYPE_UTF8, "ab\0c", 5, SM_STATUS_INI_BAD_VALUE, ""},
        {INI_TYPE_UTF8, &kLong[1], 8193, SM_STATUS_OK, kLong.substr(1)},
        {INI_TYPE_UTF8, &kLong[0], 8194, SM_STATUS_INI_BAD_VALUE, ""},
        {INI_TYPE_UCS2, kText, 6, SM_STATUS_OK, "0xE9,0x00,0x2D,0x4E,0x00,0x00"},
        {INI_TYPE_UCS2, kText, 4, SM_STATUS_INI_BAD_VALUE, ""},
        {INI_TYPE_BINARY, "", 0, SM_STATUS_INI_BAD_VALUE, ""},
        {INI_TYPE_BINARY, kBytes.data(), 1638, SM_STATUS_OK, digits},
        {INI_TYPE_BINARY, kBytes.data(), 1639, SM_STATUS_INI_BAD_VALUE, ""}, // the text would be too long
        {INI_TYPE_BOOL, &kTrue, 2, SM_STATUS_OK, "TRUE"},
        {INI_TYPE_BOOL, &kOther, 2, SM_STATUS_OK, "FALSE"},
        {INI_TYPE_UINT32, &kWord, 8, SM_STATUS_OK, "4294967295"},
        {INI_TYPE_INT32, &kWord, 4, SM_STATUS_OK, "-1"},
        {INI_TYPE_UINT64, &kQuad, 7, SM_STATUS_INI_BAD_VALUE, ""},
        {INI_TYPE_UINT64, &kQuad, 8, SM_STATUS_OK, "9223372036854775808"},
        {INI_TYPE_INT64, &kQuad, 8, SM_STATUS_OK, "-9223372036854775808"},
        {INI_TYPE_DOUBLE, &kTenth, 8, SM_STATUS_OK, "-0.10000000"},
        {INI_TYPE_DOUBLE, &kLargest, 8, SM_STATUS_OK, largest},
        {10, "1", 2, SM_STATUS_BAD_ARGUMENT, ""},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &row - cases);
        Put(before);
        EXPECT_EQ(SMWriteINIPathFileValue("a", "k", row.type, row.value, row.size, path.c_str(), 1), row.status);
        EXPECT_EQ(Get(), row.status == SM_STATUS_OK ? "[a]\nk=" + row.text + "\n" : before);
    }
    Put(before);
    EXPECT_EQ(SMWriteINIPathFileValue("a", nullptr, INI_TYPE_UCS2, nullptr, 0, path.c_str(), 1),
              SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMWriteINIPathFileValue("a", "k", INI_TYPE_BINARY, nullptr, 0, path.c_str(), 1), SM_STATUS_OK);
    EXPECT_EQ(Get(), "[a]\n");
    EXPECT_EQ(SMWriteINIPathFileValue("a", "k", 1, "1", 2, "", 1), SM_STATUS_BAD_ARGUMENT);
}

TEST_F(IniWrite, GivesModes)
{
    const mode_t mask = umask(077);
    EXPECT_EQ(Set("a", "k", "1"), SM_STATUS_OK);
    EXPECT_EQ(Mode(path), 0644U);
    for (const auto &[before, after] : {std::pair(0U, 0U), std::pair(07777U, 01666U)}) {
        for (const char *const section : {"a", "other"}) {
            Put("[a]\nk=1\n");
            ASSERT_EQ(chmod(path.c_str(), before), 0);
            EXPECT_EQ(Set(section, "k", "2"), SM_STATUS_OK);
            EXPECT_EQ(Mode(path), after) << before << section;
        }
    }
    umask(mask);
    Put("[z]\n[b\n[a]\nk=1\n"); // at a malformed header the temporary file stays
    EXPECT_EQ(Set("a", "k", "2"), SM_STATUS_INI_BAD_SECTION);
    std::filesystem::remove(path);
    const std::filesystem::path left = std::filesystem::directory_iterator(folder)->path();
    EXPECT_EQ(Get(left), "[z]\n[b\n");
    EXPECT_EQ(Mode(left), 01666U);
}

TEST_F(IniWrite, MakesOneDirectory)
{
    const auto write = [](const std::string &file) {
        return SMWriteINIPathFileValue("a", "k", 1, "1", 2, file.c_str(), 1);
    };
    EXPECT_EQ(write(folder + "/new/file.ini"), SM_STATUS_OK);
    EXPECT_EQ(write(folder + "/x/y/file.ini"), SM_STATUS_FAILED);
    EXPECT_EQ(write(path + "/"), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(Others(), 1);

    std::filesystem::current_path(folder); // a path without "/" is one of the current directory
    Put("[a]\nk=2\n");
    EXPECT_EQ(write("file"), SM_STATUS_OK);
    std::filesystem::current_path("/");
    EXPECT_EQ(Get(), "[a]\nk=1\n");
    EXPECT_EQ(write(path + "/file"), SM_STATUS_FILE_NOT_FOUND);
}

// A link at the file's name is replaced, and one at the temporary file's is not followed.
TEST_F(IniWrite, DoesNotWriteThroughLinks)
{
    const std::string target = folder + "/target", victim = folder + "/victim";
    Put(target, "[a]\nk=1\n");
    ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0);
    EXPECT_EQ(Set("a", "k", "2"), SM_STATUS_OK);
    EXPECT_EQ(Get(target), "[a]\nk=1\n");
    EXPECT_EQ(Get(), "[a]\nk=2\n");
    EXPECT_FALSE(std::filesystem::is_symlink(path));

    std::string taken, next;
    srand(1); // the library has seeded by now
    for (int i = 0; i < 16; ++i)
        (i < 8 ? taken : next) += "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"[rand() % 62];
    Put(folder + "/" + taken, "somebody's");
    ASSERT_EQ(symlink(victim.c_str(), (folder + "/" + next).c_str()), 0);
    srand(1);
    const uint32_t status = Set("a", "k", "3");
    EXPECT_TRUE(status == SM_STATUS_OK || status == SM_STATUS_FILE_NOT_FOUND) << status;
    EXPECT_EQ(Get(), status == SM_STATUS_OK ? "[a]\nk=3\n" : "[a]\nk=2\n");
    EXPECT_EQ(Get(victim), "(missing)");
    EXPECT_EQ(Get(folder + "/" + taken), "somebody's");
    EXPECT_FALSE(std::filesystem::is_symlink(path));
}

} // namespace
