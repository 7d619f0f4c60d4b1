// The key registry, as it lies on disk.

#include "ipc/keys.h"

#include "ipc/lock_fixture.h"

namespace {

using qzvest::SMIPCKeyGet;

const std::string kNames = "[Unique String Name Key Section]\n";
const std::string kNumbers = "[Unique Numeric Value Key Section]\n";

using Keys = NamedObjects;

TEST_F(Keys, FirstNamesOfAMachine)
{
    EXPECT_EQ(SMIPCKeyGet("qzvessmpA"), 300001u);
    EXPECT_EQ(SMIPCKeyGet("qzvesevtA"), 300002u);
    const std::string both =
        kNames + "qzvessmpA=300001\nqzvesevtA=300002\n\n" + kNumbers + "300001=qzvessmpA\n300002=qzvesevtA\n";
    EXPECT_EQ(Content(kRegistry), both);
    EXPECT_FALSE(Exists(kRegistry + "Sem")) << "a name for the lock, not a file";
    for (const mode_t mode : {0444, 0}) { // readers find what there is
        for (const auto &entry : std::filesystem::directory_iterator(kIpcFolder))
            EXPECT_EQ(chmod(entry.path().c_str(), mode), 0);
        EXPECT_EQ(chmod(kIpcFolder.c_str(), 0555), 0);
        const auto work = [&] {
            const uint32_t key = mode != 0 ? 300001 : 0;
            return DropCapabilities() && SMIPCKeyGet("qzvessmpA") == key && SMIPCKeyGet("new") == 0 ? 0 : 1;
        };
        EXPECT_EQ(Process(work).Wait(), 0) << mode;
    }
    EXPECT_EQ(Content(kRegistry), both);
    std::filesystem::remove_all(kIpcFolder);
    EXPECT_EQ(SMIPCKeyGet("qzvessmpA"), 0u);
}

TEST_F(Keys, OddRegistries)
{
    std::string crowd = kNumbers; // more than the first buffer has room for, in no order
    for (int number = 300999; number > 300500; --number)
        crowd += std::to_string(number) + "=x\n";
    const std::tuple<std::string, uint32_t, bool> cases[] = {
        {"", 300001, true},
        {kNames + "a=400000\n", 300001, true},
        {kNames + "a=400000\n\n" + kNumbers, 300001, true},
        {kNumbers + "=x\n400000=a\n", 300002, true},
        {kNumbers + "name=x\n400000x=y\n300010=z\n4294967296=u\n", 300011, true},
        {crowd, 301000, true},
        {kNumbers + "4294967294=a\n", 4294967295, true},
        {kNumbers + "4294967295=a\n", 0, false},
        {kNumbers + "-1=a\n300005=b\n", 0, false}, // is read as the same number
        {"[broken\n" + kNumbers + "300001=a\n", 0, false},
        {kNames + "n=17\n", 17, false},
        {kNames + "n=word\n", 0, false},
    };
    for (const auto &[before, key, stored] : cases) {
        std::ofstream(kRegistry, std::ios::binary | std::ios::trunc) << before;
        EXPECT_EQ(SMIPCKeyGet("n"), key) << before.substr(0, 200);
        const std::string number = std::to_string(key), after = Content(kRegistry);
        EXPECT_EQ(after != before, stored) << after;
        EXPECT_EQ(after.find("\nn=" + number + "\n") != std::string::npos, stored || key == 17) << after;
        EXPECT_EQ(after.find("\n" + number + "=n\n") != std::string::npos, stored) << after;
    }
}

} // namespace
