/* Puts the facts into an object: plain values, nested objects, and a nested array of the file systems. */
#include "machine.h"
#include "service.h"

#include <qzvest/sdo.h>

#include <stdio.h>
#include <string.h>

/* An object in the making. After the first failure nothing more is added, so that a caller looks once, at
 * the end. */
typedef struct Draft {
    SMSDOConfig *object;
    uint32_t status;
    uint16_t id; /* what was added last, or could not be added */
} Draft;

static Draft Begin(void)
{
    Draft draft = {SMSDOConfigAlloc(), SM_STATUS_OK, 0};
    if (draft.object == NULL) {
        draft.status = SM_STATUS_NO_MEMORY;
    }
    return draft;
}

static void Put(Draft *draft, uint16_t id, uint8_t type, const void *data, size_t size)
{
    if (draft->status == SM_STATUS_OK) {
        draft->status = SMSDOConfigAddData(draft->object, id, type, data, (uint32_t)size, 0);
        draft->id = id;
    }
}

static void PutText(Draft *draft, uint16_t id, uint8_t flags, const char *text)
{
    if (text[0] != '\0') {
        Put(draft, id, (uint8_t)(MACHINE_TEXT | flags), text, strlen(text) + 1);
    }
}

static void PutBytes(Draft *draft, uint16_t id, uint64_t bytes)
{
    Put(draft, id, MACHINE_BYTES, &bytes, sizeof bytes);
}

static void PutNumber(Draft *draft, uint16_t id, uint8_t type, uint32_t number)
{
    Put(draft, id, type, &number, sizeof number);
}

/* Hands child to parent, which owns it then; frees it when either of them has failed. */
static void PutObject(Draft *parent, uint16_t id, Draft *child)
{
    if (child->status != SM_STATUS_OK && parent->status == SM_STATUS_OK) {
        parent->status = child->status;
        parent->id = child->id;
    }
    Put(parent, id, SM_SDO_KIND_OBJECT, child->object, sizeof child->object);
    if (parent->status != SM_STATUS_OK) {
        SMSDOConfigFree(child->object);
    }
}

static void PutLoad(Draft *machine, const MachineFacts *facts)
{
    Draft load = Begin();
    PutNumber(&load, MACHINE_ID_LOAD_1, MACHINE_HUNDREDTHS, facts->load.hundredths[0]);
    PutNumber(&load, MACHINE_ID_LOAD_5, MACHINE_HUNDREDTHS, facts->load.hundredths[1]);
    PutNumber(&load, MACHINE_ID_LOAD_15, MACHINE_HUNDREDTHS, facts->load.hundredths[2]);
    PutNumber(&load, MACHINE_ID_RUNNABLE, MACHINE_NUMBER, facts->load.runnable);
    PutNumber(&load, MACHINE_ID_TASKS, MACHINE_NUMBER, facts->load.tasks);
    PutObject(machine, MACHINE_ID_LOAD, &load);
}

static void PutMemory(Draft *machine, const MachineFacts *facts)
{
    Draft memory = Begin();
    PutBytes(&memory, MACHINE_ID_MEMORY_TOTAL, facts->memory.total);
    PutBytes(&memory, MACHINE_ID_MEMORY_AVAILABLE, facts->memory.available);
    PutBytes(&memory, MACHINE_ID_MEMORY_CACHED, facts->memory.cached);
    if (facts->memory.swapTotal != 0) {
        PutBytes(&memory, MACHINE_ID_SWAP_TOTAL, facts->memory.swapTotal);
        PutBytes(&memory, MACHINE_ID_SWAP_FREE, facts->memory.swapFree);
    }
    PutObject(machine, MACHINE_ID_MEMORY, &memory);
}

static Draft DescribeFileSystem(const FileSystemFacts *facts)
{
    Draft draft = Begin();
    PutText(&draft, MACHINE_ID_MOUNT_POINT, 0, facts->point);
    PutText(&draft, MACHINE_ID_MOUNT_TYPE, 0, facts->type);
    PutText(&draft, MACHINE_ID_MOUNT_SOURCE, 0, facts->source);
    PutBytes(&draft, MACHINE_ID_MOUNT_SIZE, facts->size);
    PutBytes(&draft, MACHINE_ID_MOUNT_USED, facts->used);
    PutBytes(&draft, MACHINE_ID_MOUNT_AVAILABLE, facts->available);
    Put(&draft, MACHINE_ID_MOUNT_READ_ONLY, MACHINE_BOOLEAN, &facts->readOnly, sizeof facts->readOnly);
    return draft;
}

static void PutFileSystems(Draft *machine, const MachineFacts *facts)
{
    SMSDOConfig *objects[FACT_FILE_SYSTEMS];
    uint32_t count = 0;
    while (count < facts->fileSystemCount && machine->status == SM_STATUS_OK) {
        const Draft draft = DescribeFileSystem(&facts->fileSystems[count]);
        objects[count++] = draft.object;
        machine->status = draft.status;
        machine->id = draft.id;
    }
    Put(machine, MACHINE_ID_FILE_SYSTEMS, SM_SDO_KIND_OBJECT | SM_SDO_ARRAY, objects, count * sizeof objects[0]);
    if (machine->status != SM_STATUS_OK) {
        for (uint32_t i = 0; i < count; ++i) {
            SMSDOConfigFree(objects[i]);
        }
    }
}

SMSDOConfig *DescribeMachine(const MachineFacts *facts)
{
    Draft machine = Begin();
    PutText(&machine, MACHINE_ID_HOST, 0, facts->host);
    if (facts->processors != 0) {
        PutNumber(&machine, MACHINE_ID_PROCESSORS, MACHINE_NUMBER, facts->processors);
    }
    PutText(&machine, MACHINE_ID_SYSTEM, 0, facts->system);
    PutText(&machine, MACHINE_ID_KERNEL, 0, facts->kernel);
    if (facts->uptime.known) {
        Put(&machine, MACHINE_ID_UPTIME, MACHINE_SECONDS, &facts->uptime.seconds, sizeof facts->uptime.seconds);
    }
    if (facts->load.known) {
        PutLoad(&machine, facts);
    }
    if (facts->memory.known) {
        PutMemory(&machine, facts);
    }
    if (facts->fileSystemCount != 0) { /* an array of nothing is no value */
        PutFileSystems(&machine, facts);
    }
    PutNumber(&machine, MACHINE_ID_READERS, MACHINE_NUMBER | MACHINE_OPEN, 0);
    PutText(&machine, MACHINE_ID_REMARK, MACHINE_OPEN, "none yet");
    if (machine.status != SM_STATUS_OK) {
        char what[64];
        (void)snprintf(what, sizeof what, "adding the value of ID %u to the object", machine.id);
        ServiceFailed(what, machine.status);
        SMSDOConfigFree(machine.object);
        return NULL;
    }
    return machine.object;
}
