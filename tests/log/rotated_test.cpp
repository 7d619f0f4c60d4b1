#include <fcntl.h>
#include <gtest/gtest.h>
#include <qzvest/rotatedlog.h>
#include <qzvest/thread.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <string>

namespace {

using Files = std::map<std::string, std::string>; // by name

class RotatedLog : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "rotatedXXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
        path_ = name + "/log";
    }
    void TearDown() override
    {
        std::filesystem::remove_all(folder_);
    }

    void Put(const Files &files) const
    {
        for (const auto &entry : std::filesystem::directory_iterator(folder_))
            std::filesystem::remove_all(entry);
        for (const auto &[name, content] : files)
            std::ofstream(folder_ + "/" + name, std::ios::binary) << content;
    }
    [[nodiscard]] Files Get() const
    {
        Files files;
        for (const auto &entry : std::filesystem::directory_iterator(folder_)) {
            std::ifstream file(entry.path(), std::ios::binary);
            files[entry.path().filename()] = std::string{std::istreambuf_iterator<char>(file), {}};
        }
        return files;
    }
    [[nodiscard]] uint32_t Say(const char *message, uint32_t maxSize = 100, uint32_t generations = 0,
                               uint32_t flags = 0) const
    {
        return SMFileLogMsgToRotatedLog(message, path_.c_str(), maxSize, generations, flags);
    }
    [[nodiscard]] mode_t Mode(const std::string &suffix = "") const
    {
        return static_cast<mode_t>(std::filesystem::status(path_ + suffix).permissions());
    }

    std::string folder_;
    std::string path_;
};

TEST_F(RotatedLog, RotatesAndDeletes)
{
    const auto rotates = [this](uint32_t maxSize, uint32_t generations) {
        SMFileRotateCheck(path_.c_str(), maxSize, generations);
    };
    const auto deletes = [this](uint16_t older, uint32_t generations) {
        SMFileDeleteRotated(path_.c_str(), older, generations);
    };
    const Files all = {{"log", "0000"}, {"log.1", "1"}, {"log.2", "2"}, {"log.3", "3"}, {"log.4", "4"}};
    const Files rest = {{"log.1", "1"}, {"log.2", "2"}, {"log.3", "3"}, {"log.4", "4"}};
    const struct {
        std::function<void()> change;
        Files before, after;
    } cases[] = {
        {[&] { rotates(4, 3); }, all, all}, // not above the limit
        {[&] { rotates(3, 3); }, all, {{"log.1", "0000"}, {"log.2", "1"}, {"log.3", "2"}, {"log.4", "4"}}},
        {[&] { rotates(3, 1); }, all, {{"log.1", "0000"}, {"log.2", "2"}, {"log.3", "3"}, {"log.4", "4"}}},
        {[&] { rotates(3, 0); }, all, rest},
        {[&] { rotates(0, 12); },
         {{"log", "0"}, {"log.9", "9"}, {"log.11", "11"}},
         {{"log.1", "0"}, {"log.10", "9"}, {"log.12", "11"}}},
        {[&] { rotates(0, 3); }, {{"log", ""}}, {{"log", ""}}},
        {[&] { rotates(0, 3); }, rest, rest}, // without a newest one nothing moves
        {[&] { deletes(0, 4); }, all, rest},
        {[&] { deletes(2, 4); }, all, rest}, // 1 alone is a yes
        {[&] { deletes(1, 3); }, {{"log", ""}, {"log.1", ""}, {"log.3", ""}, {"log.4", ""}}, {{"log.4", ""}}},
        {[&] { deletes(1, 9); }, {{"log.4", ""}, {"other", ""}}, {{"other", ""}}},
    };
    for (const auto &row : cases) {
        Put(row.before);
        row.change();
        EXPECT_EQ(Get(), row.after) << &row - cases;
    }
    SMFileRotateCheck(nullptr, 0, 3);
    SMFileDeleteRotated(nullptr, 1, 1);

    Put({});
    ASSERT_EQ(truncate((std::ofstream(path_), path_.c_str()), int64_t{1} << 32), 0); // beyond 32 bits, and sparse
    rotates(0xFFFFFFFF, 0);
    EXPECT_EQ(Get(), Files{});
}

