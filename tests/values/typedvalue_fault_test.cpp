// What typed values do when memory runs out, and the internal calls beneath them.

#include <gtest/gtest.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#include <cstring>
#include <string>

#include "support/faults.h"
#include "text/sizedstring.h"
#include "values/bytetext.h"
#include "values/parse.h"
#include "values/typedvalue.h"

namespace {

constexpr uint32_t kHex = SMXLT_FORMAT_HEX;
constexpr uint32_t kDump = SMXLT_FORMAT_BINARY;

// Every allocation fails once; then the call succeeds.
template <typename Call>
void FailEach(int allocations, uint32_t status, Call call)
{
    const long before = LiveBlocks();
    for (int nth = 1;; ++nth) {
        FailAllocation(nth);
        const uint32_t result = call();
        const bool failed = StopFault();
        EXPECT_EQ(result, failed ? status : SM_STATUS_OK);
        EXPECT_EQ(LiveBlocks(), before);
        if (failed)
            continue;
        EXPECT_EQ(nth, allocations + 1);
        break;
    }
}

TEST(TypedValueFault, MemoryRunsOut)
{
    const struct {
        const char *text;
        uint32_t type;
        uint32_t fromStatus;
        int toAllocations;
        uint32_t toStatus;
    } cases[] = {
        {"0A0B", SMXLT_TYPE_BYTES, SM_STATUS_FAILED, 1, SM_STATUS_FAILED},
        {"0x0A,0x0B", SMXLT_TYPE_BYTES | kHex, SM_STATUS_FAILED, 1, SM_STATUS_FAILED},
        {"0A0B", SMXLT_TYPE_HEX, SM_STATUS_FAILED, 1, SM_STATUS_NO_MEMORY},
        {"1.2.3.4", SMXLT_TYPE_IPV4, SM_STATUS_NO_MEMORY, 0, SM_STATUS_OK},
    };
    for (const auto &c : cases) {
        char value[4];
        uint32_t valueSize = 0;
        FailEach(1, c.fromStatus, [&] {
            std::string text = c.text;
            valueSize = sizeof value;
            return qzvest::SMXLTUTF8ToTypeValue(text.data(), value, &valueSize, c.type);
        });
        FailEach(c.toAllocations, c.toStatus, [&] {
            char text[32];
            uint32_t size = sizeof text;
            return qzvest::SMXLTTypeValueToUTF8(value, valueSize, text, &size, c.type);
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
    EXPECT_EQ(qzvest::SMXLTDumpToSizedString(&sized, nullptr, 5, 0), 0);
    EXPECT_EQ(qzvest::SMXLTDumpToSizedString(&sized, data, 0, 0), 0);
    EXPECT_EQ(sized.length, 0u);
    FailAllocation(1); // the first line is within the buffer
    EXPECT_EQ(qzvest::SMXLTDumpToSizedString(&sized, data, 21, 0xFFFFFFF0), -1);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(sized.length, 81u);
    EXPECT_EQ(qzvest::SMXLTDumpToSizedString(&sized, data + 16, 4, 0xFFFFFFF0), 0);
    EXPECT_STREQ(sized.text, "0xFFFFFFF0: 30 31 32 33:34 35 36 37:38 39 61 62:63 64 65 66   0123456789abcdef  \n"
                             "0xFFFFFFF0: 41 42 43 44                                       ABCD              \n");
    qzvest::SMSSUTF8StrFree(&sized);
}

TEST(ParseNumber, WithoutText)
{
    for (uint32_t format : {0u, 0x0200u, 0x0300u, 0x0400u}) {
        uint32_t status = 0;
        EXPECT_EQ(qzvest::SMXLTParseSigned32(nullptr, format, &status), 0);
        EXPECT_EQ(status, SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(qzvest::SMXLTParseUnsigned32(nullptr, format, &status), 0u);
        EXPECT_EQ(status, SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(qzvest::SMXLTParseUnsigned64(nullptr, format, &status), 0u);
        EXPECT_EQ(status, format == 0x0200 ? SM_STATUS_UNSUPPORTED : SM_STATUS_INVALID_PARAMETER);
    }
}

} // namespace
