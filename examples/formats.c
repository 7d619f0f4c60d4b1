/* formats - writes one of each format of the library, and prints what it has written: the examples of docs/formats.md,
 * each behind a line "example NAME". Runs where the fixed places are its own, told by scripts/check-formats. Exit
 * status 1 after the name of a call that failed. */
#include <qzvest/qzvest.h>

#include <dirent.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

enum { ROOM = 8192, ROW = 16 };

/* Bytes to be shown, and which of them differ from run to run. */
typedef struct Bytes {
    unsigned char data[ROOM];
    bool masked[ROOM];
    size_t size;
} Bytes;

static void Require(bool good, const char *call)
{
    if (good)
        return;
    fflush(stdout);
    fprintf(stderr, "formats: %s failed\n", call);
    exit(EXIT_FAILURE);
}

static void Example(const char *name)
{
    printf("example %s\n", name);
}

/* Shows size bytes from first on, as "hexdump -C" does, but ".." for what is masked. */
static void Show(const Bytes *bytes, size_t first, size_t size)
{
    for (size_t row = 0; row < size; row += ROW) {
        char text[ROW + 1];
        const size_t length = size - row < ROW ? size - row : ROW;
        printf("%08zx ", first + row);
        for (size_t i = 0; i < ROW; ++i) {
            const size_t place = first + row + i;
            const unsigned char byte = bytes->data[place];
            const bool masked = i < length && bytes->masked[place];
            printf(i == ROW / 2 ? "  " : " ");
            if (i >= length)
                printf("  ");
            else if (masked)
                printf("..");
            else
                printf("%02x", byte);
            if (i < length)
                text[i] = masked || byte < 0x20 || byte > 0x7E ? '.' : (char)byte;
        }
        text[length] = '\0';
        printf("  |%s|\n", text);
    }
}

static void ShowBlock(const char *name, const void *block, size_t size)
{
    Bytes bytes = {.size = size};
    memcpy(bytes.data, block, size);
    Example(name);
    Show(&bytes, 0, size);
}

static void Load(Bytes *bytes, const char *path)
{
    FILE *file = fopen(path, "rb");
    memset(bytes, 0, sizeof *bytes);
    Require(file != NULL, path);
    bytes->size = fread(bytes->data, 1, sizeof bytes->data, file);
    fclose(file);
}

static void ShowFile(const char *name, const char *path)
{
    Bytes bytes;
    Load(&bytes, path);
    Example(name);
    Show(&bytes, 0, bytes.size);
}

static void StoreText(const char *path, const char *text)
{
    FILE *file = fopen(path, "wb");
    Require(file != NULL && fputs(text, file) >= 0 && fclose(file) == 0, path);
}

/* Masks the count characters behind each text that equals label; a character has width bytes, the first of which
 * tells. */
static void MaskBehind(Bytes *bytes, const char *label, size_t count, size_t width)
{
    const size_t length = strlen(label);
    for (size_t place = 0; place + (length + count) * width <= bytes->size; ++place) {
        size_t same = 0;
        while (same < length && bytes->data[place + same * width] == (unsigned char)label[same])
            ++same;
        if (same == length)
            memset(&bytes->masked[place + length * width], 1, count * width);
    }
}

/* ---- Objects ---- */

enum { CORES = 1, LOAD = 2, NAME = 7, DISK = 8, FANS = 9, NUMBER = 1, TEXT = 2 }; /* IDs and kinds of ours */

static SMSDOConfig *ObjectOf(uint16_t id, uint8_t type, const void *data, uint32_t size)
{
    SMSDOConfig *object = SMSDOConfigAlloc();
    Require(SMSDOConfigAddData(object, id, type, data, size, 0) == SM_STATUS_OK, "SMSDOConfigAddData");
    return object;
}

static void ShowObject(const char *name, const SMSDOConfig *object)
{
    unsigned char block[ROOM];
    uint32_t size = sizeof block;
    Require(SMSDOConfigToBinary(object, block, &size) == SM_STATUS_OK, "SMSDOConfigToBinary");
    ShowBlock(name, block, size);
}

static void ShowArray(SMSDOConfig *const *objects, int32_t count)
{
    unsigned char block[ROOM];
    uint32_t size = sizeof block;
    Require(SMSDOConfigArrayToBinaryArray(objects, count, block, &size) == SM_STATUS_OK,
            "SMSDOConfigArrayToBinaryArray");
    ShowBlock("flat-array", block, size);
}

