#include <gtest/gtest.h>
#include <qzvest/module.h>
#include <qzvest/product.h>

#include <cstring>
#include <optional>
#include <thread>
#include <vector>

#include "config/places.h"

namespace {

constexpr uint32_t kBroker = 34;
constexpr uint32_t kUnknownProduct = 7;

std::string Told(uint32_t status, uint32_t size, const std::string &path = "")
{
    return std::to_string(status) + ", " + std::to_string(size) + " \"" + path + '"';
}

std::string Found(const std::string &path)
{
    return Told(SM_STATUS_OK, static_cast<uint32_t>(path.size() + 1), path);
}

std::string Ask(uint32_t product, uint32_t type, uint32_t size = 256)
{
    std::vector<char> dest(size + 1, 'x'); // one byte more: it is cleared whatever its size
    const uint32_t status = SMGetPathByProductIDandType(product, type, dest.data(), &size);
    return Told(status, size, dest.data());
}

std::optional<std::string> Owned(char *text)
{
    if (text == nullptr)
        return std::nullopt;
    std::string copy = text;
    SMFreeGeneric(text);
    return copy;
}

class ProductPath : public testing::Test {
protected:
    ProductPath()
    {
        for (const char *name : {"gaugeworkinstallpath", "GAUGEWORKINSTALLPATH", "HMRQINSTALLPATH"})
            unsetenv(name);
        for (const char *folder : {"g", "g/var", "h", "log", "low", "p", "q", "up"})
            std::filesystem::create_directories(std::string("/run/") + folder);
    }

    static void Register(const std::string &text)
    {
        WriteText(kRegistrationFile, text);
        Reattach();
    }
};

TEST_F(ProductPath, FileGivesEachType)
{
    Register("Gaugework.installpath=/run/g/\n"
             "Gaugework.vardatapath=/run/g/var//\n"
             "Gaugework.logpath=/run/log\n"
             "Gaugework.configtool = /run/h\n"
             "gaugework.configtool=/run/h\n"
             "Gaugework.configtool=/run/p\n"
             "Gaugework.inipath=/run/q\n"
             "Gaugework.binpath=/run/up\n"
             "VKRecordBroker.installpath=/run\n"
             "zorb.binpath=/run/h\n");
    const struct {
        uint32_t product, type, room;
        std::string answer;
    } cases[] = {{SM_PRODUCT_DEFAULT, SM_PATH_INSTALL, 7, Found("/run/g")},
                 {SM_PRODUCT_DEFAULT, SM_PATH_INSTALL, 6, Told(SM_STATUS_BUFFER_TOO_SMALL, 7)},
                 {SM_PRODUCT_DEFAULT, SM_PATH_VARDATA, 256, Found("/run/g/var/")},
                 {SM_PRODUCT_DEFAULT, SM_PATH_LOG, 256, Found("/run/log")},
                 {SM_PRODUCT_DEFAULT, SM_PATH_CONFIGTOOL, 256, Found("/run/p")},
                 {SM_PRODUCT_DEFAULT, SM_PATH_INI, 256, Found("/run/q")},
                 {SM_PRODUCT_DEFAULT, SM_PATH_BIN, 256, Found("/run/up")},
                 {SM_PRODUCT_DEFAULT, 32, 256, Found("/run/g")},
                 {kBroker, SM_PATH_VARDATA, 256, Found("/run")},
                 {44, SM_PATH_BIN, 256, Found("/run/h")},
                 {44, SM_PATH_INSTALL, 256, Told(SM_STATUS_NOT_FOUND, 0)},
                 {SM_PRODUCT_DEFAULT, 6, 256, Told(SM_STATUS_INVALID_PARAMETER, 0)},
                 {kUnknownProduct, 6, 256, Told(SM_STATUS_NOT_FOUND, 256)}};
    for (const auto &c : cases)
        EXPECT_EQ(Ask(c.product, c.type, c.room), c.answer) << c.product << ", " << c.type;
    uint32_t size = 7;
    char path[8] = "x";
    EXPECT_EQ(SMGetInstallPath(nullptr, &size), SM_STATUS_OK);
    EXPECT_EQ(SMGetInstallPath(path, &size), SM_STATUS_OK);
    EXPECT_STREQ(path, "/run/g");
}

TEST_F(ProductPath, EnvironmentGoesBeforeTheFile)
{
    const std::string longest = "/run/" + std::string(250, '/');
    const std::string tooLong = longest + "/";
    const struct {
        const char *lower, *upper; // NULL: unset
        std::string install;
    } cases[] = {{"/run/low", "/run/up", "/run/low"},
                 {"", "/run/up/", "/run/up/"},
                 {nullptr, "", "/run/g"},
                 {longest.c_str(), nullptr, longest},
                 {tooLong.c_str(), "/run/up", "/run/up"}};
    for (const auto &c : cases) {
        c.lower != nullptr ? setenv("gaugeworkinstallpath", c.lower, 1) : unsetenv("gaugeworkinstallpath");
        c.upper != nullptr ? setenv("GAUGEWORKINSTALLPATH", c.upper, 1) : unsetenv("GAUGEWORKINSTALLPATH");
        setenv("Gaugeworkinstallpath", "/run", 1);
        Register("Gaugework.installpath=/run/g\nGaugework.logpath=/run/log/\n");
        EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_INSTALL), Found(c.install));
        EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_LOG), Found("/run/log"));
        EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_BIN), Found(c.install));
    }
}

