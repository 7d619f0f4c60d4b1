// Attach and detach, versions and export context.
#ifndef FRAME_MODULE_H
#define FRAME_MODULE_H

#include <cstdint>
#include <span>

namespace qzvest {

// One facility with process-wide state.
struct AttachStep {
    int (*bringUp)();   // 1 when it is up
    void (*tearDown)(); // copes with a step that never finished
};

// Brings the steps up in order. The first that fails has every earlier one torn down, last first, and the
// result is 0; else it is 1.
int AttachSteps(std::span<const AttachStep> steps);

// Tears the steps down, last first.
void DetachSteps(std::span<const AttachStep> steps);

// Load-time entries: the loader calls the first before any export and the second after the last.
int SMModuleStart();
int SMModuleStop();

// The attach chain between the two.
int SMModuleAttach();
int SMModuleDetach();

// 1 from the moment the last detach begins; waiters look at it after they wake.
uint16_t SMModuleIsDetaching();

// A line in the system log, and the end of the process with status 1.
[[noreturn]] void ModuleAttachFailure();

uint32_t VESTGetMajorVersion();
uint32_t VESTGetMinorVersion();
uint32_t VESTGetRevision();

void SMGetExportContext(uint32_t *ctx);
void SMSetExportContext(uint32_t *ctx, uint32_t value);
void SMResetExportContext(uint32_t *ctx);

} // namespace qzvest

#endif
