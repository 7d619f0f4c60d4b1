// The host name and the interfaces are the sandbox's own.
#include "os/address.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "os/ipv4.h"
#include "support/faults.h"
#include "support/sweep.h"

namespace {

using qzvest::SMGetInetAddrStrList;
using qzvest::SMGetIPAddrStrList;

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
    EXPECT_EQ(size, 27u);
    ASSERT_TRUE(OwnHostName("h\xC3\xA9"));
    EXPECT_EQ(qzvest::SMUCS2GetIPHostName(units, &size), SM_STATUS_OK);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(std::memcmp(units, u"h\u00E9", size), 0);
    ASSERT_TRUE(OwnHostName("h\xFF"));
    EXPECT_EQ(qzvest::SMUCS2GetIPHostName(units, &size), SM_STATUS_BAD_FORMAT);
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
    EXPECT_EQ(size, 13u);
    EXPECT_EQ(buffer, "################");
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(nullptr, &(size = 0)), SM_STATUS_OK);
    EXPECT_EQ(size, 13u);
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(buffer.data(), &size), SM_STATUS_OK);
    EXPECT_EQ(buffer, std::string("rack.example\0###", 16));
    ASSERT_TRUE(OwnHostName("short"));
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(buffer.data(), &size), SM_STATUS_OK);
    EXPECT_EQ(size, 1u);
    EXPECT_EQ(buffer[0], '\0');
    ASSERT_TRUE(OwnHostName("unknown"));
    EXPECT_EQ(qzvest::SMGetDNSSuffixNameName(buffer.data(), &size), SM_STATUS_FAILED);
}

