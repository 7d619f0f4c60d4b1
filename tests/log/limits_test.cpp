// How large the logs may grow.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <string>

#include <qzvest/eventlog.h>

#include "config/places.h"

namespace {

const char *systemName; // in place of the machine's

uint32_t LimitOf(const std::string &path)
{
    uint32_t limit = 0;
    EXPECT_EQ(SMGetLogMaxSize(path.c_str(), &limit), SM_STATUS_OK);
    return limit;
}

TEST(LogLimits, StayBetweenTheDefaultAndTheHighest)
{
    const std::pair<const char *, uint32_t> kMachines[] = {
        {"Linux", 1048576}, {"vmkERNEL", 131072}, {"VMkernel2", 1048576}, {nullptr, 1048576}};
    for (const auto &[name, lowest] : kMachines) {
        systemName = name;
        Reattach(); // limits of the machine before are gone
        EXPECT_EQ(LimitOf("/a"), lowest);
        for (const uint32_t size : {0u, lowest - 1, 4194305u, UINT32_MAX})
            EXPECT_EQ(SMSetLogMaxSize("/a", size), SM_STATUS_INVALID_PARAMETER);
        for (const uint32_t size : {4194304u, lowest, lowest + 1}) {
            EXPECT_EQ(SMSetLogMaxSize("/a", size), SM_STATUS_OK);
            EXPECT_EQ(LimitOf("/a"), size);
        }
    }
}

TEST(LogLimits, BelongToPaths)
{
    const std::string longest(255, 'p'), over(256, 'p');
    uint32_t limit = 7;
    for (const char *path : {static_cast<const char *>(nullptr), ""}) {
        EXPECT_EQ(SMSetLogMaxSize(path, 2000000), SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(SMGetLogMaxSize(path, &limit), SM_STATUS_INVALID_PARAMETER);
    }
    EXPECT_EQ(SMSetLogMaxSize(over.c_str(), 2000000), SM_STATUS_INVALID_PARAMETER);
    std::map<std::string, uint32_t> limits;
    for (const std::string &path :
         {std::string("/b"), std::string("/a"), std::string("//a"), std::string("/A"), longest})
        EXPECT_EQ(SMSetLogMaxSize(path.c_str(), limits[path] = 2000000 + static_cast<uint32_t>(limits.size())), 0u);
    for (const auto &[path, expected] : limits)
        EXPECT_EQ(LimitOf(path), expected);
    EXPECT_EQ(LimitOf("/other"), 1048576u);
    EXPECT_EQ(LimitOf(over), 1048576u);
}

} // namespace

// In place of the C library's, for this program.
extern "C" int uname(utsname *name) noexcept
{
    const long result = syscall(SYS_uname, name);
    if (systemName != nullptr)
        std::strcpy(name->sysname, systemName);
    return static_cast<int>(result);
}
