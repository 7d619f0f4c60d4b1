// Files of settings, products, messages, logs.

#include <cstring>

#include "faults/rows.h"

namespace {

const std::string kProperties = kPlace + "/set.properties";
const uint8_t kBytes[] = {0xAA, 0xBB, 0xCC};
const int64_t kMinus = -5;
const SMINIEnumEntry kWords[] = {{nullptr, 100}, {"one", 1}, {"two", 2}};

// A value that takes just the room, or the default.
uint32_t Read(const char *section, const char *key, uint32_t type, uint32_t room)
{
    static const uint8_t kDefault[] = {9, 9, 9, 9, 9, 9, 9, 9};
    uint8_t dest[32];
    uint32_t size = room;
    const uint32_t status = SMReadINIPathFileValue(section, key, type, dest, &size, kDefault, 8, kIni.c_str(), 1);
    const bool isDefault = type < INI_TYPE_BOOL || std::memcmp(dest, kDefault, room) == 0;
    return size == room && (status == SM_STATUS_OK || isDefault) ? status : kWrong;
}

uint32_t Copied(Things &t)
{
    char *text = SMReadINISectionKeyUTF8Value("s", "text", nullptr, &t.size, kIni.c_str(), 1);
    return t.size == (text != nullptr ? 6 : 0) ? Owned(text, "value") : kWrong;
}

// Of a key that could not be read the default.
uint32_t Words()
{
    const uint32_t value = SMReadINIEnums32Value("s", "words", kWords, 3, 1, kIni.c_str(), 1);
    return value == 3 ? SM_STATUS_OK : value == 1 ? kPart : value;
}

// Without its lock nothing is delivered, later on the default.
uint32_t Property(const char *key, const std::string &expected)
{
    char text[16] = "*";
    uint32_t size = sizeof text;
    const uint32_t status =
        SMPropertyFileReadValue(key, SMXLT_TYPE_UTF8, text, &size, "default", 8, kProperties.c_str(), 1);
    const bool isRight = status == SM_STATUS_OK ? text == expected : text == std::string(size == 8 ? "default" : "*");
    return isRight ? status : kWrong;
}

// The text, none, or the complaint.
uint32_t Message(Things &t)
{
    const std::string table = kPlace + "/ini/qzsdst64.ini";
    const uint32_t count = SMGetUTF8StrFromIDPathFile(1, nullptr, table.c_str(), t.room, &t.size);
    const std::string text = count != 0 ? t.room : "";
    const bool isRight = count == t.size && count == (text.empty() ? 0 : text.size() + 1);
    return isRight && text.empty() ? SM_STATUS_NO_MEMORY
                                   : Rated(isRight && text == "text", isRight && text == "Failed to allocate memory");
}

// The same in units, or the empty text.
uint32_t SuiteMessage(Things &t)
{
    const uint32_t count = SMGetUCS2StrFromID(1, nullptr, t.units.data(), &(t.size = 180));
    return count == t.size && (count == 0 || count == 2) ? SM_STATUS_NO_MEMORY : Rated(count == 10, count == 52);
}

uint32_t PCINames()
{
    char vendor[8] = "#", device[8] = "#";
    uint32_t sizes[] = {8, 8};
    const uint32_t status =
        SMReadPCIDevFile(1, 2, 3, 4, (kPlace + "/pci.ids").c_str(), vendor, &sizes[0], device, &sizes[1]);
    const std::string names = Text(vendor, sizes[0], device, sizes[1]);
    return names == (status == SM_STATUS_OK ? "maker5thing5" : "00") ? status : kWrong;
}

// A place that is new since the attach is told with its need; without memory for the table it is not found.
uint32_t NewPlace(const Things &t, uint32_t status)
{
    const bool isNone = *t.room == '\0' && t.size == 0;
    return status == SM_STATUS_BUFFER_TOO_SMALL && t.size == 5 ? SM_STATUS_OK : isNone ? status : kWrong;
}

// In the text log a failure is not told, and pieces of an entry of more than 2 KiB of XML may be missing. The record is
// whole with the end of its data.
uint32_t Event(const Things &t, uint8_t targets)
{
    const std::string data(480, 'd');
    const uint32_t status = SMAppendToLog(targets, 1, 3, 5, "who", "text", data.data(), 480);
    const auto units = Units(u"0x000001D0: ");
    const std::string row(reinterpret_cast<const char *>(units.data()), 24);
    const std::string last = targets == SM_LOG_TEXT ? row : "0x64,0x64</Data>";
    return status != SM_STATUS_OK || targets == SM_LOG_SYSTEM || t.State().find(last) != std::string::npos ? status
                                                                                                           : kPart;
}

#define READ(failures, ...) EXPR(failures, SMReadINIPathFileValue, Read(__VA_ARGS__))
#define WRITE(failures, path, ...) MADE(failures, SMWriteINIPathFileValue, __VA_ARGS__, path.c_str(), 1)
#define XML(failures, limit)                                                                                           \
    MADE(failures, SMAppendToXMLLog, t.log.c_str(), 4, 5, 2, "u", "s", "d", "l", "xy", 2, limit)                       \
        .Shows("<Data>0x78,0x79")

} // namespace

