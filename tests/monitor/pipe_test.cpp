// What only a FIFO can get wrong.

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>

#include "platform/monitor_pipe.h"
#include "platform/monitor_process.h"
#include "platform/posix/monitor_message.h"
#include "platform/posix/runtime_folder.h"
#include "tests/monitor/crash_fixture.h"

namespace lumiset::test {
namespace {

using Clock = std::chrono::steady_clock;

class PipeTest : public CrashTest {
protected:
    /// Writes blank messages until nothing fits in any more.
    static void fill(const std::string& pipe) {
        const int file = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK);
        ASSERT_GE(file, 0);
        const std::string bytes(4096, '\0');
        while (::write(file, bytes.data(), bytes.size()) > 0) {
        }
        ::close(file);
    }
    /// Starts the monitor and has it stand still.
    void stopMonitor() {
        ASSERT_TRUE(runHost(module, "finish", 1));
        ASSERT_EQ(monitors().size(), 1U);
        m_monitor = static_cast<pid_t>(monitors()[0]);
        ASSERT_EQ(::kill(m_monitor, SIGSTOP), 0);
    }

    const std::string m_pipe = (folder / "runtime" / "vantrelgpumonitor").string();
    pid_t m_monitor = 0;
};

TEST_F(PipeTest, HoldsAFrameUpOnlyUntilTheMonitorReadsAgain) {
    stopMonitor();
    fill(m_pipe);
    const auto begin = Clock::now();
    const Child host = startHost(module, "kill", 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(platform::crashReports().empty());
    ::kill(m_monitor, SIGCONT);
    EXPECT_EQ(reportsOnceThereAre(1).size(), 1U) << "though nobody has asked yet how the host ended";
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(3));
    EXPECT_FALSE(endsWell(host));
}

TEST_F(PipeTest, HoldsOneFrameUpForTenSecondsAndHasRoomForTheEndsOfThoseBefore) {
    stopMonitor();
    const auto begin = Clock::now();
    EXPECT_TRUE(runHost(module, "finish", 500)) << "more than the pipe has room for";
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(9900));
    EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(19900)) << "the later frames do not wait again";
    EXPECT_EQ(platform::sendToMonitor("text", platform::PipeRoom::kHalf), platform::PipeAttempt::kBusy);
    EXPECT_EQ(platform::sendToMonitor("text", platform::PipeRoom::kAll), platform::PipeAttempt::kSent);
    ::kill(m_monitor, SIGCONT);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_TRUE(platform::crashReports().empty()) << "the host has ended well";
}

TEST_F(PipeTest, LetsTheMonitorSleepWhileNothingHappens) {
    // A host that stands still in the middle of a frame.
    const Child host = startHost(module, "stop", 1);
    for (int i = 0; i < 300 && monitors().empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(monitors().size(), 1U);
    const auto timesAwake = [] {
        std::ifstream status("/proc/" + std::to_string(monitors()[0]) + "/status");
        std::string word;
        while (status >> word && word != "voluntary_ctxt_switches:") {
        }
        status >> word;
        return word;
    };
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const std::string before = timesAwake();
    std::this_thread::sleep_for(std::chrono::seconds(3));
    EXPECT_EQ(timesAwake(), before);
    kill(host);
    EXPECT_EQ(reportsOnceThereAre(1).size(), 1U) << "and wakes when the host ends";
}

TEST_F(PipeTest, IsOfNoUseInAFolderThatIsALinkOrOpenToOthers) {
    const std::filesystem::path runtime = folder / "runtime";
    EXPECT_TRUE(platform::isPipeFolderGood(runtime.string()));
    EXPECT_TRUE(platform::isPipeFolderGood((folder / "none").string()));
    std::filesystem::create_directory_symlink(runtime, folder / "link");
    EXPECT_FALSE(platform::isPipeFolderGood((folder / "link").string()));
    std::filesystem::permissions(runtime, std::filesystem::perms(0777));
    EXPECT_FALSE(platform::isPipeFolderGood(runtime.string()));
}

TEST(PipeMessages, AreReadFromProcessesThatCanBeSeenAlone) {
    const auto message = platform::messageIn("12 345 678 a b;1", 678);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->sender, (platform::Process{12, 345}));
    EXPECT_EQ(message->text, "a b;1");
    for (const char* bytes : {"12 345 679 a", "12 345 678", "12 345 a", "12 a", "a", "", " 12 345 678 a",
                              "12  345 678 a", "-12 345 678 a", "99999999999999999999 1 678 a"}) {
        EXPECT_FALSE(platform::messageIn(bytes, 678)) << bytes;
    }
}

