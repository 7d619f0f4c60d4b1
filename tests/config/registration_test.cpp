#include "config/registration.h"

#include <optional>

#include "config/places.h"

namespace {

using Text = std::optional<std::string>;

Text Owned(char *text)
{
    const qzvest::HeapPtr<char> owner(text);
    return text != nullptr ? Text(text) : std::nullopt;
}

Text Read(const char *key, const char *defaultText = nullptr)
{
    return Owned(qzvest::SMRegistrationKeyRead(key, defaultText));
}

TEST(Registration, LinesGiveKeysAndValues)
{
    const std::string full(8450, ' '); // as much as a line has; what follows is a line of its own
    const std::string zero(1, '\0');
    const struct {
        std::string file;
        const char *key;
        Text value;
    } cases[] = {{" \tk= \tv \t\n", "k", "v"},
                 {"kk=v\nk =w\n", "k", {}},
                 {"k=first\nk=second\n", "k", "first"},
                 {";k=v\n  #k=w\n \t;k=x\nk=y\n", "k", "y"},
                 {"[k]\nk\nk=v\n", "k", "v"},
                 {"k =v\n", "k ", "v"},
                 {"k= \t \nk=v\n", "k", ""},
                 {"k=v\r\n", "k", "v\r"},
                 {"k=v " + zero + "w\nj=" + zero + "\n", "k", "v"},
                 {full.substr(4) + "k=vw\n", "k", "vw"},
                 {full.substr(3) + "k=vw\n", "k", "v"},
                 {full + "k=v\n", "k", "v"}};
    for (const auto &c : cases) {
        WriteText("/run/file", c.file);
        qzvest::HeapPtr<char> value;
        const uint32_t status = qzvest::RegistrationFileKeyRead("/run/file", c.key, value);
        EXPECT_EQ(status, c.value ? SM_STATUS_OK : SM_STATUS_NOT_FOUND) << c.file;
        EXPECT_EQ(Owned(value.release()), c.value) << c.file;
    }
    qzvest::HeapPtr<char> value;
    EXPECT_EQ(qzvest::RegistrationFileKeyRead("/run", "k", value), SM_STATUS_NOT_FOUND);
}

TEST(Registration, FileIsChosenOnce)
{
    Reattach();
    EXPECT_EQ(Read("k", "default"), "default");
    EXPECT_EQ(Read("k"), std::nullopt);
    WriteText(kSecondRegistrationFile, "k=second\n");
    EXPECT_EQ(Read("k", "default"), "default"); // not looked for again
    Reattach();
    EXPECT_EQ(Read("k", "default"), "second");
    WriteText(kRegistrationFile, "k=\n");
    EXPECT_EQ(Read("k"), "second");
    Reattach();
    EXPECT_EQ(Read("k", "default"), "");
    EXPECT_EQ(Read("other", "default"), "default"); // one file, never both
    std::filesystem::remove(kRegistrationFile);
    EXPECT_EQ(Read("k", "default"), "default");
    WriteText(kRegistrationFile, "k=new\n");
    EXPECT_EQ(Read("k"), "new");
}

} // namespace
