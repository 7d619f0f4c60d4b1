// The lines that arrive at the system log.

#include <gtest/gtest.h>

#include <qzvest/system.h>

#include "support/systemlog.h"

namespace {

// The next line, with "|" for the time ("Jan  1 00:00:00 ") that stands between the priority and the identity.
std::string Received(const SystemLog &log)
{
    const std::string line = log.Next();
    return line.empty() ? line : line.substr(0, 4) + "|" + line.substr(20);
}

TEST(SystemLogLine, NamesSourceEventAndPriority)
{
    EXPECT_EQ(SMAppendToOSSysLog(1, 1, 1, "who", "nobody listens"), SM_STATUS_OK);
    const SystemLog log;
    static const std::tuple<uint32_t, uint32_t, uint32_t, const char *> kCases[] = {
        {1, 1, 0, "<27>|who: Record Broker EventID: 0  text"},
        {4, 4, 2147483648, "<30>|who: Bridge Link Service EventID: 2147483648  text"},
        {0, 5, 1234, "<30>|who: Host Agent Frame EventID: 1234  text"},
    };
    for (const auto &[severity, givenSource, eventId, line] : kCases) {
        EXPECT_EQ(SMAppendToOSSysLog(severity, givenSource, eventId, "who", "text"), SM_STATUS_OK);
        EXPECT_EQ(Received(log), line);
    }
    for (const uint32_t source : {0u, 7u})
        EXPECT_EQ(SMAppendToOSSysLog(1, source, 1, "who", "text"), SM_STATUS_FAILED);
    EXPECT_EQ(Received(log), "");
}

TEST(SystemLogLine, TakesAMessageWholeButForCarriageReturnsOrNotAtAll)
{
    const SystemLog log;
    EXPECT_EQ(SMAppendToOSSysLog(1, 1, 5, "a b", "\r1\r\n%s%n\t\xC3\xA9\r"), SM_STATUS_OK);
    EXPECT_EQ(Received(log), "<27>|a b: Record Broker EventID: 5   1 \n%s%n\t\xC3\xA9 ");
    const std::string head = "Package Ledger EventID: 99  ", fits(2047 - head.size(), 'm');
    for (const bool isLonger : {false, true}) {
        EXPECT_EQ(SMAppendToOSSysLog(2, 6, 99, "who", (fits + (isLonger ? "m" : "")).c_str()), SM_STATUS_OK);
        EXPECT_EQ(Received(log), "<28>|who: " + (isLonger ? "" : head + fits));
    }
}

} // namespace