static void Objects(void)
{
    const uint32_t cores = 16;
    const uint16_t load = 0x0102, front = 900, rear = 1200;
    SMSDOConfig *empty = SMSDOConfigAlloc();
    SMSDOConfig *object = ObjectOf(CORES, NUMBER, &cores, sizeof cores);
    ShowObject("flat-empty", empty);
    SMSDOConfigFree(empty);

    SMSDOConfigAddData(object, LOAD, 0x20 | NUMBER, &load, sizeof load, 0);
    SMSDOConfigAddData(object, NAME, TEXT, "alpha", 6, 0);
    ShowObject("flat-object", object);
    SMSDOConfigFree(object);

    SMSDOConfig *fans[] = {ObjectOf(CORES, NUMBER, &front, sizeof front), ObjectOf(CORES, NUMBER, &rear, sizeof rear)};
    ShowArray(fans, 2);
    object = ObjectOf(FANS, SM_SDO_KIND_OBJECT | SM_SDO_ARRAY, fans, sizeof fans);
    SMSDOConfigAddData(object, DISK, SM_SDO_KIND_OBJECT, ObjectOf(NAME, TEXT, "sda", 4), 8, 0);
    ShowObject("flat-nested", object);
    SMSDOConfigFree(object);
}

/* ---- Settings ---- */

#define INI_FOLDER "/run/gaugework/ini"

static void Set(const char *path, const char *section, const char *key, uint32_t type, const void *value, uint32_t size)
{
    Require(SMWriteINIPathFileValue(section, key, type, value, size, path, 1) == SM_STATUS_OK,
            "SMWriteINIPathFileValue");
}

static void SetText(const char *path, const char *section, const char *key, const char *text)
{
    Set(path, section, key, INI_TYPE_UTF8, text, (uint32_t)strlen(text) + 1);
}

static void INIFiles(void)
{
    static const char path[] = INI_FOLDER "/site.ini";
    const uint16_t yes = 1, text[] = {0x41, 0xE9, 0};
    const uint32_t unsigned32 = 4000000000u;
    const int32_t signed32 = -5;
    const uint64_t unsigned64 = UINT64_MAX;
    const int64_t signed64 = INT64_MIN;
    const double real = 2.5;
    SetText(path, "site", "name", "north wing");
    Set(path, "site", "units", INI_TYPE_UCS2, text, sizeof text);
    Set(path, "site", "bytes", INI_TYPE_BINARY, "\x01\xAB", 2);
    Set(path, "site", "on", INI_TYPE_BOOL, &yes, sizeof yes);
    Set(path, "site", "u32", INI_TYPE_UINT32, &unsigned32, sizeof unsigned32);
    Set(path, "site", "s32", INI_TYPE_INT32, &signed32, sizeof signed32);
    Set(path, "site", "u64", INI_TYPE_UINT64, &unsigned64, sizeof unsigned64);
    Set(path, "site", "s64", INI_TYPE_INT64, &signed64, sizeof signed64);
    Set(path, "site", "real", INI_TYPE_DOUBLE, &real, sizeof real);
    SetText(path, "next section", "empty", "");
    ShowFile("ini", path);
}

static void PropertyFiles(void)
{
    static const char path[] = "/run/gaugework/app.properties";
    const uint32_t limit = 250;
    char text[64];
    uint32_t size = sizeof text;
    StoreText(path, "# limits\nlimit : 10\nnote one \\\n  two\nempty\n");
    Require(SMPropertyFileWriteValue("limit", SMXLT_TYPE_UINT32, &limit, sizeof limit, path, 1) == SM_STATUS_OK,
            "SMPropertyFileWriteValue");
    ShowFile("property", path);
    Require(SMPropertyFileReadValue("note", SMXLT_TYPE_UTF8, text, &size, NULL, 0, path, 1) == SM_STATUS_OK,
            "SMPropertyFileReadValue");
    ShowBlock("property-value", text, size);
}