TEST_F(ProductPath, OneProductAlwaysHasItsPaths)
{
    const std::string tooLong = "/run/" + std::string(251, '/');
    const struct {
        std::string file;
        const char *install, *log;
        const char *environment = "";
    } cases[] = {{"", "/etc", "/etc"},
                 {"hmrq.logpath=/run/log/\n", "/etc", "/run/log"},
                 {"hmrq.installpath=/run/h/\nGaugework.installpath=/run/p/g\n", "/run/h", "/run/h"},
                 {"Gaugework.installpath=/run/p/g/\n", "/run/p", "/run/p"},
                 {"Gaugework.installpath=/run/p/g\nVKRecordBroker.installpath=/run/q//b\n", "/run/q", "/run/q"},
                 {"VKRecordBroker.installpath=/run\n", "/run", "/run"},
                 {"hmrq.installpath=" + tooLong + "\nVKRecordBroker.installpath=" + tooLong +
                      "\nGaugework.installpath=/run/p/g\nhmrq.logpath=" + tooLong + "\n",
                  "/run/p", "/run/p"},
                 {"", "/run/h/", "/etc", "/run/h/"}}; // the file and its chain, whatever the environment says
    for (const auto &c : cases) {
        setenv("HMRQINSTALLPATH", c.environment, 1);
        Register(c.file);
        EXPECT_EQ(Ask(SM_PRODUCT_ANY, SM_PATH_INSTALL), Found(c.install)) << c.file;
        EXPECT_EQ(Ask(SM_PRODUCT_ANY, SM_PATH_LOG), Found(c.log)) << c.file;
    }
}

TEST_F(ProductPath, OnlyWhatIsNotFoundReadsTheFileAgain)
{
    Register("Gaugework.installpath=/run/gone\n");
    WriteText(kRegistrationFile, "Gaugework.installpath=/run\n");
    EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_INSTALL), Told(SM_STATUS_BAD_FORMAT, 0));
    EXPECT_EQ(Ask(kUnknownProduct, SM_PATH_INSTALL), Told(SM_STATUS_NOT_FOUND, 256));
    EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_INSTALL), Found("/run"));

    EXPECT_EQ(Ask(kBroker, SM_PATH_LOG), Told(SM_STATUS_NOT_FOUND, 0));
    WriteText(kRegistrationFile, "VKRecordBroker.logpath=/etc\n");
    EXPECT_EQ(Ask(kBroker, SM_PATH_LOG), Told(SM_STATUS_BUFFER_TOO_SMALL, 5)); // new just now
    EXPECT_EQ(Ask(kBroker, SM_PATH_LOG), Found("/etc"));
    setenv("gaugeworkinstallpath", "/run", 1);
    EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_INSTALL), Told(SM_STATUS_BUFFER_TOO_SMALL, 5));
}

TEST_F(ProductPath, LookUpsOutliveReloads)
{
    Register("Gaugework.installpath=/run\n");
    std::thread reloader([] {
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(Ask(kUnknownProduct, SM_PATH_INSTALL), Told(SM_STATUS_NOT_FOUND, 256));
    });
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_INSTALL), Found("/run"));
    reloader.join();
}

TEST(Product, NamesAndNumbers)
{
    const std::pair<const char *, uint32_t> cases[] = {
        {"hmrq", SM_PRODUCT_ANY}, {"tlvw", 33},     {"VKRecordBroker", kBroker}, {"zorb", 44}, {"mq7t", 88},
        {"vestlib", 45},          {"Gaugework", 35}};
    for (const auto &[shortId, number] : cases) {
        EXPECT_EQ(SMProductSIDToID(shortId), number);
        EXPECT_EQ(Owned(SMProductIDToSID(number)), shortId);
    }
    EXPECT_EQ(SMProductSIDToID("vkrecordBROKER"), kBroker);
    for (const char *unknown : {static_cast<const char *>(nullptr), "hmr", "hmrq "})
        EXPECT_EQ(SMProductSIDToID(unknown), 0u);
    EXPECT_EQ(SMProductIDToSID(kUnknownProduct), nullptr);
}

