/* Publishes the machine's object where any process can find it by name: in a shared memory, under a mutex, with an
 * event that is set each time. Its publications have numbers, and a service that follows on one that was killed goes
 * on with them. */
#include "machine.h"
#include "service.h"

#include <qzvest/event.h>
#include <qzvest/mutex.h>
#include <qzvest/sdo.h>
#include <qzvest/sharedmem.h>

#include <inttypes.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

enum { LOCK_MS = 5000, HANG_SECONDS = 60 };

typedef struct Publisher {
    SMMutex *mutex;
    SMSharedMem *memory;
    SMEvent *event;
    uint32_t number; /* of the last publication */
} Publisher;

/* A line of this process's, out at once: other programs print theirs in between. */
__attribute__((format(printf, 2, 3))) static void Say(FILE *stream, const char *format, ...)
{
    char text[FACT_TEXT];
    va_list arguments;
    va_start(arguments, format);
    (void)vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    (void)fprintf(stream, "  service %-6ld %s\n", (long)getpid(), text);
    (void)fflush(stream); /* main looks for errors */
}

static int Lacks(const char *what, const char *why)
{
    (void)fprintf(stderr, "service: there is no %s: %s\n", what, why);
    return 0;
}

static int Lock(const Publisher *publisher)
{
    const uint32_t status = SMMutexLock(publisher->mutex, LOCK_MS);
    if (status != SM_STATUS_OK) {
        ServiceFailed("SMMutexLock", status);
    }
    return status == SM_STATUS_OK;
}

/* New memory is all zeros, which is no block. */
static void ReadLastNumber(Publisher *publisher)
{
    uint32_t size = sizeof publisher->number;
    const void *block = SMSharedMemGetAddressPtr(publisher->memory);
    if (SMSDOBinaryGetSize(block, NULL) == 0 ||
        SMSDOBinaryGetDataByID(block, MACHINE_ID_PUBLICATION, NULL, &publisher->number, &size) != SM_STATUS_OK) {
        publisher->number = 0;
        Say(stdout, "begins: the shared memory is empty");
    } else {
        Say(stdout, "takes over what a dead service left: publication %" PRIu32, publisher->number);
    }
}

/* Under the mutex, so that a client finds all or nothing. */
static int MakeNamed(Publisher *publisher)
{
    publisher->memory = SMSharedMemCreate(MACHINE_NAME, MACHINE_ROOM);
    if (publisher->memory == NULL) {
        return Lacks("shared memory", "another service publishes in it, or the system denies it");
    }
    publisher->event = SMEventCreate(MACHINE_NAME, 0, 0);
    if (publisher->event == NULL) {
        return Lacks("event", "the system denies it");
    }
    ReadLastNumber(publisher);
    return 1;
}

static int Begin(Publisher *publisher)
{
    publisher->mutex = SMMutexCreate(MACHINE_NAME);
    if (publisher->mutex == NULL) {
        return Lacks("mutex", "it needs the directory .ipc of the registered product, else of /var/run/qz");
    }
    if (!Lock(publisher)) {
        return 0;
    }
    const int made = MakeNamed(publisher);
    return SMMutexUnLock(publisher->mutex) == SM_STATUS_OK && made;
}

/* The event first: a client that waits for it learns so that this is the end. */
static void End(Publisher *publisher)
{
    SMEventDestroy(publisher->event);
    SMSharedMemFree(publisher->memory);
    SMMutexDestroy(publisher->mutex);
}

static void *DescribeNext(uint32_t number, uint32_t *sizeOut)
{
    MachineFacts facts;
    GatherFacts(&facts, NULL);
    SMSDOConfig *object = DescribeMachine(&facts);
    if (object == NULL) {
        return NULL;
    }
    void *block = NULL;
    const uint32_t status =
        SMSDOConfigAddData(object, MACHINE_ID_PUBLICATION, MACHINE_NUMBER, &number, sizeof number, 0);
    if (status == SM_STATUS_OK) {
        block = Flatten(object, sizeOut);
    } else {
        ServiceFailed("SMSDOConfigAddData", status);
    }
    SMSDOConfigFree(object);
    return block;
}

/* A block is known by its header. It is gone while the rest is written: who dies meanwhile leaves no block, not half
 * of one. */
static void Write(void *memory, const void *block, uint32_t size)
{
    const size_t head = SM_SDO_HEADER_SIZE;
    memset(memory, 0, head);
    atomic_signal_fence(memory_order_seq_cst);
    memcpy((char *)memory + head, (const char *)block + head, size - head);
    atomic_signal_fence(memory_order_seq_cst);
    memcpy(memory, block, head);
}

/* For whoever wants to see what becomes of a mutex whose holder is killed. On standard error, which the killer reads.
 */
static void Hang(void)
{
    Say(stderr, "holds the mutex, and hangs");
    (void)sleep(HANG_SECONDS);
}

static int PublishNext(Publisher *publisher, int hang)
{
    uint32_t size;
    void *block = DescribeNext(publisher->number + 1, &size);
    const int locked = block != NULL && Lock(publisher);
    uint32_t status = SM_STATUS_FAILED;
    if (locked) {
        if (hang) {
            Hang();
        }
        Write(SMSharedMemGetAddressPtr(publisher->memory), block, size);
        Say(stdout, "publication %" PRIu32 ", %" PRIu32 " bytes", ++publisher->number, size);
        status = SMMutexUnLock(publisher->mutex);
    }
    free(block);
    if (status == SM_STATUS_OK) {
        status = SMEventSet(publisher->event);
    }
    if (locked && status != SM_STATUS_OK) {
        ServiceFailed("telling of a publication", status);
    }
    return status == SM_STATUS_OK;
}

static void Pause(uint32_t milliseconds)
{
    struct timespec left = {milliseconds / 1000, (long)(milliseconds % 1000) * 1000000};
    while (nanosleep(&left, &left) != 0) {
    }
}

int Publish(const Options *options)
{
    Publisher publisher = {NULL, NULL, NULL, 0};
    int published = Begin(&publisher);
    for (uint32_t round = 1; published && round <= options->publish; ++round) {
        published = PublishNext(&publisher, round == options->hang);
        Pause(published ? options->every : 0);
    }
    if (published) {
        Say(stdout, "ends, and frees what it made");
    }
    End(&publisher);
    return published;
}
