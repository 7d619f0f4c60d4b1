/* Values, kinds and bytes as text for people. */
#include "client.h"
#include "machine.h"
#include "messages.h"

#include <qzvest/print.h>
#include <qzvest/sdo.h>
#include <qzvest/typedvalue.h>

#include <ctype.h>
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

/* Characters of a text in UTF-8. */
static uint32_t LengthOf(const char *text)
{
    uint32_t length = 0;
    for (; *text != '\0'; ++text) {
        length += ((unsigned char)*text & 0xC0) != 0x80;
    }
    return length;
}

void PrintHeading(uint32_t message)
{
    const char *text = MessageText(message);
    printf("\n  %s\n  ", text);
    for (uint32_t i = LengthOf(text); i > 0; --i) {
        putchar('-');
    }
    putchar('\n');
}

void PrintPadded(const char *text, uint32_t width)
{
    const uint32_t length = LengthOf(text);
    printf("%s%*s", text, length < width ? (int)(width - length) : 0, "");
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
        {MACHINE_ID_PUBLICATION, "publication"},
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

static void ShowBytes(char *shown, uint64_t bytes)
{
    static const char *const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    double amount = (double)bytes;
    size_t unit = 0;
    while (amount >= 1024) {
        amount /= 1024;
        ++unit;
    }
    (void)SMsnprintf(shown, SHOWN, unit == 0 ? "%.0f %s" : "%.1f %s", amount, units[unit]);
}

static void ShowSeconds(char *shown, uint64_t seconds)
{
    const uint64_t minutes = seconds / 60;
    const uint64_t hours = minutes / 60;
    if (minutes == 0) {
        (void)SMsnprintf(shown, SHOWN, "%" PRIu64 " s", seconds);
    } else if (hours == 0) {
        (void)SMsnprintf(shown, SHOWN, "%" PRIu64 " min %" PRIu64 " s", minutes, seconds % 60);
    } else if (hours < 24) {
        (void)SMsnprintf(shown, SHOWN, "%" PRIu64 " h %" PRIu64 " min", hours, minutes % 60);
    } else {
        (void)SMsnprintf(shown, SHOWN, "%" PRIu64 " days %" PRIu64 " h", hours / 24, hours % 24);
    }
}

static void ShowHundredths(char *shown, uint64_t hundredths)
{
    (void)SMsnprintf(shown, SHOWN, "%" PRIu64 ".%02" PRIu64, hundredths / 100, hundredths % 100);
}

/* Control characters, which a mount point may hold, would upset the reader's terminal. */
static void ShowText(char *shown, const char *text, uint32_t size)
{
    const uint32_t length = SMsnprintf(shown, SHOWN, "%.*s", (int)size, text);
    for (uint32_t i = 0; i < length; ++i) {
        if ((unsigned char)shown[i] < ' ' || shown[i] == 0x7F) {
            shown[i] = '?';
        }
    }
}

/* What each kind of the vocabulary is to the library, and to people. */
typedef struct Kind {
    const char *name;
    uint8_t type;                         /* SMXLT_TYPE_... */
    uint8_t size;                         /* bytes, 0 for any */
    void (*showInUnit)(char *, uint64_t); /* of a number that has a unit, else NULL */
} Kind;

static const Kind *KindOf(uint8_t kind)
{
    static const Kind other = {"other", SMXLT_TYPE_BYTES, 0, NULL};
    static const Kind kinds[SM_SDO_KIND_MASK + 1] = {
        [MACHINE_NUMBER] = {"number", SMXLT_TYPE_UINT32, 4, NULL},
        [MACHINE_BYTES] = {"bytes", SMXLT_TYPE_UINT64, 8, ShowBytes},
        [MACHINE_SECONDS] = {"seconds", SMXLT_TYPE_UINT64, 8, ShowSeconds},
        [MACHINE_HUNDREDTHS] = {"1/100", SMXLT_TYPE_UINT32, 4, ShowHundredths},
        [MACHINE_BOOLEAN] = {"boolean", SMXLT_TYPE_BOOL, 2, NULL},
        [MACHINE_TEXT] = {"text", SMXLT_TYPE_UTF8, 0, NULL},
        [SM_SDO_KIND_FLAT] = {"object", SMXLT_TYPE_BYTES, 0, NULL},
    };
    const Kind *row = &kinds[kind & SM_SDO_KIND_MASK];
    return row->name != NULL ? row : &other;
}

const char *KindName(uint8_t kind, int isArray)
{
    return kind == SM_SDO_KIND_FLAT && isArray ? "array" : KindOf(kind)->name;
}

uint8_t TypeOf(uint8_t kind, uint32_t size)
{
    const Kind *row = KindOf(kind);
    return row->size == 0 || row->size == size ? row->type : SMXLT_TYPE_BYTES;
}

void ShowValue(char *shown, uint8_t kind, const void *data, uint32_t size)
{
    const uint8_t type = TypeOf(kind, size);
    const Kind *row = KindOf(kind);
    uint32_t room = SHOWN;
    uint64_t number = 0;
    if (type == SMXLT_TYPE_UTF8) {
        ShowText(shown, data, size);
    } else if (type == row->type && row->showInUnit != NULL) {
        uint32_t word;
        memcpy(&word, data, sizeof word);
        number = word;
        if (size == sizeof number) {
            memcpy(&number, data, sizeof number);
        }
        row->showInUnit(shown, number);
    } else if (SMXLTTypeValueToUTF8(data, size, shown, &room, type) != SM_STATUS_OK) { /* bytes, none or too many */
        (void)SMsnprintf(shown, SHOWN, "%" PRIu32 " bytes", size);
    }
}

/* One row of the dump: place, bytes, the same as characters, meaning. */
static void PrintDumpRow(const uint8_t *block, uint32_t offset, uint32_t size, const char *meaning)
{
    char hex[SHOWN];
    char letters[SHOWN];
    for (uint32_t i = 0; i < size; ++i) {
        (void)SMsnprintf(hex + 3 * i, 4, i + 1 < size ? "%02x " : "%02x", block[offset + i]);
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
    const uint32_t head =
        SMsnprintf(meaning, sizeof meaning, "ID %u %s, %s: ", id, label != NULL ? label : "unknown", kind);
    char *rest = meaning + head;
    const uint32_t room = sizeof meaning - head;
    if (storage & ELSEWHERE) {
        (void)SMsnprintf(rest, room, "%u bytes, %u bytes on", words[0], words[1]);
    } else {
        (void)SMsnprintf(rest, room, "%d bytes, right here", (storage & SHORT_LENGTH) + 1);
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
    (void)SMsnprintf(meaning, sizeof meaning, "of %" PRIu32 " entries", count);
    PrintDumpRow(bytes, 4, 2, meaning);
    (void)SMsnprintf(meaning, sizeof meaning, "%" PRIu32 " bytes in all, these included", size);
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
