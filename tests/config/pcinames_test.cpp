#include <fcntl.h>
#include <gtest/gtest.h>
#include <qzvest/delimited.h>
#include <qzvest/status.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace {

struct Ids {
    uint16_t vendor, device, subVendor, subDevice;
};

struct Answer {
    uint32_t status;
    std::string vendor, device; // the buffers
    uint32_t vendorSize, deviceSize;
};

// Of a file in memory.
Answer Ask(const std::string &content, Ids ids, uint32_t vendorSize = 64, uint32_t deviceSize = 64)
{
    const int descriptor = memfd_create("names", MFD_CLOEXEC);
    EXPECT_EQ(write(descriptor, content.data(), content.size()), static_cast<ssize_t>(content.size()));
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    Answer answer = {0, std::string(vendorSize, '#'), std::string(deviceSize, '#'), vendorSize, deviceSize};
    answer.status =
        SMReadPCIDevFile(ids.vendor, ids.device, ids.subVendor, ids.subDevice, path.c_str(), answer.vendor.data(),
                         &answer.vendorSize, answer.device.data(), &answer.deviceSize);
    close(descriptor);
    return answer;
}

const char kNames[] = "; names\n"
                      "V\t1000\tFirst\n"
                      "D\t0010\tDisk\n"
                      "D\t0011\tTape\n"
                      "O\t2000\tMaker's tape\n"
                      "S\t0001\tSmall tape\n"
                      "S\t0002\tLarge tape\r\n"
                      "O\t2001\tOther tape\n"
                      "S\t0001\tOther small tape\n"
                      "d\t0012\tRobot\textra\n"
                      "\tv\t\t00aB\tSecond ; a comment\n"
                      "D\t0010\tCard\n"
                      ";V\t3000\tCommented\n"
                      "V\t1000\tFirst again\n"
                      "D\t0020\tLate\n";

TEST(PCINames, RecordsByTheirPlace)
{
    const struct {
        std::string content;
        Ids ids;
        uint32_t status;
        const char *vendor, *device;
    } cases[] = {
        {kNames, {0x1000, 0x0010, 0, 0}, 0, "First", "Disk"},
        {kNames, {0x1000, 0x0011, 0x2000, 9}, 0, "First", "Maker's tape"},
        {kNames, {0x1000, 0x0011, 0x2000, 2}, 0, "First", "Large tape"},
        {kNames, {0x1000, 0x0011, 0x2001, 1}, 0, "First", "Other small tape"},
        {kNames, {0x1000, 0x0010, 0x2000, 1}, 0, "First", "Disk"}, // those of the next device are not seen
        {kNames, {0x00AB, 0x0010, 0, 0}, 0, "Second ", "Card"},
        {kNames, {0x1000, 0x0020, 0, 0}, 7, "First", ""},                               // ends at the next vendor
        {"V\t1\nV\t1\t\nV\t1\t;x\nV\t1\tA\nD\t2\tB", {1, 2, 0, 0}, 0, "A", "B"},        // too few fields
        {"VV\t1\tX\nC\t1\tX\nV\t1\tA\nDx\t2\tX\nD\t2\tB\n", {1, 2, 0, 0}, 0, "A", "B"}, // unknown kinds
        {"V\t12345\tA\nD\tg\tX\nD\t2g\tB\n", {0x1234, 2, 0, 0}, 0, "A", "B"},           // four digits of an id
        {"D\t2\tX\nS\t3\tY\nV\tFFFF\tA\n", {65535, 2, 65535, 3}, 0, "A", "Y"},          // place before any vendor
        {"V\t1\tA\nO\t4\tX\nD\t2\tB\nS\t3\tY\n", {1, 2, 4, 3}, 0, "A", "B"},            // device leaves the sub-vendor
        {"V\t9\tZ\nD\t2\tZ\nV\t1\tA\nO\t4\tX\n", {1, 2, 4, 3}, 7, "A", ""},             // vendor leaves the device
        {"", {1, 2, 0, 0}, 7, "", ""},                                                  // empty
    };
    for (const auto &c : cases) {
        const Answer answer = Ask(c.content, c.ids);
        EXPECT_EQ(answer.status, c.status) << c.content;
        EXPECT_STREQ(answer.vendor.c_str(), c.vendor);
        EXPECT_STREQ(answer.device.c_str(), c.device);
        EXPECT_TRUE(*c.vendor == '\0' || answer.vendor.ends_with("##" + std::string(1, '\0'))); // no padding between
        EXPECT_EQ(answer.vendorSize, strlen(c.vendor));
        EXPECT_EQ(answer.deviceSize, strlen(c.device));
    }
}

TEST(PCINames, LongLinesComeInPieces)
{
    const std::string filler(8449 - 4, 'n'); // the piece ends with it
    EXPECT_STREQ(Ask("V\t1\t" + filler + "V\t2\tA\nD\t3\tB\n", {2, 3, 0, 0}).vendor.c_str(), "A");
    EXPECT_EQ(Ask("V\t1\t" + filler + "\nD\t3\tB\n", {1, 3, 0, 0}, 5).vendorSize, filler.size());
}

TEST(PCINames, BadArguments)
{
    const struct {
        uint32_t vendorSize, deviceSize;
        const char *path;
        uint32_t status;
        char first; // of both buffers, afterwards
    } cases[] = {
        {0, 8, "/proc/self/fd", 271, '#'},
        {8, 0, "/proc/self/fd", 271, '#'},
        {8, 8, "", 271, '\0'},
        {8, 8, "/proc/self/fd/none", 7, '\0'},
    };
    for (const auto &c : cases) {
        uint32_t vendorSize = c.vendorSize, deviceSize = c.deviceSize;
        char vendor[8] = "#", device[8] = "#";
        EXPECT_EQ(SMReadPCIDevFile(1, 2, 0, 0, c.path, vendor, &vendorSize, device, &deviceSize), c.status);
        EXPECT_EQ(vendorSize + deviceSize, 0u);
        EXPECT_EQ(vendor[0], c.first);
        EXPECT_EQ(device[0], c.first);
    }
    EXPECT_EQ(SMReadPCIDevFile(1, 2, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
}

} // namespace
