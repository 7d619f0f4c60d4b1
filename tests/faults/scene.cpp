// The scene of every row.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "config/places.h"
#include "faults/rows.h"
#include "ipc/lock_fixture.h"

namespace fs = std::filesystem;

std::vector<SysVObject> SysVObjects(const char *kind)
{
    std::ifstream table(std::string("/proc/sysvipc/") + kind);
    std::string skipped;
    std::getline(table, skipped);
    std::vector<SysVObject> objects;
    for (SysVObject o; table >> skipped >> o.id >> skipped >> o.size; std::getline(table, skipped))
        objects.push_back(o);
    return objects;
}

Place::Place()
{
    fs::remove_all(kPlace);
    fs::remove_all(kIpcFolder); // what a failure stores there stays
    fs::create_directories(kIpcFolder);
    fs::create_directories(kPlace + "/empty");
    const std::pair<const char *, std::string> files[] = {
        {"/set.ini", "[s]\ntext=value\nwords=one,two\nflag=TRUE\nnumber=7\nbytes=0x01,0x02\n\n[t]\n; why\nc=3\n"},
        {"/set.properties", "a=1\nkey=old\nz=2\n"},
        {"/pci.ids", "V\t1\tmaker\nD\t2\tthing\n"},
        {"/ini/set.ini", "[s]\ntext=value\n"},
        {"/ini/qzsdst64.ini", "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1=text\n"},
        {"/log/qzsys64.log", std::string(256, '#')},
        {"/log/qzsys64.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog></EventLog>"},
        {"/list/a.txt", "new"},
        {"/list/b.txt", "old"},
        {"/texts/a.txt", ""},
    };
    for (const auto &[name, content] : files)
        WriteText(kPlace + name, content);
    const std::string known = "Gaugework.installpath=" + kPlace + '\n';
    WriteText(kRegistrationFile, known);
    qzvest::SMModuleStart();
    WriteText(kRegistrationFile, known + "vestlib.installpath=/run\n"); // which the table of products does not have yet
}

Place::~Place()
{
    qzvest::SMModuleStop();
    EXPECT_FALSE(IsLoaded()); // clients or not
}

int32_t CompareNumbers(void *key, void *data)
{
    return *static_cast<int *>(key) - *static_cast<int *>(data);
}

Things::Things()
{
    for (int *known : {numbers, numbers + 1})
        (void)SMRedBlackTreeDataInsert(&tree, known, known, CompareNumbers);
    *static_cast<int *>(singleEntry.made->data) = *static_cast<int *>(bothEntry.made->data) = 1;
    *static_cast<int *>(singleOther.made->data) = *static_cast<int *>(bothOther.made->data) = 2;
    SMSLListInsertEntryAtHead(single, singleEntry);
    SMDLListInsertEntryAtHead(both, bothEntry);
    object = Make({{1, 1, "11"}, {2, 1, "2222222222"}, {3, 0x0C, kFlat}, {4, 0x0C, kArray}});
    nested = Make({{1, 1, "11"}});
    other = Make({{1, 1, "1111111111"}});
    flat = Flatten(object);
    const auto flatSize = static_cast<uint32_t>(flat.size());
    flat.resize(200);
    (void)SMSDOBinaryArrayInitHeader(array.data(), 200);
    (void)SMSDOBinaryArrayAddData(array.data(), &size, flat.data(), flatSize);
    (void)SMSSUTF8StrAlloc(&narrow, 4);
    (void)SMSSUTF8StrCatUTF8Str(&narrow, "old");
    (void)SMSSUCS2StrAlloc(&wide, 8);
    (void)SMSSUCS2StrCatUTF8Str(&wide, "old");
    (void)SMXGBufCatBeginNode(document, std::string(59, 'n').c_str(), nullptr); // all but full
    (void)SMFileListGet((kPlace + "/list").c_str(), 0, &files.made);
    (void)SMFLibLinkToExportFN("a", kSample.c_str(), "SampleAnswer");
    SMRFC1321Load(&digest);
    (void)SMSetLogMaxSize("/c", 2000000);
    for (int round = 0; round < 2; ++round) // the second uses blocks of the first for powers of five
        (void)SMsnprintf(room, sizeof room, kDoubles, 5e-324, 1e300, 0.1, 0.1);
    std::strcpy(room, " name=Value ");
}

Things::~Things()
{
    SMRedBlackTreeDelete(&tree, nullptr, nullptr);
    for (SMSDOConfig *config : rebuilt)
        SMSDOConfigFree(config);
    SMSSUTF8StrFree(&narrow);
    SMSSUCS2StrFree(&wide);
}

void *Things::Run(void *things)
{
    auto *t = static_cast<Things *>(things);
    t->self = pthread_self();
    t->number = syscall(SYS_gettid);
    return nullptr;
}

std::string Things::State() const
{
    std::multiset<std::string> contents;
    for (const SysVObject &set : SysVObjects("sem"))
        contents.insert(Text(set.size, " with ", UnitsOf(set.id)));
    for (const SysVObject &segment : SysVObjects("shm"))
        contents.insert(Text(segment.size));
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(kPlace)) {
        std::ifstream file(entry.path(), std::ios::binary);
        if (entry.path().has_extension())
            contents.insert(entry.path().string() + ":" + std::string(std::istreambuf_iterator<char>(file), {}));
    }
    std::string state;
    for (const std::string &one : contents)
        state += one + '\n';
    // What follows a failure finds locks free and no table lost.
    char text[4][64] = {};
    uint32_t sizes[4] = {64, 64, 64, 64}, limit = 0;
    (void)SMReadINIPathFileValue("t", "c", INI_TYPE_UTF8, text[0], &sizes[0], nullptr, 0, kIni.c_str(), 0);
    (void)SMPropertyFileReadValue("z", SMXLT_TYPE_UTF8, text[1], &sizes[1], nullptr, 0,
                                  (kPlace + "/set.properties").c_str(), 0);
    (void)SMGetInstallPath(text[2], &sizes[2]); // may build the table anew
    (void)SMGetInstallPath(text[3], &(sizes[3] = 64));
    (void)SMGetLogMaxSize("/a", &limit);
    state += Text(text[0], text[1], text[3], ' ', limit, IsLoaded() ? " loaded " : " ");
    const auto show = [](void *out, void *data) {
        *static_cast<std::string *>(out) += Text(*static_cast<int *>(data), ' ');
        return 1;
    };
    (void)SMRedBlackTreeDataWalk(tree, &state, show, SM_RBT_WALK_ASCENDING);
    for (const Bytes &bytes : {Flatten(object), Flatten(nested), Flatten(other), flat})
        state += Hex(bytes) + ' ';
    state += Text(rebuilt[0] != nullptr || rebuilt[1] != nullptr ? "rebuilt " : "", std::string(narrow.text), ' ',
                  narrow.capacity, ' ', wide.capacity, std::string(document.made->text, document.made->length), ' ');
    for (uint32_t i = 0; i < wide.length; ++i)
        state += static_cast<char>(wide.text[i]);
    return state;
}
