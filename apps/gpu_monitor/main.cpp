// Hears of every frame that hosts render in OpenGL, and writes a report for one whose process has ended in the middle
// of it. One monitor serves all hosts of a user and outlives them. When it has heard nothing for a while and no frame
// is under way, nothing is lost by leaving: the next frame starts it again.

#include <algorithm>
#include <chrono>
#include <system_error>

#include "apps/gpu_monitor/frame_ledger.h"
#include "platform/monitor_inbox.h"

namespace lumiset::monitor {
namespace {

using Clock = std::chrono::steady_clock;

/// How often processes with a frame under way are looked for, at most, while messages come.
constexpr std::chrono::milliseconds kLookTime{250};
/// When reports that could not be stored, on a full disk for one, are tried again.
constexpr std::chrono::seconds kStoreTime{10};
constexpr std::size_t kMostUnwritten = platform::kMostCrashReports;
constexpr std::chrono::minutes kIdleTime{10};

class Monitor {
public:
    explicit Monitor(platform::MonitorInbox& inbox) : m_inbox(inbox) {}

    void run() {
        while (receive()) {
            const Clock::time_point now = Clock::now();
            if (m_messages.empty() || now - m_lastLook >= kLookTime) {
                m_lastLook = now;
                look();
            }
            if (!m_unwritten.empty() && now >= m_nextStore) {
                m_nextStore = now + kStoreTime;
                store();
            }
            if (m_ledger.empty() && m_unwritten.empty() && now - m_lastHeard > kIdleTime) {
                return;
            }
        }
        store();
    }

private:
    /// How long nothing is to be done unless something happens.
    [[nodiscard]] std::chrono::milliseconds quietTime() const {
        return !m_gone.empty() ? kLookTime.zero() : m_unwritten.empty() ? kIdleTime : kStoreTime;
    }

    bool receive() {
        m_messages.clear();
        const bool more = m_inbox.receive(quietTime(), m_ledger.processes(), m_messages);
        for (const platform::MonitorMessage& message : m_messages) {
            m_lastHeard = Clock::now();
            if (const auto frame = parseFrameMessage(message.text)) {
                note(*frame, message.sender);
            }
        }
        return more;
    }

    void note(const FrameMessage& frame, const platform::Process& sender) {
        switch (frame.state) {
            case FrameState::kStarts:
                m_ledger.start(frame.report, sender);
                break;
            case FrameState::kEnded:
                m_ledger.end(frame.report.guid);
                break;
            case FrameState::kHostLeaves:
                m_ledger.leave(sender);
                break;
        }
    }

    /// A process that was gone at the last look has sent nothing since, so all that it had sent has come by now.
    void look() {
        for (const platform::Process& process : m_gone) {
            for (platform::CrashReport& report : m_ledger.take(process)) {
                if (m_unwritten.size() < kMostUnwritten) {
                    m_unwritten.push_back(std::move(report));
                }
            }
            m_nextStore = {};
        }
        m_gone = m_ledger.processes();
        std::erase_if(m_gone, platform::isRunning);
    }

    void store() {
        try {
            if (platform::storeCrashReports(m_unwritten)) {
                m_unwritten.clear();
            }
        } catch (const std::system_error&) {  // those that stand cannot be read
        }
    }

    platform::MonitorInbox& m_inbox;
    FrameLedger m_ledger;
    std::vector<platform::Process> m_gone;  ///< at the last look, with a frame under way
    std::vector<platform::CrashReport> m_unwritten;
    std::vector<platform::MonitorMessage> m_messages;
    Clock::time_point m_lastLook;
    Clock::time_point m_nextStore;
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
