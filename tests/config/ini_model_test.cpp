// The library against the model, byte for byte, over odd files and long sequences of changes.

#include <random>

#include "config/ini_fixture.h"
#include "config/ini_model.h"
#include "support/soak.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kFiles = 150;
#else
constexpr int kFiles = 1000;
#endif
constexpr int kChangesPerFile = 5;
constexpr int kReadsPerChange = 4;
constexpr char kFiller = '\x5A';

class IniModel : public IniFile {
protected:
    uint32_t Below(uint32_t bound)
    {
        return static_cast<uint32_t>(random_() % bound);
    }

    std::string Soup(uint32_t bound)
    {
        static const char kBytes[] = "[[]]==;#ab\t \r\n"; // the terminator is one of them
        std::string soup;
        for (uint32_t left = Below(bound); left > 0; --left)
            soup += kBytes[Below(sizeof kBytes)];
        return soup;
    }

    std::string Name()
    {
        static const char *const kNames[] = {"a", "b", "a", "b", "", "a ", "A", ";a", "a#", "a]", "a\r", "[a", " a"};
        return Below(40) == 0 ? std::string(255 + Below(3), 'n') : kNames[Below(std::size(kNames))];
    }

    std::string Blanks()
    {
        static const char *const kBlanks[] = {"", "", "", "", " ", "\t", " \t "};
        return kBlanks[Below(std::size(kBlanks))];
    }

    std::string Line()
    {
        const uint32_t kind = Below(24);
        if (kind < 5)
            return Blanks() + "[" + Name() + "]" + (Below(6) == 0 ? Soup(6) : "");
        if (kind < 8)
            return Blanks() + (Below(2) == 0 ? ";" : "#") + Soup(8);
        if (kind < 11)
            return Blanks();
        if (kind == 11)
            return Blanks() + Name();
        if (kind == 12)
            return Soup(12);
        if (kind == 13)
            return Below(3) == 0 ? Blanks() + "[" + Name() : LongLine();
        return Blanks() + Name() + "=" + Soup(8);
    }

    // Of about the limit, and what looks like a line behind it.
    std::string LongLine()
    {
        std::string line = Below(3) == 0 ? Soup(6) : Blanks() + Name() + "=";
        line.resize(std::max<size_t>(line.size(), 8447 + Below(5)), Below(2) == 0 ? ' ' : 'v');
        return line + (Below(3) == 0 ? "[a]" : Below(2) == 0 ? "a=1" : "");
    }

    std::string Content()
    {
        std::string content;
        for (uint32_t lines = Below(20); lines > 0; --lines)
            content += Line() + (Below(8) == 0 ? "\r\n" : "\n");
        if (!content.empty() && Below(4) == 0)
            content.pop_back(); // a torn last line
        return content;
    }

    void CompareValue(const std::string &section, const std::string &key)
    {
        const inimodel::Value value = inimodel::Read(content_, section, key);
        const auto need = static_cast<uint32_t>(value.text.size() + 1);
        const uint32_t room = Below(2) == 0 ? std::max<uint32_t>(need - Below(2), 1) : 1 + Below(40);
        const char *const fallback = Below(3) == 0 ? nullptr : "dddd";
        const uint32_t givenSize = Below(6), fallbackSize = fallback != nullptr ? givenSize : 0;
        std::string expected(room, kFiller);
        uint32_t expectedSize = need;
        uint32_t status = value.status;
        if (status == SM_STATUS_OK && need <= room) {
            expected.replace(0, need, value.text.c_str(), need);
        } else if (status == SM_STATUS_OK) {
            status = SM_STATUS_BUFFER_TOO_SMALL;
        } else if (!exists_) {
            status = SM_STATUS_INI_OPEN_FAILED;
            expectedSize = room;
        } else {
            expectedSize = std::min(room, fallbackSize);
            expected.replace(0, expectedSize, "dddd", expectedSize);
            expected[expectedSize > 0 ? expectedSize - 1 : 0] = '\0';
        }
        std::vector<char> dest(room, kFiller); // as large as it is said to be, for the address sanitizer
        uint32_t size = room;
        ASSERT_EQ(SMReadINIPathFileValue(section.c_str(), key.c_str(), INI_TYPE_UTF8, dest.data(), &size, fallback,
                                         givenSize, path.c_str(), 1),
                  status);
        ASSERT_EQ(size, expectedSize);
        ASSERT_EQ(std::string(dest.data(), room), expected);
    }

