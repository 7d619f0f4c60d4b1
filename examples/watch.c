/* Watches a service that it knows by a name alone: waits for its event, and reads what it publishes where it lies in
 * shared memory, under the mutex. When nothing comes for a while, it finds out whether the service still lives. */
#include "client.h"
#include "machine.h"

#include <qzvest/event.h>
#include <qzvest/mutex.h>
#include <qzvest/print.h>
#include <qzvest/sdo.h>
#include <qzvest/sharedmem.h>

#include <inttypes.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

enum { TRIES = 200, BETWEEN_TRIES_MS = 50 };

typedef struct Watcher {
    SMMutex *mutex;
    SMEvent *event;
    SMSharedMem *memory;
    uint32_t wait; /* milliseconds, for the event and for the mutex */
} Watcher;

/* A line of this process's, out at once: other programs print theirs in between. */
static void Say(const char *format, ...)
{
    char text[SHOWN];
    va_list arguments;
    va_start(arguments, format);
    (void)SMvsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    printf("  client  %-6ld %s\n", (long)getpid(), text);
    (void)fflush(stdout);
}

/* Also NULL while a service is just about to begin: it does so under the mutex. */
static SMSharedMem *OpenMemory(const Watcher *watcher)
{
    if (SMMutexLock(watcher->mutex, watcher->wait) != SM_STATUS_OK) {
        return NULL;
    }
    SMSharedMem *memory = SMSharedMemOpen(MACHINE_NAME);
    (void)SMMutexUnLock(watcher->mutex); /* cannot fail with a mutex that could be locked */
    return memory;
}

/* Whether all three are there. A mutex has no life of its own and is opened once. */
static int Open(Watcher *watcher)
{
    if (watcher->mutex == NULL) {
        watcher->mutex = SMMutexOpen(MACHINE_NAME);
    }
    if (watcher->mutex == NULL) {
        return 0;
    }
    watcher->memory = OpenMemory(watcher);
    watcher->event = watcher->memory != NULL ? SMEventOpen(MACHINE_NAME) : NULL;
    if (watcher->event == NULL) {
        SMSharedMemFree(watcher->memory);
        watcher->memory = NULL;
    }
    return watcher->event != NULL;
}

static int Find(Watcher *watcher)
{
    static const struct timespec pause = {0, BETWEEN_TRIES_MS * 1000000L};
    for (int i = 0; i < TRIES; ++i) {
        if (Open(watcher)) {
            Say("finds mutex, event and shared memory by the name \"%s\"", MACHINE_NAME);
            return 1;
        }
        (void)nanosleep(&pause, NULL);
    }
    return SystemFailed("looking for a service", "nobody publishes under that name");
}

/* The text of the value under id, or of the one in the object under it; "?" where the block lacks it. */
static const char *ReadText(char *shown, const SMSDOBinary *block, uint16_t id, uint16_t nestedId)
{
    static char nested[MACHINE_ROOM];
    char value[SHOWN];
    uint8_t type;
    uint32_t size = sizeof nested;
    if (nestedId != 0) {
        if (SMSDOBinaryGetDataByID(block, id, NULL, nested, &size) != SM_STATUS_OK) {
            return "?";
        }
        block = nested;
        id = nestedId;
    }
    size = sizeof value;
    if (SMSDOBinaryGetDataByID(block, id, &type, value, &size) != SM_STATUS_OK) {
        return "?";
    }
    ShowValue(shown, type & SM_SDO_KIND_MASK, value, size);
    return shown;
}

static int Read(const Watcher *watcher)
{
    char number[SHOWN];
    char load[SHOWN];
    char memory[SHOWN];
    const uint32_t status = SMMutexLock(watcher->mutex, watcher->wait);
    if (status == SM_STATUS_TIMEOUT) {
        return 1; /* the next wait goes on from here */
    }
    if (status != SM_STATUS_OK) {
        return ClientFailed("SMMutexLock", status);
    }
    const SMSDOBinary *block = SMSharedMemGetAddressPtr(watcher->memory);
    const uint32_t size = SMSDOBinaryGetSize(block, NULL);
    if (size != 0) {
        const char *texts[] = {ReadText(number, block, MACHINE_ID_PUBLICATION, 0),
                               ReadText(load, block, MACHINE_ID_LOAD, MACHINE_ID_LOAD_1),
                               ReadText(memory, block, MACHINE_ID_MEMORY, MACHINE_ID_MEMORY_AVAILABLE)};
        Say("reads publication %.20s in place: load %.20s, memory available %.20s", texts[0], texts[1], texts[2]);
    }
    (void)SMMutexUnLock(watcher->mutex); /* as above */
    return 1;
}

/* After a wait in vain. Whether the service has died. */
static int HasDied(const Watcher *watcher)
{
    const uint32_t status = SMMutexLock(watcher->mutex, watcher->wait);
    if (status != SM_STATUS_OK) {
        Say("has waited %" PRIu32 " ms; the mutex is held (status %" PRIu32 "): somebody lives", watcher->wait, status);
        return 0;
    }
    SMSharedMem *memory = SMSharedMemOpen(MACHINE_NAME);
    (void)SMMutexUnLock(watcher->mutex); /* as above */
    const int hasDied = memory == NULL;
    SMSharedMemFree(memory);
    if (hasDied) {
        Say("has waited %" PRIu32 " ms; it can lock the mutex, which nobody has unlocked", watcher->wait);
        Say("cannot open the shared memory any more: the service is dead");
    }
    return hasDied;
}

static int WatchRounds(const Watcher *watcher, uint32_t rounds)
{
    for (uint32_t round = 0; round < rounds;) {
        const uint32_t status = SMEventWait(watcher->event, watcher->wait);
        if (status == SM_STATUS_OK) {
            if (!Read(watcher)) {
                return EXIT_FAILURE;
            }
            ++round;
        } else if (status != SM_STATUS_TIMEOUT) {
            Say("is told by its wait that the event is gone: the service has ended");
            return EXIT_SUCCESS;
        } else if (HasDied(watcher)) {
            return EXIT_DIED;
        }
    }
    return EXIT_SUCCESS;
}

int Watch(const Options *options)
{
    Watcher watcher = {NULL, NULL, NULL, options->wait};
    const int result = Find(&watcher) ? WatchRounds(&watcher, options->watch) : EXIT_FAILURE;
    SMEventDestroy(watcher.event);
    SMSharedMemFree(watcher.memory);
    SMMutexDestroy(watcher.mutex);
    return result;
}
