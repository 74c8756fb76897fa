#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "host/host_interfaces.h"
#include "host/reference_count.h"
#include "hostkit/com_ptr.h"

namespace lumiset::hostkit {

/// Threads that render one frame together. Any number of render threads may share one pool: each works on its own
/// frame, and the pool's own threads help as long as no more are at work than it was made for. They wait asleep, but
/// for the moment between two pieces of work of one frame.
class ThreadPool final : public Counted<IHostParallel> {
public:
    /// A pool of so many threads, the callers of `Run` among them; of fewer where the system has no more.
    static ComPtr<ThreadPool> create(std::uint32_t threads);

    /// A render thread at work on a frame, also between its calls of `Run`. Without turns one thread counts as at work.
    class Turn {
    public:
        explicit Turn(ThreadPool& pool) : m_pool(pool) { ++m_pool.m_rendering; }
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        ThreadPool& m_pool;
    };

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;
    std::uint32_t LUMISET_CALL GetThreadCount() noexcept override;
    bool LUMISET_CALL Run(ParallelTask task, void* context, std::uint32_t count) noexcept override;

private:
    /// One call of `Run`; it lives there until no helper holds it.
    struct Work {
        ParallelTask task;
        void* context;
        std::uint32_t count;
        std::atomic<std::uint32_t> next{0};
        std::atomic<std::uint32_t> helpers{0};  // changed under the pool's mutex

        template <class Continue>
        void doSome(const Continue& mayContinue);
    };

    ThreadPool() = default;
    ~ThreadPool();
    void lastReleased() noexcept override { delete this; }
    void help();
    [[nodiscard]] Work* unfinishedWork() const;
    /// Whether no more threads are at work than there may be, with so many more.
    [[nodiscard]] bool hasRoomFor(std::uint32_t more) const;

    std::mutex m_mutex;
    std::condition_variable m_wake;    // helpers wait for work
    std::condition_variable m_helped;  // a caller waits for its helpers
    std::vector<Work*> m_works;
    std::atomic<std::uint32_t> m_posted{0};  ///< pieces of work so far, and the end
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
    std::uint32_t m_size = 1;
    std::atomic<std::uint32_t> m_rendering{0};
    std::atomic<std::uint32_t> m_helping{0};
};

/// Threads of this machine, or as many as the environment variable LUMISET_THREADS (1 to 256) allows.
std::uint32_t wantedThreads();

}  // namespace lumiset::hostkit
