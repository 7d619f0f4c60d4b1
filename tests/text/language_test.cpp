#include "text/language.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(Language, NamesAndIDsMatchWholeAndInCase)
{
    const struct {
        const char *lang; // NULL: unset
        uint32_t id;
        const char *name;
    } cases[] = {
        {"es", 1034, "es"},       {"de", 1031, "de"},       {"en_US", 1033, "en_US"},   {"en_GB", 2057, "en_GB"},
        {"fr", 1036, "fr"},       {"ja", 1041, "ja"},       {"ko", 2066, "ko"},         {"pt_BR", 1046, "pt_BR"},
        {"zh", 2052, "zh"},       {"zh_TW", 1028, "zh_TW"}, {nullptr, 1033, "en_US"},   {"", 1033, "en_US"},
        {"C", 1033, "en_US"},     {"DE", 1033, "en_US"},    {"de_DE", 1033, "en_US"},   {"de.UTF-8", 1033, "en_US"},
        {"zh_CN", 1033, "en_US"}, {"POSIX", 1033, "en_US"}, {"fr@euro", 1033, "en_US"},
    };
    for (const auto &c : cases) {
        if (c.lang != nullptr)
            setenv("LANG", c.lang, 1);
        else
            unsetenv("LANG");
        EXPECT_EQ(qzvest::SMGetLocalLanguageID(), c.id) << c.lang;
        char *name = qzvest::LocalLanguageNameDup();
        EXPECT_STREQ(name, c.name);
        std::free(name);
    }
    int32_t found = 5;
    EXPECT_EQ(qzvest::LanguageNameToID("", &found), 1033u);
    EXPECT_EQ(found, -1);
    EXPECT_EQ(qzvest::LanguageNameToID("en_US", &found), 1033u);
    EXPECT_EQ(found, 0);
    EXPECT_STREQ(qzvest::LanguageIDToName(1042), "en_US");
}

} // namespace
