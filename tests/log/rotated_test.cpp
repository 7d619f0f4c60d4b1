#include <fcntl.h>
#include <qzvest/rotatedlog.h>
#include <qzvest/thread.h>
#include <sys/ioctl.h>

#include <functional>
#include <map>
#include <thread>

#include "log/logs.h"

namespace {

using Files = std::map<std::string, std::string>; // by name

const std::string kPath = kBase + "/log";

using RotatedLog = Logs;

Files Get()
{
    Files files;
    for (const auto &entry : fs::directory_iterator(kBase))
        files[entry.path().filename()] = ReadText(entry.path());
    return files;
}

uint32_t Say(const std::string &message, uint32_t maxSize = 100, uint32_t generations = 0, uint32_t flags = 0,
             const std::string &path = kPath)
{
    return SMFileLogMsgToRotatedLog(message.c_str(), path.c_str(), maxSize, generations, flags);
}

TEST_F(RotatedLog, RotatesAndDeletes)
{
    const auto rotates = [](uint32_t maxSize, uint32_t generations) {
        return [=] { SMFileRotateCheck(kPath.c_str(), maxSize, generations); };
    };
    const auto deletes = [](uint16_t older, uint32_t generations) {
        return [=] { SMFileDeleteRotated(kPath.c_str(), older, generations); };
    };
    const Files all = {{"log", "0000"}, {"log.1", "1"}, {"log.2", "2"}, {"log.3", "3"}, {"log.4", "4"}};
    const Files rest = {{"log.1", "1"}, {"log.2", "2"}, {"log.3", "3"}, {"log.4", "4"}};
    const struct {
        std::function<void()> change;
        Files before, after;
    } cases[] = {
        {rotates(4, 3), all, all}, // not above the limit
        {rotates(3, 3), all, {{"log.1", "0000"}, {"log.2", "1"}, {"log.3", "2"}, {"log.4", "4"}}},
        {rotates(3, 1), all, {{"log.1", "0000"}, {"log.2", "2"}, {"log.3", "3"}, {"log.4", "4"}}},
        {rotates(3, 0), all, rest},
        {rotates(0, 12),
         {{"log", "0"}, {"log.9", "9"}, {"log.11", "11"}},
         {{"log.1", "0"}, {"log.10", "9"}, {"log.12", "11"}}},
        {rotates(0, 3), rest, rest}, // without a newest one nothing moves
        {deletes(2, 4), all, rest},  // 1 alone is a yes
        {deletes(1, 3), {{"log", ""}, {"log.1", ""}, {"log.3", ""}, {"log.4", ""}}, {{"log.4", ""}}},
        {deletes(1, 9), {{"log.4", ""}, {"other", ""}}, {{"other", ""}}},
    };
    for (const auto &row : cases) {
        for (const auto &[name, content] : Get())
            fs::remove(kBase + "/" + name);
        for (const auto &[name, content] : row.before)
            WriteText(kBase + "/" + name, content);
        row.change();
        EXPECT_EQ(Get(), row.after) << &row - cases;
    }
    WriteText(kPath, "");
    fs::resize_file(kPath, int64_t{1} << 32); // beyond 32 bits, and sparse
    rotates(0xFFFFFFFF, 0)();
    EXPECT_FALSE(fs::exists(kPath));
}

TEST_F(RotatedLog, MessagesRotateWhatHasGrownBeyondTheLimit)
{
    EXPECT_EQ(SMFileLogMsgToRotatedLog(nullptr, kPath.c_str(), 9, 1, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(Say("m", 9, 1, 0, kBase + "/none/log"), SM_STATUS_FAILED);
    const std::string message(100000, 'm');
    const std::pair<std::string, Files> rows[] = {{"12345", {{"log", "12345"}}},
                                                  {"%s%n", {{"log", "12345%s%n"}}}, // had just its limit
                                                  {message, {{"log", message}, {"log.1", "12345%s%n"}}}};
    for (const auto &[said, after] : rows) {
        ASSERT_EQ(Say(said, 5, 1), SM_STATUS_OK);
        EXPECT_EQ(Get(), after);
    }
    ASSERT_EQ(Say("last", 1, 0, SM_ROTATED_LINE_FEED | 8), SM_STATUS_OK); // deletes what there was
    EXPECT_EQ(Get(), (Files{{"log", "last\n"}, {"log.1", "12345%s%n"}}));
}

TEST_F(RotatedLog, AMessageThatASignalCutsShortGoesOn)
{
    ASSERT_EQ(mkfifo(kPath.c_str(), 0600), 0);
    std::string message, found(200000, '\0');
    while (message.size() < found.size())
        message += std::to_string(message.size());
    message.resize(found.size() - 1);
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    std::thread writer([&] { EXPECT_EQ(Say(message, UINT32_MAX, 1, SM_ROTATED_LINE_FEED), SM_STATUS_OK); });
    const int fifo = open(kPath.c_str(), O_RDONLY | O_CLOEXEC);
    for (int held = 0; held < fcntl(fifo, F_GETPIPE_SZ) && ioctl(fifo, FIONREAD, &held) == 0;)
        sched_yield();
    pthread_kill(writer.native_handle(), SIGUSR1); // while it waits for room
    size_t done = 0;
    for (ssize_t got; (got = read(fifo, &found[done], found.size() - done)) > 0;)
        done += static_cast<size_t>(got);
    writer.join();
    close(fifo);
    EXPECT_TRUE(found == message + "\n") << done;
}

TEST_F(RotatedLog, ANewFileHasTheModeOfTheOldOne)
{
    umask(0);
    ASSERT_EQ(Say("first"), SM_STATUS_OK);
    EXPECT_EQ(ModeOf(kPath), 0644u);
    umask(077);
    for (const mode_t mode : {07777u, 01662u}) {
        ASSERT_EQ(chmod(kPath.c_str(), mode), 0);
        ASSERT_EQ(Say("next", 0, 1), SM_STATUS_OK);
        EXPECT_EQ(ModeOf(kPath), mode & 01666);
        EXPECT_EQ(ModeOf(kPath + ".1"), mode);
    }
}

TEST_F(RotatedLog, TimeAndThreadComeInFront)
{
    const std::string thread = "[" + std::to_string(getpid()) + ":" + std::to_string(SMThreadGetID()) + "] ";
    for (uint32_t flags = 0; flags < 8; ++flags) {
        ASSERT_EQ(Say("it", 0, 0, flags), SM_STATUS_OK);
        EXPECT_EQ(ReadText(kPath), ((flags & SM_ROTATED_TIME) != 0 ? "[Nov 15 2023 03:43:20] " : "") +
                                       ((flags & SM_ROTATED_THREAD) != 0 ? thread : "") + "it" +
                                       ((flags & SM_ROTATED_LINE_FEED) != 0 ? "\n" : ""));
    }
}

TEST_F(RotatedLog, NamesThatAreTooLongStay)
{
    const std::string folder = kBase + "/" + std::string(120, 'd') + "/"; // ".9" fits behind 253 bytes, ".10" does not
    const std::string path = folder + std::string(253 - folder.size(), 'f');
    for (const char *generation : {"", ".8", ".9"})
        WriteText(path + generation, std::string("0") + generation);
    SMFileRotateCheck(path.c_str(), 0, 10);
    EXPECT_TRUE(fs::exists(path + ".1"));
    EXPECT_FALSE(fs::exists(path + ".8"));
    EXPECT_EQ(ReadText(path + ".9"), "0.8");
}

} // namespace
