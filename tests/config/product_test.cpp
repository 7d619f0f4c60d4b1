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

std::string Told(uint32_t status, size_t size, const std::string &path = "")
{
    return std::to_string(status) + ", " + std::to_string(size) + " \"" + path + '"';
}

std::string Found(const std::string &path)
{
    return Told(SM_STATUS_OK, path.size() + 1, path);
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
             "gaugework.configtool=/run/h\n"
             "Gaugework.configtool=/run/p\n"
             "Gaugework.inipath=/run/q\n"
             "Gaugework.binpath=/run/up\n"
             "VKRecordBroker.installpath=/run\n"
             "zorb.binpath=/run/h\n");
    const std::tuple<uint32_t, uint32_t, uint32_t, std::string> cases[] = {
        {SM_PRODUCT_DEFAULT, SM_PATH_INSTALL, 7, Found("/run/g")},
        {SM_PRODUCT_DEFAULT, SM_PATH_INSTALL, 6, Told(SM_STATUS_BUFFER_TOO_SMALL, 7)},
        {SM_PRODUCT_DEFAULT, SM_PATH_VARDATA, 256, Found("/run/g/var/")},
        {SM_PRODUCT_DEFAULT, SM_PATH_CONFIGTOOL, 256, Found("/run/p")},
        {SM_PRODUCT_DEFAULT, SM_PATH_INI, 256, Found("/run/q")},
        {SM_PRODUCT_DEFAULT, SM_PATH_BIN, 256, Found("/run/up")},
        {SM_PRODUCT_DEFAULT, 32, 256, Found("/run/g")},
        {kBroker, SM_PATH_VARDATA, 256, Found("/run")},
        {44, SM_PATH_BIN, 256, Found("/run/h")},
        {44, SM_PATH_INSTALL, 256, Told(SM_STATUS_NOT_FOUND, 0)},
        {SM_PRODUCT_DEFAULT, 6, 256, Told(SM_STATUS_INVALID_PARAMETER, 0)},
        {kUnknownProduct, 6, 256, Told(SM_STATUS_NOT_FOUND, 256)}};
    for (const auto &[product, type, room, answer] : cases)
        EXPECT_EQ(Ask(product, type, room), answer) << product << ", " << type;
    uint32_t size = 7;
    EXPECT_EQ(SMGetInstallPath(nullptr, &size), SM_STATUS_OK);
}

TEST_F(ProductPath, EnvironmentGoesBeforeTheFile)
{
    const std::string longest = "/run/" + std::string(250, '/');
    const std::tuple<std::string, std::string, std::string> cases[] = {{"/run/low", "/run/up", "/run/low"},
                                                                       {"", "/run/up/", "/run/up/"},
                                                                       {"", "", "/run/g"},
                                                                       {longest, "", longest},
                                                                       {longest + "/", "/run/up", "/run/up"}};
    setenv("Gaugeworkinstallpath", "/run", 1);
    for (const auto &[lower, upper, install] : cases) {
        setenv("gaugeworkinstallpath", lower.c_str(), 1);
        setenv("GAUGEWORKINSTALLPATH", upper.c_str(), 1);
        Register("Gaugework.installpath=/run/g\nGaugework.logpath=/run/log/\n");
        EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_INSTALL), Found(install));
        EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_LOG), Found("/run/log"));
        EXPECT_EQ(Ask(SM_PRODUCT_DEFAULT, SM_PATH_BIN), Found(install));
    }
}

