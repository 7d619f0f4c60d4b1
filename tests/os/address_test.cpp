// The host name and the interfaces are the sandbox's own.
#include "os/address.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <vector>

#include "os/ipv4.h"
#include "support/faults.h"
#include "support/sweep.h"

namespace {

using qzvest::SMGetInetAddrStrList;

using Texts = std::vector<std::string>;

bool OwnHostName(const std::string &name)
{
    static const bool isOwn = unshare(CLONE_NEWUTS) == 0;
    return isOwn && sethostname(name.data(), name.size()) == 0;
}

TEST(HostName, IsCutAsBytesButNotAsUnits)
{
    if (!OwnHostName("brick.example"))
        GTEST_SKIP() << "no host name of its own";
    const std::pair<uint32_t, std::string> cases[] = {{20, "brick.example"}, {5, "bric"}, {1, ""}};
    for (const auto &[room, name] : cases) {
        std::string buffer(21, '#');
        uint32_t size = room;
        EXPECT_EQ(qzvest::SMGetIPHostName(buffer.data(), &size), SM_STATUS_OK);
        EXPECT_EQ(size, name.size() + 1);
        EXPECT_EQ(buffer, name + std::string(room - name.size(), '\0') + std::string(21 - room, '#'));
    }
    uint16_t units[32];
    uint32_t size = 27;
    EXPECT_EQ(qzvest::SMUCS2GetIPHostName(units, &size), SM_STATUS_BUFFER_TOO_SMALL);
    ASSERT_TRUE(OwnHostName("h\xC3\xA9"));
    EXPECT_EQ(qzvest::SMUCS2GetIPHostName(units, &size), SM_STATUS_OK);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(std::memcmp(units, u"h\u00E9", size), 0);
}

TEST(DNSSuffix, IsThatOfTheCanonicalName)
{
    if (!OwnHostName("brick"))
        GTEST_SKIP() << "no host name of its own";
    std::ofstream("/etc/nsswitch.conf") << "hosts: files\n";
    std::ofstream("/etc/hosts") << "127.0.0.9 brick.rack.example brick\n127.0.0.8 short\n";
    std::string buffer = "################";
    uint32_t size = 12;
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(buffer.data(), &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(buffer, "################");
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(nullptr, &(size = 0)), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 13u);
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(buffer.data(), &size), SM_STATUS_OK);
    EXPECT_EQ(buffer, std::string("rack.example\0###", 16));
    ASSERT_TRUE(OwnHostName("short"));
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(buffer.data(), &size), SM_STATUS_OK);
    EXPECT_EQ(size, 1u);
    ASSERT_TRUE(OwnHostName("unknown"));
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(buffer.data(), &size), SM_STATUS_FAILED);
}