TEST_F(ProductPath, MacroExpandsOnce)
{
    const std::string macro = "@vkinstallpath@";
    const std::string expands = macro + std::string(239, 'a');
    Register("hmrq.installpath=/run/h\n");
    const std::pair<std::string, std::string> cases[] = {{"Plain @vkinstallpath", "Plain @vkinstallpath"},
                                                         {"In @VKInstallPATH@/Sub", "In /run/h/Sub"},
                                                         {"@" + macro + macro, "@/run/h" + macro},
                                                         {expands, "/run/h" + expands.substr(macro.size())}};
    for (const auto &[text, expanded] : cases) {
        const auto need = static_cast<uint32_t>(expanded.size() + 1);
        std::vector<char> dest(need);
        uint32_t size = need;
        EXPECT_EQ(SMExpandVkInstallPathString(text.c_str(), dest.data(), &size), SM_STATUS_OK) << text;
        EXPECT_EQ(dest.data(), expanded);
        EXPECT_EQ(size, need);
        size = need - 1;
        EXPECT_EQ(SMExpandVkInstallPathString(text.c_str(), nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(size, need);
        EXPECT_EQ(SMExpandVkInstallPathString(text.c_str(), nullptr, &size), SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(size, 0u);
    }
    std::filesystem::remove("/run/h");
    const std::string long255 = expands + "a";
    const std::pair<const char *, uint32_t> failures[] = {{long255.c_str(), SM_STATUS_FAILED},
                                                          {nullptr, SM_STATUS_INVALID_PARAMETER},
                                                          {macro.c_str(), SM_STATUS_BAD_FORMAT}};
    for (const auto &[text, status] : failures) {
        char dest[300];
        uint32_t size = sizeof dest;
        EXPECT_EQ(SMExpandVkInstallPathString(text, dest, &size), status);
        EXPECT_EQ(size, 0u);
    }
}

TEST_F(ProductPath, FileNamesAreJoined)
{
    setenv("gaugeworkinstallpath", "/run/", 1);
    Register("Gaugework.logpath=/etc\nVKRecordBroker.installpath=/run/gone\n");
    const struct {
        uint32_t product;
        const char *below, *file;
        std::optional<std::string> path;
    } cases[] = {{SM_PRODUCT_DEFAULT, "sub", "file", "/etc/sub/file"},
                 {SM_PRODUCT_DEFAULT, nullptr, "file", "/etc/file"},
                 {SM_PRODUCT_DEFAULT, "", "", "/etc/"},
                 {SM_PRODUCT_DEFAULT, "sub", nullptr, {}},
                 {kBroker, "sub", "file", {}}};
    for (const auto &c : cases)
        EXPECT_EQ(Owned(SMMakePathFileNameByPIDAndType(c.product, SM_PATH_LOG, c.below, c.file)), c.path);
    EXPECT_EQ(Owned(SMMakePathFileNameByPID(SM_PRODUCT_DEFAULT, "sub/dir", "file")), "/run//sub/dir/file");
}

TEST(LocalizedPath, MostSpecialFileWins)
{
    for (const char *file : {"de/AT/a", "de/a", "a", "de/b", "b", "c", "de/AT/s/a", "en/US/a", "12345678/a"})
        WriteText(std::string("/run/root/texts/") + file, "");
    const struct {
        const char *locale, *below, *file;
        std::string found; // below "/run/root/texts/"; empty: nothing
    } cases[] = {{"de_AT", nullptr, "a", "de/AT/a"}, {"de_AT", nullptr, "b", "de/b"},
                 {"de_AT", nullptr, "c", "c"},       {"de_AT", "s", "a", "de/AT/s/a"},
                 {"de", "", "b", "de//b"},           {"12345678", nullptr, "a", "12345678/a"},
                 {"123456789", nullptr, "a", ""},    {nullptr, nullptr, "a", "en/US/a"}};
    setenv("LANG", "unknown", 1);
    for (const auto &c : cases) {
        const auto found = Owned(SMGetLocalizedPathFileName("/run/root", "texts", c.locale, c.below, c.file));
        EXPECT_EQ(found.value_or(""), c.found.empty() ? "" : "/run/root/texts/" + c.found);
    }
    EXPECT_EQ(SMGetLocalizedPathFileName("/run/root", nullptr, "de", nullptr, "a"), nullptr);
    EXPECT_EQ(SMGetLocalizedPathFileName("/run/root", "texts", "de", nullptr, nullptr), nullptr);
    std::filesystem::current_path("/run/root");
    setenv("LANG", "de", 1);
    EXPECT_EQ(Owned(SMGetLocalizedPathFileName(nullptr, "texts", nullptr, nullptr, "a")), "./texts/de/a");

    // What does not fit is passed over, the room being 256 bytes.
    const std::string root = "/run/root" + std::string(235, '/');
    EXPECT_EQ(Owned(SMGetLocalizedPathFileName(root.c_str(), "texts", "de", nullptr, "a")), root + "/texts/de/a");
    EXPECT_EQ(Owned(SMGetLocalizedPathFileName((root + "/").c_str(), "texts", "de", nullptr, "a")), root + "//texts/a");
}

} // namespace
