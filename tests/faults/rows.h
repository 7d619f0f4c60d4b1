// Calls of exported functions as rows of tables, and the scene that each of them finds.
#ifndef TESTS_FAULTS_ROWS_H
#define TESTS_FAULTS_ROWS_H

#include <pthread.h>
#include <qzvest/qzvest.h>

#include <atomic>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "os/sample.h"
#include "sdo/objects.h"
#include "text/units.h"

inline const std::string kPlace = "/run/faults"; // of all files
inline const std::string kIni = kPlace + "/set.ini";

inline const char *const kFlat = "'BODS 0100 1000 0100 01 00 11000000";
inline const char *const kArray = "'BADS 0200 2000 'BODS 0000 0800 'BODS 0100 1000 0100 01 00 11000000";

int32_t CompareNumbers(void *key, void *data);

inline const char *const kDoubles = "%.1074f %.17g %e %#.300e"; // what a scene has printed needs no memory any more

// The library attached, among files of its own. Their names have a point, those of temporary files have none.
struct Place {
    Place();
    ~Place();
    Place(const Place &) = delete;
    Place &operator=(const Place &) = delete;
};

template <typename Result, typename Type>
Type TakenBy(Result (*)(Type *));

// What a call has made, until another takes it out to end it.
template <auto kFree>
struct Held {
    using Type = decltype(TakenBy(kFree));
    Type *made;
    ~Held()
    {
        kFree(made);
    }
    operator Type *() const
    {
        return made;
    }
    Type *Out()
    {
        return std::exchange(made, nullptr);
    }
};

// One of each kind of object; those with a name are X.
struct Things : Place {
    int numbers[3] = {1, 3, 2};
    SMRedBlackTree tree = nullptr;
    Held<SMFreeMem> block{SMAllocMem(8)};
    Held<SMSLListFree> single{SMSLListAlloc()};
    Held<SMDLListFree> both{SMDLListAlloc()};
    Held<SMSLListEntryFree> singleEntry{SMSLListEntryAlloc(4)}, singleOther{SMSLListEntryAlloc(4)};
    Held<SMDLListEntryFree> bothEntry{SMDLListEntryAlloc(4)}, bothOther{SMDLListEntryAlloc(4)};
    Object object, nested, other;
    Bytes flat, array = Bytes(200);
    SMSDOConfig *rebuilt[2] = {};
    SMSSUTF8Str narrow;
    SMSSUCS2Str wide;
    Held<SMXGBufFree> document{SMXGBufAlloc(0, 0)};
    Held<SMXGBufFreeContent> content{SMXGBufFreeGetContent(SMXGBufAlloc(0, 1))};
    Held<SMMutexDestroy> mutex{SMMutexCreate("X")};
    Held<SMSemaphoreDestroy> semaphore{SMSemaphoreCreate("X", 1)};
    Held<SMEventDestroy> event{SMEventCreate("X", 1, 1)};
    Held<SMSharedMemFree> memory{SMSharedMemCreate("X", 8)};
    Held<SMRWLDestroy> lock{SMRWLCreate("X")};
    Held<SMLibUnLoad> library{SMLibLoad("libc.so.6")};
    Held<SMFilePropFree> property{SMFilePropAlloc(kPlace.c_str())};
    Held<SMFileListFree> files{nullptr};
    pthread_t self;
    std::atomic<long> number = 0;
    Held<SMThreadStop> thread{SMThreadStart(&Run, this)}; // which tells the two and ends
    uint32_t size = 200, index = 0, ids[4] = {6};
    uint16_t id = 0, *token = nullptr;
    uint8_t type = 0;
    int64_t elapsed = 0;
    SMRFC1321Ctx digest;
    std::string path = kPlace + "/list/a.txt", log = kPlace + "/log/qzsys64.xml";
    char room[8192], source[8] = "n=v", *argv[1] = {source};
    std::vector<uint16_t> units = Units(std::u16string(u"a,b") + std::u16string(90, u'\0')), more = Units(u"b");

    Things();
    ~Things();
    static void *Run(void *things);
    std::string State() const; // of all of them
};

// Results that are no status: success with something missing, and what is right in no case.
constexpr uint32_t kPart = 0x10001;
constexpr uint32_t kWrong = 0x10002;

struct Row {
    const char *name; // the export
    // What the call gives when an allocation fails; each of it comes, and nothing else. Capitals first, sorted. M: no
    // memory, F: the general failure, N: not found, U: an enumeration that is unreadable, B: a buffer too small; the
    // state is as before. O: success all the same. For these in lower case, and for p, kPart, the state need not be
    // right. Empty: nothing is allocated, and no state looked at.
    const char *failures;
    uint32_t (*call)(Things &t);
    const char *after = nullptr; // what the state shows after success and did not before; NULL: it is the same

    Row Shows(const char *text) const
    {
        return {name, failures, call, text};
    }
};

inline Row RowOf(const char *name, const char *failures, uint32_t (*call)(Things &))
{
    return {name, failures, call};
}

constexpr const char *kChanged = ""; // as Row::after: in whatever way

// All or nothing, for results without a status. What was made is ended.
inline uint32_t Given(bool result)
{
    return result ? SM_STATUS_OK : SM_STATUS_NO_MEMORY;
}

inline uint32_t Rated(bool isWhole, bool isPart)
{
    return isWhole ? SM_STATUS_OK : isPart ? kPart : kWrong;
}

inline uint32_t ResultOf(uint32_t status)
{
    return status;
}

inline uint32_t ResultOf(auto *made)
{
    static constexpr auto kEnds =
        std::make_tuple(SMFreeMem, SMXGBufFreeContent, SMSLListFree, SMSLListEntryFree, SMDLListFree, SMDLListEntryFree,
                        SMSDOConfigFree, SMFilePropFree, SMMutexDestroy, SMSemaphoreDestroy, SMEventDestroy,
                        SMSharedMemFree, SMRWLDestroy);
    std::get<void (*)(decltype(made))>(kEnds)(made);
    return Given(made != nullptr);
}

// A text of the caller's.
inline uint32_t Owned(char *text, const std::string &expected)
{
    const bool isRight = text == nullptr || text == expected;
    return ResultOf(text) == SM_STATUS_OK && !isRight ? kWrong : Given(text != nullptr);
}

// Calls that allocate: the result may be a status or what was made; any other expression; and calls that do not, of
// which the result is dropped or a status.
#define MADE(failures, name, ...) EXPR(failures, name, ResultOf(name(__VA_ARGS__)))
#define EXPR(failures, name, ...)                                                                                      \
    RowOf(#name, failures, []([[maybe_unused]] Things &t) -> uint32_t { return __VA_ARGS__; })
#define CALL(name, ...) EXPR("", name, (static_cast<void>(name(__VA_ARGS__)), SM_STATUS_OK))
#define WELL(name, ...) EXPR("", name, name(__VA_ARGS__))

using Rows = std::vector<Row>;

Rows Table(const auto &...rows)
{
    return {rows...};
}

// The families.
Rows RowsOfObjects();
Rows RowsOfTexts();
Rows RowsOfStores();
Rows RowsOfSystem();

// System V semaphore sets ("sem") or segments of shared memory ("shm"), as the kernel lists them.
struct SysVObject {
    int id;
    size_t size; // semaphores or bytes
};
std::vector<SysVObject> SysVObjects(const char *kind);

#endif
