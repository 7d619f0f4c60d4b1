/* Values, kinds and bytes as text for people. */
#include "client.h"
#include "machine.h"

#include <qzvest/sdo.h>

#include <ctype.h>
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

void PrintHeading(const char *text)
{
    printf("\n  %s\n  ", text);
    for (size_t i = 0; i < strlen(text); ++i) {
        putchar('-');
    }
    putchar('\n');
}

const char *LabelOf(uint16_t id)
{
    static const struct {
        uint16_t id;
        const char *label;
    } rows[] = {
        {MACHINE_ID_HOST, "host name"},
        {MACHINE_ID_PROCESSORS, "processors"},
        {MACHINE_ID_SYSTEM, "operating system"},
        {MACHINE_ID_KERNEL, "kernel"},
        {MACHINE_ID_UPTIME, "up for"},
        {MACHINE_ID_LOAD, "load"},
        {MACHINE_ID_MEMORY, "memory"},
        {MACHINE_ID_FILE_SYSTEMS, "file systems"},
        {MACHINE_ID_READERS, "readers"},
        {MACHINE_ID_REMARK, "remark"},
        {MACHINE_ID_LOAD_1, "over 1 minute"},
        {MACHINE_ID_LOAD_5, "over 5 minutes"},
        {MACHINE_ID_LOAD_15, "over 15 minutes"},
        {MACHINE_ID_RUNNABLE, "tasks that run"},
        {MACHINE_ID_TASKS, "tasks in all"},
        {MACHINE_ID_MEMORY_TOTAL, "installed"},
        {MACHINE_ID_MEMORY_AVAILABLE, "available"},
        {MACHINE_ID_MEMORY_CACHED, "cached files"},
        {MACHINE_ID_SWAP_TOTAL, "swap"},
        {MACHINE_ID_SWAP_FREE, "swap free"},
        {MACHINE_ID_MOUNT_POINT, "mounted on"},
        {MACHINE_ID_MOUNT_TYPE, "type"},
        {MACHINE_ID_MOUNT_SOURCE, "device"},
        {MACHINE_ID_MOUNT_SIZE, "size"},
        {MACHINE_ID_MOUNT_USED, "used"},
        {MACHINE_ID_MOUNT_AVAILABLE, "available"},
        {MACHINE_ID_MOUNT_READ_ONLY, "read-only"},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        if (rows[i].id == id) {
            return rows[i].label;
        }
    }
    return NULL;
}

const char *KindName(uint8_t kind, int isArray)
{
    switch (kind) {
    case MACHINE_NUMBER:
        return "number";
    case MACHINE_BYTES:
        return "bytes";
    case MACHINE_SECONDS:
        return "seconds";
    case MACHINE_HUNDREDTHS:
        return "1/100";
    case MACHINE_YES_NO:
        return "yes/no";
    case MACHINE_TEXT:
        return "text";
    case SM_SDO_KIND_FLAT:
        return isArray ? "array" : "object";
    default:
        return "other";
    }
}

void ShowBytes(char *shown, uint64_t bytes)
{
    static const char *const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    double amount = (double)bytes;
    size_t unit = 0;
    while (amount >= 1024) {
        amount /= 1024;
        ++unit;
    }
    (void)snprintf(shown, SHOWN, unit == 0 ? "%.0f %s" : "%.1f %s", amount, units[unit]);
}

static void ShowSeconds(char *shown, uint64_t seconds)
{
    const uint64_t minutes = seconds / 60;
    const uint64_t hours = minutes / 60;
    if (minutes == 0) {
        (void)snprintf(shown, SHOWN, "%" PRIu64 " s", seconds);
    } else if (hours == 0) {
        (void)snprintf(shown, SHOWN, "%" PRIu64 " min %" PRIu64 " s", minutes, seconds % 60);
    } else if (hours < 24) {
        (void)snprintf(shown, SHOWN, "%" PRIu64 " h %" PRIu64 " min", hours, minutes % 60);
    } else {
        (void)snprintf(shown, SHOWN, "%" PRIu64 " days %" PRIu64 " h", hours / 24, hours % 24);
    }
}

/* Control characters, which a mount point may hold, would upset the reader's terminal. */
static void ShowText(char *shown, const char *text, uint32_t size)
{
    uint32_t length = 0;
    while (length < size && length < SHOWN - 1 && text[length] != '\0') {
        shown[length] = (unsigned char)text[length] < ' ' || text[length] == 0x7F ? '?' : text[length];
        ++length;
    }
    shown[length] = '\0';
}

static void ShowHex(char *shown, const void *data, uint32_t size)
{
    const uint8_t *bytes = data;
    size_t length = 0;
    shown[0] = '\0';
    for (uint32_t i = 0; i < size && length + 4 < SHOWN; ++i) {
        length += (size_t)snprintf(shown + length, SHOWN - length, i == 0 ? "%02x" : " %02x", bytes[i]);
    }
}

