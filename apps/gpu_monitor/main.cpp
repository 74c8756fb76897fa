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
        while (receive(isIdle() ? kQuietTime : kLookTime)) {
            const Clock::time_point now = Clock::now();
            if (now - m_lastLook >= kLookTime) {
                m_lastLook = now;
                look();
            }
            if (isIdle() && now - m_lastHeard > kIdleTime) {
                return;
            }
        }
    }

private:
    [[nodiscard]] bool isIdle() const { return m_ledger.empty() && m_unwritten.empty(); }

    bool receive(std::chrono::milliseconds time) {
        m_messages.clear();
        const bool more = m_inbox.receive(time, m_messages);
        for (const platform::MonitorMessage& message : m_messages) {
            m_lastHeard = Clock::now();
            const auto frame = parseFrameMessage(message.text);
            if (frame && frame->ended) {
                m_ledger.end(frame->report.guid);
            } else if (frame) {
                m_ledger.start(frame->report, platform::findProcess(message.sender));
            }
        }
        return more;
    }

    /// A process that was gone at the last look has sent nothing since, so all that it had sent has come by now.
    void look() {
        for (const platform::Process& process : m_gone) {
            std::ranges::move(m_ledger.take(process), std::back_inserter(m_unwritten));
        }
        m_gone = m_ledger.processes();
        std::erase_if(m_gone, platform::isRunning);
        // What cannot be stored now, on a full disk for one, is tried again.
        std::erase_if(m_unwritten, platform::storeCrashReport);
    }

    platform::MonitorInbox& m_inbox;
    FrameLedger m_ledger;
    std::vector<platform::Process> m_gone;  ///< at the last look, with a frame under way
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