    void CompareList(const char *section)
    {
        const inimodel::Names list =
            section != nullptr ? inimodel::ListKeys(content_, section) : inimodel::ListSections(content_);
        uint32_t need = 0;
        inimodel::Packed(list, 0, need);
        const uint32_t room = std::max<uint32_t>(Below(2) == 0 ? need + 1 - Below(3) : Below(40), 1);
        const inimodel::Value packed = inimodel::Packed(list, room, need);
        std::vector<char> dest(room, kFiller);
        uint32_t size = room;
        const uint32_t status =
            SMReadINIPathFileValue(section, nullptr, INI_TYPE_UTF8, dest.data(), &size, "d", 2, path.c_str(), 1);
        ASSERT_EQ(status, !exists_ ? SM_STATUS_INI_OPEN_FAILED : room < 2 ? SM_STATUS_BAD_ARGUMENT : packed.status);
        if (status == SM_STATUS_OK || status == SM_STATUS_BUFFER_TOO_SMALL) {
            ASSERT_EQ(size, need);
            ASSERT_EQ(std::string(dest.data(), packed.text.size()), packed.text);
        }
    }

    void CompareReads()
    {
        for (int i = 0; i < kReadsPerChange; ++i)
            ASSERT_NO_FATAL_FAILURE(CompareValue(Name(), Name()));
        ASSERT_NO_FATAL_FAILURE(CompareList(nullptr));
        ASSERT_NO_FATAL_FAILURE(CompareList(Name().c_str()));
    }

    void CompareChange()
    {
        const std::string section = Name(), key = Name(), text = Below(4) == 0 ? Soup(8).c_str() : "new";
        const uint32_t kind = Below(10);
        const char *const keyOrNull = kind == 0 || kind == 9 ? nullptr : key.c_str();
        const char *const value = kind < 3 ? nullptr : text.c_str();
        const std::string before = content_;
        const bool isTooLong = section.size() > 255 || (keyOrNull != nullptr && key.size() > 255);
        const uint32_t status =
            isTooLong ? SM_STATUS_BAD_ARGUMENT : inimodel::Write(exists_, content_, section.c_str(), keyOrNull, value);
        SCOPED_TRACE("section \"" + section + "\" key \"" + (keyOrNull != nullptr ? key : "NULL") + "\" value \"" +
                     (value != nullptr ? value : "NULL") + "\" file:\n" + before);
        ASSERT_EQ(Set(section.c_str(), keyOrNull, value), status);
        if (isTooLong)
            return; // refused before the file, or a backup, is looked at
        ASSERT_EQ(Get(), exists_ ? content_ : "(missing)");
        ASSERT_EQ(Others(), status == SM_STATUS_INI_BAD_SECTION ? 1 : 0);
        for (const auto &entry : std::filesystem::directory_iterator(folder)) { // the temporary file
            if (entry.path() != path)
                std::filesystem::remove(entry.path());
        }
    }

    std::mt19937 random_{static_cast<unsigned>(FromEnvironment("QZVEST_SEED", 4711))};
    std::string content_;
    bool exists_ = false;
};

TEST_F(IniModel, AgreesOnOddFilesAndSequencesOfChanges)
{
    const int files = kFiles * FromEnvironment("QZVEST_SOAK", 1);
    for (int file = 0; file < files && !HasFatalFailure(); ++file) {
        SCOPED_TRACE(file);
        unlink(path.c_str());
        content_ = Content();
        exists_ = Below(20) != 0;
        if (exists_)
            Put(content_);
        else
            content_.clear();
        for (int change = 0; change < kChangesPerFile; ++change) {
            ASSERT_NO_FATAL_FAILURE(CompareReads()) << content_;
            if (Below(16) == 0) { // a crash between the renames, which the next call repairs, whatever it is
                content_ = Content();
                exists_ = true;
                Put(path + ".bak", content_);
                if (Below(2) == 0) {
                    ASSERT_NO_FATAL_FAILURE(CompareReads()) << content_;
                }
            }
            ASSERT_NO_FATAL_FAILURE(CompareChange());
        }
        ASSERT_NO_FATAL_FAILURE(CompareReads()) << content_;
    }
    std::printf("COUNT INI files beside the model: %d files, %d changes\n", files, files * kChangesPerFile);
}

} // namespace
