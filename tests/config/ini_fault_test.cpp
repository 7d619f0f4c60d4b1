// INI calls of which each allocation fails in turn: the status says so, nothing leaks, and a file is as it was or
// wholly changed.

#include <functional>
#include <set>

#include "config/ini_fixture.h"
#include "frame/module.h"
#include "support/faults.h"

namespace {

const std::string kOld = "[s]\ntext=value\nwords=one,two\nflag=TRUE\nnumber=7\nbytes=0x01,0x02\n\n[t]\n; why\nc=3\n";
const std::set<uint32_t> kLookup = {SM_STATUS_FAILED, SM_STATUS_NO_MEMORY};
const std::set<uint32_t> kNoMemory = {SM_STATUS_NO_MEMORY};

class IniFault : public IniFile {
protected:
    // The module starts anew each time: with its records of locks the next call would ask for less.
    void Check(const std::string &name, const std::set<uint32_t> &failures, const std::function<uint32_t()> &call,
               const std::string &changed = kOld, bool isNew = false) const
    {
        int nth = 1;
        for (bool failed = true; failed; ++nth) {
            SCOPED_TRACE(name + ", allocation " + std::to_string(nth));
            std::filesystem::remove_all(folder);
            std::filesystem::create_directory(folder);
            if (!isNew)
                Put(kOld);
            qzvest::SMModuleStop();
            const long before = LiveBlocks();
            qzvest::SMModuleStart();
            FailAllocation(nth);
            const uint32_t status = call();
            failed = StopFault();
            qzvest::SMModuleStop();
            EXPECT_EQ(LiveBlocks(), before);
            qzvest::SMModuleStart();
            if (!failed) {
                EXPECT_EQ(status, SM_STATUS_OK);
                EXPECT_EQ(Get(), changed);
                EXPECT_EQ(Others(), 0);
            } else {
                EXPECT_TRUE(failures.count(status) != 0) << status;
                // What follows finds the lock free; it would be changed by a swap that was left half done.
                EXPECT_EQ(Text("t", "c"), isNew ? Get() == "" ? "<262>" : "<260>" : "3");
                EXPECT_TRUE(isNew ? Get().empty() || Get() == "(missing)" : Get() == kOld) << Get();
            }
        }
        EXPECT_GT(nth, 7) << name; // lock, backup name and what the call is about
    }
};

TEST_F(IniFault, Reads)
{
    static const uint8_t kDefault[] = {9, 9, 9, 9, 9, 9, 9, 9};
    struct {
        const char *section, *key;
        uint32_t type, room; // exactly that of the value
        const std::set<uint32_t> &failures;
    } const cases[] = {
        {"s", "text", INI_TYPE_UTF8, 6, kLookup},     {"s", "bytes", INI_TYPE_BINARY, 2, kLookup},
        {"s", "flag", INI_TYPE_BOOL, 2, kLookup},     {"s", "number", INI_TYPE_UINT32, 4, kLookup},
        {"s", "number", INI_TYPE_DOUBLE, 8, kLookup}, {nullptr, nullptr, INI_TYPE_UTF8, 5, kNoMemory},
        {"s", nullptr, INI_TYPE_UTF8, 30, kNoMemory},
    };
    for (const auto &row : cases) {
        Check(testing::PrintToString(row.key), row.failures, [&] {
            std::vector<uint8_t> dest(row.room);
            uint32_t size = row.room;
            const uint32_t status = SMReadINIPathFileValue(row.section, row.key, row.type, dest.data(), &size, kDefault,
                                                           8, path.c_str(), 1);
            EXPECT_EQ(size, row.room);
            if (status != SM_STATUS_OK && row.type >= INI_TYPE_BOOL) {
                EXPECT_EQ(memcmp(dest.data(), kDefault, row.room), 0);
            }
            return status;
        });
    }
}

TEST_F(IniFault, HeapTextsAndEnums)
{
    Check("heap text", kNoMemory, [this] {
        uint32_t size = 77;
        char *value = SMReadINISectionKeyUTF8Value("s", "text", nullptr, &size, path.c_str(), 1);
        const bool whole = value != nullptr && std::string(value) == "value" && size == 6;
        EXPECT_TRUE(whole || (value == nullptr && size == 0));
        SMFreeGeneric(value);
        return whole ? SM_STATUS_OK : SM_STATUS_NO_MEMORY;
    });
    // The default, or the list could not be split.
    Check("enums", {1, SM_ENUM_UNREADABLE}, [this] {
        static const SMINIEnumEntry kTable[] = {{nullptr, 100}, {"one", 1}, {"two", 2}};
        const uint32_t value = SMReadINIEnums32Value("s", "words", kTable, 3, 1, path.c_str(), 1);
        return value == 3 ? SM_STATUS_OK : value;
    });
}

TEST_F(IniFault, Changes)
{
    static const uint8_t kBytes[] = {0xAA, 0xBB, 0xCC};
    static const int64_t kNumber = -5;
    const auto replaced = [](const std::string &what, const std::string &by) {
        return std::string(kOld).replace(kOld.find(what), what.size(), by);
    };
    struct {
        const char *section, *key;
        uint32_t type;
        const void *value;
        uint32_t size;
        std::string changed;
        bool isNew;
    } const cases[] = {
        {"s", "text", INI_TYPE_UTF8, "new", 4, replaced("text=value", "text=new"), false},
        {"s", "more", INI_TYPE_UTF8, "new", 4, replaced("\n\n[t]", "\nmore=new\n\n[t]"), false},
        {"t", "c", INI_TYPE_UTF8, "4", 2, replaced("c=3", "c=4"), false},
        {"s", "bytes", INI_TYPE_BINARY, kBytes, 3, replaced("0x01,0x02", "0xAA,0xBB,0xCC"), false},
        {"s", "number", INI_TYPE_INT64, &kNumber, 8, replaced("number=7", "number=-5"), false},
        {"s", "flag", INI_TYPE_UTF8, nullptr, 0, replaced("flag=TRUE\n", ""), false},
        {"s", nullptr, INI_TYPE_UTF8, nullptr, 0, kOld.substr(kOld.find("[t]")), false},
        {"u", "d", INI_TYPE_UTF8, "4", 2, kOld + "\n[u]\nd=4\n", false},
        {"u", "d", INI_TYPE_UTF8, "4", 2, "[u]\nd=4\n", true},
    };
    for (const auto &row : cases) {
        const auto write = [&] {
            return SMWriteINIPathFileValue(row.section, row.key, row.type, row.value, row.size, path.c_str(), 1);
        };
        Check("to " + row.changed, row.type == INI_TYPE_BINARY ? kLookup : kNoMemory, write, row.changed, row.isNew);
    }
}

} // namespace