TEST(Conversions, AgreeWithTheSystems)
{
    constexpr std::tuple<uint16_t, const char *, bool> kCases[] = {
        {1, "255.255.255.255", true}, {1, "1.2.3.4 ", false}, {1, "::1", false},
        {2, "::ffff:1.2.3.4", true},  {0, "1.2.3.4", false},  {AF_INET6, "::1", false}};
    for (const auto &[family, text, isAddress] : kCases) {
        SCOPED_TRACE(text);
        const uint32_t length = family == 1 ? 4 : 16;
        std::string bytes(16, '#'), system = bytes, back(INET6_ADDRSTRLEN, '#');
        uint32_t size = length;
        EXPECT_EQ(qzvest::SMInetAddrUTF8ToNetwork(family, text, bytes.data(), &size),
                  isAddress ? SM_STATUS_OK : SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(size, length);
        if (!isAddress)
            continue;
        EXPECT_EQ(inet_pton(family == 1 ? AF_INET : AF_INET6, text, system.data()), 1);
        EXPECT_EQ(bytes, system);
        size = length - 1;
        EXPECT_EQ(qzvest::SMInetAddrUTF8ToNetwork(family, text, bytes.data(), &size), SM_STATUS_BUFFER_TOO_SMALL);
        const auto need = static_cast<uint32_t>(std::strlen(text) + 1);
        const std::tuple<uint32_t, uint32_t, uint32_t> backs[] = {{20 - length, need, SM_STATUS_INVALID_PARAMETER},
                                                                  {length, need - 1, SM_STATUS_BUFFER_TOO_SMALL},
                                                                  {length, need, SM_STATUS_OK}};
        for (const auto &[given, room, status] : backs) {
            size = room;
            EXPECT_EQ(qzvest::SMInetAddrNetworkToUTF8(family, system.data(), given, back.data(), &size), status);
            EXPECT_EQ(size, room);
        }
        EXPECT_STREQ(back.c_str(), text);
    }
}

TEST(Arguments, NullIsToldOfBeforeTheNetworkState)
{
    uint32_t size = 64;
    EXPECT_EQ(SMGetInetAddrStrList(3, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(size, 64u);
    qzvest::NetworkDetach();
    EXPECT_EQ(SMGetInetAddrStrList(3, &size, nullptr), SM_STATUS_NOT_ATTACHED);
    EXPECT_EQ(SMGetInetAddrStrList(3, nullptr, nullptr), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(qzvest::SMGetIPHostName(nullptr, &size), SM_STATUS_BAD_ARGUMENT);
}

// ---- Lists ----

// Two pairs of interfaces. veth0 and veth1 run, the other two do not. veth1 has no ARP, which is of no matter to IPv4.
class Lists : public testing::Test {
protected:
    static constexpr int kAliases = 60; // make the interfaces too many for two answers of the kernel
    static constexpr uint32_t kCount4 = kAliases + 2;
    static constexpr uint32_t kCount6 = 6;

    void SetUp() override
    {
        // Addresses that the kernel adds when it gets to it would come in between.
        std::ofstream("/proc/sys/net/ipv6/conf/default/addr_gen_mode") << "1";
        std::string all = "link add veth0 type veth peer name veth1\nlink add veth2 type veth peer name veth3\n";
        for (int i = 1; i <= kAliases; ++i)
            all += "addr add " + texts4.emplace_back("10.0.1." + std::to_string(i)) +
                   "/24 dev veth0 label veth0:" + std::to_string(i) + "\n";
        texts4.insert(texts4.end(), {"10.0.0.0", "10.0.0.1"});
        std::sort(texts4.begin(), texts4.end());
        for (const std::string name : {"veth0", "veth1", "veth2"})
            all += "addr add 10.0.0." + name.substr(4) + "/8 dev " + name + "\n";
        for (const std::string text : {"fe80::5", "fec0::5", "2001:db8::5", "febf::5", "fe7f::5", "fd00::5"})
            all += "addr add " + text + "/64 dev veth0\n";
        if (!Configure(all + "addr add 2001:db8::6/64 dev veth1\nlink set veth1 arp off up\nlink set veth0 up\n"))
            GTEST_SKIP() << "no interfaces of its own";
    }

    Texts texts4; // of those that run

    // Comes back when veth0 and veth1 run.
    static bool Configure(const std::string &commands)
    {
        std::ofstream("/run/commands") << commands;
        const int any = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        bool done = std::system("ip -batch /run/commands") == 0;
        for (const char *name : {"veth0", "veth1"}) {
            ifreq request = {};
            std::strcpy(request.ifr_name, name);
            while (done && (request.ifr_flags & IFF_RUNNING) == 0)
                done = ioctl(any, SIOCGIFFLAGS, &request) == 0;
        }
        close(any);
        return done;
    }

    // What the kernel's file has of veth0, in its order; then by kind.
    static Texts System6()
    {
        Texts texts;
        std::ifstream file("/proc/net/if_inet6");
        for (std::string digits, others[4], device;
             file >> digits >> others[0] >> others[1] >> others[2] >> others[3] >> device;) {
            for (size_t i = 28; i > 0; i -= 4)
                digits.insert(i, ":");
            in6_addr address;
            char text[INET6_ADDRSTRLEN];
            inet_pton(AF_INET6, digits.c_str(), &address);
            if (device == "veth0")
                texts.emplace_back(inet_ntop(AF_INET6, &address, text, sizeof text));
        }
        const auto kind = [](const std::string &text) {
            return text == "fec0::5" ? 1 : text == "fe80::5" || text == "febf::5" ? 2 : 0;
        };
        std::stable_sort(texts.begin(), texts.end(),
                         [&](const auto &left, const auto &right) { return kind(left) < kind(right); });
        return texts;
    }
};

TEST_F(Lists, SlotsAreFilledAsFarAsTheyGo)
{
    SMIPAddrSlot slots[kCount4];
    std::memset(slots, '#', sizeof slots);
    uint32_t count = kCount4 - 1;
    EXPECT_EQ(qzvest::SMGetIPAddrStrList("elsewhere.example", &count, slots), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(slots[count - 2].text[0], '1');
    EXPECT_EQ(slots[count - 1].text[0], '#');
    EXPECT_EQ(qzvest::SMGetIPAddrStrList(nullptr, &count, slots), SM_STATUS_OK);
    EXPECT_EQ(count, kCount4);
}

TEST_F(Lists, RecordsOfBothFamilies)
{
    constexpr uint32_t kBoth = kCount4 + kCount6;
    const Texts system6 = System6();
    ASSERT_EQ(system6.size(), kCount6);
    // Too few for IPv4 alone: no record of it, nor behind it.
    constexpr std::tuple<uint32_t, uint32_t, uint32_t, uint32_t, uint32_t> kCases[] = {
        {0, kBoth, SM_STATUS_OK, kBoth, kBoth},
        {0, kBoth - 1, SM_STATUS_BUFFER_TOO_SMALL, kBoth, kBoth - 1},
        {0, kCount4 - 1, SM_STATUS_BUFFER_TOO_SMALL, kBoth, 0},
        {1, kCount4 - 1, SM_STATUS_BUFFER_TOO_SMALL, kCount4, 0},
        {2, 1, SM_STATUS_BUFFER_TOO_SMALL, kCount6, 1},
    };
    for (const auto &[scope, room, status, found, written] : kCases) {
        SCOPED_TRACE(testing::Message() << scope << " " << room);
        std::vector<SMInetAddrRecord> records(kBoth + 1);
        std::memset(records.data(), '#', records.size() * sizeof(SMInetAddrRecord));
        uint32_t count = room;
        EXPECT_EQ(SMGetInetAddrStrList(scope, &count, records.data()), status);
        EXPECT_EQ(count, found);
        EXPECT_EQ(records[written].text[0], '#');
        const uint32_t before = scope == 2 ? 0 : std::min(written, kCount4);
        Texts found4, found6;
        for (uint32_t i = 0; i < written; ++i) {
            EXPECT_EQ(records[i].family, i < before ? 1 : 2);
            EXPECT_EQ(records[i].reserved, 0);
            (i < before ? found4 : found6).emplace_back(records[i].text);
        }
        std::sort(found4.begin(), found4.end());
        EXPECT_TRUE(found4.empty() || found4 == texts4);
        EXPECT_EQ(found6, Texts(system6.begin(), system6.begin() + written - before));
    }
}

TEST_F(Lists, WithoutIPv6TheStatusOfIPv4IsLost)
{
    ASSERT_TRUE(Configure("link set veth0 arp off\n"));
    SMInetAddrRecord record = {};
    for (uint32_t scope : {0, 1, 2}) {
        uint32_t count = 1;
        EXPECT_EQ(SMGetInetAddrStrList(scope, &count, &record), scope == 1 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_OK);
        EXPECT_EQ(count, scope == 2 ? 0 : kCount4);
    }
    EXPECT_EQ(record.family, 0);
}

TEST_F(Lists, DescriptorsRunOut)
{
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(next);
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    uint32_t count = 70;
    // For IPv6 the kernel's file comes first: one that cannot be opened is a machine without.
    constexpr std::tuple<rlim_t, uint32_t, uint32_t, uint32_t> kCases[] = {
        {0, 1, SM_STATUS_FAILED, 70}, {1, 2, SM_STATUS_FAILED, 70}, {0, 2, SM_STATUS_OK, 0}};
    for (const auto &[more, scope, status, left] : kCases) {
        const rlimit now = {static_cast<rlim_t>(next) + more, before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &now);
        EXPECT_EQ(SMGetInetAddrStrList(scope, &count, nullptr), status) << scope;
        setrlimit(RLIMIT_NOFILE, &before);
        EXPECT_EQ(count, left);
    }
}

TEST_F(Lists, FailingAllocationsForIPv6)
{
    std::vector<SMInetAddrRecord> records(100);
    // Two for an address. One whose digits are not read is missing, but of the last one the status is told.
    constexpr int kLast = 2 * kCount6 - 1;
    EXPECT_EQ(SweepAllocations([&](int nth) {
                  uint32_t count = 100;
                  FailAllocation(nth);
                  const uint32_t status = SMGetInetAddrStrList(SM_SCOPE_IPV6, &count, records.data());
                  const bool failed = StopFault();
                  const bool misread = failed && nth % 2 == 1 && nth != kLast;
                  EXPECT_EQ(status, !failed || misread ? SM_STATUS_OK
                                    : nth == kLast     ? SM_STATUS_FAILED
                                                       : SM_STATUS_NO_MEMORY);
                  EXPECT_EQ(count, misread ? kCount6 - 1 : failed ? 100 : kCount6);
                  return failed;
              }),
              2 * static_cast<int>(kCount6));
}

} // namespace