TEST_F(ProductPath, OneProductAlwaysHasItsPaths)
{
    const std::string tooLong = "/run/" + std::string(251, '/');
    const struct {
        std::string file;
        const char *install, *log, *environment = "";
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
    EXPECT_EQ(SMProductSIDToID("hmr") + SMProductSIDToID("hmrq ") + SMProductSIDToID(nullptr), 0u);
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
    char dest[300];
    uint32_t size;
    const auto expand = [&](const std::string &text, size_t room, char *into) {
        size = static_cast<uint32_t>(room);
        const uint32_t status = SMExpandVkInstallPathString(text.c_str(), into, &size);
        return Told(status, size, status == SM_STATUS_OK ? into : "");
    };
    for (const auto &[text, expanded] : cases) {
        const size_t need = expanded.size() + 1;
        EXPECT_EQ(expand(text, need, dest), Found(expanded));
        EXPECT_EQ(expand(text, need - 1, nullptr), Told(SM_STATUS_BUFFER_TOO_SMALL, need));
        EXPECT_EQ(expand(text, need, nullptr), Told(SM_STATUS_INVALID_PARAMETER, 0));
    }
    std::filesystem::remove("/run/h");
    EXPECT_EQ(expand(expands + "a", 300, dest), Told(SM_STATUS_FAILED, 0));
    EXPECT_EQ(expand(macro, 300, dest), Told(SM_STATUS_BAD_FORMAT, 0));
}

TEST_F(ProductPath, FileNamesAreJoined)
{
    setenv("gaugeworkinstallpath", "/run/", 1);
    Register("Gaugework.logpath=/etc\nVKRecordBroker.installpath=/run/gone\n");
    const auto join = [](const char *below, const char *file, uint32_t product = SM_PRODUCT_DEFAULT) {
        return Owned(SMMakePathFileNameByPIDAndType(product, SM_PATH_LOG, below, file));
    };
    EXPECT_EQ(join("sub", "file"), "/etc/sub/file");
    EXPECT_EQ(join(nullptr, "file"), "/etc/file");
    EXPECT_EQ(join("", ""), "/etc/");
    EXPECT_EQ(join("sub", nullptr), std::nullopt);
    EXPECT_EQ(join("sub", "file", kBroker), std::nullopt);
    EXPECT_EQ(Owned(SMMakePathFileNameByPID(SM_PRODUCT_DEFAULT, "sub/dir", "file")), "/run//sub/dir/file");
}

TEST(LocalizedPath, MostSpecialFileWins)
{
    for (const char *file : {"de/AT/a", "de/a", "a", "de/b", "b", "c", "de/AT/s/a", "en/US/a", "12345678/a"})
        WriteText(std::string("/run/root/texts/") + file, "");
    const auto find = [](const std::string &root, const char *locale, const char *below, const char *file) {
        return Owned(SMGetLocalizedPathFileName(root.c_str(), "texts", locale, below, file)).value_or("");
    };
    const struct {
        const char *locale, *below, *file;
        std::string found; // below "/run/root"; empty: nothing
    } cases[] = {{"de_AT", nullptr, "a", "/texts/de/AT/a"},
                 {"de_AT", nullptr, "b", "/texts/de/b"},
                 {"de_AT", nullptr, "c", "/texts/c"},
                 {"de_AT", "s", "a", "/texts/de/AT/s/a"},
                 {"de", "", "b", "/texts/de//b"},
                 {"12345678", nullptr, "a", "/texts/12345678/a"},
                 {"123456789", nullptr, "a", ""},
                 {nullptr, nullptr, "a", "/texts/en/US/a"},
                 {"de", nullptr, nullptr, ""}};
    setenv("LANG", "unknown", 1);
    for (const auto &c : cases)
        EXPECT_EQ(find("/run/root", c.locale, c.below, c.file), (c.found.empty() ? "" : "/run/root") + c.found);
    std::filesystem::current_path("/run/root");
    setenv("LANG", "de", 1);
    EXPECT_EQ(Owned(SMGetLocalizedPathFileName(nullptr, "texts", nullptr, nullptr, "a")), "./texts/de/a");
    EXPECT_EQ(SMGetLocalizedPathFileName(nullptr, "texts", nullptr, nullptr, "none"), nullptr);

    // What does not fit is passed over, the room being 256 bytes.
    const std::string root = "/run/root" + std::string(235, '/');
    EXPECT_EQ(find(root, "de", nullptr, "a"), root + "/texts/de/a");
    EXPECT_EQ(find(root + "/", "de", nullptr, "a"), root + "//texts/a");
}

} // namespace
