// Property files as callers see them, in examples and beside a model over many odd files.

#include <sys/resource.h>

#include <csignal>
#include <random>

#include "config/ini_fixture.h"
#include "config/property_model.h"

namespace {

using namespace std::string_literals;

class PropertyFile : public IniFile {
protected:
    // The text of a key or, without one, the keys; "<status>" after a failure.
    std::string Read(const char *key) const
    {
        std::string text(65536, '*');
        auto size = static_cast<uint32_t>(text.size());
        const uint32_t status =
            SMPropertyFileReadValue(key, SMXLT_TYPE_UTF8, text.data(), &size, nullptr, 0, path.c_str(), 1);
        if (status != SM_STATUS_OK)
            return "<" + std::to_string(status) + ">";
        EXPECT_EQ(text[size], '*');
        return text.substr(0, key != nullptr ? size - 1 : size);
    }

    uint32_t Write(const char *key, uint32_t type, const void *value, uint32_t size) const
    {
        return SMPropertyFileWriteValue(key, type, value, size, path.c_str(), 1);
    }
    uint32_t Write(const char *key, const std::string &value) const
    {
        return Write(key, SMXLT_TYPE_UTF8, value.c_str(), static_cast<uint32_t>(value.size() + 1));
    }
};

TEST_F(PropertyFile, KeysMatchByPrefixAndLinesHaveALimit)
{
    const std::string longLine = "key=" + std::string(8445, 'x'); // 8,449 bytes
    Put("KEY=1\n[ke\nke=pre\\\n\t fix\nkey=exact\n");
    EXPECT_EQ(Read("keys"), "pre\n\t fix");
    EXPECT_EQ(Read("k"), "<263>");
    Put(longLine + "y=1\n");
    EXPECT_EQ(Read("key"), longLine.substr(4));
    EXPECT_EQ(Read("y"), "1");
}

TEST_F(PropertyFile, KeysAreListedAsFarAsThereIsRoom)
{
    Put("; none\nab=1\\\ncd=2\nef\n[gh] i\n");
    const struct {
        uint32_t room, status;
        std::string text;
    } kCases[] = {{12, SM_STATUS_OK, "ab\0ef\0[gh]\0\0"s},
                  {11, SM_STATUS_BUFFER_TOO_SMALL, "ab\0ef\0\0"s},
                  {6, SM_STATUS_BUFFER_TOO_SMALL, "ab\0\0"s},
                  {1, SM_STATUS_BUFFER_TOO_SMALL, "\0"s},
                  {0, SM_STATUS_BUFFER_TOO_SMALL, ""}};
    for (const auto &row : kCases) {
        std::string text(16, '*');
        uint32_t size = row.room;
        EXPECT_EQ(SMPropertyFileReadValue(nullptr, SMXLT_TYPE_UTF8, text.data(), &size, nullptr, 0, path.c_str(), 1),
                  row.status);
        EXPECT_EQ(size, 12u);
        EXPECT_EQ(text.substr(0, row.text.size() + 1), row.text + "*") << row.room;
    }
    uint32_t size = 100;
    EXPECT_EQ(SMPropertyFileReadValue(nullptr, SMXLT_TYPE_UTF8, nullptr, &size, nullptr, 0, path.c_str(), 1),
              SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 12u);
}

TEST_F(PropertyFile, DefaultsStandInAfterFailures)
{
    Put("number=17\nword=yes\n");
    const std::string missing = folder + "/missing";
    const struct {
        const char *key;
        uint32_t type, room;
        const std::string &file;
        uint32_t defaultSize, status, size, value;
    } kCases[] = {
        {"number", SMXLT_TYPE_UINT32, 4, path, 4, SM_STATUS_OK, 4, 17},
        {"none", SMXLT_TYPE_UINT32, 4, path, 4, SM_STATUS_INI_NO_KEY, 4, 99},
        {"none", SMXLT_TYPE_UINT32, 3, path, 4, SM_STATUS_INI_NO_KEY, 3, 5},
        {"word", SMXLT_TYPE_BOOL, 4, path, 0, SM_STATUS_INVALID_PARAMETER, 0, 5},
        {"number", SMXLT_TYPE_UINT64, 4, path, 4, SM_STATUS_BUFFER_TOO_SMALL, 4, 99},
        {"number", SMXLT_TYPE_TIME, 4, path, 4, SM_STATUS_BAD_ARGUMENT, 4, 99},
        {nullptr, SMXLT_TYPE_UTF8, 4, missing, 4, SM_STATUS_INI_OPEN_FAILED, 4, 99},
        {nullptr, SMXLT_TYPE_UTF8, 4, path, 4, SM_STATUS_BUFFER_TOO_SMALL, 4, 99},
        {nullptr, SMXLT_TYPE_UINT32, 4, path, 4, SM_STATUS_OK, 4, 5},
    };
    constexpr uint32_t kDefault = 99;
    for (const auto &row : kCases) {
        uint32_t value = 5;
        uint32_t size = row.room;
        EXPECT_EQ(
            SMPropertyFileReadValue(row.key, row.type, &value, &size, &kDefault, row.defaultSize, row.file.c_str(), 1),
            row.status);
        EXPECT_EQ(size, row.size) << &row - kCases;
        EXPECT_EQ(value, row.value) << &row - kCases;
    }
    uint32_t size = 0;
    EXPECT_EQ(SMPropertyFileReadValue("word", SMXLT_TYPE_UTF8, nullptr, &size, "d", 2, path.c_str(), 1),
              SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(SMPropertyFileReadValue("word", SMXLT_TYPE_UTF8, nullptr, nullptr, nullptr, 0, path.c_str(), 1),
              SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMPropertyFileReadValue("word", SMXLT_TYPE_UTF8, nullptr, &size, nullptr, 0, nullptr, 1),
              SM_STATUS_INVALID_PARAMETER);
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(PropertyFile, WritesTypedValuesInPlaceOfTheOld)
{
    const std::string odd = "# \0\x01\r\n[x] \xFFy\n"s;
    Put(odd + " port : 1\\\n  2\\\n3\nrest=\\\nlast");
    chmod(path.c_str(), 0600);
    const uint32_t port = 8080;
    EXPECT_EQ(Write("ports", SMXLT_TYPE_UINT32, &port, 0), SM_STATUS_OK);
    EXPECT_EQ(Get(), odd + "ports=8080\nrest=\\\nlast");
    EXPECT_EQ(ModeOf(path), 0600u);

    Put("text=1\n");
    EXPECT_EQ(Write("text", SMXLT_TYPE_UTF8, "cut", 2), SM_STATUS_OK);
    EXPECT_EQ(Get(), "text=cu\n");
    EXPECT_EQ(Write("text", SMXLT_TYPE_UTF8, "", 0), SM_STATUS_OK);
    EXPECT_EQ(Get(), "text=\n");
    EXPECT_EQ(Write("text", SMXLT_TYPE_BYTES | SMXLT_FORMAT_HEX, "\n\xFF", 2), SM_STATUS_OK);
    EXPECT_EQ(Get(), "text=0x0A,0xFF\n");
    EXPECT_EQ(Write("none", "x"), SM_STATUS_OK); // empties the file
    EXPECT_EQ(Get(), "");
    EXPECT_EQ(Others(), 0);
}

TEST_F(PropertyFile, FailedWritesLeaveTheFileAndTheTemporaryOne)
{
    EXPECT_EQ(Write("key", "x"), SM_STATUS_INI_OPEN_FAILED);
    EXPECT_EQ(Get(), "(missing)");
    Put("key=1\n");
    EXPECT_EQ(Write(nullptr, "x"), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(Write("key", SMXLT_TYPE_UTF8, nullptr, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMPropertyFileWriteValue("key", SMXLT_TYPE_UTF8, "x", 2, nullptr, 1), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(Others(), 0);
    EXPECT_EQ(Write("key", SMXLT_TYPE_IPV4, "\x7F\0\0\1", 4), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(Others(), 1);
    EXPECT_EQ(Write("key", SMXLT_TYPE_BYTES, "", 0), SM_STATUS_FAILED);
    EXPECT_EQ(Others(), 2);
    std::filesystem::create_directories(path + ".bak/full"); // of the name that the old version is to get
    EXPECT_EQ(Write("key", "x"), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), "key=1\n");
}

TEST_F(PropertyFile, FullDiskIsToldByWhatWasBeingWritten)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const std::string file = "#" + std::string(99, ' ') + "\nkey=1\n#" + std::string(99, ' ');
    Put(file);
    struct rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto limited = [&](rlim_t size) {
        const struct rlimit limit = {size, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const uint32_t status = Write("key", "value");
        setrlimit(RLIMIT_FSIZE, &before);
        return status;
    };
    EXPECT_EQ(limited(100), SM_STATUS_FAILED);
    EXPECT_EQ(limited(105), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(limited(150), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(Get(), file);
    EXPECT_EQ(limited(211), SM_STATUS_OK);
}

TEST_F(PropertyFile, WriterWaitsForReadersAndReaderForWriters)
{
    Put("key=1\n");
    EXPECT_EQ(Read("key"), "1"); // makes the lock file
    for (const int kind : {F_RDLCK, F_WRLCK}) {
        ASSERT_EQ(Hold(kind), 0);
        EXPECT_EQ(SMPropertyFileWriteValue("key", SMXLT_TYPE_UTF8, "2", 2, path.c_str(), 0), SM_STATUS_TIMEOUT);
        char text[8];
        uint32_t size = sizeof text;
        EXPECT_EQ(SMPropertyFileReadValue("key", SMXLT_TYPE_UTF8, text, &size, "d", 2, path.c_str(), 2),
                  kind == F_RDLCK ? SM_STATUS_OK : SM_STATUS_TIMEOUT);
        EXPECT_EQ(size, kind == F_RDLCK ? 2 : sizeof text); // not even the default
    }
    EXPECT_EQ(Others(), 0);
}

struct RandomText {
    std::mt19937 engine;
    size_t Below(size_t bound)
    {
        return engine() % bound;
    }
    std::string Key()
    {
        static const char *const kKeys[] = {"k", "ke", "key", "keys", "ab", "abc", "[x]", "a\\", "\\\\", "//", "b;"};
        return kKeys[Below(std::size(kKeys))];
    }
    std::string File()
    {
        static const std::string kPieces[] = {
            "=", ":", " ", "\t", "\r",  "\n",     "\n",   "\n", "\n",      "\r\n",  "\\",  "\\\n", "\\\\\n",
            ";", "#", "!", "//", "\0"s, "\\\r\n", "\f\v", "x",  "a value", "\\ \n", " \n", "=\n",  "= \\\n",
        };
        std::string file;
        for (size_t count = Below(40); count != 0; --count) {
            const size_t kind = Below(100);
            if (kind < 25)
                file += Key();
            else if (kind < 40)
                file += "\n" + Key() + "=";
            else if (kind < 42)
                file += std::string(8400 + Below(60), kind == 40 ? 'l' : ' ');
            else
                file += kPieces[Below(std::size(kPieces))];
        }
        return file;
    }
};

TEST_F(PropertyFile, ReadsWhatTheModelReads)
{
    RandomText random = {std::mt19937(1)};
    for (int i = 0; i < 1500; ++i) {
        const std::string file = random.File();
        Put(file);
        const std::string keys = propertymodel::Keys(file);
        ASSERT_EQ(Read(nullptr), keys.size() == 1 ? "<263>" : keys) << i;
        for (int k = 0; k < 4; ++k) {
            const std::string key = random.Key() + (k == 0 ? "more" : "");
            const auto entry = propertymodel::Find(propertymodel::Lines(file), key);
            ASSERT_EQ(Read(key.c_str()), entry ? entry->value : "<263>") << i << " " << key;
        }
    }
}

TEST_F(PropertyFile, WritesWhatTheModelWrites)
{
    RandomText random = {std::mt19937(2)};
    for (int i = 0; i < 300; ++i) {
        std::string file = random.File();
        Put(file);
        for (int edit = 0; edit < 6 && !file.empty(); ++edit) {
            const std::vector<propertymodel::Entry> entries = propertymodel::Entries(propertymodel::Lines(file));
            std::string key = random.Key();
            if (edit < 5 && !entries.empty()) // a missing key ends the sequence
                key = entries[random.Below(entries.size())].key + (edit == 0 ? "more" : "");
            std::string value = random.File().c_str();
            value.resize(random.Below(value.size() + 1));
            file = propertymodel::Replaced(file, key, value);
            ASSERT_EQ(Write(key.c_str(), value), SM_STATUS_OK);
            ASSERT_EQ(Get(), file) << i << " " << key;
        }
    }
    EXPECT_EQ(Others(), 0);
}

} // namespace
