// Messages from a table of the caller's, and from the suite's own with its band of moved ids.

#include "config/ini_fixture.h"

namespace {

constexpr uint32_t kGerman = 1031;

class StringId : public IniFile {
protected:
    void SetUp() override
    {
        IniFile::SetUp();
        std::filesystem::create_directory(folder + "/ini");
        SetIniPath();
        path = folder + "/ini/qzsdst64.ini";
    }

    void PutTable(const std::string &defaults, const std::string &others = "") const
    {
        Put("[ASCII EN_US DEFAULT STRING ID SECTION]\n" + defaults + "[MISCELLANEOUS STRING ID SECTION]\n" + others);
    }

    // What is in the room, one unit more than there is, after the call.
    static std::u16string Suite(uint32_t id, uint32_t room, uint32_t &size)
    {
        std::u16string text(room / 2 + 1, u'*');
        size = room;
        EXPECT_EQ(SMGetUCS2StrFromID(id, nullptr, reinterpret_cast<uint16_t *>(text.data()), &size), size);
        EXPECT_EQ(text.back(), u'*');
        return text;
    }
    static std::u16string Suite(uint32_t id)
    {
        uint32_t size;
        return Suite(id, 4096, size).c_str();
    }

    static void PutBand(const std::string &lines)
    {
        Put(folder + "/ini/qzisdy64.ini", "[OEM Configuration]\n" + lines);
    }
};

TEST_F(StringId, LanguagesFallBackToTheDefault)
{
    const std::string most(2047, 'm');
    PutTable("0:1=One\r\n0:3=Three\n0:4=" + most + "\n409:1=never\n",
             "407:1=Eins\r \n407:3=" + most + "x\n407:FFFFFFFF=letzter\n409:1=never\n1B5:1=never\n0:9=never\n");
    // With the text, empty where nothing is delivered, and the language afterwards.
    const std::tuple<uint32_t, uint32_t, uint32_t, std::string, uint32_t> kCases[] = {
        {1, kGerman, 5, "Eins", kGerman}, {1, kGerman, 4, "", kGerman}, {0xFFFFFFFF, kGerman, 2048, "letzter", kGerman},
        {3, kGerman, 2048, "Three", 0}, // its own is too long
        {4, kGerman, 2048, most, 0},      {1, 437, 2048, "One", 0},     {1, 1033, 2048, "One", 0},
        {1, 0, 2048, "One", 0},           {9, kGerman, 2048, "", 0},
    };
    for (auto [id, language, size, expected, languageAfter] : kCases) {
        char text[2048] = "*";
        const uint32_t count = SMGetUTF8StrFromIDPathFile(id, &language, path.c_str(), text, &size);
        EXPECT_EQ(count, expected.empty() ? 0 : expected.size() + 1) << id;
        EXPECT_EQ(size, count);
        EXPECT_EQ(text, count != 0 ? expected : "*");
        EXPECT_EQ(language, languageAfter) << id;
    }
    uint32_t size = 8;
    EXPECT_EQ(SMGetUTF8StrFromIDPathFile(1, nullptr, path.c_str(), nullptr, nullptr), 4u);
    EXPECT_EQ(SMGetUTF8StrFromIDPathFile(1, nullptr, path.c_str(), nullptr, &size), 0u);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(SMGetUTF8StrFromIDPathFile(1, nullptr, nullptr, nullptr, nullptr), sizeof "Invalid Path File Name");
}

TEST_F(StringId, SuiteTextsAreUCS2)
{
    PutTable("0:1=\xC3\xA9t\xC3\xA9\n0:2=" + std::string(1023, 'm') + "\n0:3=" + std::string(1024, 'm') +
                 "\n0:4=\xC3\n0:900=base\n",
             "407:1=Sommer\n");
    EXPECT_EQ(Suite(1), u"\u00e9t\u00e9");
    EXPECT_EQ(Suite(2), std::u16string(1023, u'm'));
    EXPECT_EQ(Suite(3), u"");  // too long
    EXPECT_EQ(Suite(99), u""); // not there
    EXPECT_EQ(Suite(0x900), u"base");
    uint32_t size;
    (void)Suite(4, 64, size); // malformed
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(Suite(1, 12, size), std::u16string(u"\u00e9t\u00e9\0***", 7));
    EXPECT_EQ(size, 8u);
    EXPECT_EQ(Suite(1, 10, size)[0], u'*'); // twice the bytes of UTF-8 are asked for, more than it takes
    EXPECT_EQ(size, 12u);

    uint32_t language = kGerman;
    EXPECT_EQ(SMGetUCS2StrFromID(1, &language, nullptr, &size), sizeof "Sommer");
    EXPECT_EQ(size, sizeof "Sommer");
    uint16_t text;
    EXPECT_EQ(SMGetUCS2StrFromID(2, nullptr, &text, nullptr), 1024u);
    std::filesystem::remove_all(folder); // without a place there is nothing
    EXPECT_EQ(Suite(1, 64, size)[0], u'*');
    EXPECT_EQ(size, 0u);
}

TEST_F(StringId, BandMovesByTheOffset)
{
    PutTable("0:8FF=below\n0:900=base\n0:920=end\n0:921=above\n0:A00=moved base\n0:A20=moved end\n0:A21=never\n");
    for (const char *offset : {"256", "0"}) { // the others have their defaults, and no band is read again
        PutBand(std::string("offset=") + offset + "\n");
        EXPECT_EQ(Suite(0x8FF), u"below");
        EXPECT_EQ(Suite(0x900), u"moved base");
        EXPECT_EQ(Suite(0x920), u"moved end");
        EXPECT_EQ(Suite(0x921), u"above");
    }
}

TEST_F(StringId, BandAtZeroIsReadAgain)
{
    PutTable("0:0=zero\n0:1=one\n0:2=two\n");
    const std::tuple<const char *, uint32_t, const char16_t *> steps[] = {
        {"BaseID=0\noemRange=0\noffset=1\n", 0, u"one"},
        {"BaseID=0\noemRange=0\n", 0, u"one"}, // keeps the offset
        {"BaseID=1\noemRange=0\noffset=1\n", 1, u"two"},
        {"BaseID=0\noemRange=0\noffset=2\n", 0, u"zero"}};
    for (const auto &[band, id, text] : steps) {
        PutBand(band);
        EXPECT_EQ(Suite(id), text) << band;
    }
}

} // namespace
