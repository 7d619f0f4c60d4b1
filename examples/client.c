/* The demo's client: receives a block on its standard input, reads it where it lies, walks it, patches it, and
 * rebuilds the object from it. Then it shows what else the library does with a text and with a file. Options
 * (options.c) choose less than that, an XML document instead, or what a service publishes by name (watch.c).
 *
 * A block is trusted by whoever reads it, and so this one must come from the service that started us. */
#include "client.h"
#include "machine.h"
#include "messages.h"
#include "options.h"

#include <qzvest/print.h>
#include <qzvest/sdo.h>

#include <errno.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { NAME_COLUMN = 24 };

int ClientFailed(const char *what, uint32_t status)
{
    (void)fflush(stdout);
    (void)fprintf(stderr, "client: %s failed with status %" PRIu32 "\n", what, status);
    return 0;
}

int SystemFailed(const char *what, const char *why)
{
    (void)fflush(stdout);
    (void)fprintf(stderr, "client: %s: %s\n", what, why);
    return 0;
}

static int ReadFully(void *buffer, size_t size)
{
    for (char *next = buffer; size > 0;) {
        const ssize_t got = read(STDIN_FILENO, next, size);
        if (got == 0) {
            return SystemFailed("receiving the block", "the input ended too soon");
        }
        if (got < 0 && errno != EINTR) {
            return SystemFailed("receiving the block", strerror(errno));
        }
        if (got > 0) {
            next += got;
            size -= (size_t)got;
        }
    }
    return 1;
}

/* A block tells its own size in its first 8 bytes, so nothing else goes over the wire. */
static int Receive(Block *block)
{
    uint8_t header[SM_SDO_HEADER_SIZE];
    uint16_t isArray;
    if (!ReadFully(header, sizeof header)) {
        return 0;
    }
    block->room = SMSDOBinaryGetSize(header, &isArray);
    if (block->room < sizeof header || isArray) {
        return SystemFailed("receiving the block", "what came is no flat object");
    }
    block->bytes = malloc(block->room);
    if (block->bytes == NULL) {
        return ClientFailed("getting memory for the block", SM_STATUS_NO_MEMORY);
    }
    memcpy(block->bytes, header, sizeof header);
    return ReadFully((uint8_t *)block->bytes + sizeof header, block->room - sizeof header);
}

/* A copy of the nested block under id, which the caller frees. 1 with NULL when there is no such entry. */
static int ReadNested(const SMSDOBinary *block, uint16_t id, void **nestedOut)
{
    uint32_t size = 0;
    *nestedOut = NULL;
    uint32_t status = SMSDOBinaryGetDataByID(block, id, NULL, NULL, &size);
    if (status == SM_STATUS_NOT_FOUND) {
        return 1;
    }
    if (status == SM_STATUS_BUFFER_TOO_SMALL) { /* the answer to the question for the size */
        void *nested = malloc(size);
        status = nested == NULL ? SM_STATUS_NO_MEMORY : SMSDOBinaryGetDataByID(block, id, NULL, nested, &size);
        if (status == SM_STATUS_OK) {
            *nestedOut = nested;
            return 1;
        }
        free(nested);
    }
    return ClientFailed("reading a nested block", status);
}

/* Prints one value of a block under a name; nothing where the block lacks it. */
static int PrintValue(const char *name, const SMSDOBinary *block, uint16_t id)
{
    char value[SHOWN];
    char shown[SHOWN];
    uint8_t type;
    uint32_t size = sizeof value;
    const uint32_t status = SMSDOBinaryGetDataByID(block, id, &type, value, &size);
    if (status == SM_STATUS_NOT_FOUND) {
        return 1;
    }
    if (status != SM_STATUS_OK) {
        return ClientFailed(name, status);
    }
    ShowValue(shown, type & SM_SDO_KIND_MASK, value, size);
    printf("  ");
    PrintPadded(name, NAME_COLUMN);
    printf(" %s\n", shown);
    return 1;
}

/* One value of the object that is nested under id. */
static int PrintNestedValue(const char *name, const SMSDOBinary *block, uint16_t id, uint16_t valueId)
{
    void *nested;
    if (!ReadNested(block, id, &nested)) {
        return 0;
    }
    const int printed = nested == NULL || PrintValue(name, nested, valueId);
    free(nested);
    return printed;
}

