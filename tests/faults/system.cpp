// Files, the environment, libraries, threads, addresses, and what processes share by name.

#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "faults/rows.h"
#include "support/faults.h"

namespace {

const std::string kOther = kPlace + "/list/b.txt";

uint32_t Critical()
{
    static int runs;
    runs = 0;
    SMCriticalSectionExecute([](uint64_t) { return static_cast<uint64_t>(++runs); }, 1, SM_WAIT_FOREVER);
    return Given(runs == 1);
}

uint32_t Listed()
{
    Held<SMFileListFree> list{nullptr};
    const uint32_t status = SMFileListGet((kPlace + "/list").c_str(), SM_FILE_LIST_SPARING, &list.made);
    return (status == SM_STATUS_OK) == (list.made != nullptr && list.made->count == 2) ? status : kWrong;
}

// How many clients have to go until the library does.
int Clients()
{
    int clients = 0;
    for (; IsLoaded(); ++clients)
        (void)SMFLibUnLoad("stranger", kSample.c_str());
    return clients;
}

// An address, whether the client and the symbol could be noted or not, or none.
uint32_t FirstLink()
{
    (void)Clients();
    const int answer = Answer(SMFLibLinkToExportFN("a", kSample.c_str(), "SampleAnswer"));
    StopFault();
    const bool isLoaded = IsLoaded();
    const int later = isLoaded ? Answer(SMFLibLinkToExportFN("b", kSample.c_str(), "SampleAnswer")) : 42;
    const int clients = Clients();
    const bool isRight = later == 42 && isLoaded >= (answer == 42);
    return isRight && answer != 42 ? SM_STATUS_NO_MEMORY : Rated(isRight && clients == 2, isRight);
}

// A client comes in whole or not at all.
uint32_t LaterLink()
{
    const bool isLinked = SMFLibLinkToExportFN("b", kSample.c_str(), "SampleAnswer") != nullptr;
    return Clients() == (isLinked ? 2 : 1) ? Given(isLinked) : kWrong;
}

// A name may have another number after a refusal: a new one where the registry could not be read, under which there is
// no set, or 0, with which it is refused for ever.
uint32_t Again(SMSemaphore *(*make)())
{
    const bool isMade = Held<SMSemaphoreDestroy>{make()}.made != nullptr;
    StopFault();
    return isMade ? SM_STATUS_OK : Held<SMSemaphoreDestroy>{make()}.made != nullptr ? SM_STATUS_NO_MEMORY : kPart;
}

uint32_t LockedAndUnlocked(const Things &t)
{
    const uint32_t status = SMMutexLock(t.mutex, 0);
    return status == SM_STATUS_OK ? SMMutexUnLock(t.mutex) : status;
}

uint32_t Suffix(Things &t)
{
    char host[64] = "";
    (void)gethostname(host, sizeof host - 1);
    std::ofstream("/etc/nsswitch.conf") << "hosts: files\n";
    std::ofstream("/etc/hosts") << "127.0.0.9 canonical.example " << host << '\n';
    return SMGetDNSSuffixNameName(t.room, &t.size);
}

// With the thread gone the signal hits nobody.
uint32_t Kill(Things &t)
{
    while (t.number == 0 || syscall(SYS_tgkill, getpid(), t.number.load(), 0) == 0)
        sched_yield();
    const uint32_t status = SMThreadKill(t.thread.Out());
    return pthread_join(t.self, nullptr) == 0 ? status : kWrong;
}

// Whatever fails, the object goes.
#define ENDS(name, ...) EXPR("O", name, (name(__VA_ARGS__), SM_STATUS_OK)).Shows(kChanged)
#define LISTS(failures, Record, name, ...)                                                                             \
    EXPR(failures, name, Counted(t, name(__VA_ARGS__, &(t.size = 7), reinterpret_cast<Record *>(t.room))))

// Nothing is listed but loopback, of which no list tells.
uint32_t Counted(const Things &t, uint32_t status)
{
    return t.size == (status == SM_STATUS_OK ? 0 : 7) ? status : kWrong;
}

} // namespace

