// What a change makes of a file, its mode, its names and its neighbours.

#include <sys/mount.h>
#include <sys/wait.h>

#include "config/ini_fixture.h"

namespace {

constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

class IniWrite : public IniFile {
protected:
    void TearDown() override
    {
        umount2(folder.c_str(), MNT_DETACH); // where a case has mounted a file system
        IniFile::TearDown();
    }

    // A file system of so many pages. False where the kernel forbids it.
    bool MountSmall(int pages) const
    {
        const std::string size = "mode=755,size=" + std::to_string(pages * sysconf(_SC_PAGESIZE));
        return mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
    }
};

TEST_F(IniWrite, ChangesLinesAndLosesWhatItLoses)
{
    struct {
        const char *what, *before, *section, *key, *value, *after;
    } const cases[] = {
        {"new section, torn line", "[a]\nk=1", "b", "k", "2", "[a]\nk=1\n[b]\nk=2\n"},
        {"replaced in place", "[a]\nj=0\n\tk =0\n k=1 \nl=2\n", "a", "k", "9", "[a]\nj=0\n\tk =0\nk=9\nl=2\n"},
        {"lost header", "[a]\nk=1\n[b]\nm=3\n", "a", "l", "2", "[a]\nk=1\nl=2\nm=3\n"},
        {"lost header, nothing deleted", "[a]\nk=1\n \t[b]\nm=3\n", "a", "l", nullptr, "[a]\nk=1\nm=3\n"},
        {"dropped at the end", "[a]\nk=1\n\n;c\n", "a", "l", "2", "[a]\nk=1\nl=2\n"},
        {"dropped, nothing deleted", "[a]\nk=1\n;c\n", "a", "l", nullptr, "[a]\nk=1\n"},
        {"kept behind a found key", "[a]\nk=1\n;c\n", "a", "k", "2", "[a]\nk=2\n;c\n"},
        {"glued to a torn line", "[a]\nk=1", "a", "l", "2", "[a]\nk=1l=2\n"},
        {"section deleted", "[z]\n\n[a]\nk=1\n;c\n\n[b]\n", "a", nullptr, nullptr, "[z]\n\n[b]\n"},
        {"stopped by a comment", "[z]\n[a]\nk=1\n#c\nl=2\n[b]\n", "a", nullptr, nullptr, "[z]\n#c\nl=2\n[b]\n"},
        {"line feed in a value", "[a]\n", "a", "k", "1\n[b]", "[a]\nk=1\n[b]\n"},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.what);
        Put(row.before);
        EXPECT_EQ(Set(row.section, row.key, row.value), SM_STATUS_OK);
        EXPECT_EQ(Get(), row.after);
        EXPECT_EQ(Others(), 0);
    }
}

