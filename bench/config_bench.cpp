// One key of a configuration file, read or set, beside other readers of INI files, each as its users call it: load the
// file, get or set the value, free, and to set, write a new file. "bare" makes the system calls that the library's way
// needs, with nothing in between: the price of the file lock, of the backup and of the swap.
//
// For file locks it looks inside, so it is linked to the library's objects. It is run by tests/support/sandbox, whose
// /run is empty: there it makes the IPC directory and its files.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <qzvest/qzvest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/sandbox.h"
#include "ipc/filelock.h"
#include "ipc/names.h"

#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_INIPARSER
#include <iniparser/iniparser.h>
#endif
#ifdef BENCH_INIH
#include <ini.h>
#endif

namespace {

const std::string kDirectory = "/run/bench";
constexpr int kSectionKeys = 100;
constexpr int kTexts = 1000;
constexpr uint32_t kLanguage = 1036;

// A file, and what of it is asked for. Equal sizes have equal paths.
struct Sample {
    std::string path;
    std::string lockFile;
    std::string text;
    std::string section;
    std::string key;
    std::string value;
    size_t end; // of the key's line in the file
};

std::string Print(const char *format, int number)
{
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

std::string SectionOf(int index)
{
    return Print("section %d", index / kSectionKeys);
}

// The same text is an INI file and, with its headers as odd keys, a property file.
Sample MakeIni(int keys, int index)
{
    Sample sample = {kDirectory + "/" + std::to_string(keys), {}, {}, SectionOf(index), Print("key%05d", index),
                     Print("value of key %05d", index),       0};
    for (int i = 0; i < keys; ++i) {
        if (i % kSectionKeys == 0)
            sample.text += (i != 0 ? "\n[" : "[") + SectionOf(i) + "]\n# a hundred keys at most\n";
        sample.text += Print("key%05d", i) + Print("=value of key %05d\n", i);
        if (i == index)
            sample.end = sample.text.size();
    }
    return sample;
}

// The last text of a table in its default language and in another.
Sample MakeTable(int, int)
{
    Sample sample = {kDirectory + "/table",
                     {},
                     "[ASCII EN_US DEFAULT STRING ID SECTION]\n",
                     {},
                     {},
                     Print("Texte du message %d", kTexts),
                     0};
    for (int id = 1; id <= kTexts; ++id)
        sample.text += Print("0:%X", id) + Print("=Text of message %d\n", id);
    sample.text += "\n[MISCELLANEOUS STRING ID SECTION]\n";
    for (int id = 1; id <= kTexts; ++id)
        sample.text += "40C:" + Print("%X", id) + Print("=Texte du message %d\n", id);
    return sample;
}

Sample MakeLocaleTable(int, int)
{
    Sample sample = {kDirectory + "/locale", {}, "[texts]\n", {}, {}, Print("Texte du message %d", kTexts), 0};
    for (int id = 1; id <= kTexts; ++id)
        sample.text += Print("%X", id) + Print("=Text of message %d\n", id) + Print("%X", id) +
                       Print("[fr]=Texte du message %d\n", id);
    return sample;
}

// ---- Ours ----

bool OursRead(const Sample &sample)
{
    char value[64];
    uint32_t size = sizeof value;
    return SMReadINIPathFileValue(sample.section.c_str(), sample.key.c_str(), INI_TYPE_UTF8, value, &size, nullptr, 0,
                                  sample.path.c_str(), 1) == SM_STATUS_OK &&
           sample.value == value;
}

bool OursList(const Sample &sample, const char *section)
{
    static char names[16384];
    uint32_t size = sizeof names;
    return SMReadINIPathFileValue(section, nullptr, INI_TYPE_UTF8, names, &size, nullptr, 0, sample.path.c_str(), 1) ==
           SM_STATUS_OK;
}

bool OursListSections(const Sample &sample)
{
    return OursList(sample, nullptr);
}

bool OursListKeys(const Sample &sample)
{
    return OursList(sample, sample.section.c_str());
}

bool OursSet(const Sample &sample)
{
    return SMWriteINIPathFileValue(sample.section.c_str(), sample.key.c_str(), INI_TYPE_UTF8, sample.value.c_str(),
                                   static_cast<uint32_t>(sample.value.size() + 1), sample.path.c_str(),
                                   1) == SM_STATUS_OK;
}

bool OursPropertyRead(const Sample &sample)
{
    char value[64];
    uint32_t size = sizeof value;
    return SMPropertyFileReadValue(sample.key.c_str(), SMXLT_TYPE_UTF8, value, &size, nullptr, 0, sample.path.c_str(),
                                   1) == SM_STATUS_OK &&
           sample.value == value;
}

bool OursPropertyWrite(const Sample &sample)
{
    return SMPropertyFileWriteValue(sample.key.c_str(), SMXLT_TYPE_UTF8, sample.value.c_str(),
                                    static_cast<uint32_t>(sample.value.size() + 1), sample.path.c_str(),
                                    1) == SM_STATUS_OK;
}

bool OursText(const Sample &sample)
{
    char text[64];
    uint32_t size = sizeof text;
    uint32_t language = kLanguage;
    return SMGetUTF8StrFromIDPathFile(kTexts, &language, sample.path.c_str(), text, &size) != 0 && sample.value == text;
}

template <qzvest::FileLockMode kMode>
bool OursLock(const Sample &sample)
{
    const qzvest::FileLockGuard lock(sample.path.c_str(), kMode, 1);
    return lock.Status() == SM_STATUS_OK;
}

// ---- The bare system calls ----

bool SetLock(int descriptor, short type)
{
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    return fcntl(descriptor, F_SETLKW, &range) == 0;
}

template <int kFlags, short kType, typename Work>
bool UnderBareLock(const Sample &sample, Work work)
{
    const int descriptor = open(sample.lockFile.c_str(), kFlags | O_CREAT | O_CLOEXEC, 0600);
    bool done = SetLock(descriptor, kType) && work();
    if (kType == F_WRLCK) { // the rights on the lock file follow those on the file
        struct stat file;
        struct stat lock;
        done = stat(sample.path.c_str(), &file) == 0 && stat(sample.lockFile.c_str(), &lock) == 0 && done;
    }
    return SetLock(descriptor, F_UNLCK) && close(descriptor) == 0 && done;
}

bool BareReaderLock(const Sample &sample)
{
    return UnderBareLock<O_RDONLY, F_RDLCK>(sample, [] { return true; });
}

bool BareWriterLock(const Sample &sample)
{
    return UnderBareLock<O_WRONLY, F_WRLCK>(sample, [] { return true; });
}

std::vector<char> bareBlock(size_t{1} << 20);

// Up to this place, or to where the file is seen to end.
size_t BareLoad(const Sample &sample, size_t end)
{
    constexpr size_t kBlock = 65536;
    const int descriptor = open(sample.path.c_str(), O_RDONLY | O_CLOEXEC);
    size_t loaded = 0;
    while (loaded < end) {
        const ssize_t got = read(descriptor, bareBlock.data() + loaded, kBlock);
        if (got <= 0)
            break;
        loaded += static_cast<size_t>(got);
    }
    close(descriptor);
    return loaded;
}

std::string BackupOf(const Sample &sample)
{
    return sample.path + ".bak";
}

bool BareReadTo(const Sample &sample, size_t end)
{
    return UnderBareLock<O_RDONLY, F_RDLCK>(sample, [&] {
        return access(BackupOf(sample).c_str(), F_OK) != 0 && BareLoad(sample, end) >= std::min(end, sample.end);
    });
}

bool BareRead(const Sample &sample)
{
    return BareReadTo(sample, sample.end);
}

bool BareReadAll(const Sample &sample)
{
    return BareReadTo(sample, SIZE_MAX);
}

bool BarePropertyRead(const Sample &sample)
{
    return UnderBareLock<O_RDONLY, F_RDLCK>(sample, [&] { return BareLoad(sample, sample.end) >= sample.end; });
}

bool BareCopy(const Sample &sample, const std::string &temporary)
{
    constexpr size_t kBlock = 131072;
    struct stat status;
    if (access(temporary.c_str(), F_OK) == 0 || stat(sample.path.c_str(), &status) != 0)
        return false;
    const size_t size = BareLoad(sample, SIZE_MAX);
    const int output = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    bool done = fchmod(output, status.st_mode & 01666) == 0;
    for (size_t at = 0; done && at < size; at += kBlock)
        done = write(output, bareBlock.data() + at, std::min(kBlock, size - at)) > 0;
    return close(output) == 0 && done;
}

bool BareSwap(const Sample &sample, const std::string &temporary)
{
    const std::string backup = BackupOf(sample);
    struct stat status;
    return stat(sample.path.c_str(), &status) == 0 && rename(sample.path.c_str(), backup.c_str()) == 0 &&
           rename(temporary.c_str(), sample.path.c_str()) == 0 &&
           chmod(sample.path.c_str(), status.st_mode & 01666) == 0 && unlink(backup.c_str()) == 0;
}

bool BareChange(const Sample &sample)
{
    const std::string temporary = kDirectory + "/aB3dE6gH";
    return BareCopy(sample, temporary) && BareSwap(sample, temporary);
}

bool BareSet(const Sample &sample)
{
    (void)mkdir(kDirectory.c_str(), 0755); // there already
    return UnderBareLock<O_WRONLY, F_WRLCK>(sample, [&] {
        return access(BackupOf(sample).c_str(), F_OK) != 0 && access(sample.path.c_str(), F_OK) == 0 &&
               BareChange(sample);
    });
}

bool BarePropertyWrite(const Sample &sample)
{
    return UnderBareLock<O_WRONLY, F_WRLCK>(sample, [&] { return BareChange(sample); });
}

// ---- Peers ----

#ifdef BENCH_GLIB
template <typename Use>
bool WithKeyFile(const Sample &sample, GKeyFileFlags flags, Use use)
{
    GKeyFile *file = g_key_file_new();
    const bool done = g_key_file_load_from_file(file, sample.path.c_str(), flags, nullptr) && use(file);
    g_key_file_free(file);
    return done;
}

bool IsValue(const Sample &sample, char *value)
{
    const bool is = value != nullptr && sample.value == value;
    g_free(value);
    return is;
}

bool KeyFileRead(const Sample &sample)
{
    return WithKeyFile(sample, G_KEY_FILE_NONE, [&](GKeyFile *file) {
        return IsValue(sample, g_key_file_get_string(file, sample.section.c_str(), sample.key.c_str(), nullptr));
    });
}

bool FreeNames(char **names)
{
    const bool any = names != nullptr;
    g_strfreev(names);
    return any;
}

bool KeyFileListSections(const Sample &sample)
{
    return WithKeyFile(sample, G_KEY_FILE_NONE,
                       [](GKeyFile *file) { return FreeNames(g_key_file_get_groups(file, nullptr)); });
}

bool KeyFileListKeys(const Sample &sample)
{
    return WithKeyFile(sample, G_KEY_FILE_NONE, [&](GKeyFile *file) {
        return FreeNames(g_key_file_get_keys(file, sample.section.c_str(), nullptr, nullptr));
    });
}

bool KeyFileSet(const Sample &sample)
{
    return WithKeyFile(sample, G_KEY_FILE_KEEP_COMMENTS, [&](GKeyFile *file) {
        g_key_file_set_string(file, sample.section.c_str(), sample.key.c_str(), sample.value.c_str());
        return g_key_file_save_to_file(file, sample.path.c_str(), nullptr) != FALSE;
    });
}

bool KeyFileText(const Sample &sample)
{
    return WithKeyFile(sample, G_KEY_FILE_KEEP_TRANSLATIONS, [&](GKeyFile *file) {
        return IsValue(sample, g_key_file_get_locale_string(file, "texts", Print("%X", kTexts).c_str(), "fr", nullptr));
    });
}
#endif

#ifdef BENCH_INIPARSER
template <typename Use>
bool WithDictionary(const Sample &sample, Use use)
{
    dictionary *file = iniparser_load(sample.path.c_str());
    const bool done = file != nullptr && use(file);
    iniparser_freedict(file);
    return done;
}

bool IniparserRead(const Sample &sample)
{
    return WithDictionary(sample, [&](dictionary *file) {
        const std::string name = sample.section + ":" + sample.key;
        return sample.value == iniparser_getstring(file, name.c_str(), "");
    });
}

bool IniparserListSections(const Sample &sample)
{
    return WithDictionary(sample, [](dictionary *file) {
        const int count = iniparser_getnsec(file);
        for (int i = 0; i < count; ++i)
            benchmark::DoNotOptimize(iniparser_getsecname(file, i));
        return count != 0;
    });
}

bool IniparserListKeys(const Sample &sample)
{
    return WithDictionary(sample, [&](dictionary *file) {
        const int count = iniparser_getsecnkeys(file, sample.section.c_str());
        std::vector<const char *> keys(static_cast<size_t>(count));
        return iniparser_getseckeys(file, sample.section.c_str(), keys.data()) != nullptr;
    });
}

// It leaves the swap to its users.
bool IniparserSet(const Sample &sample)
{
    return WithDictionary(sample, [&](dictionary *file) {
        const std::string temporary = sample.path + ".new";
        iniparser_set(file, (sample.section + ":" + sample.key).c_str(), sample.value.c_str());
        FILE *output = std::fopen(temporary.c_str(), "we");
        iniparser_dump_ini(file, output);
        return std::fclose(output) == 0 && std::rename(temporary.c_str(), sample.path.c_str()) == 0;
    });
}
#endif

#ifdef BENCH_INIH
// Every line of the file comes to the handler, whatever it answers.
template <typename Seen>
bool WithInih(const Sample &sample, Seen seen)
{
    const auto handler = [](void *user, const char *section, const char *key, const char *value) {
        (*static_cast<Seen *>(user))(section, key, value);
        return 1;
    };
    return ini_parse(sample.path.c_str(), handler, &seen) == 0;
}

bool InihRead(const Sample &sample)
{
    std::string found;
    return WithInih(sample,
                    [&](const char *section, const char *key, const char *value) {
                        if (key == sample.key && section == sample.section)
                            found = value;
                    }) &&
           found == sample.value;
}

bool InihListSections(const Sample &sample)
{
    std::vector<std::string> names;
    return WithInih(sample,
                    [&](const char *section, const char *, const char *) {
                        if (names.empty() || names.back() != section)
                            names.emplace_back(section);
                    }) &&
           !names.empty();
}

bool InihListKeys(const Sample &sample)
{
    std::vector<std::string> names;
    return WithInih(sample,
                    [&](const char *section, const char *key, const char *) {
                        if (section == sample.section)
                            names.emplace_back(key);
                    }) &&
           !names.empty();
}
#endif

// ---- Rows ----

using Call = bool (*)(const Sample &);
using Maker = Sample (*)(int keys, int index);

void Measure(benchmark::State &state, Call call, Maker make, int keys, int index)
{
    Sample sample = make(keys, index);
    std::ofstream(sample.path) << sample.text;
    char digest[qzvest::kNameDigestSize];
    uint32_t digestSize = sizeof digest;
    qzvest::SMNameDigest(sample.path.c_str(), digest, &digestSize);
    sample.lockFile = std::string(qzvest::IPCDirectory()) + "/.qzvesflk" + digest;
    for (auto _ : state) {
        if (!call(sample)) {
            state.SkipWithError("the call failed");
            break;
        }
    }
}

void Register(const std::string &operation, const char *who, Call call, Maker make, int keys, int index)
{
    const std::string name = operation + "/" + who + "/" + std::to_string(keys);
    benchmark::RegisterBenchmark(name.c_str(), Measure, call, make, keys, index);
}

struct Who {
    const char *name;
    Call read;
    Call listSections;
    Call listKeys;
    Call set;
    Call propertyRead;
    Call propertyWrite;
};

// To the peers a property file is like any other.
const Who kEveryone[] = {
    {"ours", OursRead, OursListSections, OursListKeys, OursSet, OursPropertyRead, OursPropertyWrite},
    {"bare", BareRead, BareReadAll, BareReadAll, BareSet, BarePropertyRead, BarePropertyWrite},
#ifdef BENCH_GLIB
    {"GKeyFile", KeyFileRead, KeyFileListSections, KeyFileListKeys, KeyFileSet, KeyFileRead, KeyFileSet},
#endif
#ifdef BENCH_INIPARSER
    {"iniparser", IniparserRead, IniparserListSections, IniparserListKeys, IniparserSet, IniparserRead, IniparserSet},
#endif
#ifdef BENCH_INIH
    {"inih", InihRead, InihListSections, InihListKeys, nullptr, InihRead, nullptr},
#endif
};

void RegisterFiles(const Who &who, int keys)
{
    const int last = keys - 1;
    const struct {
        const char *operation;
        Call call;
        int index;
    } rows[] = {
        {"ini_read_first", who.read, 0},
        {"ini_read_middle", who.read, keys / 2},
        {"ini_read_last", who.read, last},
        {"ini_set_first", who.set, 0},
        {"ini_set_last", who.set, last},
        {"ini_list_sections", who.listSections, last},
        {"ini_list_keys", who.listKeys, last},
        {"property_read_last", who.propertyRead, last},
        {"property_write_last", who.propertyWrite, last},
    };
    for (const auto &row : rows)
        if (row.call != nullptr)
            Register(row.operation, who.name, row.call, MakeIni, keys, row.index);
}

void RegisterAll()
{
    for (const Who &who : kEveryone)
        for (const int keys : {10, 1000, 10000})
            RegisterFiles(who, keys);
    constexpr auto kReader = OursLock<qzvest::kFileLockReader>;
    constexpr auto kWriter = OursLock<qzvest::kFileLockWriter>;
    Register("filelock_reader", "ours", kReader, MakeIni, 1, 0);
    Register("filelock_reader", "bare", BareReaderLock, MakeIni, 1, 0);
    Register("filelock_writer", "ours", kWriter, MakeIni, 1, 0);
    Register("filelock_writer", "bare", BareWriterLock, MakeIni, 1, 0);
    Register("stringid_lookup", "ours", OursText, MakeTable, kTexts, 0);
#ifdef BENCH_GLIB
    Register("stringid_lookup", "GKeyFile", KeyFileText, MakeLocaleTable, kTexts, 0);
#endif
}

bool MakePlaces()
{
    std::error_code error;
    return std::filesystem::create_directory(kDirectory, error);
}

} // namespace

int main(int argc, char **argv)
{
    return bench::RunAll(argc, argv, MakePlaces, RegisterAll);
}