TEST_F(PipeTest, IsTheUsersOwnAndGoesWithTheMonitor) {
    ASSERT_TRUE(runHost(module, "finish", 1));
    struct stat status {};
    ASSERT_EQ(::lstat(m_pipe.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFIFO | 0600U);
    endMonitors();
    EXPECT_FALSE(std::filesystem::exists(m_pipe));
    EXPECT_TRUE(runHost(module, "finish", 1)) << "and comes with the next";
    EXPECT_TRUE(std::filesystem::exists(m_pipe));
}

TEST_F(PipeTest, LeavesWhatSomebodyPutInItsPlaceAlone) {
    const std::string precious = (folder / "precious").string();
    std::ofstream(precious) << "kept";
    std::filesystem::create_symlink(precious, m_pipe);
    EXPECT_TRUE(runHost(moduleAlone, "finish", 1));
    EXPECT_TRUE(runHost(module, "finish", 1)) << "a monitor puts its own there";
    EXPECT_EQ(monitors().size(), 1U);
    std::string text;
    std::ifstream(precious) >> text;
    EXPECT_EQ(text, "kept");
}

TEST_F(PipeTest, IsNoLongerServedOnceItIsGone) {
    ASSERT_TRUE(runHost(module, "finish", 1));
    std::filesystem::remove_all(folder / "runtime");
    for (int i = 0; i < 400 && !monitors().empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_TRUE(monitors().empty());
}

TEST_F(PipeTest, KeepsNothingOfTheHostThatStartedTheMonitor) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);  // without O_CLOEXEC
    ASSERT_TRUE(platform::startProgram(std::filesystem::path(LUMISET_TEST_MONITOR).wstring()));
    ::close(ends[1]);
    struct pollfd readable {
        ends[0], POLLIN, 0
    };
    EXPECT_EQ(::poll(&readable, 1, 3000), 1) << "somebody has the other end open";
    ::close(ends[0]);

    for (int i = 0; i < 200 && monitors().empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(monitors().size(), 1U);
    const std::string process = "/proc/" + std::to_string(monitors()[0]);
    EXPECT_EQ(std::filesystem::read_symlink(process + "/cwd"), "/");
    std::ifstream status(process + "/stat");
    std::string number, name, state, parent, group, session;
    status >> number >> name >> state >> parent >> group >> session;
    EXPECT_EQ(session, number) << "a terminal's hang-up does not reach it";
    endMonitors();
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "it is no child of ours";
}

TEST_F(PipeTest, DoesNotEndAHostWhenItBreaks) {
    ASSERT_EQ(::mkfifo(m_pipe.c_str(), 0600), 0);
    std::atomic<bool> done{false};
    std::thread reader([&] {  // comes and goes
        while (!done) {
            ::close(::open(m_pipe.c_str(), O_RDONLY | O_NONBLOCK));
        }
    });
    int broken = 0;
    const auto end = Clock::now() + std::chrono::seconds(2);
    while (broken < 20 && Clock::now() < end) {
        broken += platform::sendToMonitor("text", platform::PipeRoom::kAll) == platform::PipeAttempt::kFailed ? 1 : 0;
    }
    done = true;
    reader.join();
    EXPECT_GT(broken, 0);
    sigset_t pending;
    ::sigpending(&pending);
    EXPECT_EQ(::sigismember(&pending, SIGPIPE), 0);
}

}  // namespace
}  // namespace lumiset::test
