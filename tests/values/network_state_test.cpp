// The network state, and what the address calls do without it.

#include <gtest/gtest.h>
#include <qzvest/status.h>

#include "os/ipv4.h"
#include "values/typedvalue.h"

namespace {

TEST(NetworkState, CallsNeedIt)
{
    char quad[] = "1.2.3.4";
    char text[16] = "#";
    uint32_t address = 7;
    uint32_t size = sizeof text;
    qzvest::NetworkDetach();
    EXPECT_EQ(qzvest::SMIPAddrASCIIToNetwork(quad, &address), SM_STATUS_NOT_ATTACHED);
    EXPECT_EQ(qzvest::SMIPAddrNetworkToASCII(address, text, &size), SM_STATUS_NOT_ATTACHED);
    EXPECT_EQ(size, sizeof text);
    EXPECT_STREQ(text, "#");
    EXPECT_EQ(qzvest::SMXLTUTF8ToTypeValue(quad, &address, &size, 15), SM_STATUS_NOT_ATTACHED);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(address, 7u);
    // A NULL is told of first.
    EXPECT_EQ(qzvest::SMIPAddrASCIIToNetwork(nullptr, &address), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(qzvest::SMIPAddrASCIIToNetwork(quad, nullptr), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(qzvest::SMIPAddrNetworkToASCII(1, nullptr, &size), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(qzvest::SMIPAddrNetworkToASCII(1, text, nullptr), SM_STATUS_BAD_ARGUMENT);

    EXPECT_EQ(qzvest::NetworkAttach(), 1);
    EXPECT_EQ(qzvest::NetworkAttach(), 1);
    EXPECT_EQ(qzvest::SMIPAddrASCIIToNetwork(quad, &address), SM_STATUS_OK);
}

} // namespace
