#include "gpu/crash_guard.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>

#include "platform/crash_reports.h"
#include "platform/guid.h"
#include "platform/monitor_pipe.h"
#include "platform/monitor_process.h"

namespace lumiset {
namespace {

using Clock = std::chrono::steady_clock;

/// Enough for a monitor that was just started to make its pipe.
constexpr std::chrono::milliseconds kStartTime{100};
/// The longest that a frame waits for a busy pipe.
constexpr std::chrono::seconds kBusyTime{10};
constexpr std::size_t kLongestFolder = 1024;

/// For functions that answer with a boolean: a failure of any kind is false.
template <class Work>
bool succeeds(Work work) noexcept {
    try {
        return work();
    } catch (const std::exception&) {
        return false;
    }
}

/// Empty where the module's folder cannot be told.
std::wstring monitorPath() {
    const std::wstring module = platform::modulePath();
    const std::size_t separator = module.find_last_of(L"/\\");
    if (separator >= kLongestFolder) {
        return {};  // also without a separator, whose place would be npos
    }
    return module.substr(0, separator + 1) + platform::kMonitorProgram;
}

std::string messageText(const char* host, const char* library, const char* effect, const char* guid, int state) {
    std::string text;
    for (const char* field : {host, library, effect, guid}) {
        text.append(field != nullptr ? field : "").push_back(';');
    }
    return text + std::to_string(state);
}

/// What is left of the time for a busy pipe, counted from the first attempt that found it so.
class BusyTime {
public:
    std::chrono::milliseconds left() {
        const Clock::time_point now = Clock::now();
        if (m_end == Clock::time_point()) {
            m_end = now + kBusyTime;
        }
        return std::chrono::ceil<std::chrono::milliseconds>(std::max(m_end - now, Clock::duration::zero()));
    }

private:
    Clock::time_point m_end;
};

bool send(const std::string& text) {
    bool started = false;
    BusyTime busyTime;
    for (;;) {
        const platform::PipeAttempt attempt = platform::sendToMonitor(text);
        if (attempt == platform::PipeAttempt::kUnreachable) {
            // Where no monitor is installed there is nothing to look for; walking the list of processes in every
            // frame would cost more than all the rest.
            if (started || !platform::isProgram(monitorPath()) || IsMonitorRunning() || !StartMonitor()) {
                return false;
            }
            started = true;
            std::this_thread::sleep_for(kStartTime);
        } else if (attempt == platform::PipeAttempt::kBusy) {
            const std::chrono::milliseconds time = busyTime.left();
            if (time.count() == 0 || !platform::waitForMonitor(time)) {
                return false;
            }
        } else {
            return attempt == platform::PipeAttempt::kSent;
        }
    }
}

}  // namespace

bool MakeFrameGuid(char* buffer, std::size_t size) noexcept {
    Guid guid{};
    if (buffer == nullptr || size < kFrameGuidSize || !platform::makeGuid(guid)) {
        return false;
    }
    const std::array<unsigned, 3> words = {guid.data1, guid.data2, guid.data3};
    const auto& bytes = guid.data4;
    return std::snprintf(buffer, size, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", words[0], words[1], words[2],
                         bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6], bytes[7]) > 0;
}

bool SendMonitorMessage(const char* host, const char* library, const char* effect, const char* guid,
                        int state) noexcept {
    return succeeds([&] { return send(messageText(host, library, effect, guid, state)); });
}

bool IsMonitorRunning() noexcept {
    return succeeds(platform::isMonitorListed);
}

bool StartMonitor() noexcept {
    return succeeds([] {
        const std::wstring path = monitorPath();
        return !path.empty() && platform::startProgram(path);
    });
}

bool GetMonitorPath(wchar_t* buffer, std::size_t size) noexcept {
    return succeeds([&] {
        const std::wstring path = monitorPath();
        if (buffer == nullptr || path.empty() || path.size() >= size) {
            return false;
        }
        buffer[path.copy(buffer, path.size())] = L'\0';
        return true;
    });
}

bool crashReported(const char* library, const char* effect) noexcept {
    return succeeds([&] {
        const std::vector<platform::CrashReport> reports = platform::crashReports();
        return std::any_of(reports.begin(), reports.end(), [&](const platform::CrashReport& report) {
            return report.effectLibrary == library && report.effect == effect;
        });
    });
}

}  // namespace lumiset
