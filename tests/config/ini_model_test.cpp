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

class IniModel : public IniFile {
protected:
    uint32_t Below(uint32_t bound)
    {
        return static_cast<uint32_t>(random_() % bound);
    }

    std::string Name()
    {
        static const char *const kNames[] = {"a", "b", "a", "b", "", "a ", "A", ";a", "a#", "a]", "a\r", "[a", " a"};
        return Below(40) == 0 ? std::string(255 + Below(3), 'n') : kNames[Below(std::size(kNames))];
    }

    // Odder lines, long ones and zero bytes come from the fuzz targets.
    std::string Content()
    {
        std::string content;
        for (uint32_t lines = Below(20); lines > 0; --lines) {
            const std::string kLines[] = {
                "[" + Name() + "]", " [" + Name() + "]x", "[b]", "[a",  ";c", "#", "", "\t", "a",
                Name() + "=",       "\t" + Name() + "=1", "a=2", "b=\r"};
            const uint32_t kind = Below(2 * std::size(kLines));
            content += (kind < std::size(kLines) ? kLines[kind] : kLines[kind % 3 * 4 + 2]) + "\n";
        }
        if (!content.empty() && Below(4) == 0)
            content.pop_back(); // a torn last line
        return content;
    }

    // In ample room: the reader's fuzz target gives it any.
    void CompareReads()
    {
        for (int i = 0; i < kReadsPerChange; ++i) {
            const std::string section = Name(), key = Name();
            const inimodel::Value value = inimodel::Read(content_, section, key);
            const bool isFound = value.status == SM_STATUS_OK;
            const uint32_t fallback = Below(6); // bytes of the default
            char dest[9000] = "*";
            uint32_t size = sizeof dest;
            ASSERT_EQ(SMReadINIPathFileValue(section.c_str(), key.c_str(), INI_TYPE_UTF8, dest, &size, "dddd", fallback,
                                             path.c_str(), 1),
                      exists_ ? value.status : SM_STATUS_INI_OPEN_FAILED);
            ASSERT_EQ(size, !exists_ ? sizeof dest : isFound ? value.text.size() + 1 : fallback);
            ASSERT_EQ(dest, !exists_ ? "*" : isFound ? value.text : std::string(fallback > 0 ? fallback - 1 : 0, 'd'));
        }
    }

    void CompareChange()
    {
        const std::string section = Name(), key = Name(), text = Below(4) == 0 ? "1\n[b]" : "new";
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
        for (const auto &entry : std::filesystem::directory_iterator(folder)) // the temporary file
            if (entry.path() != path)
                std::filesystem::remove(entry.path());
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
        exists_ = Below(20) != 0;
        content_ = exists_ ? Content() : "";
        if (exists_)
            Put(content_);
        for (int change = 0; change < kChangesPerFile; ++change) {
            ASSERT_NO_FATAL_FAILURE(CompareReads()) << content_;
            if (Below(16) == 0) { // a crash between the renames, which the next call repairs, whatever it is
                content_ = Content();
                exists_ = true;
                Put(path + ".bak", content_);
                if (Below(2) == 0)
                    CompareReads();
            }
            ASSERT_NO_FATAL_FAILURE(CompareChange());
        }
        ASSERT_NO_FATAL_FAILURE(CompareReads()) << content_;
    }
    std::printf("COUNT INI files beside the model: %d files, %d changes\n", files, files * kChangesPerFile);
}

} // namespace
