#include "gpu/monitor_link.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <thread>

#include "gpu/monitor_program.h"
#include "platform/monitor_pipe.h"
#include "platform/monitor_process.h"

namespace lumiset {
namespace {

using Clock = MonitorLink::Clock;

/// Enough for a monitor that was just started to make its pipe.
constexpr std::chrono::milliseconds kStartTime{100};
/// The longest that a frame waits for a busy pipe.
constexpr std::chrono::seconds kBusyTime{10};
constexpr std::chrono::seconds kRestTime{30};

bool isInstalled() {
    wchar_t path[1088];
    return GetMonitorPath(path, std::size(path)) && platform::isProgram(path);
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

}  // namespace

bool MonitorLink::send(const std::string& text, int state, Clock::time_point now) {
    // The end of a frame whose start was told must get through, or it will look like a crash.
    const platform::PipeRoom room = state == kFrameStarts ? platform::PipeRoom::kHalf : platform::PipeRoom::kAll;
    bool started = false;
    BusyTime busyTime;
    for (;;) {
        switch (platform::sendToMonitor(text, room)) {
            case platform::PipeAttempt::kSent:
                if (state == kFrameStarts) {
                    m_hangs = false;
                }
                return true;
            case platform::PipeAttempt::kUnreachable:
                // Where no monitor is installed there is nothing to look for; walking the list of processes in every
                // frame would cost more than all the rest.
                if (now.time_since_epoch().count() < m_noStartUntil || !isInstalled()) {
                    return false;
                }
                if (started || IsMonitorRunning() || !StartMonitor()) {
                    m_noStartUntil = (now + kRestTime).time_since_epoch().count();
                    return false;
                }
                started = true;
                std::this_thread::sleep_for(kStartTime);
                break;
            case platform::PipeAttempt::kBusy: {
                if (now.time_since_epoch().count() < m_noWaitUntil || (m_hangs && state == kFrameStarts)) {
                    return false;
                }
                const std::chrono::milliseconds time = busyTime.left();
                if (time.count() == 0 || !platform::waitForMonitor(time)) {
                    m_hangs = true;
                    m_noWaitUntil = (now + kBusyTime + kRestTime).time_since_epoch().count();
                    return false;
                }
                break;
            }
            case platform::PipeAttempt::kRefused:
                refuse();
                return false;
            case platform::PipeAttempt::kFailed:
                return false;
        }
    }
}

void MonitorLink::refuse() {
    if (!m_refused.exchange(true)) {
        std::fprintf(stderr, "Lumiset: %s\n", platform::pipeRefusal().c_str());
    }
}

}  // namespace lumiset
