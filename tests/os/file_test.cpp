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
    EXPECT_EQ(SMGetTmpFile((folder / "missing").c_str(), buffer, &(size = 256)), SM_STATUS_OK); // seeds
    EXPECT_EQ(size, 9u);
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
    const std::string large = folder.Make("file", "12345");
    ASSERT_EQ(truncate(large.c_str(), (INT64_C(1) << 32) + 3), 0); // without blocks
    uint32_t size = 77;
    EXPECT_EQ(SMGetSizeOfFile(large.c_str(), &size), SM_STATUS_OK);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(SMGetSizeOfFile((folder / "missing").c_str(), &size), SM_STATUS_FAILED);
    EXPECT_EQ(size, 0u);
}

class Copy : public testing::TestWithParam<decltype(&SMFileCopy)> {};
INSTANTIATE_TEST_SUITE_P(BothForms, Copy, testing::Values(SMFileCopy, SMFileCopyAndSync));

TEST_P(Copy, TakesContentAndModeOrTellsWhyNot)
{
    const Folder folder;
    const auto copy = [](const std::string &from, const std::string &to, uint16_t overwrite) {
        return GetParam()(from.c_str(), to.c_str(), overwrite);
    };
    const std::string content(2 * 8192 + 1, 'x'), target = folder / "target", missing = folder / "missing";
    const std::string source = folder.Make("source", content, 04775); // of which the umask lets less through
    EXPECT_EQ(copy(source, target, 0), SM_STATUS_OK);
    EXPECT_EQ(Content(target), content);
    EXPECT_EQ(Mode(target), 04775u);

    folder.Make("source", "short", 0600);
    EXPECT_EQ(copy(missing, target, 0), SM_STATUS_FILE_EXISTS);
    EXPECT_EQ(copy(missing, target, 1), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_EQ(Content(target), content);
    EXPECT_EQ(copy(source, target, 1), SM_STATUS_OK);
    EXPECT_EQ(Content(target), "short");
    EXPECT_EQ(Mode(target), 0600u);

    EXPECT_EQ(GetParam()(source.c_str(), nullptr, 1), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(copy(source, missing + "/target", 1), SM_STATUS_FAILED);
    EXPECT_EQ(copy(folder.Path(), target, 1), SM_STATUS_FAILED); // opens, but cannot be read
    EXPECT_EQ(Content(target), "");
}

using Append = Copy;
INSTANTIATE_TEST_SUITE_P(BothForms, Append, testing::Values(SMFileAppend, SMFileAppendAndSync));

TEST_P(Append, KeepsWhatIsThereAndItsMode)
{
    const Folder folder;
    const auto append = [](const std::string &from, const std::string &to, uint16_t create) {
        return GetParam()(from.c_str(), to.c_str(), create);
    };
    const std::string source = folder.Make("source", "new", 0666), missing = folder / "missing";
    const std::string target = folder.Make("target", "old", 0600), made = folder / "made";
    EXPECT_EQ(append(source, target, 0), SM_STATUS_OK);
    EXPECT_EQ(Content(target), "oldnew");
    EXPECT_EQ(Mode(target), 0600u);
    EXPECT_EQ(append(source, made, 0), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_FALSE(Exists(made));
    EXPECT_EQ(append(source, made, 1), SM_STATUS_OK);
    EXPECT_EQ(Content(made), "new");
    EXPECT_EQ(Mode(made), 0666u);
    EXPECT_EQ(append(missing, made, 0), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_EQ(append(source, "/dev/full", 0), SM_STATUS_LIMIT_REACHED);
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

Names Listed(const std::string &directory, uint32_t flags, uint32_t *capacity = nullptr)
{
    SMFileList *list = nullptr;
    EXPECT_EQ(SMFileListGet(directory.c_str(), flags, &list), SM_STATUS_OK);
    if (list == nullptr)
        return {};
    Names names(list->entries, list->entries + list->count);
    if (capacity != nullptr)
        *capacity = list->capacity;
    SMFileListFree(list);
    return names;
}

TEST(FileList, RefusesWhatItCannotDo)
{
    const Folder folder;
    SMFileList untouched{}, *list = &untouched;
    EXPECT_EQ(SMFileListGet(folder.Path(), 0, nullptr), SM_STATUS_INVALID_PARAMETER);
    const std::string missing = folder / "missing";
    EXPECT_EQ(SMFileListGet(missing.c_str(), 24, &list), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileListGet(missing.c_str(), 0, &list), SM_STATUS_FILE_NOT_FOUND);
    SMMkDir((folder / "directory").c_str());
    ASSERT_EQ(symlink("missing", (folder / "link").c_str()), 0);
    EXPECT_EQ(SMFileListGet(folder.Path(), 0, &list), SM_STATUS_NO_ENTRY);
    EXPECT_EQ(list, &untouched);
}

TEST(FileList, SortsBytesEitherWay)
{
    const Folder folder;
    const Names names = {".hidden", "B", "a", "aa", "\xC3\xA9"};
    for (const std::string &name : names)
        folder.Make(name, "");
    SMMkDir((folder / "directory").c_str());
    EXPECT_EQ(Listed(folder.Path(), SM_FILE_LIST_NAMES | SM_FILE_LIST_ASCENDING), names);
    EXPECT_EQ(Listed(folder.Path(), SM_FILE_LIST_NAMES | SM_FILE_LIST_DESCENDING), Names(names.rbegin(), names.rend()));
    ASSERT_EQ(symlink("missing", (folder / "~").c_str()), 0);
    EXPECT_EQ(Listed(folder.Path(), SM_FILE_LIST_NAMES | SM_FILE_LIST_LINKS | SM_FILE_LIST_ASCENDING)[4], "~");
}

TEST(FileList, JoinsPathsAndGrowsByAHundredOrByOne)
{
    const Folder folder;
    folder.Make("1000", "");
    EXPECT_EQ(Listed(folder / "", 0), Names{folder / "/1000"}); // with a slash always
    Names names = {"1000"};
    for (int i = 1001; i <= 1100; ++i)
        folder.Make(names.emplace_back(std::to_string(i)), "");
    for (const bool sparing : {false, true}) {
        uint32_t capacity = 0;
        const uint32_t flags = SM_FILE_LIST_NAMES | SM_FILE_LIST_ASCENDING | (sparing ? SM_FILE_LIST_SPARING : 0);
        EXPECT_EQ(Listed(folder.Path(), flags, &capacity), names);
        EXPECT_EQ(capacity, sparing ? 101u : 200u);
    }
}

} // namespace