Rows RowsOfSystem()
{
    return Table(
        MADE("M", SMGetTmpFile, kPlace.c_str(), t.room, &t.size),
        MADE("m", SMFileCopy, t.path.c_str(), kOther.c_str(), 1).Shows("b.txt:new"),
        MADE("m", SMFileCopyAndSync, t.path.c_str(), kOther.c_str(), 1).Shows("b.txt:new"),
        MADE("M", SMFileAppend, t.path.c_str(), kOther.c_str(), 0).Shows("b.txt:oldnew"),
        MADE("M", SMFileAppendAndSync, t.path.c_str(), kOther.c_str(), 0).Shows("b.txt:oldnew"),
        EXPR("M", SMFileListGet, Listed()), MADE("M", SMFilePropAlloc, t.path.c_str()),
        EXPR("M", SMEnvDup, (setenv("QZVEST_FAULTS", "value", 1), Owned(SMEnvDup("QZVEST_FAULTS", nullptr), "value"))),
        MADE("F", SMAppendToOSSysLog, 1, 1, 1, "test", "text"),
        EXPR("M", SMThreadStart,
             Given(Held<SMThreadStop>{SMThreadStart([](void *none) { return none; }, nullptr)}.made != nullptr)),
        EXPR("M", SMLibLoad, Given(Held<SMLibUnLoad>{SMLibLoad(kSample.c_str())}.made != nullptr)),
        EXPR("mp", SMFLibLinkToExportFN, FirstLink()).Shows(kChanged),
        EXPR("m", SMFLibLinkToExportFN, LaterLink()).Shows(kChanged),
        MADE("M", SMIPAddrASCIIToNetwork, "1.2.3.4", &t.index), EXPR("M", SMGetDNSSuffixNameName, Suffix(t)),
        LISTS("F", SMIPAddrSlot, SMGetIPAddrStrList, nullptr),
        LISTS("FM", SMInetAddrRecord, SMGetInetAddrStrList, SM_SCOPE_IPV4), MADE("M", SMMutexCreate, nullptr),
        MADE("M", SMMutexCreate, "Y"), MADE("M", SMMutexCreate_s, "Y", 0), MADE("M", SMMutexOpen, "X"),
        MADE("M", SMSemaphoreCreate, nullptr, 1), MADE("MO", SMSemaphoreCreate, "Y", 1),
        MADE("Mo", SMSemaphoreCreate, "X", 1).Shows(kChanged), MADE("MO", SMSemaphoreCreate_s, "Y", 1, 0),
        MADE("M", SMSemaphoreOpen, "X"), EXPR("Mp", SMSemaphoreOpen, Again([] { return SMSemaphoreOpen("X"); })),
        EXPR("MOp", SMSemaphoreCreate, Again([] { return SMSemaphoreCreate("Y", 1); })),
        MADE("M", SMEventCreate, nullptr, 1, 1), MADE("MO", SMEventCreate, "Y", 1, 1),
        MADE("MO", SMEventCreate_s, "Y", 1, 1, 0), MADE("M", SMEventOpen, "X"), MADE("MO", SMSharedMemCreate, "Y", 9),
        MADE("MO", SMSharedMemCreate_s, "Y", 9, 0), MADE("M", SMSharedMemOpen, "X"), MADE("M", SMRWLCreate, nullptr),
        MADE("MO", SMRWLCreate, "Y"), EXPR("M", SMCriticalSectionExecute, Critical()),
        WELL(SMMkDir, (kPlace + "/made").c_str()), WELL(SMRmDir, (kPlace + "/empty").c_str()),
        WELL(SMDeleteFile, t.path.c_str()), WELL(SMGetSizeOfFile, t.path.c_str(), &t.size),
        CALL(SMFilePropFree, t.property.Out()), CALL(SMFilePropIsModified, t.property),
        CALL(SMFileListFree, t.files.Out()), WELL(SMLibUnLoad, t.library.Out()),
        CALL(SMLibLinkToExportFN, t.library, "malloc"), WELL(SMLibUnLinkFromExportFN, t.library, &t.id),
        WELL(SMFLibUnLoad, "a", kSample.c_str()), CALL(SMkbhit), CALL(SMRefTicksGet),
        CALL(SMRefTicksDiffCheckTimer, 1, 2, 3, &t.elapsed, &t.id, &t.id), CALL(SMOSTypeGet), WELL(SMOSShutdown, 0, 0),
        WELL(SMLongFileNamesEnable), WELL(SMLongFileNamesDisable), CALL(SMGetLocalLanguageID), CALL(SMThreadGetID),
        CALL(SMThreadYield), WELL(SMThreadSetName, "faults"),
        WELL(
            SMThreadStartAndRelease, [](void *none) { return none; }, nullptr),
        WELL(SMThreadStop, t.thread.Out()), EXPR("", SMThreadKill, Kill(t)), CALL(SMGetExportContext, &t.size),
        CALL(SMSetExportContext, &t.size, 1), CALL(SMResetExportContext, &t.size), CALL(VESTGetMajorVersion),
        CALL(VESTGetMinorVersion), CALL(VESTGetRevision), WELL(SMGetIPHostName, t.room, &t.size),
        WELL(SMUCS2GetIPHostName, t.units.data(), &(t.size = 180)), WELL(SMIPAddrNetworkToASCII, 1, t.room, &t.size),
        WELL(SMInetAddrNetworkToUTF8, SM_FAMILY_IPV4, "1234", 4, t.room, &t.size),
        WELL(SMInetAddrUTF8ToNetwork, SM_FAMILY_IPV4, "1.2.3.4", t.room, &t.size),
        EXPR("", SMMutexLock, LockedAndUnlocked(t)), EXPR("", SMMutexUnLock, LockedAndUnlocked(t)),
        CALL(SMMutexDestroy, t.mutex.Out()), WELL(SMSemaphoreAcquireWait, t.semaphore, 0),
        WELL(SMSemaphoreRelease, t.semaphore, 1, nullptr), ENDS(SMSemaphoreDestroy, t.semaphore.Out()),
        WELL(SMEventWait, t.event, 0), WELL(SMEventSet, t.event), WELL(SMEventReset, t.event),
        ENDS(SMEventDestroy, t.event.Out()), CALL(SMSharedMemGetAddressPtr, t.memory),
        ENDS(SMSharedMemFree, t.memory.Out()), WELL(SMRWLReadLockGet, t.lock, 0), WELL(SMRWLWriteLockGet, t.lock, 0),
        CALL(SMRWLReadLockRelease, t.lock), CALL(SMRWLWriteLockRelease, t.lock), ENDS(SMRWLDestroy, t.lock.Out()));
}
