// Every call that allocates, with its first, second, third ... allocation failing until it gets through.

#include <gtest/gtest.h>

#include <tuple>

#include "sdo/objects.h"
#include "support/faults.h"

namespace {

const char *const kArray = "'BADS 0200 2000 'BODS 0000 0800 'BODS 0100 1000 0100 01 00 11000000";
const char *const kFlat = "'BODS 0100 1000 0100 01 00 11000000";

// What the calls work on. All of it has to be as before after a failure.
struct Scene {
    Object object = Make({{1, 1, "11"}, {2, 1, "2222222222"}, {3, 0x0C, kFlat}, {4, 0x0C, kArray}});
    Object nested = Make({{1, 1, "11"}});
    Object other = Make({{1, 1, "1111111111"}});
    SMSDOConfig *const table[2] = {object.get(), nested.get()};
    Bytes block = Flatten(object);
    uint32_t size = 200; // of what is at buffer
    Bytes buffer = Bytes(200);
    SMSDOConfig *rebuilt[2] = {};

    Scene()
    {
        block.resize(200);
    }

    ~Scene()
    {
        for (SMSDOConfig *config : rebuilt)
            SMSDOConfigFree(config);
    }

    auto State() const
    {
        return std::tuple(Flatten(object), Flatten(nested), Flatten(other), block, rebuilt[0], rebuilt[1]);
    }
};

uint32_t Ended(SMSDOConfig *result)
{
    SMSDOConfigFree(result);
    return result != nullptr ? SM_STATUS_OK : SM_STATUS_NO_MEMORY;
}

// What each failing allocation gives: M for no memory, F for the general failure, * for any; the last letter
// stands for the rest too.
struct Step {
    const char *statuses;
    uint32_t (*work)(Scene &s);
};

const Step kSteps[] = {
    {"M", [](Scene &) { return Ended(SMSDOConfigAlloc()); }},
    {"M", [](Scene &s) { return Add(s.object, 9, 1, Block("99")); }},
    {"M", [](Scene &s) { return Add(s.object, 2, 1, Block("99"), 1); }},
    {"M", [](Scene &s) { return Adopt(s.object, 9, 0x0D, {&s.nested}); }},
    {"M", [](Scene &s) { return Adopt(s.object, 3, 0x0D, {&s.nested}, 1); }},
    {"M",
     [](Scene &s) {
         return Adopt(s.object, 9, 0x1D, {&s.nested, &s.other});
     }},
    {"FFFM", [](Scene &s) { return Add(s.object, 9, 0x0C, Block(kFlat)); }},     // three rebuild it, two store it
    {"MMFFFFM", [](Scene &s) { return Add(s.object, 9, 0x0C, Block(kArray)); }}, // table, work buffer, elements
    {"F", [](Scene &s) { return SMSDOConfigToBinary(s.object.get(), s.buffer.data(), &s.size); }},
    {"M", [](Scene &s) { return Ended(SMSDOBinaryToConfig(s.block.data())); }},
    {"M", [](Scene &s) { return Ended(SMSDOConfigClone(s.object.get())); }},
    {"M",
     [](Scene &s) {
         return SMSDOConfigCompareByValue(s.object.get(), s.object.get()) == 1 ? SM_STATUS_OK : SM_STATUS_NO_MEMORY;
     }},
    {"MFFFFM", [](Scene &s) { return SMSDOConfigArrayToBinaryArray(s.table, 2, s.buffer.data(), &s.size); }},
    {"MF", [](Scene &s) { return SMSDOBinaryArrayToConfigArray(Block(kArray).data(), s.rebuilt, &(s.size = 2)); }},
    {"*", [](Scene &s) { return SMSDOBinarySetData(s.block.data(), &s.size, 1, 1, "longer", 6); }},
};

TEST(SDOFailingMemory, ChangesNothing)
{
    for (const Step &step : kSteps) {
        const std::string letters = step.statuses;
        size_t nth = 0;
        for (bool failed = true; failed;) {
            SCOPED_TRACE(Text("step ", &step - kSteps, ", allocation ", ++nth));
            Scene scene;
            const auto before = scene.State();
            const long blocks = LiveBlocks();
            FailAllocation(static_cast<int>(nth));
            const uint32_t status = step.work(scene);
            failed = StopFault();
            const char letter = failed ? letters[std::min(nth, letters.size()) - 1] : ' ';
            EXPECT_TRUE(letter != 'M' || status == SM_STATUS_NO_MEMORY);
            EXPECT_TRUE(letter != 'F' || status == SM_STATUS_FAILED);
            EXPECT_EQ(status == SM_STATUS_OK, !failed);
            EXPECT_TRUE(!failed || (LiveBlocks() == blocks && scene.State() == before));
        }
        EXPECT_GT(nth, letters.size());
    }
}

} // namespace