/* Reads an unsigned number of 1, 4 or 8 bytes, the sizes that the vocabulary's kinds come in. */
static int NumberFrom(const void *data, uint32_t size, uint64_t *number)
{
    uint32_t word;
    if (size == sizeof *number) {
        memcpy(number, data, sizeof *number);
    } else if (size == sizeof word) {
        memcpy(&word, data, sizeof word);
        *number = word;
    } else if (size == 1) {
        *number = *(const uint8_t *)data;
    } else {
        return 0;
    }
    return 1;
}

void ShowValue(char *shown, uint8_t kind, const void *data, uint32_t size)
{
    uint64_t number;
    if (kind == MACHINE_TEXT) {
        ShowText(shown, data, size);
    } else if (kind > MACHINE_TEXT || !NumberFrom(data, size, &number)) {
        ShowHex(shown, data, size);
    } else if (kind == MACHINE_BYTES) {
        ShowBytes(shown, number);
    } else if (kind == MACHINE_SECONDS) {
        ShowSeconds(shown, number);
    } else if (kind == MACHINE_HUNDREDTHS) {
        (void)snprintf(shown, SHOWN, "%" PRIu64 ".%02u", number / 100, (unsigned)(number % 100));
    } else if (kind == MACHINE_YES_NO) {
        (void)snprintf(shown, SHOWN, "%s", number != 0 ? "yes" : "no");
    } else {
        (void)snprintf(shown, SHOWN, "%" PRIu64, number);
    }
}

/* One row of the dump: place, bytes, the same as characters, meaning. */
static void PrintDumpRow(const uint8_t *block, uint32_t offset, uint32_t size, const char *meaning)
{
    char hex[SHOWN];
    char letters[SHOWN];
    ShowHex(hex, block + offset, size);
    for (uint32_t i = 0; i < size; ++i) {
        letters[i] = '.';
        if (block[offset + i] < 0x80 && isprint(block[offset + i])) {
            letters[i] = (char)block[offset + i];
        }
    }
    letters[size] = '\0';
    printf("  %6" PRIu32 "  %-23s  %-8s  %s\n", offset, hex, letters, meaning);
}

/* A descriptor: id (2 bytes), type, storage, and the value itself or its length and place (2 each). Where the
 * value lies elsewhere, its offset in the block comes back. */
static uint32_t PrintDescriptor(const uint8_t *block, uint32_t offset)
{
    enum { ELSEWHERE = 4, SHORT_LENGTH = 3 };
    const uint8_t type = block[offset + 2];
    const uint8_t storage = block[offset + 3];
    const char *kind = KindName(type & SM_SDO_KIND_MASK, type & SM_SDO_ARRAY);
    char meaning[SHOWN];
    uint16_t words[2];
    uint16_t id;
    memcpy(&id, block + offset, sizeof id);
    memcpy(words, block + offset + 4, sizeof words);
    const char *label = LabelOf(id);
    const int head = snprintf(meaning, sizeof meaning, "ID %u %s, %s: ", id, label != NULL ? label : "unknown", kind);
    char *rest = meaning + head;
    const size_t room = sizeof meaning - (size_t)head;
    if (storage & ELSEWHERE) {
        (void)snprintf(rest, room, "%u bytes, %u bytes on", words[0], words[1]);
    } else {
        (void)snprintf(rest, room, "%d bytes, right here", (storage & SHORT_LENGTH) + 1);
    }
    PrintDumpRow(block, offset, 8, meaning);
    return storage & ELSEWHERE ? offset + words[1] : 0;
}

void PrintDump(const SMSDOBinary *block)
{
    enum { DESCRIPTORS = 3 };
    const uint8_t *bytes = block;
    const uint32_t count = SMSDOBinaryGetCount(block, NULL);
    const uint32_t size = SMSDOBinaryGetSize(block, NULL);
    char meaning[SHOWN];
    uint32_t value = 0;
    printf("  %6s  %-23s  %-8s  %s\n", "offset", "bytes", "as text", "meaning");
    PrintDumpRow(bytes, 0, 4, "a flat object");
    (void)snprintf(meaning, sizeof meaning, "of %" PRIu32 " entries", count);
    PrintDumpRow(bytes, 4, 2, meaning);
    (void)snprintf(meaning, sizeof meaning, "%" PRIu32 " bytes in all, these included", size);
    PrintDumpRow(bytes, 6, 2, meaning);
    for (uint32_t i = 0; i < DESCRIPTORS && i < count; ++i) {
        const uint32_t place = PrintDescriptor(bytes, SM_SDO_HEADER_SIZE + 8 * i);
        value = value != 0 ? value : place;
    }
    if (value != 0) {
        printf("     ...\n");
        PrintDumpRow(bytes, value, size - value < 8 ? size - value : 8, "the first value that lies farther on");
    }
}