static void Messages(void)
{
    static const char table[] = INI_FOLDER "/qzsdst64.ini", band[] = INI_FOLDER "/qzisdy64.ini";
    const uint32_t base = 2304, range = 32, offset = 256;
    uint32_t language = 1031, size = 64;
    char text[64];
    uint16_t units[64];
    SetText(table, "ASCII EN_US DEFAULT STRING ID SECTION", "0:1F", "Fan failed");
    SetText(table, "ASCII EN_US DEFAULT STRING ID SECTION", "0:A00", "Ours");
    SetText(table, "MISCELLANEOUS STRING ID SECTION", "407:1F",
            "L\xC3\xBC"
            "fter defekt");
    Set(band, "OEM Configuration", "BaseID", INI_TYPE_UINT32, &base, sizeof base);
    Set(band, "OEM Configuration", "oemRange", INI_TYPE_UINT32, &range, sizeof range);
    Set(band, "OEM Configuration", "offset", INI_TYPE_UINT32, &offset, sizeof offset);
    ShowFile("string-ids", table);
    ShowFile("string-ids-oem", band);
    Require(SMGetUTF8StrFromIDPathFile(0x1F, &language, table, text, &size) != 0, "SMGetUTF8StrFromIDPathFile");
    ShowBlock("string-ids-1031", text, size);
    size = sizeof units;
    Require(SMGetUCS2StrFromID(0x900, NULL, units, &size) == size, "SMGetUCS2StrFromID");
    ShowBlock("string-ids-2304", units, size);
}

static void Lists(void)
{
    uint32_t count, size;
    char *several = SMUTF8ConvertXSVToYSV("red, green ,,blue", ',', 0, &count, &size);
    Require(several != NULL, "SMUTF8ConvertXSVToYSV");
    ShowBlock("multi-string", several, size);
    char *joined = SMUTF8ConvertXSVToYSV(several, 0, ';', &count, &size);
    ShowBlock("multi-string-joined", joined, size);
    SMFreeMem(several);
    SMFreeMem(joined);
}

static void PCINames(void)
{
    static const char path[] = "/run/gaugework/pci.txt";
    char vendor[64], device[64];
    uint32_t vendorSize = sizeof vendor, deviceSize = sizeof device;
    StoreText(path, "; names\nV\t1AB2\tNorthwind\nD\t0010\tDisk controller\nO\t1AB2\tController for servers\n"
                    "S\t0007\tController 7\nD\t0011\tFan controller\n");
    ShowFile("pci", path);
    Require(SMReadPCIDevFile(0x1AB2, 0x10, 0x1AB2, 7, path, vendor, &vendorSize, device, &deviceSize) == SM_STATUS_OK,
            "SMReadPCIDevFile");
    Example("pci-found");
    printf("%s, %s\n", vendor, device);
}

static void Registration(void)
{
    static const struct {
        const char *name;
        uint32_t type;
    } kPaths[] = {{"install", SM_PATH_INSTALL}, {"ini", SM_PATH_INI}, {"log", SM_PATH_LOG}};
    ShowFile("registration", "/etc/vkreg.cfg");
    Example("registration-paths");
    for (size_t i = 0; i < sizeof kPaths / sizeof kPaths[0]; ++i) {
        char path[256];
        uint32_t size = sizeof path;
        Require(SMGetPathByProductIDandType(SM_PRODUCT_DEFAULT, kPaths[i].type, path, &size) == SM_STATUS_OK,
                "SMGetPathByProductIDandType");
        printf("%s %s\n", kPaths[i].name, path);
    }
}

static void Parameters(void)
{
    char first[] = "count=0x1F", second[] = "words=on | fast";
    char *const texts[] = {first, second};
    static const SMNVPEnumEntry table[] = {{NULL, 0}, {"on", 1}, {"fast", 4}};
    uint32_t count = 0, size = sizeof count;
    Require(SMNVPUTF8ToTypeValue(2, texts, "count", 0, &count, &size, SMXLT_TYPE_UINT32 | SMXLT_FORMAT_HEX) ==
                SM_STATUS_OK,
            "SMNVPUTF8ToTypeValue");
    Example("parameters");
    printf("%s -> %u\n", first, count);
    printf("%s -> %u\n", second, SMNVPGetEnums32Value(2, texts, "words", 0, table, 3, 1));
}

/* ---- Names ---- */

/* Key, mode and the figure behind it, of each object in /proc/sysvipc/kind: semaphores of a set, bytes of a segment. */
static void ShowSystemV(const char *kind)
{
    char path[64], line[512];
    snprintf(path, sizeof path, "/proc/sysvipc/%s", kind);
    FILE *file = fopen(path, "r");
    Require(file != NULL && fgets(line, sizeof line, file) != NULL, path);
    while (fgets(line, sizeof line, file) != NULL) {
        long key, id, figure;
        char mode[16];
        Require(sscanf(line, "%ld %ld %15s %ld", &key, &id, mode, &figure) == 4, path);
        printf("%s key %ld mode %s %s %ld\n", kind, key, mode, kind[1] == 'e' ? "semaphores" : "bytes", figure);
    }
    fclose(file);
}