TEST(Conversions, AgreeWithTheSystems)
{
    const struct {
        uint16_t family;
        const char *text;
        bool isAddress;
    } cases[] = {{1, "255.255.255.255", true},
                 {1, "0.0.0.0", true},
                 {1, "1.2.3.4 ", false},
                 {1, "::1", false},
                 {2, "::", true},
                 {2, "1:2:3:4:5:6:7:8", true},
                 {2, "::ffff:1.2.3.4", true},
                 {2, "fe80::1%lo", false},
                 {0, "1.2.3.4", false},
                 {AF_INET6, "::1", false}};
    for (const auto &[family, text, isAddress] : cases) {
        SCOPED_TRACE(text);
        const uint32_t length = family == 1 ? 4 : 16;
        std::string bytes(16, '#');
        uint32_t size = 16;
        const uint32_t status = qzvest::SMInetAddrUTF8ToNetwork(family, text, bytes.data(), &size);
        EXPECT_EQ(status, isAddress ? SM_STATUS_OK : SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(size, isAddress ? length : 16);
        if (!isAddress)
            continue;
        std::string system(16, '#');
        EXPECT_EQ(inet_pton(family == 1 ? AF_INET : AF_INET6, text, system.data()), 1);
        EXPECT_EQ(bytes, system);
        size = length - 1;
        EXPECT_EQ(qzvest::SMInetAddrUTF8ToNetwork(family, text, bytes.data(), &size), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(size, length - 1);
        const auto need = static_cast<uint32_t>(std::strlen(text) + 1);
        std::string back(INET6_ADDRSTRLEN, '#');
        EXPECT_EQ(qzvest::SMInetAddrNetworkToUTF8(family, system.data(), 20 - length, back.data(), &size),
                  SM_STATUS_INVALID_PARAMETER);
        size = need - 1;
        EXPECT_EQ(qzvest::SMInetAddrNetworkToUTF8(family, system.data(), length, back.data(), &size),
                  SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(size, need - 1);
        size = need;
        EXPECT_EQ(qzvest::SMInetAddrNetworkToUTF8(family, system.data(), length, back.data(), &size), SM_STATUS_OK);
        EXPECT_EQ(size, need);
        EXPECT_STREQ(back.c_str(), text);
    }
}

TEST(Arguments, NullIsToldOfBeforeTheNetworkState)
{
    using namespace qzvest;
    char text[64] = "::1";
    NetworkDetach();
    uint32_t size = 64;
    for (uint32_t status :
         {SMGetIPHostName(text, &size), SMGetDNSSuffixNameName(nullptr, &size),
          SMInetAddrUTF8ToNetwork(2, text, text, &size), SMInetAddrNetworkToUTF8(1, text, 4, text, &size),
          SMGetIPAddrStrList(nullptr, &size, nullptr), SMGetInetAddrStrList(0, &size, nullptr)})
        EXPECT_EQ(status, SM_STATUS_NOT_ATTACHED);
    for (uint32_t status :
         {SMGetIPHostName(nullptr, &size), SMGetDNSSuffixNameName(text, nullptr),
          SMInetAddrUTF8ToNetwork(2, nullptr, text, &size), SMInetAddrNetworkToUTF8(1, nullptr, 4, text, &size),
          SMGetIPAddrStrList("host", nullptr, nullptr), SMGetInetAddrStrList(3, nullptr, nullptr)})
        EXPECT_EQ(status, SM_STATUS_BAD_ARGUMENT);
    NetworkAttach();
    EXPECT_EQ(SMGetInetAddrStrList(3, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(size, 64u);
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
        std::ofstream own("/proc/sys/net/ipv6/conf/default/addr_gen_mode");
        if (!(own << "1" << std::flush) || !MakePair() || !MakePair())
            GTEST_SKIP() << "no interfaces of its own";
        for (int i = 1; i <= kAliases; ++i)
            Set4("veth0:" + std::to_string(i), "10.0.1." + std::to_string(i));
        for (const char *name : {"veth0", "veth1", "veth2"})
            Set4(name, std::string("10.0.0.") + name[4]);
        Raise("veth0", 0);
        Raise("veth1", IFF_NOARP);
        for (const char *text : {"fe80::5", "fec0::5", "2001:db8::5", "febf::5", "fe7f::5", "fd00::5"})
            Set6("veth0", text);
        Set6("veth1", "2001:db8::6");
        AwaitRunning("veth0");
        AwaitRunning("veth1");
    }
    void TearDown() override
    {
        close(socket4_);
        close(socket6_);
    }

    static bool MakePair()
    {
        struct {
            nlmsghdr head;
            ifinfomsg link;
            rtattr info, kind;
            char name[4];
        } request = {{sizeof request, RTM_NEWLINK, NLM_F_REQUEST | NLM_F_CREATE | NLM_F_EXCL | NLM_F_ACK, 1, 0},
                     {},
                     {12, IFLA_LINKINFO},
                     {8, IFLA_INFO_KIND},
                     {'v', 'e', 't', 'h'}};
        struct {
            nlmsghdr head;
            nlmsgerr error;
            char rest[128];
        } answer = {};
        const int netlink = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
        const bool done =
            send(netlink, &request, sizeof request, 0) > 0 && recv(netlink, &answer, sizeof answer, 0) > 0;
        close(netlink);
        return done && answer.head.nlmsg_type == NLMSG_ERROR && answer.error.error == 0;
    }
    static ifreq About(const std::string &name)
    {
        ifreq request = {};
        name.copy(request.ifr_name, IFNAMSIZ - 1);
        return request;
    }
    void Set4(const std::string &name, const std::string &text) const
    {
        ifreq request = About(name);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = inet_addr(text.c_str());
        std::memcpy(&request.ifr_addr, &address, sizeof address);
        ASSERT_EQ(ioctl(socket4_, SIOCSIFADDR, &request), 0) << name;
    }
    void Set6(const char *name, const char *text) const
    {
        struct {
            in6_addr address;
            uint32_t prefix;
            unsigned index;
        } request = {{}, 64, if_nametoindex(name)};
        inet_pton(AF_INET6, text, &request.address);
        ASSERT_EQ(ioctl(socket6_, SIOCSIFADDR, &request), 0) << text;
    }
    void Raise(const char *name, int more) const
    {
        ifreq request = About(name);
        request.ifr_flags = static_cast<short>(IFF_UP | IFF_BROADCAST | IFF_MULTICAST | more);
        ASSERT_EQ(ioctl(socket4_, SIOCSIFFLAGS, &request), 0);
    }
    void AwaitRunning(const char *name) const
    {
        ifreq request = About(name);
        while (ioctl(socket4_, SIOCGIFFLAGS, &request) == 0 && (request.ifr_flags & IFF_RUNNING) == 0)
            sched_yield();
    }

    // What getifaddrs gives of IPv4, by the same rule.
    static Texts System4()
    {
        Texts texts;
        ifaddrs *all = nullptr;
        EXPECT_EQ(getifaddrs(&all), 0);
        for (const ifaddrs *entry = all; entry != nullptr; entry = entry->ifa_next) {
            if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET ||
                (entry->ifa_flags & (IFF_LOOPBACK | IFF_RUNNING)) != IFF_RUNNING)
                continue;
            sockaddr_in address;
            std::memcpy(&address, entry->ifa_addr, sizeof address);
            texts.emplace_back(inet_ntoa(address.sin_addr));
        }
        freeifaddrs(all);
        std::sort(texts.begin(), texts.end());
        return texts;
    }
    // What the kernel's file has of veth0, in its order; then by kind.
    static Texts System6()
    {
        Texts texts;
        std::ifstream file("/proc/net/if_inet6");
        for (std::string digits, index, prefix, scope, flags, device;
             file >> digits >> index >> prefix >> scope >> flags >> device;) {
            if (device != "veth0")
                continue;
            in6_addr address;
            for (size_t i = 0; i < 16; ++i)
                address.s6_addr[i] = static_cast<uint8_t>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
            char text[INET6_ADDRSTRLEN];
            texts.emplace_back(inet_ntop(AF_INET6, &address, text, sizeof text));
        }
        std::stable_sort(texts.begin(), texts.end(),
                         [](const auto &left, const auto &right) { return Kind(left) < Kind(right); });
        return texts;
    }
    static int Kind(const std::string &text)
    {
        return text == "fec0::5" ? 1 : text == "fe80::5" || text == "febf::5" ? 2 : 0;
    }

private:
    const int socket4_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int socket6_ = socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

TEST_F(Lists, SlotsAreFilledAsFarAsTheyGo)
{
    const Texts system = System4();
    ASSERT_EQ(system.size(), kCount4);
    uint32_t count = 0;
    for (uint32_t room : {0u, kCount4 - 1, kCount4}) {
        SMIPAddrSlot slots[kCount4 + 1];
        std::memset(slots, '#', sizeof slots);
        count = room;
        EXPECT_EQ(SMGetIPAddrStrList("elsewhere.example", &count, slots),
                  room < kCount4 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_OK);
        EXPECT_EQ(count, kCount4);
        const uint32_t written = std::min(room, kCount4);
        EXPECT_EQ(slots[written].text[0], '#');
        std::set<std::string> texts;
        for (uint32_t i = 0; i < written; ++i)
            texts.insert(slots[i].text);
        EXPECT_EQ(texts.size(), written);
        EXPECT_TRUE(std::includes(system.begin(), system.end(), texts.begin(), texts.end())) << room;
    }
}

TEST_F(Lists, RecordsOfBothFamilies)
{
    constexpr uint32_t kBoth = kCount4 + kCount6;
    const Texts system6 = System6();
    ASSERT_EQ(system6.size(), kCount6);
    // Too few for IPv4 alone: no record of it, nor behind it.
    const struct {
        uint32_t scope, room, status, count, written;
    } cases[] = {
        {0, kBoth, SM_STATUS_OK, kBoth, kBoth},
        {0, kBoth - 1, SM_STATUS_BUFFER_TOO_SMALL, kBoth, kBoth - 1},
        {0, kCount4 - 1, SM_STATUS_BUFFER_TOO_SMALL, kBoth, 0},
        {1, kCount4 - 1, SM_STATUS_BUFFER_TOO_SMALL, kCount4, 0},
        {2, kCount6, SM_STATUS_OK, kCount6, kCount6},
        {2, 1, SM_STATUS_BUFFER_TOO_SMALL, kCount6, 1},
    };
    for (const auto &[scope, room, status, found, written] : cases) {
        SCOPED_TRACE(testing::Message() << scope << " " << room);
        std::vector<SMInetAddrRecord> records(kBoth + 1);
        std::memset(records.data(), '#', records.size() * sizeof(SMInetAddrRecord));
        uint32_t count = room;
        EXPECT_EQ(SMGetInetAddrStrList(scope, &count, records.data()), status);
        EXPECT_EQ(count, found);
        EXPECT_EQ(records[written].text[0], '#');
        const uint32_t before = scope == 2 ? 0 : std::min(written, kCount4);
        Texts texts4, texts6;
        for (uint32_t i = 0; i < written; ++i) {
            EXPECT_EQ(records[i].family, i < before ? 1 : 2);
            EXPECT_EQ(records[i].reserved, 0);
            (i < before ? texts4 : texts6).emplace_back(records[i].text);
        }
        std::sort(texts4.begin(), texts4.end());
        EXPECT_TRUE(texts4.empty() || texts4 == System4());
        EXPECT_EQ(texts6, Texts(system6.begin(), system6.begin() + written - before));
    }
}

TEST_F(Lists, WithoutIPv6TheStatusOfIPv4IsLost)
{
    Raise("veth0", IFF_NOARP);
    AwaitRunning("veth0");
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
    const struct {
        rlim_t more;
        uint32_t scope, status, count;
    } cases[] = {{0, 1, SM_STATUS_FAILED, 70}, {1, 2, SM_STATUS_FAILED, 70}, {0, 2, 0, 0}};
    for (const auto &[more, scope, status, left] : cases) {
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
