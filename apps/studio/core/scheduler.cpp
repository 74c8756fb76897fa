#include "apps/studio/core/scheduler.h"

#include <algorithm>
#include <utility>

namespace lumiset::studio {

Scheduler::Scheduler() : m_thread([this] { work(); }) {}

Scheduler::~Scheduler() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void Scheduler::replace(Lane lane, Work work) {
    std::deque<Work> old;  // whose destructors may be anything, so not under the lock
    {
        const std::lock_guard lock(m_mutex);
        old.swap(m_lanes[lane]);
        m_lanes[lane].push_back(std::move(work));
    }
    m_wake.notify_one();
}

void Scheduler::add(Lane lane, Work work) {
    {
        const std::lock_guard lock(m_mutex);
        m_lanes[lane].push_back(std::move(work));
    }
    m_wake.notify_one();
}

void Scheduler::clear(Lane lane) {
    std::deque<Work> old;
    const std::lock_guard lock(m_mutex);
    old.swap(m_lanes[lane]);
    if (!m_inFlight && nothingWaits()) {
        m_idle.notify_all();
    }
}

void Scheduler::waitUntilIdle() {
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return !m_inFlight && nothingWaits(); });
}

bool Scheduler::isIdle() const {
    const std::lock_guard lock(m_mutex);
    return !m_inFlight && nothingWaits();
}

std::size_t Scheduler::waiting(Lane lane) const {
    const std::lock_guard lock(m_mutex);
    return m_lanes[lane].size();
}

bool Scheduler::nothingWaits() const {
    return std::all_of(m_lanes.begin(), m_lanes.end(), [](const std::deque<Work>& lane) { return lane.empty(); });
}

void Scheduler::work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_stopping || !nothingWaits(); });
        if (m_stopping) {
            return;
        }
        const auto lane =
            std::find_if(m_lanes.begin(), m_lanes.end(), [](const std::deque<Work>& each) { return !each.empty(); });
        Work next = std::move(lane->front());
        lane->pop_front();
        m_inFlight = true;
        lock.unlock();
        next();
        next = nullptr;
        lock.lock();
        m_inFlight = false;
        if (nothingWaits()) {
            m_idle.notify_all();
        }
    }
}

}  // namespace lumiset::studio