static void ShowFolder(const char *name, const char *folder)
{
    struct dirent **entries;
    const int count = scandir(folder, &entries, NULL, alphasort);
    Require(count >= 0, folder);
    Example(name);
    for (int i = 0; i < count; ++i) {
        char path[512];
        struct stat status;
        snprintf(path, sizeof path, "%s/%s", folder, entries[i]->d_name);
        if (stat(path, &status) == 0 && S_ISREG(status.st_mode))
            printf("%04o %4ld %s\n", (unsigned)(status.st_mode & 07777), (long)status.st_size, entries[i]->d_name);
        free(entries[i]);
    }
    free(entries);
}

static void Names(void)
{
    static const char folder[] = "/var/run/qz/.ipc";
    SMMutex *mutex = SMMutexCreate("alpha");
    SMSemaphore *semaphore = SMSemaphoreCreate("alpha", 3);
    SMEvent *event = SMEventCreate("alpha", 1, 0);
    SMSharedMem *memory = SMSharedMemCreate("alpha", 4096);
    SMRWL *lock = SMRWLCreate("alpha");
    Require(mutex && semaphore && event && memory && lock, "a creator");
    ShowFile("registry", "/var/run/qz/.ipc/.lxvestIPCini");
    Example("system-v");
    ShowSystemV("sem");
    ShowSystemV("shm");
    ShowFolder("ipc-folder", folder);
    SMRWLDestroy(lock);
    SMSharedMemFree(memory);
    SMEventDestroy(event);
    SMSemaphoreDestroy(semaphore);
    SMMutexDestroy(mutex);
}

/* ---- Logs ---- */

enum { DATE = 24, HEADER = 256 }; /* characters of a date of ctime; bytes of a text log's first block */

static void EventLogs(void)
{
    Bytes bytes;
    char backup[256];
    uint32_t size = sizeof backup;
    Require(SMAppendToLog(SM_LOG_TEXT | SM_LOG_XML, SM_LOG_TYPE_WARNING, SM_LOG_VOLUME_SERVICE, 2095, "volumes",
                          "Disk <sda> is slow", "\x01\x7A\x7B", 3) == SM_STATUS_OK,
            "SMAppendToLog");
    Load(&bytes, "/run/gaugework/log/qzsys64.log");
    MaskBehind(&bytes, "Date and Time: ", DATE, 2);
    Example("text-log-block");
    Show(&bytes, 0, HEADER);
    Example("text-log-record");
    Show(&bytes, HEADER, bytes.size - HEADER);

    Load(&bytes, "/run/gaugework/log/qzsys64.xml");
    MaskBehind(&bytes, "<TimeStamp>", 10, 1);
    MaskBehind(&bytes, "<DateTime>", DATE, 1);
    Example("xml-log");
    Show(&bytes, 0, bytes.size);

    Require(SMGetBackupLogPathFileName(SM_LOG_TEXT, backup, &size) == SM_STATUS_OK, "SMGetBackupLogPathFileName");
    Example("log-backup");
    printf("%s\n", backup);
}

static void RotatedLogs(void)
{
    static const char path[] = "/run/gaugework/rotated/app.log";
    Bytes bytes;
    mkdir("/run/gaugework/rotated", 0755);
    for (int i = 0; i < 4; ++i)
        Require(SMFileLogMsgToRotatedLog("disk is slow", path, 30, 2, SM_ROTATED_TIME | SM_ROTATED_LINE_FEED) ==
                    SM_STATUS_OK,
                "SMFileLogMsgToRotatedLog");
    Load(&bytes, path);
    MaskBehind(&bytes, "[", 20, 1);
    Example("rotated-log");
    Show(&bytes, 0, bytes.size);
    ShowFolder("rotated-logs", "/run/gaugework/rotated");
}

int main(void)
{
    Objects();
    INIFiles();
    PropertyFiles();
    Messages();
    Lists();
    PCINames();
    Registration();
    Parameters();
    Names();
    EventLogs();
    RotatedLogs();
    return 0;
}
