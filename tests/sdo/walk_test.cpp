// The walker: every callback with all its arguments.

#include <gtest/gtest.h>

#include "sdo/objects.h"

namespace {

// What the callbacks were given, a word each:
//   <cookie:kind count/arrayIndex@block   objectBegin, -1 for no index
//   id:bits6And7/bit5/bit4/kind:size@data entry, which gives 100 + id as the cookie of its child
//   /childCookie                          entryEnd
//   >cookie:kind                          objectEnd
// Pointers are offsets in the block that is walked.
struct Log {
    const Bytes *block;
    std::string answered = ""; // the word that is answered with 99; all others with 0
    std::string text = "";

    uint32_t Note(const auto &...parts)
    {
        const std::string word = Text(parts...);
        text += word + ' ';
        return word == answered ? 99 : SM_STATUS_OK;
    }
};

uint32_t ObjectBegin(void *context, uint64_t cookie, uint16_t isArray, uint32_t count, uint32_t arrayIndex,
                     const SMSDOBinary *block)
{
    auto *log = static_cast<Log *>(context);
    return log->Note('<', cookie, isArray == 1 ? ":array" : ":object", count, '/', static_cast<int32_t>(arrayIndex),
                     '@', reinterpret_cast<const uint8_t *>(block) - log->block->data());
}

uint32_t Entry(void *context, uint64_t *childCookieOut, uint16_t id, uint8_t typeBits6And7, uint8_t typeBit5,
               uint8_t typeBit4, uint8_t kind, uint32_t size, const void *data)
{
    auto *log = static_cast<Log *>(context);
    *childCookieOut = 100u + id;
    return log->Note(id, ':', int{typeBits6And7}, '/', int{typeBit5}, '/', int{typeBit4}, '/', int{kind}, ':', size,
                     '@', static_cast<const uint8_t *>(data) - log->block->data());
}

uint32_t EntryEnd(void *context, uint64_t childCookie)
{
    return static_cast<Log *>(context)->Note('/', childCookie);
}

uint32_t ObjectEnd(void *context, uint64_t cookie, uint16_t isArray)
{
    return static_cast<Log *>(context)->Note('>', cookie, isArray == 1 ? ":array" : ":object");
}

uint32_t Walk(Log &log, int16_t recurse, SMSDOEntryEndCallback entryEnd = EntryEnd,
              SMSDOObjectEndCallback objectEnd = ObjectEnd)
{
    return SMSDOBinaryWalk(log.block->data(), &log, ObjectBegin, Entry, entryEnd, objectEnd, recurse);
}

// A value, a nested object, and a nested array whose first element is empty.
const Bytes kObject = Block("'BODS 0300 5500  0100 A5 01 AABB0000  0200 4C 04 1500 1000  0300 1C 04 2000 1D00"
                            "  'BODS 0100 1500 0500 01 04 0500 0800 1111111111"
                            "  'BADS 0200 2000  'BODS 0000 0800  'BODS 0100 1000 0700 01 00 22000000");
const Bytes kArray = Block("'BADS 0200 2800  'BODS 0100 1000 0100 01 00 11000000  'BODS 0100 1000 0200 01 00 22000000");

TEST(SDOWalk, CallsBackInDocumentOrder)
{
    const auto check = [](const Bytes &block, int16_t recurse, uint32_t status, const char *text) {
        Log log{&block};
        EXPECT_EQ(Walk(log, recurse), status) << text;
        EXPECT_EQ(log.text, text);
    };
    check(
        kObject, 1, SM_STATUS_OK,
        "<0:object3/-1@0 1:2/1/0/5:2@12 /101 2:1/0/0/12:21@32 <102:object1/-1@32 5:0/0/0/1:5@48 /105 >102:object /102 "
        "3:0/0/1/12:32@53 <103:array2/-1@53 <103:object1/1@69 7:0/0/0/1:1@81 /107 >103:object >103:array /103 "
        ">0:object ");                                     // the empty element makes no callback
    for (const int16_t recurse : {int16_t{0}, int16_t{2}}) // 1 alone looks inside
        check(kObject, recurse, SM_STATUS_OK,
              "<0:object3/-1@0 1:2/1/0/5:2@12 /101 2:1/0/0/12:21@32 /102 3:0/0/1/12:32@53 /103 >0:object ");
    check(kArray, 0, SM_STATUS_OK, "<0:array2/-1@0 <0:object1/0@8 >0:object <0:object1/1@24 >0:object >0:array ");
    check(Block("'BODS 0000 0800"), 1, SM_STATUS_OK, "");
    check(Bytes(), 1, SM_STATUS_INVALID_PARAMETER, ""); // NULL
    check(Block("'BODS 0100 1800 0100 0C 04 0800 0800 'BOOS 0000 0800"), 1, SM_STATUS_INVALID_PARAMETER,
          "<0:object1/-1@0 1:0/0/0/12:8@16 ");
}

TEST(SDOWalk, AnswersThatEndItAndAnswersThatDoNot)
{
    const auto check = [](const Bytes &block, const char *answered, uint32_t status, const std::string &last,
                          SMSDOEntryEndCallback entryEnd, SMSDOObjectEndCallback objectEnd) {
        Log log{&block, answered};
        EXPECT_EQ(Walk(log, 1, entryEnd, objectEnd), status) << answered;
        EXPECT_TRUE(log.text.ends_with(last + ' ')) << answered << ": " << log.text;
    };
    for (const char *word : {"<0:object3/-1@0", "1:2/1/0/5:2@12", ">102:object", "<103:object1/1@69", ">103:array"})
        check(kObject, word, 99, word, EntryEnd, ObjectEnd);
    check(kObject, "/103", 0, ">0:object", EntryEnd, ObjectEnd);
    check(kObject, "/103", 99, "/103", EntryEnd, nullptr); // the last one counts, those before do not
    check(kObject, "/101", 0, "/103", EntryEnd, nullptr);
    check(kObject, "/105", 99, "/105", EntryEnd, nullptr); // the nested walk has ended with it
    check(kObject, "", 0, "7:0/0/0/1:1@81", nullptr, nullptr);
}

} // namespace
