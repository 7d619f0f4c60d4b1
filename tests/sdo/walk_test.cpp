// The walker: every callback with all its arguments.

#include <gtest/gtest.h>

#include "sdo/objects.h"

namespace {

// What the callbacks were given, a word each, with pointers as offsets in the block that is walked:
//   begin,cookie,isArray,count,arrayIndex@block                      -1 for no index
//   entry,id,typeBits6And7,typeBit5,typeBit4,kind,size@data          gives 101, 102... as the cookie of its child
//   entryEnd,childCookie
//   end,cookie,isArray
struct Log {
    const Bytes *block;
    std::string answered = ""; // the word that is answered with 99; all others with 0
    std::string text = "";
    uint64_t cookie = 100;
};

const auto kNote = [](void *context, auto... arguments) -> uint32_t {
    auto *log = static_cast<Log *>(context);
    constexpr size_t kCount = sizeof...(arguments);
    std::string word = kCount == 5 ? "begin" : kCount == 8 ? "entry" : kCount == 1 ? "entryEnd" : "end";
    const auto add = [&](auto argument) {
        if constexpr (std::is_same_v<decltype(argument), const void *>)
            word += Text('@', static_cast<const uint8_t *>(argument) - log->block->data());
        else if constexpr (std::is_pointer_v<decltype(argument)>)
            *argument = ++log->cookie;
        else
            word += Text(',', static_cast<int32_t>(argument));
    };
    (add(arguments), ...);
    log->text += word + ' ';
    return word == log->answered ? 99 : SM_STATUS_OK;
};

// A value, a nested object, and a nested array whose first element is empty.
const Bytes kObject = Block("'BODS 0300 5500  0100 A5 01 AABB0000  0200 4C 04 1500 1000  0300 1C 04 2000 1D00"
                            "  'BODS 0100 1500 0500 01 04 0500 0800 1111111111"
                            "  'BADS 0200 2000  'BODS 0000 0800  'BODS 0100 1000 0700 01 00 22000000");
const Bytes kArray = Block("'BADS 0200 2800  'BODS 0100 1000 0100 01 00 11000000  'BODS 0100 1000 0200 01 00 22000000");

TEST(SDOWalk, CallsBackInDocumentOrder)
{
    const auto check = [](const Bytes &block, int16_t recurse, uint32_t status, const char *text) {
        Log log{&block};
        EXPECT_EQ(SMSDOBinaryWalk(block.data(), &log, kNote, kNote, kNote, kNote, recurse), status) << text;
        EXPECT_EQ(log.text, text);
    };
    check(kObject, 1, SM_STATUS_OK,
          "begin,0,0,3,-1@0 entry,1,2,1,0,5,2@12 entryEnd,101 "
          "entry,2,1,0,0,12,21@32 begin,102,0,1,-1@32 entry,5,0,0,0,1,5@48 entryEnd,103 end,102,0 entryEnd,102 "
          "entry,3,0,0,1,12,32@53 begin,104,1,2,-1@53 begin,104,0,1,1@69 entry,7,0,0,0,1,1@81 entryEnd,105 "
          "end,104,0 end,104,1 entryEnd,104 end,0,0 ");    // the empty element makes no callback
    for (const int16_t recurse : {int16_t{0}, int16_t{2}}) // 1 alone looks inside
        check(kObject, recurse, SM_STATUS_OK,
              "begin,0,0,3,-1@0 entry,1,2,1,0,5,2@12 entryEnd,101 entry,2,1,0,0,12,21@32 entryEnd,102 "
              "entry,3,0,0,1,12,32@53 entryEnd,103 end,0,0 ");
    check(kArray, 0, SM_STATUS_OK, "begin,0,1,2,-1@0 begin,0,0,1,0@8 end,0,0 begin,0,0,1,1@24 end,0,0 end,0,1 ");
    check(Block("'BODS 0000 0800"), 1, SM_STATUS_OK, "");
    check(Bytes(), 1, SM_STATUS_INVALID_PARAMETER, ""); // NULL
    check(Block("'BODS 0100 1800 0100 0C 04 0800 0800 'BOOS 0000 0800"), 1, SM_STATUS_INVALID_PARAMETER,
          "begin,0,0,1,-1@0 entry,1,0,0,0,12,8@16 ");
}

TEST(SDOWalk, AnswersThatEndItAndAnswersThatDoNot)
{
    const auto check = [](const std::string &answered, uint32_t status, const std::string &last,
                          SMSDOEntryEndCallback entryEnd, SMSDOObjectEndCallback objectEnd) {
        Log log{&kObject, answered};
        EXPECT_EQ(SMSDOBinaryWalk(kObject.data(), &log, kNote, kNote, entryEnd, objectEnd, 1), status) << answered;
        EXPECT_TRUE(log.text.ends_with(last + ' ')) << answered << ": " << log.text;
    };
    for (const char *word :
         {"begin,0,0,3,-1@0", "entry,1,2,1,0,5,2@12", "end,102,0", "begin,104,0,1,1@69", "end,104,1"})
        check(word, 99, word, kNote, kNote);
    check("entryEnd,104", 0, "end,0,0", kNote, kNote);
    check("entryEnd,104", 99, "entryEnd,104", kNote, nullptr); // the last one counts, those before do not
    check("entryEnd,101", 0, "entryEnd,104", kNote, nullptr);
    check("entryEnd,103", 99, "entryEnd,103", kNote, nullptr); // the nested walk has ended with it
    check("", 0, "entry,7,0,0,0,1,1@81", nullptr, nullptr);
}

} // namespace
