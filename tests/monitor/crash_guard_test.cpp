// The guard's own steps, over a platform layer that does what the test says: this file takes the place of the pipe and
// of the process list.

#include "gpu/crash_guard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "gpu/monitor_link.h"
#include "gpu/monitor_program.h"
#include "platform/monitor_pipe.h"
#include "platform/monitor_process.h"

namespace lumiset {
namespace {

using platform::PipeAttempt;
using Calls = std::vector<std::string>;

struct FakePlatform {
    std::vector<PipeAttempt> attempts;  ///< the last one stays
    std::wstring module = L"/plug-ins/module.so";
    bool installed = true;
    bool listed = false;
    bool starts = true;
    bool waits = true;
    std::chrono::milliseconds eachWait{0};

    Calls calls{};
    std::string message{};
    std::vector<std::chrono::milliseconds> waited{};
};

FakePlatform fake;

}  // namespace

namespace platform {

const wchar_t* const kMonitorProgram = L"Monitor";

std::wstring modulePath() {
    return fake.module;
}
bool isProgram(const std::wstring& path) {
    EXPECT_EQ(path, L"/plug-ins/Monitor");
    return fake.installed;
}
bool isMonitorListed() {
    fake.calls.emplace_back("list");
    return fake.listed;
}
bool startProgram(const std::wstring& path) {
    EXPECT_EQ(path, L"/plug-ins/Monitor");
    fake.calls.emplace_back("start");
    return fake.starts;
}
PipeAttempt sendToMonitor(std::string_view message, PipeRoom room) {
    EXPECT_EQ(room == PipeRoom::kHalf, message.ends_with(";1"));
    fake.calls.emplace_back("send");
    fake.message = message;
    const PipeAttempt attempt = fake.attempts.front();
    if (fake.attempts.size() > 1) {
        fake.attempts.erase(fake.attempts.begin());
    }
    return attempt;
}
std::string pipeRefusal() {
    fake.calls.emplace_back("refusal");
    return "Refused.";
}
bool waitForMonitor(std::chrono::milliseconds time) {
    if (fake.calls.back() != "wait") {
        fake.calls.emplace_back("wait");
    }
    fake.waited.push_back(time);
    std::this_thread::sleep_for(fake.eachWait);
    return fake.waits;
}

}  // namespace platform

namespace {

using Clock = MonitorLink::Clock;

bool send() {
    return MonitorLink().send("Host;Library;Effect;1-2;1", kFrameStarts);
}

TEST(CrashGuard, StartsTheMonitorOnceForAMessageAndNeverASecond) {
    constexpr auto kSent = PipeAttempt::kSent;
    constexpr auto kBusy = PipeAttempt::kBusy;
    constexpr auto kUnreachable = PipeAttempt::kUnreachable;
    const struct {
        const char* what;
        FakePlatform platform;
        bool sent;
        Calls calls;
    } rows[] = {
        {"it listens", {.attempts = {kSent}}, true, {"send"}},
        {"the write fails", {.attempts = {PipeAttempt::kFailed}}, false, {"send"}},
        {"none runs", {.attempts = {kUnreachable, kSent}}, true, {"send", "list", "start", "send"}},
        {"it does not come up", {.attempts = {kUnreachable}}, false, {"send", "list", "start", "send"}},
        {"it cannot be started", {.attempts = {kUnreachable}, .starts = false}, false, {"send", "list", "start"}},
        {"it runs and does not listen", {.attempts = {kUnreachable}, .listed = true}, false, {"send", "list"}},
        {"it is not installed", {.attempts = {kUnreachable}, .installed = false}, false, {"send"}},
        {"busy for a while", {.attempts = {kBusy, kBusy, kSent}}, true, {"send", "wait", "send", "wait", "send"}},
        {"busy for long", {.attempts = {kBusy}, .waits = false}, false, {"send", "wait"}},
        {"it ends while busy, and another comes up",
         {.attempts = {kBusy, kUnreachable, kSent}},
         true,
         {"send", "wait", "send", "list", "start", "send"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        fake = row.platform;
        EXPECT_EQ(send(), row.sent);
        EXPECT_EQ(fake.calls, row.calls);
    }
}

TEST(CrashGuard, WaitsTenSecondsInAllForAPipeThatIsBusyTimeAndAgain) {
    fake = {.attempts = {PipeAttempt::kBusy}, .eachWait = std::chrono::milliseconds(5100)};
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(send());
    ASSERT_EQ(fake.waited.size(), 2U);
    EXPECT_EQ(fake.waited[0], std::chrono::seconds(10));
    EXPECT_LE(fake.waited[1], std::chrono::milliseconds(4900));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(CrashGuard, LeavesAMonitorThatGivesTroubleAloneForHalfAMinute) {
    constexpr auto kSent = PipeAttempt::kSent;
    constexpr auto kBusy = PipeAttempt::kBusy;
    constexpr auto kUnreachable = PipeAttempt::kUnreachable;
    const struct {
        const char* what;
        FakePlatform trouble;
        Calls afterwards;  ///< when the half minute is over
    } rows[] = {
        {"it cannot be started", {.attempts = {kUnreachable}, .starts = false}, {"send", "list", "start"}},
        {"it does not come up", {.attempts = {kUnreachable}}, {"send", "list", "start", "send"}},
        {"it does not listen", {.attempts = {kUnreachable}, .listed = true}, {"send", "list"}},
        {"it hangs", {.attempts = {kBusy}, .waits = false}, {"send"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        MonitorLink link;
        const auto begin = Clock::now();
        const auto callsAt = [&](std::chrono::seconds time) {
            fake.calls.clear();
            EXPECT_FALSE(link.send(";1", kFrameStarts, begin + time));
            return fake.calls;
        };
        fake = row.trouble;
        callsAt(std::chrono::seconds(0));
        for (const int time : {0, 5, 29}) {
            EXPECT_EQ(callsAt(std::chrono::seconds(time)), Calls{"send"});
        }
        EXPECT_EQ(callsAt(std::chrono::seconds(41)), row.afterwards);
        fake.attempts = {kSent};
        EXPECT_TRUE(link.send(";1", kFrameStarts, begin + std::chrono::seconds(42))) << "it may listen at any time";
    }
}

TEST(CrashGuard, WaitsForTheBusyPipeOfAMonitorThatCameUpAfterAll) {
    constexpr auto kBusy = PipeAttempt::kBusy;
    constexpr auto kSent = PipeAttempt::kSent;
    MonitorLink link;
    fake = {.attempts = {PipeAttempt::kUnreachable}, .listed = true};
    EXPECT_FALSE(link.send(";1", kFrameStarts)) << "another host has just started it";
    fake = {.attempts = {kSent, kBusy, kSent}};
    EXPECT_TRUE(link.send(";1", kFrameStarts));
    EXPECT_TRUE(link.send(";2", kFrameEnded)) << "a start that was told and an end that was not look like a crash";
}

TEST(CrashGuard, SaysOnceThatThePipeIsInOtherHands) {
    MonitorLink link;
    fake = {.attempts = {PipeAttempt::kRefused}};
    ::testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(link.send(";1", kFrameStarts));
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Lumiset: Refused.\n");
    EXPECT_EQ(fake.calls, (Calls{"send", "refusal", "send", "send"}));
}

TEST(CrashGuard, GivesTheMonitorTimeToComeUp) {
    fake = {.attempts = {PipeAttempt::kUnreachable, PipeAttempt::kSent}};
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(send());
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
}

TEST(CrashGuard, WritesEveryFieldAndNoMore) {
    fake = {.attempts = {PipeAttempt::kSent}};
    EXPECT_TRUE(SendMonitorMessage("Host; the second", nullptr, "Old TV", "1-2", kFrameEnded));
    EXPECT_EQ(fake.message, "Host; the second;;Old TV;1-2;2");
    EXPECT_TRUE(SendMonitorMessage(nullptr, nullptr, nullptr, nullptr, kFrameStarts));
    EXPECT_EQ(fake.message, ";;;;1");
}

TEST(CrashGuard, MakesAnotherIdentifierForEveryFrame) {
    char buffer[kFrameGuidSize];
    EXPECT_FALSE(MakeFrameGuid(buffer, kFrameGuidSize - 1));
    EXPECT_FALSE(MakeFrameGuid(nullptr, 4096));
    std::set<std::string> made;
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(MakeFrameGuid(buffer, sizeof buffer));
        std::string form = buffer;
        std::ranges::replace_if(
            form, [](char c) { return std::string("0123456789abcdef").find(c) != std::string::npos; }, 'x');
        EXPECT_EQ(form, "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx");
        made.insert(buffer);
    }
    EXPECT_EQ(made.size(), 100U);
}

TEST(CrashGuard, FindsTheMonitorBesideTheModule) {
    const std::wstring deep(1023, L'd');
    const struct {
        std::wstring module;
        std::wstring monitor;  ///< empty: none
    } rows[] = {
        {L"C:\\plug-ins\\module.dll", L"C:\\plug-ins\\Monitor"},
        {L"C:/plug-ins/module.dll", L"C:/plug-ins/Monitor"},
        {L"C:\\a/b\\module.dll", L"C:\\a/b\\Monitor"},
        {L"C:\\a\\b/module.dll", L"C:\\a\\b/Monitor"},
        {deep + L"/module.so", deep + L"/Monitor"},
        {deep + L"d/module.so", L""},
        {L"module.so", L""},
        {L"", L""},
    };
    wchar_t buffer[2048];
    for (const auto& row : rows) {
        fake.module = row.module;
        EXPECT_EQ(GetMonitorPath(buffer, std::size(buffer)), !row.monitor.empty());
        if (!row.monitor.empty()) {
            EXPECT_EQ(buffer, row.monitor);
            EXPECT_TRUE(GetMonitorPath(buffer, row.monitor.size() + 1));
            EXPECT_FALSE(GetMonitorPath(buffer, row.monitor.size()));
        }
    }
    EXPECT_FALSE(GetMonitorPath(nullptr, 2048));
}

}  // namespace
}  // namespace lumiset
