// Multi-strings that are joined, and names in files of tab-separated records. Lists that are split have a model in
// their fuzz target.

#include <gtest/gtest.h>
#include <qzvest/delimited.h>
#include <qzvest/module.h>
#include <qzvest/status.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <string>

namespace {

using namespace std::string_literals;

TEST(Delimited, MultiStringsAreJoined)
{
    // Its own terminator closes a multi-string; with the number of the delimiters.
    const std::tuple<std::string, std::string, uint32_t> cases[] = {
        {"a\0b c\0d\0"s, "a,b c,d\0"s, 2},
        {" a \0,\0"s, " a ,,\0"s, 1}, // texts stay as they are
        {"a\0\0b\0"s, "a\0"s, 0},
    };
    for (const auto &[source, bytes, delimiters] : cases) {
        uint32_t count, size;
        char *list = SMUTF8ConvertXSVToYSV(source.c_str(), '\0', ',', &count, &size);
        EXPECT_EQ(std::string(list, size), bytes) << source;
        EXPECT_EQ(count, delimiters) << source;
        SMFreeMem(list);
    }
    char *copy = SMUTF8ConvertXSVToYSV("a\0b\0", '\0', '\0', nullptr, nullptr);
    EXPECT_EQ(std::string(copy, 5), "a\0b\0\0"s); // still closed
    SMFreeMem(copy);
    for (const char *nothing : {"", static_cast<const char *>(nullptr)}) {
        uint32_t count = 7, size = 7;
        EXPECT_EQ(SMUTF8ConvertXSVToYSV(nothing, '\0', '|', &count, &size), nullptr);
        EXPECT_EQ(count + size, 0u);
    }
}

using Ids = std::array<uint16_t, 4>; // vendor, device, and theirs of the maker

// "status vendor:size device:size" of a file in memory.
std::string Ask(const std::string &content, const Ids &ids, uint32_t vendorSize = 64)
{
    const int descriptor = memfd_create("names", MFD_CLOEXEC);
    EXPECT_EQ(write(descriptor, content.data(), content.size()), static_cast<ssize_t>(content.size()));
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    char vendor[64], device[64];
    memset(vendor, '#', sizeof vendor);
    uint32_t deviceSize = sizeof device;
    const uint32_t room = vendorSize;
    const uint32_t status =
        SMReadPCIDevFile(ids[0], ids[1], ids[2], ids[3], path.c_str(), vendor, &vendorSize, device, &deviceSize);
    close(descriptor);
    EXPECT_TRUE(vendorSize == 0 || (vendor[room - 1] == '\0' && (vendorSize + 2 > room || vendor[room - 2] == '#')));
    return std::to_string(status) + ' ' + vendor + ':' + std::to_string(vendorSize) + ' ' + device + ':' +
           std::to_string(deviceSize);
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
                      "\tv\t\t00aB\tSecond ; a comment\n"
                      "d\t0010\tCard\textra\n"
                      "V\t1000\tFirst again\n"
                      "D\t0020\tLate\n";

TEST(PCINames, RecordsByTheirPlace)
{
    const std::string filler(8449 - 4, 'n'); // a line comes in pieces, and the first ends with it
    const struct {
        std::string content;
        Ids ids;
        const char *answer;
    } cases[] = {
        {kNames, {0x1000, 0x0011, 0x2000, 9}, "0 First:5 Maker's tape:12"},
        {kNames, {0x1000, 0x0011, 0x2000, 2}, "0 First:5 Large tape:10"},
        {kNames, {0x1000, 0x0011, 0x2001, 1}, "0 First:5 Other small tape:16"},
        {kNames, {0x1000, 0x0010, 0x2000, 1}, "0 First:5 Disk:4"}, // those of the next device are not seen
        {kNames, {0x00AB, 0x0010, 0, 0}, "0 Second :7 Card:4"},
        {kNames, {0x1000, 0x0020, 0, 0}, "7 First:5 :0"},                               // ends at the next vendor
        {"V\t1\nV\t1\t\nV\t1\t;x\nV\t1\tA\nD\t2\tB", {1, 2, 0, 0}, "0 A:1 B:1"},        // too few fields
        {"VV\t1\tX\nC\t1\tX\nV\t1\tA\nDx\t2\tX\nD\t2\tB\n", {1, 2, 0, 0}, "0 A:1 B:1"}, // unknown kinds
        {"V\t12345\tA\nD\tg\tX\nD\t2g\tB\n", {0x1234, 2, 0, 0}, "0 A:1 B:1"},           // four digits of an id
        {"D\t2\tX\nS\t3\tY\nV\tFFFF\tA\n", {65535, 2, 65535, 3}, "0 A:1 Y:1"},          // place before any vendor
        {"V\t1\tA\nO\t4\tX\nD\t2\tB\nS\t3\tY\n", {1, 2, 4, 3}, "0 A:1 B:1"},            // device leaves the sub-vendor
        {"V\t9\tZ\nD\t2\tZ\nV\t1\tA\nO\t4\tX\n", {1, 2, 4, 3}, "7 A:1 :0"},             // vendor leaves the device
        {"V\t1\t" + filler + "V\t2\tA\nD\t3\tB\n", {2, 3, 0, 0}, "0 A:1 B:1"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Ask(c.content, c.ids), c.answer) << c.content;
    EXPECT_EQ(Ask("V\t1\t" + filler + "\nD\t3\tB\n", {1, 3, 0, 0}, 5), "0 nnnn:8445 B:1");
}

TEST(PCINames, BadArguments)
{
    const std::tuple<uint32_t, uint32_t, const char *, uint32_t, char> cases[] = {
        // with the first byte of both buffers afterwards
        {0, 8, "/proc/self/fd", 271, '#'},
        {8, 0, "/proc/self/fd", 271, '#'},
        {8, 8, "", 271, '\0'},
        {8, 8, "/proc/self/fd/none", 7, '\0'},
    };
    for (auto [vendorSize, deviceSize, path, status, first] : cases) {
        char vendor[8] = "#", device[8] = "#";
        EXPECT_EQ(SMReadPCIDevFile(1, 2, 0, 0, path, vendor, &vendorSize, device, &deviceSize), status);
        EXPECT_EQ(vendorSize + deviceSize, 0u);
        EXPECT_TRUE(vendor[0] == first && device[0] == first);
    }
}

} // namespace
