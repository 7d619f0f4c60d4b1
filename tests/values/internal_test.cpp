// Dumps, numbers and addresses where an argument, memory or the network state is missing.

#include <gtest/gtest.h>

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "os/ipv4.h"
#include "support/faults.h"
#include "text/sizedstring.h"
#include "values/bytetext.h"
#include "values/parse.h"
#include "values/typedvalue.h"

namespace {

TEST(DumpToSizedString, AppendsWholeLinesFromAnAddress)
{
    SMSSUTF8Str sized;
    qzvest::SMSSUTF8StrAlloc(&sized, 100);
    const auto *data = reinterpret_cast<const uint8_t *>("0123456789abcdefABCDE");
    const auto dump = [&](const uint8_t *from, uint32_t size) {
        return qzvest::SMXLTDumpToSizedString(&sized, from, size, 0xFFFFFFF0);
    };
    EXPECT_EQ(dump(nullptr, 5) + dump(data, 0), 0);
    EXPECT_EQ(sized.length, 0u);
    EXPECT_EQ(Failing(1, [&] { return dump(data, 21); }), -1); // the first line is within the buffer
    EXPECT_STREQ(sized.text, "0xFFFFFFF0: 30 31 32 33:34 35 36 37:38 39 61 62:63 64 65 66   0123456789abcdef  \n");
    qzvest::SMSSUTF8StrFree(&sized);
}

TEST(ParseNumber, WithoutText)
{
    for (uint32_t format : {0u, 0x0200u, 0x0300u, 0x0400u}) {
        uint32_t statuses[3] = {};
        EXPECT_EQ(qzvest::SMXLTParseSigned32(nullptr, format, &statuses[0]), 0);
        EXPECT_EQ(qzvest::SMXLTParseUnsigned32(nullptr, format, &statuses[1]), 0u);
        EXPECT_EQ(qzvest::SMXLTParseUnsigned64(nullptr, format, &statuses[2]), 0u);
        EXPECT_EQ(statuses[0] + statuses[1], 2 * SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(statuses[2], format == 0x0200 ? SM_STATUS_UNSUPPORTED : SM_STATUS_INVALID_PARAMETER);
    }
}

TEST(NetworkState, CallsNeedIt)
{
    char quad[] = "1.2.3.4";
    char text[16] = "#";
    uint32_t address = 7, size = sizeof text;
    qzvest::NetworkDetach();
    EXPECT_EQ(qzvest::SMIPAddrASCIIToNetwork(quad, &address), SM_STATUS_NOT_ATTACHED);
    EXPECT_EQ(qzvest::SMIPAddrNetworkToASCII(address, text, &size), SM_STATUS_NOT_ATTACHED);
    EXPECT_EQ(size, sizeof text);
    EXPECT_EQ(qzvest::SMXLTUTF8ToTypeValue(quad, &address, &size, 15), SM_STATUS_NOT_ATTACHED);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(address, 7u);
    // A NULL is told of first.
    EXPECT_EQ(qzvest::SMIPAddrASCIIToNetwork(nullptr, &address), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(qzvest::SMIPAddrASCIIToNetwork(quad, nullptr), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(qzvest::SMIPAddrNetworkToASCII(1, text, nullptr), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(qzvest::NetworkAttach(), 1);
    EXPECT_EQ(qzvest::NetworkAttach(), 1);
    EXPECT_EQ(qzvest::SMIPAddrASCIIToNetwork(quad, &address), SM_STATUS_OK);
}

} // namespace
