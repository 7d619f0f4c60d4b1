// The attach chain: what the library brings up when it is loaded, and in which order.
//
// None of the state here is locked: the dynamic loader runs load-time entries one at a time. Threads that still wait
// in a call look at `detaching` alone.

#include <syslog.h>

#include <cstdlib>

#include "config/product.h"
#include "config/registration.h"
#include "digest/crc32.h"
#include "frame/module.h"
#include "ipc/critical.h"
#include "ipc/filelock.h"
#include "ipc/paths.h"
#include "ipc/semset.h"
#include "log/limits.h"
#include "os/ipv4.h"
#include "os/library.h"
#include "text/format.h"

namespace qzvest {
namespace {

// The paths, and then what dead processes have left under them.
int IPCAttach()
{
    if (SMIPCPathsInit() != 1)
        return 0;
    SMIPCStaleSemCleanup();
    return 1;
}

// In the order of bring-up. A facility with process-wide state adds its row here.
// clang-format off
constexpr AttachStep kSteps[] = {
    {RegistrationAttach, RegistrationDetach},
    {FileLockRegistryAttach, FileLockRegistryDetach},
    {ProductPathsAttach, ProductPathsDetach},
    {NetworkAttach, NetworkDetach},
    {IPCAttach, IPCPathsFree},
    {CriticalSectionAttach, CriticalSectionDetach},
    {LogRegistryAttach, LogRegistryDetach},
    {FormatLockAttach, FormatLockDetach},
    {LibraryCacheAttach, LibraryCacheDetach},
    {CRC32TableAttach, CRC32TableDetach},
};
// clang-format on

// The two counts move in step. attachCount is a second guard against entering the chains again.
int32_t loadCount;
int32_t attachCount;
uint16_t detaching; // other threads read it

void SetDetaching(uint16_t value)
{
    __atomic_store_n(&detaching, value, __ATOMIC_RELAXED);
}

} // namespace

int AttachSteps(std::span<const AttachStep> steps)
{
    for (size_t done = 0; done < steps.size(); ++done) {
        if (steps[done].bringUp() == 1)
            continue;
        DetachSteps(steps.first(done));
        return 0;
    }
    return 1;
}

void DetachSteps(std::span<const AttachStep> steps)
{
    for (size_t left = steps.size(); left > 0; --left)
        steps[left - 1].tearDown();
}

int SMModuleAttach()
{
    if (++attachCount > 1)
        return 1;
    return AttachSteps(kSteps); // after a failure the count stays: the process ends
}

int SMModuleDetach()
{
    if (--attachCount > 0)
        return 1;
    DetachSteps(kSteps);
    return 1;
}

int SMModuleStart()
{
    if (loadCount < 1) {
        SetDetaching(0);
        if (SMModuleAttach() != 1)
            ModuleAttachFailure();
    }
    ++loadCount;
    return 1;
}

int SMModuleStop()
{
    if (loadCount < 1)
        return 0;
    if (--loadCount == 0) {
        SetDetaching(1);
        (void)SMModuleDetach(); // always 1
    }
    return 1;
}

uint16_t SMModuleIsDetaching()
{
    return __atomic_load_n(&detaching, __ATOMIC_RELAXED);
}

void ModuleAttachFailure()
{
    openlog(nullptr, LOG_PID | LOG_CONS | LOG_NDELAY, LOG_LOCAL2);
    syslog(LOG_CRIT, "ModuleAttachFailure: qzvest failed to initialize - possibly out of memory\n");
    closelog();
    std::exit(1);
}

namespace {

[[gnu::constructor]] void Load()
{
    (void)SMModuleStart(); // always 1; a failed attach does not come back
}

[[gnu::destructor]] void Unload()
{
    (void)SMModuleStop(); // 0 when the attach never finished, or somebody stopped the module already
}

} // namespace
} // namespace qzvest
