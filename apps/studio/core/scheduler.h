#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace lumiset::studio {

/// Work for one thread of its own, the most urgent first. What is in flight is never broken off: while somebody drags
/// there is always a next picture, and the newest wish waits behind it in place of all older ones.
class Scheduler {
public:
    enum Lane : std::size_t { kOpening, kShown, kRefinement, kReadAhead, kThumbnails, kLanes };
    using Work = std::function<void()>;  ///< throws nothing

    Scheduler();
    /// Forgets what waits and lets end what is in flight.
    ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    // On any thread.
    /// Waits in the lane in place of everything that waits there.
    void replace(Lane lane, Work work);
    /// Waits in the lane behind what is there.
    void add(Lane lane, Work work);
    void clear(Lane lane);
    /// Returns when nothing waits and nothing is in flight.
    void waitUntilIdle();
    [[nodiscard]] bool isIdle() const;
    [[nodiscard]] std::size_t waiting(Lane lane) const;

private:
    void work();
    [[nodiscard]] bool nothingWaits() const;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::array<std::deque<Work>, kLanes> m_lanes;
    bool m_inFlight = false;
    bool m_stopping = false;
    std::thread m_thread;  // last: it uses the others
};

}  // namespace lumiset::studio