/* The room left on each element of the array of file systems. */
static int PrintRoom(const SMSDOBinary *array)
{
    static char element[UINT16_MAX]; /* no block is larger */
    char name[SHOWN];
    const uint32_t count = SMSDOBinaryGetCount(array, NULL);
    for (uint32_t i = 0; i < count; ++i) {
        char point[SHOWN];
        char label[SHOWN];
        uint32_t size = sizeof element;
        uint32_t status = SMSDOBinaryArrayGetByIndex(array, 0, i, element, &size);
        if (status != SM_STATUS_OK) {
            return ClientFailed("SMSDOBinaryArrayGetByIndex", status);
        }
        size = sizeof point;
        status = SMSDOBinaryGetDataByID(element, MACHINE_ID_MOUNT_POINT, NULL, point, &size);
        if (status != SM_STATUS_OK) {
            return ClientFailed("reading a mount point", status);
        }
        ShowValue(name, MACHINE_TEXT, point, size);
        (void)SMsnprintf(label, sizeof label, "%.200s %.200s", MessageText(MESSAGE_ROOM_ON), name);
        if (!PrintValue(label, element, MACHINE_ID_MOUNT_AVAILABLE)) {
            return 0;
        }
    }
    return 1;
}

static int PrintFiles(const SMSDOBinary *block)
{
    void *array;
    if (!ReadNested(block, MACHINE_ID_FILE_SYSTEMS, &array)) {
        return 0;
    }
    const int printed = array == NULL || PrintRoom(array);
    free(array);
    return printed;
}

static int PrintSingleValues(const SMSDOBinary *block, uint32_t show)
{
    static const struct {
        uint32_t group;
        uint32_t message; /* the name */
        uint16_t object;  /* that the value is nested in, 0 for none */
        uint16_t value;
    } rows[] = {
        {SHOW_HOST, MESSAGE_HOST, 0, MACHINE_ID_HOST},
        {SHOW_HOST, MESSAGE_SYSTEM, 0, MACHINE_ID_SYSTEM},
        {SHOW_LOAD, MESSAGE_LOAD_5, MACHINE_ID_LOAD, MACHINE_ID_LOAD_5},
        {SHOW_LOAD, MESSAGE_LOAD_15, MACHINE_ID_LOAD, MACHINE_ID_LOAD_15},
        {SHOW_MEMORY, MESSAGE_MEMORY_TOTAL, MACHINE_ID_MEMORY, MACHINE_ID_MEMORY_TOTAL},
        {SHOW_MEMORY, MESSAGE_MEMORY_AVAILABLE, MACHINE_ID_MEMORY, MACHINE_ID_MEMORY_AVAILABLE},
    };
    PrintHeading(MESSAGE_SINGLE_VALUES);
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        if ((show & rows[i].group) == 0) {
            continue;
        }
        const char *name = MessageText(rows[i].message);
        if (rows[i].object == 0 ? !PrintValue(name, block, rows[i].value)
                                : !PrintNestedValue(name, block, rows[i].object, rows[i].value)) {
            return 0;
        }
    }
    return (show & SHOW_FILES) == 0 || PrintFiles(block);
}

static int PrintAll(Block *block)
{
    PrintHeading(MESSAGE_DUMP);
    PrintDump(block->bytes);
    if (!PrintSingleValues(block->bytes, SHOW_ALL)) {
        return 0;
    }
    PrintHeading(MESSAGE_TREE);
    return PrintTree(block->bytes) && PatchAndCompare(block) && PrintTexts(block->bytes) && PrintSums();
}

static int UseBlock(Block *block, const Options *options)
{
    if (options->format == FORMAT_XML) {
        return PrintXML(block->bytes);
    }
    printf("\nCLIENT, process %ld, received %" PRIu32 " bytes\n", (long)getpid(), block->room);
    ReadMessages(options->language);
    if ((options->show & SHOW_REST) != 0 ? !PrintAll(block) : !PrintSingleValues(block->bytes, options->show)) {
        return 0;
    }
    printf("\n  %s\n", MessageText(MESSAGE_GOODBYE));
    return 1;
}

int main(int argc, char **argv)
{
    Block block = {NULL, 0};
    Options options;
    if (!ReadOptions("client", FOR_CLIENT, argc, argv, &options)) {
        return EXIT_USAGE;
    }
    if (options.watch != 0) {
        return Watch(&options);
    }
    int done = Receive(&block) && UseBlock(&block, &options);
    free(block.bytes);
    if (fflush(stdout) != 0 || ferror(stdout)) {
        done = SystemFailed("writing to standard output", strerror(errno));
    }
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
