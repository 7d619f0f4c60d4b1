/* Changes values of a block, and compares what can be rebuilt from it. */
#include "client.h"
#include "machine.h"
#include "messages.h"

#include <qzvest/print.h>
#include <qzvest/sdo.h>

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

typedef struct Value {
    uint16_t id;
    uint8_t type;
    uint32_t size;
    char data[SHOWN];
} Value;

/* Reads the value under id; one that is not open to readers is refused. */
static int ReadOpen(const Block *block, uint16_t id, Value *value)
{
    value->id = id;
    value->size = sizeof value->data;
    const uint32_t status = SMSDOBinaryGetDataByID(block->bytes, id, &value->type, value->data, &value->size);
    if (status != SM_STATUS_OK) {
        return ClientFailed("reading a value that is to be changed", status);
    }
    return (value->type & MACHINE_OPEN) != 0 ||
           ClientFailed("changing a value that is not open to readers", SM_STATUS_ACCESS_DENIED);
}

/* Sets the value. Where the block lacks memory to grow, the library says how much it takes and has changed
 * nothing: get that much and set it again. */
static int SetGrowing(Block *block, const Value *value)
{
    uint32_t size = block->room;
    uint32_t status = SMSDOBinarySetData(block->bytes, &size, value->id, value->type, value->data, value->size);
    if (status == SM_STATUS_BUFFER_TOO_SMALL && size > block->room) {
        void *larger = realloc(block->bytes, size);
        if (larger == NULL) {
            return ClientFailed("getting memory for the block", SM_STATUS_NO_MEMORY);
        }
        printf("  (the next one takes %" PRIu32 " bytes of memory, %" PRIu32
               " are there; more is got, then it is set)\n",
               size, block->room);
        block->bytes = larger;
        block->room = size;
        status = SMSDOBinarySetData(block->bytes, &size, value->id, value->type, value->data, value->size);
    }
    return status == SM_STATUS_OK || ClientFailed("SMSDOBinarySetData", status);
}

/* Sets the value and prints a row: what it was, what it is as read back, what became of the block. */
static int Set(Block *block, const Value *value)
{
    const uint32_t before = SMSDOBinaryGetSize(block->bytes, NULL);
    Value old;
    Value now;
    char oldShown[SHOWN];
    char nowShown[SHOWN];
    if (!ReadOpen(block, value->id, &old) || !SetGrowing(block, value) || !ReadOpen(block, value->id, &now)) {
        return 0;
    }
    const uint32_t after = SMSDOBinaryGetSize(block->bytes, NULL);
    ShowValue(oldShown, old.type & SM_SDO_KIND_MASK, old.data, old.size);
    ShowValue(nowShown, now.type & SM_SDO_KIND_MASK, now.data, now.size);
    printf("  %-9s %-31s %-31s %" PRIu32 ", ", LabelOf(value->id), oldShown, nowShown, after);
    printf("%s\n", after == before ? "in place" : after > before ? "grown" : "shrunk");
    return 1;
}

static int SetBoth(uint32_t heading, Block *block, const Value *readers, const Value *remark)
{
    PrintHeading(heading);
    printf("  %-9s %-31s %-31s %s\n", "name", "was", "is now", "bytes in all");
    return Set(block, readers) && Set(block, remark);
}

/* Rebuilds the object from the block and compares it with original; the outcome must be as expected: 1 for
 * equal, 0 for different. */
static int Compare(const Block *block, const SMSDOConfig *original, uint32_t expected)
{
    SMSDOConfig *rebuilt = SMSDOBinaryToConfig(block->bytes);
    if (rebuilt == NULL) {
        return ClientFailed("SMSDOBinaryToConfig", SM_STATUS_FAILED);
    }
    const uint32_t equal = SMSDOConfigCompareByValue(rebuilt, original);
    printf("  Rebuilt from this block: an object %s the one received.\n", equal ? "equal to" : "different from");
    SMSDOConfigFree(rebuilt);
    return equal == expected || ClientFailed("the comparison", SM_STATUS_FAILED);
}

static int PatchAndCompareWith(Block *block, const SMSDOConfig *original)
{
    Value oldReaders;
    Value oldRemark;
    uint32_t count;
    if (!ReadOpen(block, MACHINE_ID_READERS, &oldReaders) || !ReadOpen(block, MACHINE_ID_REMARK, &oldRemark)) {
        return 0;
    }
    Value readers = oldReaders;
    Value remark = oldRemark;
    memcpy(&count, readers.data, sizeof count);
    ++count;
    memcpy(readers.data, &count, sizeof count);
    remark.size = 1 + SMsnprintf(remark.data, sizeof remark.data, "seen by process %ld", (long)getpid());
    return SetBoth(MESSAGE_CHANGED, block, &readers, &remark) && Compare(block, original, 0) &&
           SetBoth(MESSAGE_SET_BACK, block, &oldReaders, &oldRemark) && Compare(block, original, 1);
}

int PatchAndCompare(Block *block)
{
    SMSDOConfig *original = SMSDOBinaryToConfig(block->bytes);
    if (original == NULL) {
        return ClientFailed("SMSDOBinaryToConfig", SM_STATUS_FAILED);
    }
    PrintHeading(MESSAGE_REBUILT);
    const int done = Compare(block, original, 1) && PatchAndCompareWith(block, original);
    SMSDOConfigFree(original);
    return done;
}