TEST_F(RotatedLog, MessagesRotateWhatHasGrownBeyondTheLimit)
{
    EXPECT_EQ(SMFileLogMsgToRotatedLog(nullptr, path_.c_str(), 9, 1, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("m", nullptr, 9, 1, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("m", (folder_ + "/none/log").c_str(), 9, 1, 0), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), Files{});
    const char *const messages[] = {"12345", "%s%n", "x\n"};
    const Files after[] = {{{"log", "12345"}},
                           {{"log", "12345%s%n"}}, // had just its limit
                           {{"log", "x\n"}, {"log.1", "12345%s%n"}}};
    for (size_t i = 0; i < std::size(messages); ++i) {
        ASSERT_EQ(Say(messages[i], 5, 1), SM_STATUS_OK);
        EXPECT_EQ(Get(), after[i]) << i;
    }
    const std::string message(100000, 'm');
    ASSERT_EQ(Say(message.c_str(), 1, 0, SM_ROTATED_LINE_FEED | 8), SM_STATUS_OK); // deletes what there was
    EXPECT_EQ(Get(), (Files{{"log", message + "\n"}, {"log.1", "12345%s%n"}}));
}

TEST_F(RotatedLog, AMessageThatASignalCutsShortGoesOn)
{
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    const std::string message(200000, 'm');
    const pid_t writer = fork();
    if (writer == 0) {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGUSR1, &action, nullptr);
        _exit(static_cast<int>(Say(message.c_str(), UINT32_MAX, 1, SM_ROTATED_LINE_FEED)));
    }
    const int fifo = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    const int room = fcntl(fifo, F_GETPIPE_SZ);
    for (int held = 0; held < room; sched_yield())
        ASSERT_EQ(ioctl(fifo, FIONREAD, &held), 0);
    ASSERT_EQ(kill(writer, SIGUSR1), 0); // while it waits for room
    std::string found;
    char piece[4096];
    for (ssize_t got; (got = read(fifo, piece, sizeof piece)) > 0;)
        found.append(piece, static_cast<size_t>(got));
    EXPECT_EQ(found.size(), message.size() + 1);
    EXPECT_EQ(found.back(), '\n');
    int status = -1;
    EXPECT_EQ(waitpid(writer, &status, 0), writer);
    EXPECT_EQ(status, 0);
    close(fifo);
    std::filesystem::remove(path_);
}

TEST_F(RotatedLog, ANewFileHasTheModeOfTheOldOne)
{
    const mode_t oldMask = umask(0);
    ASSERT_EQ(Say("first"), SM_STATUS_OK);
    EXPECT_EQ(Mode(), 0644u);
    umask(077);
    for (const mode_t mode : {07777u, 01662u}) {
        ASSERT_EQ(chmod(path_.c_str(), mode), 0);
        ASSERT_EQ(Say("next", 0, 1), SM_STATUS_OK);
        EXPECT_EQ(Mode(), mode & 01666);
        EXPECT_EQ(Mode(".1"), mode);
    }
    umask(oldMask);
}

TEST_F(RotatedLog, TimeAndThreadComeInFront)
{
    setenv("TZ", "XXX-3:30", 1);
    const std::string thread = "[" + std::to_string(getpid()) + ":" + std::to_string(SMThreadGetID()) + "] ";
    for (uint32_t flags = 0; flags < 8; ++flags) {
        time_t before = time(nullptr);
        ASSERT_EQ(Say("it", 0, 0, flags), SM_STATUS_OK);
        const std::string rest =
            ((flags & SM_ROTATED_THREAD) != 0 ? thread : "") + "it" + ((flags & SM_ROTATED_LINE_FEED) != 0 ? "\n" : "");
        std::set<std::string> expected;
        for (const time_t now = time(nullptr); before <= now; ++before) {
            char text[64];
            tm local;
            (void)std::strftime(text, sizeof text, "[%b %d %Y %H:%M:%S] ", localtime_r(&before, &local));
            expected.insert(((flags & SM_ROTATED_TIME) != 0 ? text : "") + rest);
        }
        EXPECT_TRUE(expected.contains(Get()["log"])) << Get()["log"];
    }
    unsetenv("TZ");
}

TEST_F(RotatedLog, NamesThatAreTooLongStay)
{
    std::string deep = folder_; // a path of 253 bytes: ".9" fits behind it, ".10" does not
    while (deep.size() < 200)
        deep += "/" + std::string(40, 'd');
    std::filesystem::create_directories(deep);
    const std::string path = deep + "/" + std::string(253 - deep.size() - 1, 'f');
    std::ofstream(path) << "0";
    std::ofstream(path + ".9") << "9";
    std::ofstream(path + ".8") << "8";
    SMFileRotateCheck(path.c_str(), 0, 10);
    EXPECT_TRUE(std::filesystem::exists(path + ".1"));
    EXPECT_FALSE(std::filesystem::exists(path + ".8"));
    std::string content;
    EXPECT_TRUE(std::ifstream(path + ".9") >> content);
    EXPECT_EQ(content, "8");
}

} // namespace
