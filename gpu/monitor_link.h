#pragma once

#include <atomic>
#include <chrono>
#include <string>

namespace lumiset {

/// A process's way to the monitor. Safe from any thread.
class MonitorLink {
public:
    using Clock = std::chrono::steady_clock;

    /// Tells the monitor; `state` is a frame's. Starts a monitor where none runs, and waits for a busy pipe. Neither is
    /// tried in the half minute after one that was in vain, counted from `now`, and a frame's start does not wait again
    /// before one got through without; a message that needs neither goes through. False when the monitor was not told.
    bool send(const std::string& text, int state, Clock::time_point now = Clock::now());

private:
    [[nodiscard]] bool isResting(Clock::time_point now) const;
    bool rest(Clock::time_point now);
    void refuse();

    std::atomic<Clock::rep> m_restEnd{Clock::time_point::min().time_since_epoch().count()};
    std::atomic<bool> m_hangs{false};
    std::atomic<bool> m_refused{false};
};

}  // namespace lumiset
