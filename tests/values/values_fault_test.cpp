// What typed values, lists of words and addresses do when memory or the network state is missing.

#include <gtest/gtest.h>

#include <qzvest/status.h>
#include <qzvest/types.h>

#include <string>

#include "os/ipv4.h"
#include "support/faults.h"
#include "text/sizedstring.h"
#include "values/bytetext.h"
#include "values/parameter.h"
#include "values/parse.h"
#include "values/typedvalue.h"

namespace {

constexpr uint32_t kHex = SMXLT_FORMAT_HEX;
constexpr uint32_t kDump = SMXLT_FORMAT_BINARY;

// So many allocations fail one by one; then the call succeeds.
void FailEach(int allocations, uint32_t status, auto call)
{
    const long before = LiveBlocks();
    for (int nth = 1; nth <= allocations + 1; ++nth) {
        FailAllocation(nth);
        EXPECT_EQ(call(), nth <= allocations ? status : SM_STATUS_OK);
        EXPECT_EQ(StopFault(), nth <= allocations);
        EXPECT_EQ(LiveBlocks(), before);
    }
}

TEST(TypedValueFault, MemoryRunsOut)
{
    const std::tuple<const char *, uint32_t, uint32_t, int, uint32_t> cases[] = {
        {"0A0B", SMXLT_TYPE_BYTES, SM_STATUS_FAILED, 1, SM_STATUS_FAILED},
        {"0x0A,0x0B", SMXLT_TYPE_BYTES | kHex, SM_STATUS_FAILED, 1, SM_STATUS_FAILED},
        {"0A0B", SMXLT_TYPE_HEX, SM_STATUS_FAILED, 1, SM_STATUS_NO_MEMORY},
        {"1.2.3.4", SMXLT_TYPE_IPV4, SM_STATUS_NO_MEMORY, 0, SM_STATUS_OK},
    };
    for (const auto &[givenText, type, fromStatus, toAllocations, toStatus] : cases) {
        char value[4];
        uint32_t valueSize = 0;
        FailEach(1, fromStatus, [&] {
            std::string text = givenText;
            valueSize = sizeof value;
            return qzvest::SMXLTUTF8ToTypeValue(text.data(), value, &valueSize, type);
        });
        FailEach(toAllocations, toStatus, [&] {
            char text[32];
            uint32_t size = sizeof text;
            return qzvest::SMXLTTypeValueToUTF8(value, valueSize, text, &size, type);
        });
    }
    // A dump of more than its first buffer: that, a growth, the copy.
    const std::string bytes(16 * 26, 'x');
    FailEach(3, SM_STATUS_FAILED, [&] {
        char text[81 * 26 + 1];
        uint32_t size = sizeof text;
        return qzvest::SMXLTTypeValueToUTF8(bytes.data(), 16 * 26, text, &size, SMXLT_TYPE_BYTES | kDump);
    });
}

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

TEST(ParameterFault, SecondSplitDecides)
{
    const SMNVPEnumEntry table[] = {{nullptr, 99}, {"read", 2}, {"write", 4}};
    // For want of one list the "," is tried; what a trim has changed is taken for a list.
    const std::tuple<const char *, int, uint32_t> cases[] = {
        {"e=read,write", 1, 6},
        {"e=read,write", 2, 0x80000000},
        {"e=read|write", 1, 0x80000000},
        {"e=read", 1, 0x80000000},
        {"e= read", 1, 2},
    };
    const long before = LiveBlocks();
    for (const auto &[parameter, nth, givenValue] : cases) {
        std::string text = parameter;
        char *argv[] = {text.data()};
        FailAllocation(nth);
        const uint32_t value = qzvest::SMNVPGetEnums32Value(1, argv, "e", 0, table, 3, 1);
        EXPECT_TRUE(StopFault()) << parameter;
        EXPECT_EQ(value, givenValue) << parameter;
    }
    EXPECT_EQ(LiveBlocks(), before);
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
