#include "config/registration.h"

#include <optional>

#include "config/places.h"

namespace {

// Lines have their model in the fuzz target.

using Text = std::optional<std::string>;

Text Read(const char *key, const char *defaultText = nullptr)
{
    const qzvest::HeapPtr<char> text(qzvest::SMRegistrationKeyRead(key, defaultText));
    return text ? Text(text.get()) : std::nullopt;
}

// What does not fit a block is read again from the beginning.
TEST(Registration, KeysOfALargeFileComeInAnyOrder)
{
    WriteText("/run/file", "j=first\n" + std::string(100000, '\n') + "k=last\n");
    qzvest::RegistrationFile file("/run/file");
    for (const auto &[key, expected] : {std::pair{"k", "last"}, {"j", "first"}, {"k", "last"}}) {
        qzvest::HeapPtr<char> value;
        ASSERT_EQ(file.Read(key, value), SM_STATUS_OK);
        EXPECT_STREQ(value.get(), expected);
    }
}

TEST(Registration, FileIsChosenOnce)
{
    WriteText(kRegistrationFile + std::string("/folder"), ""); // opens, but cannot be read
    Reattach();
    EXPECT_EQ(Read("k", "default"), "default");
    std::filesystem::remove_all(kRegistrationFile);
    Reattach();
    WriteText(kSecondRegistrationFile, "k=second\n");
    EXPECT_EQ(Read("k", "default"), "default"); // not looked for again
    EXPECT_EQ(Read("k"), std::nullopt);
    Reattach();
    WriteText(kRegistrationFile, "k=\n");
    EXPECT_EQ(Read("k"), "second");
    Reattach();
    EXPECT_EQ(Read("k", "default"), "");
    EXPECT_EQ(Read("other", "default"), "default"); // one file, never both
    WriteText(kRegistrationFile, "k=new\n");
    EXPECT_EQ(Read("k"), "new");
}

} // namespace
