#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace lumiset::render {

/// The three steps of every job. An exception in any of them ends the run and is thrown on by it.
template <class Job>
struct PipelineSteps {
    std::function<bool(Job&)> read;              ///< on a thread of its own, in order; false: no further job
    std::function<void(Job&, int worker)> work;  ///< on the workers' threads, in any order
    std::function<void(Job&)> write;             ///< on the calling thread, in the order of reading
    std::function<void()> tick;                  ///< on the calling thread, ten times a second or more often
};

/// Reads, works on and writes jobs at the same time, with a bounded number of jobs in memory, whose objects are
/// used again and again.
template <class Job>
class OrderedPipeline {
public:
    OrderedPipeline(int workers, PipelineSteps<Job> steps)
        : m_workers(workers), m_steps(std::move(steps)), m_slots(static_cast<std::size_t>(workers) + 3) {}

    /// Returns when the last job is written.
    void run() {
        {
            std::vector<std::jthread> threads;
            guarded([&] {
                threads.emplace_back([this] { guarded([this] { readAll(); }); });
                for (int i = 0; i < m_workers; ++i) {
                    threads.emplace_back([this, i] { guarded([this, i] { workAll(i); }); });
                }
                writeAll();
            });
        }
        if (m_error) {
            std::rethrow_exception(m_error);
        }
    }

private:
    enum class State { kFree, kRead, kWorked };
    struct Slot {
        Job job{};
        State state = State::kFree;
    };

    template <class Step>
    void guarded(Step step) {
        try {
            step();
        } catch (...) {
            const std::lock_guard lock(m_mutex);
            if (!m_error) {
                m_error = std::current_exception();
            }
            m_aborted = true;
            m_changed.notify_all();
        }
    }

    Slot& slot(std::size_t number) { return m_slots[number % m_slots.size()]; }

    void readAll() {
        std::unique_lock lock(m_mutex);
        while (!m_ended) {
            Slot& next = slot(m_read);
            m_changed.wait(lock, [&] { return m_aborted || next.state == State::kFree; });
            if (m_aborted) {
                return;
            }
            lock.unlock();
            const bool more = m_steps.read(next.job);
            lock.lock();
            if (more) {
                next.state = State::kRead;
                ++m_read;
            } else {
                m_ended = true;
            }
            m_changed.notify_all();
        }
    }

    void workAll(int worker) {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [&] { return m_aborted || m_ended || m_taken < m_read; });
            if (m_aborted || m_taken == m_read) {
                return;
            }
            Slot& mine = slot(m_taken++);
            lock.unlock();
            m_steps.work(mine.job, worker);
            lock.lock();
            mine.state = State::kWorked;
            m_changed.notify_all();
        }
    }

    void writeAll() {
        using namespace std::chrono_literals;
        std::unique_lock lock(m_mutex);
        for (;;) {
            Slot& next = slot(m_written);
            const auto isDone = [&] { return m_ended && m_written == m_read; };
            m_changed.wait_for(lock, 100ms, [&] { return m_aborted || next.state == State::kWorked || isDone(); });
            if (m_aborted || isDone()) {
                return;
            }
            const bool ready = next.state == State::kWorked;
            lock.unlock();
            if (ready) {
                m_steps.write(next.job);
            }
            m_steps.tick();
            lock.lock();
            if (ready) {
                next.state = State::kFree;
                ++m_written;
                m_changed.notify_all();
            }
        }
    }

    int m_workers;
    PipelineSteps<Job> m_steps;
    std::vector<Slot> m_slots;
    std::mutex m_mutex;
    std::condition_variable m_changed;  // any change of what follows
    std::size_t m_read = 0;
    std::size_t m_taken = 0;
    std::size_t m_written = 0;
    bool m_ended = false;
    bool m_aborted = false;
    std::exception_ptr m_error;
};

}  // namespace lumiset::render
