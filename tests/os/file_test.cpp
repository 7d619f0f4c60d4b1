// Directories and their listings, temporary names, copies and the watch for changes.

#include <gtest/gtest.h>

#include <qzvest/file.h>

#include <fcntl.h>
#include <vector>

#include "os/folder.h"

namespace {

TEST(Directory, IsMadeOneLevelDeepAndRemovedWhenEmpty)
{
    const Folder folder;
    const std::string made = folder / "made";
    const mode_t mask = umask(002);
    EXPECT_EQ(SMMkDir(made.c_str()), SM_STATUS_OK);
    umask(mask);
    EXPECT_EQ(Mode(made), 0755u);
    EXPECT_EQ(SMMkDir(made.c_str()), SM_STATUS_OK);
    const std::string file = folder.Make("made/file", "");
    EXPECT_EQ(SMMkDir(file.c_str()), SM_STATUS_OK);
    EXPECT_EQ(SMMkDir((folder / "missing/made").c_str()), SM_STATUS_FAILED);

    EXPECT_EQ(SMRmDir(made.c_str()), SM_STATUS_BAD_FORMAT);
    EXPECT_EQ(SMRmDir(file.c_str()), SM_STATUS_FAILED);
    EXPECT_EQ(SMDeleteFile(file.c_str()), SM_STATUS_OK);
    EXPECT_EQ(SMDeleteFile(file.c_str()), SM_STATUS_FAILED);
    EXPECT_EQ(SMRmDir(made.c_str()), SM_STATUS_OK);
    EXPECT_EQ(SMRmDir(made.c_str()), SM_STATUS_NOT_FOUND);
}

// The names that the library draws after the same srand.
std::string DrawnName()
{
    std::string name;
    for (int i = 0; i < 8; ++i)
        name += "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"[std::rand() % 62];
    return name;
}

TEST(TemporaryName, GivesUpAfterAHundredThatExist)
{
    const Folder folder;
    char buffer[9] = "untouche";
    uint32_t size = 8;
    EXPECT_EQ(SMGetTmpFile(folder.Path(), buffer, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 9u);
    EXPECT_STREQ(buffer, "untouche");
    EXPECT_EQ(SMGetTmpFile((folder / "missing").c_str(), buffer, &size), SM_STATUS_OK); // seeds
    std::srand(7);
    for (int i = 0; i < 99; ++i)
        folder.Make(DrawnName(), "");
    const std::string last = DrawnName();
    for (const uint32_t status : {SM_STATUS_OK, SM_STATUS_FAILED}) {
        std::srand(7);
        EXPECT_EQ(SMGetTmpFile(folder.Path(), buffer, &size), status);
        EXPECT_TRUE(status != SM_STATUS_OK || buffer == last);
        EXPECT_EQ(size, 9u);
        folder.Make(last, "");
    }
}

TEST(FileSize, IsThatOfItsContent)
{
    const Folder folder;
    const std::string large = folder.Make("file", "");
    ASSERT_EQ(truncate(large.c_str(), (INT64_C(1) << 32) + 3), 0); // without blocks
    uint32_t size = 77;
    EXPECT_EQ(SMGetSizeOfFile(large.c_str(), &size), SM_STATUS_OK);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(SMGetSizeOfFile((folder / "missing").c_str(), &size), SM_STATUS_FAILED);
    EXPECT_EQ(size, 0u);
}

TEST(Copy, TakesContentAndModeOrTellsWhyNot)
{
    for (const auto copy : {SMFileCopy, SMFileCopyAndSync}) {
        const Folder folder;
        const std::string content(2 * 8192 + 1, 'x'), missing = folder / "missing", target = folder / "target";
        const std::string source = folder.Make("source", content, 04775); // of which the umask lets less through
        EXPECT_EQ(copy(source.c_str(), target.c_str(), 0), SM_STATUS_OK);
        EXPECT_EQ(Content(target), content);
        EXPECT_EQ(Mode(target), 04775u);
        const std::tuple<std::string, std::string, uint16_t, uint32_t, std::string> cases[] = {
            {missing, target, 0, SM_STATUS_FILE_EXISTS, content},
            {missing, target, 1, SM_STATUS_FILE_NOT_FOUND, content},
            {source, missing + "/target", 1, SM_STATUS_FAILED, content},
            {folder.Make("short", "short", 0600), target, 1, SM_STATUS_OK, "short"},
            {folder.Path(), target, 1, SM_STATUS_FAILED, ""}, // opens, but cannot be read
        };
        for (const auto &[from, to, overwrite, status, after] : cases) {
            EXPECT_EQ(copy(from.c_str(), to.c_str(), overwrite), status) << from;
            EXPECT_EQ(Content(target), after);
        }
        EXPECT_EQ(Mode(target), 0600u);
        EXPECT_EQ(copy(source.c_str(), nullptr, 1), SM_STATUS_BAD_ARGUMENT);
    }
}

TEST(Append, KeepsWhatIsThereAndItsMode)
{
    for (const auto append : {SMFileAppend, SMFileAppendAndSync}) {
        const Folder folder;
        const std::string source = folder.Make("source", "new", 0666), made = folder / "made";
        const std::string target = folder.Make("target", "old", 0600);
        EXPECT_EQ(append(source.c_str(), target.c_str(), 0), SM_STATUS_OK);
        EXPECT_EQ(Content(target), "oldnew");
        EXPECT_EQ(Mode(target), 0600u);
        EXPECT_EQ(append(source.c_str(), made.c_str(), 0), SM_STATUS_FILE_NOT_FOUND);
        EXPECT_EQ(append(source.c_str(), made.c_str(), 1), SM_STATUS_OK);
        EXPECT_EQ(Content(made), "new");
        EXPECT_EQ(Mode(made), 0666u);
        EXPECT_EQ(append(source.c_str(), "/dev/full", 0), SM_STATUS_LIMIT_REACHED);
    }
}

TEST(FileWatch, ComparesWholeSeconds)
{
    const Folder folder;
    const std::string file = folder.Make("file", "");
    const auto setModified = [&file](time_t seconds, long nanoseconds) {
        const timespec times[] = {{0, UTIME_OMIT}, {seconds, nanoseconds}};
        EXPECT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    };
    setModified(1000, 0);
    EXPECT_EQ(SMFilePropAlloc((folder / "missing").c_str()), nullptr);
    SMFileProp *watch = SMFilePropAlloc(std::string(file).c_str()); // whose text is then gone
    ASSERT_NE(watch, nullptr);
    setModified(1000, 999999999);
    EXPECT_EQ(SMFilePropIsModified(watch), 0u);
    for (const time_t seconds : {1001, 999}) {
        setModified(seconds, 0);
        EXPECT_EQ(SMFilePropIsModified(watch), 1u);
        EXPECT_EQ(SMFilePropIsModified(watch), 0u);
    }
    EXPECT_EQ(SMDeleteFile(file.c_str()), SM_STATUS_OK);
    EXPECT_EQ(SMFilePropIsModified(watch), 0u);
    folder.Make("file", "");
    EXPECT_EQ(SMFilePropIsModified(watch), 1u);
    SMFilePropFree(watch);
}

using Names = std::vector<std::string>;

Names Listed(const std::string &directory, uint32_t flags, uint32_t capacity = 100)
{
    SMFileList *list = nullptr;
    if (SMFileListGet(directory.c_str(), flags, &list) != SM_STATUS_OK)
        return {"(failed)"};
    const Names names(list->entries, list->entries + list->count);
    EXPECT_EQ(list->capacity, capacity);
    SMFileListFree(list);
    return names;
}

TEST(FileList, SortsBytesEitherWayAndGrowsByAHundredOrByOne)
{
    constexpr uint32_t kUp = SM_FILE_LIST_NAMES | SM_FILE_LIST_ASCENDING;
    const Folder folder;
    SMFileList untouched{}, *list = &untouched;
    EXPECT_EQ(SMFileListGet(folder.Path(), 0, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileListGet((folder / "missing").c_str(), 24, &list), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileListGet((folder / "missing").c_str(), 0, &list), SM_STATUS_FILE_NOT_FOUND);
    SMMkDir((folder / "directory").c_str());
    ASSERT_EQ(symlink("missing", (folder / "~").c_str()), 0);
    EXPECT_EQ(SMFileListGet(folder.Path(), 0, &list), SM_STATUS_NO_ENTRY);
    EXPECT_EQ(list, &untouched);

    folder.Make(".hidden", "");
    EXPECT_EQ(Listed(folder / "", 0), Names{folder / "/.hidden"}); // with a slash always
    Names names = {".hidden", "B", "a", "aa", "\xC3\xA9"};
    for (const std::string &name : names)
        folder.Make(name, "");
    EXPECT_EQ(Listed(folder.Path(), kUp), names);
    EXPECT_EQ(Listed(folder.Path(), SM_FILE_LIST_NAMES | SM_FILE_LIST_DESCENDING), Names(names.rbegin(), names.rend()));
    EXPECT_EQ(Listed(folder.Path(), kUp | SM_FILE_LIST_LINKS)[4], "~");
    for (int i = 1000; i < 1096; ++i)
        folder.Make(*names.insert(names.end() - 4, std::to_string(i)), "");
    EXPECT_EQ(Listed(folder.Path(), kUp, 200), names);
    EXPECT_EQ(Listed(folder.Path(), kUp | SM_FILE_LIST_SPARING, 101), names);
}

} // namespace
