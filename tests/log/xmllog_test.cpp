// The XML log, byte for byte against a model of it.

#include "log/xmllog.h"

#include <vector>

#include "log/logs.h"

namespace {

uint32_t Append(const Event &event = {}, uint32_t limit = UINT32_MAX, const std::string &path = kXML)
{
    return qzvest::SMAppendToXMLLog(path.c_str(), event.type, event.category, event.id, event.user, event.source,
                                    event.description, event.link, event.data.empty() ? nullptr : event.data.data(),
                                    static_cast<uint32_t>(event.data.size()), limit);
}

using XMLLog = Logs;

TEST_F(XMLLog, IsOneDocumentAfterEachEvent)
{
    const std::string longText(8191, 'd'), longInfo(511, 'i'), longLink(9000, '&');
    std::string inside, longLinkInFile;
    for (size_t i = 0; i < longLink.size(); ++i)
        longLinkInFile += "&amp;";
    const Event events[] = {
        {},
        {0, 1, 0, nullptr, nullptr, nullptr, nullptr},
        {65535, 6, 4294967295, "u", "s", "d", "", std::string("\0\x0f\xff", 3)},
        {3, 2, 1, "u", "s", "d", "a&b<c>&amp;'\"&#65;", "x", "a&amp;b&lt;c&gt;&amp;&apos;&quot;&amp;#65;"},
        {4, 5, 2, longInfo.c_str(), longInfo.c_str(), longText.c_str(), longLink.c_str(), std::string(32768, '\xA5'),
         longLinkInFile},
        {4, 4, 3, "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"},
        {2, 3, 7, "u", "s", "a<b&c"}, // markup as it stands
    };
    for (const Event &event : events) {
        ASSERT_EQ(Append(event), SM_STATUS_OK);
        inside += Entry(event);
        ASSERT_EQ(ReadText(kXML), kHead + inside + kTail);
    }
    EXPECT_EQ(ModeOf(kXML), 0664u);
}

TEST_F(XMLLog, RefusesAndWritesNothing)
{
    const std::string longText(8192, 'd'), longInfo(512, 'i'), longData(32769, 'x');
    const std::tuple<uint32_t, Event, std::string> cases[] = {
        {2, {1, 1, 1, longInfo.c_str(), "s", "d"}, kXML},
        {2, {1, 1, 1, "u", "", "d"}, kXML},
        {2, {1, 1, 1, "u", "s", longText.c_str()}, kXML},
        {2, {1, 1, 1, "u", "s", "d", nullptr, longData}, kXML},
        {2, {1, 7, 1, "", "s", "d"}, kXML}, // the arguments come first
        {SM_STATUS_FAILED, {1, 0, 1, "u", "s", "d"}, kXML},
        {SM_STATUS_FAILED, {1, 7, 1, "u", "s", "d"}, kXML},
        {SM_STATUS_FAILED, {}, kBase + "/none/log/x.xml"},
        {SM_STATUS_FAILED, {}, kBase},
    };
    for (const auto &[status, event, path] : cases) {
        EXPECT_EQ(Append(event, 0, path), status) << path;
        EXPECT_EQ(ReadText(kXML), kMissing);
    }
    EXPECT_EQ(qzvest::SMAppendToXMLLog(kXML.c_str(), 1, 1, 1, "u", "s", "d", "", nullptr, 1, 0), 2u);
    EXPECT_EQ(qzvest::SMForceXMLLogExists(kXML.c_str(), 1), SM_STATUS_OK);
    fs::remove_all(kLocks);
    EXPECT_EQ(Append(), SM_STATUS_FAILED);
    EXPECT_EQ(ReadText(kXML), kMissing);
}

TEST_F(XMLLog, FindsTheLastClosingTagBehindTheDeclaration)
{
    const auto x = [](size_t count) { return std::string(count, 'x'); };
    std::vector<std::pair<std::string, std::string>> cases = {
        // what stands in front of the new entry; kMissing: damaged
        {kTail + x(26), kHead},
        {x(38), kMissing},
        {x(37) + kTail + x(5000), kMissing}, // one byte too far in front
        {x(38) + kTail + x(50), x(38)},
        {kHead + kTail + "behind" + kTail + " ", kHead + kTail + "behind"},
        {kHead + kTail + x(20000), kHead},
        {kHead + kTail.substr(0, 10), kMissing},
    };
    for (size_t filler = 4080; filler <= 4100; ++filler) // however the file may be read in pieces
        cases.emplace_back(kHead + x(3) + kTail + x(filler), kHead + x(3));
    for (const auto &[before, kept] : cases) {
        SCOPED_TRACE(before.substr(0, 100) + " of " + std::to_string(before.size()));
        WriteText(kXML, before);
        const bool damaged = kept == kMissing;
        ASSERT_EQ(Append(), damaged ? SM_STATUS_BAD_FORMAT : SM_STATUS_OK);
        const std::string text = kept + Entry({}) + kTail;
        ASSERT_EQ(ReadText(kXML), damaged ? before : text + before.substr(std::min(text.size(), before.size())));
    }
}

TEST_F(XMLLog, MovesToItsBackupAtTheBoundary)
{
    const std::string one = Entry({}), full = kHead + one + one + kTail,
                      anew = kHead + Entry({4, 1, 1, "someone", "here", "Log backup created"}) + one;
    const auto limit = static_cast<uint32_t>(full.size());
    WriteText(kXML, kHead + one + kTail);
    chmod(kXML.c_str(), 05640); // the set-user-id bit does not stay
    WriteText(kXMLBackup, "an older one");
    ASSERT_EQ(Append({}, limit + 1), SM_STATUS_OK);
    EXPECT_EQ(ReadText(kXML), full);
    EXPECT_EQ(ReadText(kXMLBackup), "an older one");

    ASSERT_EQ(Append({}, limit + static_cast<uint32_t>(one.size())), SM_STATUS_OK);
    EXPECT_EQ(ReadText(kXML), anew + kTail);
    EXPECT_EQ(ReadText(kXMLBackup), full);
    EXPECT_EQ(ModeOf(kXML), 01640u);

    fs::remove(kXMLBackup); // cannot be backed up, and grows
    fs::create_directories(kXMLBackup + "/inside");
    ASSERT_EQ(Append({}, 0), SM_STATUS_OK);
    EXPECT_EQ(ReadText(kXML), anew + one + kTail);

    fs::remove_all(kXMLBackup); // a damaged log moves like any other
    WriteText(kXML, "damaged, and no document at all, whatever its length");
    ASSERT_EQ(Append({}, 1), SM_STATUS_OK);
    EXPECT_EQ(ReadText(kXML), anew + kTail);
}

TEST_F(XMLLog, AFullDiskIsTold)
{
    const std::string whole = kHead + Entry({}) + kTail;
    const std::tuple<std::string, size_t, bool> cases[] = {
        {"", 0, true}, // is taken by the next event
        {"", 38, false},
        {"", whole.size() - 1, false},
        {whole, whole.size() - 11, true}, // the old tag still stands
        {whole, whole.size(), false},
    };
    for (const auto &[before, room, isWhole] : cases) {
        SCOPED_TRACE(std::to_string(before.size()) + ", room " + std::to_string(room));
        WriteText(kXML, before);
        EXPECT_EQ(InRoom(room, [] { return Append(); }), SM_STATUS_LIMIT_REACHED);
        const std::string left = ReadText(kXML);
        EXPECT_EQ(left.size(), std::max(before.size(), room));
        EXPECT_EQ(Append(), isWhole ? SM_STATUS_OK : SM_STATUS_BAD_FORMAT);
        EXPECT_EQ(ReadText(kXML), !isWhole ? left : before.empty() ? whole : kHead + Entry({}) + Entry({}) + kTail);
    }
}

} // namespace
