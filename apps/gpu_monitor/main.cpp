// Hears of every frame that hosts render in OpenGL, and writes a report for one whose process has ended in the middle
// of it. One monitor serves all hosts of a user and outlives them. When it has heard nothing for a while and no frame
// is under way, nothing is lost by leaving: the next frame starts it again.

#include <algorithm>
#include <chrono>

#include "apps/gpu_monitor/frame_ledger.h"
#include "platform/monitor_inbox.h"

namespace lumiset::monitor {
namespace {

using Clock = std::chrono::steady_clock;

/// How often processes with a frame under way are looked for, at most.
constexpr std::chrono::milliseconds kLookTime{250};
/// How long nothing may happen before it is seen whether hosts still find the pipe.
constexpr std::chrono::milliseconds kQuietTime{2000};
constexpr std::chrono::minutes kIdleTime{10};

class Monitor {
public:
    explicit Monitor(platform::MonitorInbox& inbox) : m_inbox(inbox) {}

    void run() {
        while (receive(m_ledger.empty() && m_unwritten.empty() ? kQuietTime : kLookTime)) {
            const Clock::time_point now = Clock::now();
            if (now - m_lastLook >= kLookTime) {
                m_lastLook = now;
                if (!look()) {
                    return;
                }
            }
            if (m_ledger.empty() && m_unwritten.empty() && now - m_lastHeard > kIdleTime) {
                return;
            }
        }
    }

private:
    bool receive(std::chrono::milliseconds time) {
        m_messages.clear();
        const bool more = m_inbox.receive(time, m_messages);
        for (const platform::MonitorMessage& message : m_messages) {
            m_lastHeard = Clock::now();
            if (const auto frame = parseFrameMessage(message.text)) {
                m_ledger.note(*frame, message.sender);
            }
        }
        return more;
    }

    bool look() {
        std::vector<platform::Process> gone = m_ledger.processes();
        std::erase_if(gone, platform::isRunning);
        // What they had sent before they ended may still be on its way.
        if (!gone.empty() && !receive(std::chrono::milliseconds(0))) {
            return false;
        }
        for (const platform::Process& process : gone) {
            std::ranges::move(m_ledger.take(process), std::back_inserter(m_unwritten));
        }
        // What cannot be stored now, on a full disk for one, is tried again.
        std::erase_if(m_unwritten, platform::storeCrashReport);
        return true;
    }

    platform::MonitorInbox& m_inbox;
    FrameLedger m_ledger;
    std::vector<platform::CrashReport> m_unwritten;
    std::vector<platform::MonitorMessage> m_messages;
    Clock::time_point m_lastLook;
    Clock::time_point m_lastHeard = Clock::now();
};

}  // namespace
}  // namespace lumiset::monitor

int main() {
    const auto inbox = lumiset::platform::openMonitorInbox();
    if (inbox == nullptr) {
        return 1;
    }
    lumiset::monitor::Monitor(*inbox).run();
    return 0;
}
