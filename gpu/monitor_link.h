#pragma once

#include <atomic>
#include <chrono>
#include <string>

namespace lumiset {

enum FrameState { kFrameStarts = 1, kFrameEnded = 2 };

/// A process's way to the monitor. Safe from any thread.
class MonitorLink {
public:
    using Clock = std::chrono::steady_clock;

    /// Tells the monitor; `state` is a `FrameState`. Starts a monitor where none runs, and waits for a busy pipe. Each
    /// is left alone in the half minute after it was in vain, counted from `now`, and a frame's start does not wait
    /// again before one got through without; a message that needs neither goes through. False when the monitor was not
    /// told.
    bool send(const std::string& text, int state, Clock::time_point now = Clock::now());

private:
    static constexpr Clock::rep kAlways = Clock::time_point::min().time_since_epoch().count();

    void refuse();

    // Two times: a host that could not start the monitor may reach another host's a moment later, and an end that did
    // not wait for its busy pipe would look like a crash.
    std::atomic<Clock::rep> m_noStartUntil{kAlways};
    std::atomic<Clock::rep> m_noWaitUntil{kAlways};
    std::atomic<bool> m_hangs{false};
    std::atomic<bool> m_refused{false};
};

}  // namespace lumiset