Rows RowsOfStores()
{
    return Table(
        READ("FM", "s", "text", INI_TYPE_UTF8, 6), READ("FM", "s", "bytes", INI_TYPE_BINARY, 2),
        READ("FM", "s", "flag", INI_TYPE_BOOL, 2), READ("FM", "s", "number", INI_TYPE_UINT32, 4),
        READ("FM", "s", "number", INI_TYPE_DOUBLE, 8), READ("M", nullptr, nullptr, INI_TYPE_UTF8, 5),
        READ("M", "s", nullptr, INI_TYPE_UTF8, 30),
        MADE("FM", SMReadINIFileValue, "s", "text", INI_TYPE_UTF8, t.room, &t.size, nullptr, 0, "set.ini", 1),
        EXPR("M", SMReadINISectionKeyUTF8Value, Copied(t)), EXPR("Up", SMReadINIEnums32Value, Words()),
        WRITE("M", kIni, "s", "text", INI_TYPE_UTF8, "new", 4).Shows("text=new\nwords"),
        WRITE("M", kIni, "s", "more", INI_TYPE_UTF8, "new", 4).Shows("0x02\nmore=new\n\n[t]"),
        WRITE("M", kIni, "t", "c", INI_TYPE_UTF8, "4", 2).Shows("why\nc=4"),
        WRITE("FM", kIni, "s", "bytes", INI_TYPE_BINARY, kBytes, 3).Shows("0xAA,0xBB,0xCC"),
        WRITE("M", kIni, "s", "number", INI_TYPE_INT64, &kMinus, 8).Shows("number=-5"),
        WRITE("M", kIni, "s", "flag", INI_TYPE_UTF8, nullptr, 0).Shows("one,two\nnumber"),
        WRITE("M", kIni, "s", nullptr, INI_TYPE_UTF8, nullptr, 0).Shows("set.ini:[t]"),
        WRITE("M", kIni, "u", "d", INI_TYPE_UTF8, "4", 2).Shows("c=3\n\n[u]\nd=4\n"),
        WRITE("M", (kPlace + "/new.ini"), "u", "d", INI_TYPE_UTF8, "4", 2).Shows("new.ini:[u]\nd=4\n"),
        MADE("M", SMWriteINIFileValue, "s", "text", INI_TYPE_UTF8, "new", 4, "set.ini", 1).Shows("text=new"),
        EXPR("M", SMPropertyFileReadValue, Property("key", "old")),
        EXPR("M", SMPropertyFileReadValue, Property(nullptr, "a")),
        MADE("FM", SMPropertyFileWriteValue, "key", SMXLT_TYPE_UTF8, "new", 4, kProperties.c_str(), 1)
            .Shows("a=1\nkey=new\nz=2\n"),
        EXPR("Mp", SMGetUTF8StrFromIDPathFile, Message(t)), EXPR("MOp", SMGetUCS2StrFromID, SuiteMessage(t)),
        EXPR("M", SMReadPCIDevFile, PCINames()),
        EXPR("M", SMProductIDToSID, Owned(SMProductIDToSID(SM_PRODUCT_DEFAULT), "Gaugework")),
        EXPR("M", SMMakePathFileNameByPID,
             Owned(SMMakePathFileNameByPID(SM_PRODUCT_DEFAULT, "a", "b"), kPlace + "/a/b")),
        EXPR("M", SMMakePathFileNameByPIDAndType,
             Owned(SMMakePathFileNameByPIDAndType(SM_PRODUCT_DEFAULT, SM_PATH_LOG, nullptr, "b"), kPlace + "/b")),
        EXPR("M", SMGetLocalizedPathFileName,
             Owned(SMGetLocalizedPathFileName(kPlace.c_str(), "texts", nullptr, nullptr, "a.txt"),
                   kPlace + "/texts/a.txt")),
        EXPR("N", SMGetPathByProductIDandType,
             NewPlace(t, SMGetPathByProductIDandType(45, SM_PATH_LOG, t.room, &t.size))),
        EXPR("N", SMGetInstallPathByProductID, NewPlace(t, SMGetInstallPathByProductID(45, t.room, &t.size))),
        EXPR("FO", SMAppendToLog, Event(t, SM_LOG_SYSTEM)),
        EXPR("FOp", SMAppendToLog, Event(t, SM_LOG_TEXT)).Shows(kChanged),
        EXPR("FMOp", SMAppendToLog, Event(t, SM_LOG_XML)).Shows("<Data>0x64"),
        MADE("Ofm", SMClearLog, SM_LOG_TEXT, 3, "who").Shows(kChanged),
        MADE("Ofm", SMClearLog, SM_LOG_XML, 3, "who").Shows("EventLog><LogEntry"),
        MADE("M", SMGetBackupLogPathFileName, SM_LOG_XML, t.room, &t.size), MADE("O", SMGetLogMaxSize, "/b", &t.size),
        MADE("FM", SMSetLogMaxSize, "/a", 2000000).Shows("2000000"), XML("FMO", 99999), XML("Ofm", 0),
        MADE("Ofm", SMClearXMLLog, t.log.c_str(), 5, "u", "s").Shows("EventLog><LogEntry"),
        WELL(SMSetLogMaxSize, "/c", 3000000), // known
        WELL(SMFileLogMsgToRotatedLog, "more", t.log.c_str(), 9, 3, SM_ROTATED_TIME),
        WELL(SMGetLogPathFileName, SM_LOG_XML, t.room, &(t.size = 256)), WELL(SMForceXMLLogExists, t.path.c_str(), 1),
        WELL(SMGetBackupXMLLogPathFileName, "/a/b", t.room, &t.size), CALL(SMFileRotateCheck, t.path.c_str(), 1, 2),
        CALL(SMFileDeleteRotated, t.path.c_str(), 1, 2), WELL(SMGetInstallPath, t.room, &t.size),
        WELL(SMExpandVkInstallPathString, "@vkinstallpath@/a", t.room, &t.size), CALL(SMProductSIDToID, "gaugework"));
}