TEST_F(IniWrite, HoldsNamesAndValuesToTheirLimits)
{
    const std::string longest(255, 'n'), tooLong(256, 'n'), value(8192, 'v'), tooLargeValue(8193, 'v');
    EXPECT_EQ(Set("a", "k", tooLargeValue.c_str()), SM_STATUS_INI_BAD_VALUE);
    EXPECT_EQ(Set(tooLong.c_str(), "k", "1"), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(Set("a", tooLong.c_str(), "1"), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(Get(), "(missing)");
    EXPECT_EQ(Set(longest.c_str(), longest.c_str(), value.c_str()), SM_STATUS_OK);
    EXPECT_EQ(Text(longest.c_str(), longest.c_str()), value);
}

TEST_F(IniWrite, LeavesATemporaryFileAtAMalformedHeader)
{
    Put("[z]\n[b\n[a]\nk=1\n");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    EXPECT_EQ(Set("a", "k", "2"), SM_STATUS_INI_BAD_SECTION);
    EXPECT_EQ(Get(), "[z]\n[b\n[a]\nk=1\n");
    std::filesystem::remove(path);
    const std::filesystem::path left = std::filesystem::directory_iterator(folder)->path();
    EXPECT_EQ(left.filename().string().size(), 8U);
    EXPECT_EQ(left.filename().string().find_first_not_of(kLetters), std::string::npos);
    EXPECT_EQ(Get(left), "[z]\n[b\n");
    EXPECT_EQ(ModeOf(left), 0640U);
}

TEST_F(IniWrite, GivesModes)
{
    const mode_t mask = umask(077);
    EXPECT_EQ(Set("a", "k", "1"), SM_STATUS_OK);
    EXPECT_EQ(ModeOf(path), 0644U);
    for (const auto &[before, after] : {std::pair(0600U, 0600U), std::pair(07777U, 01666U), std::pair(0U, 0U)}) {
        for (const char *const section : {"a", "other"}) {
            Put("[a]\nk=1\n");
            ASSERT_EQ(chmod(path.c_str(), before), 0);
            EXPECT_EQ(Set(section, "k", "2"), SM_STATUS_OK);
            EXPECT_EQ(ModeOf(path), after) << before << section;
        }
    }
    umask(mask);
}

TEST_F(IniWrite, MakesOneDirectory)
{
    const auto write = [](const std::string &file) {
        return SMWriteINIPathFileValue("a", "k", 1, "1", 2, file.c_str(), 1);
    };
    const mode_t mask = umask(022);
    EXPECT_EQ(write(folder + "/new/file.ini"), SM_STATUS_OK);
    umask(mask);
    EXPECT_EQ(ModeOf(folder + "/new"), 0755U);
    EXPECT_EQ(Get(folder + "/new/file.ini"), "[a]\nk=1\n");
    EXPECT_EQ(write(folder + "/x/y/file.ini"), SM_STATUS_FAILED);
    EXPECT_EQ(write(path + "/"), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(write("/"), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(Others(), 1);

    ASSERT_EQ(chdir(folder.c_str()), 0); // a path without "/" is one of the current directory
    Put("[a]\nk=2\n");
    EXPECT_EQ(write("file"), SM_STATUS_OK);
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(Get(), "[a]\nk=1\n");
    EXPECT_EQ(write(path + "/file"), SM_STATUS_FILE_NOT_FOUND);
}

TEST_F(IniWrite, LeavesAFileWhoseBackupIsInTheWay)
{
    Put("[a]\nk=1\n");
    std::filesystem::create_directory(path + ".bak");
    EXPECT_EQ(Set("a", "l", "2"), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), "[a]\nk=1\n");
    EXPECT_EQ(Text("a", "k"), "1"); // a read goes on all the same
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
        (i < 8 ? taken : next) += kLetters[rand() % 62];
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

TEST_F(IniWrite, LeavesTheFileOnAFullDisk)
{
    if (!MountSmall(3)) // one page each for the directory, the file and its copy, at most
        GTEST_SKIP() << "no mount: " << strerror(errno);
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const std::string content = "[a]\nk=1\n;" + std::string(page - 10, 'c') + "\n";
    Put(content);
    Put(folder + "/filler", std::string(page * 4, 'f'));
    EXPECT_EQ(Set("a", "k", "2"), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(Get(), content);
    EXPECT_EQ(Others(), 2); // the filler and the temporary file
    EXPECT_EQ(Set("new", "k", "2"), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(Get(), content);
}

TEST_F(IniWrite, ReportsAReadOnlyFileSystem)
{
    if (!MountSmall(8))
        GTEST_SKIP() << "no mount: " << strerror(errno);
    Put("[a]\nk=1\n");
    Put(folder + "/none.bak", "[a]\nk=1\n");
    if (mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
        GTEST_SKIP() << "no remount: " << strerror(errno);
    EXPECT_EQ(Set("a", "k", "2"), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_EQ(Set("b", "k", "2"), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_EQ(Text("a", "k"), "1");
    path = folder + "/none";
    EXPECT_EQ(Set("a", "k", "2"), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_EQ(Text("a", "k"), "<260>");
}

// A file straight under "/" has its temporary file in the current directory, here of another file system.
TEST_F(IniWrite, RestoresAFileWhoseCopyCannotBeRenamed)
{
    if (!MountSmall(64))
        GTEST_SKIP() << "no mount: " << strerror(errno);
    std::filesystem::create_directories(folder + "/var/run/qz/.ipc");
    const pid_t child = fork();
    if (child == 0) {
        if (chdir("/run") != 0 || chroot(folder.c_str()) != 0)
            _exit(1);
        path = "/file.ini";
        Put("[a]\nk=1\n");
        const bool fails = Set("a", "k", "2") == SM_STATUS_ALREADY_EXISTS;
        const bool isSwapped = Get() == "(missing)" && Get("/file.ini.bak") == "[a]\nk=1\n";
        const bool isBack = Text("a", "k") == "1" && access("/file.ini.bak", F_OK) != 0;
        _exit((fails ? 0 : 2) + (isSwapped ? 0 : 4) + (isBack ? 0 : 8));
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    for (const auto &entry : std::filesystem::directory_iterator("/run")) {
        if (entry.is_regular_file())
            std::filesystem::remove(entry.path()); // the copy
    }
}

} // namespace
