#include "hostkit/thread_pool.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace lumiset::hostkit {
namespace {

/// Waits awake until `done()`, for as long as it takes to put a thread to sleep and to wake it: a frame is made of many
/// small pieces of work.
template <class Done>
void waitAwake(const Done& done) {
    constexpr auto kLongest = std::chrono::microseconds(50);
    constexpr int kLooks = 32;  // between two looks at the clock
    const auto end = std::chrono::steady_clock::now() + kLongest;
    do {
        for (int i = 0; i < kLooks; ++i) {
            if (done()) {
                return;
            }
        }
    } while (std::chrono::steady_clock::now() < end);
}

}  // namespace

ComPtr<ThreadPool> ThreadPool::create(std::uint32_t threads) {
    auto pool = ComPtr<ThreadPool>::adopt(new ThreadPool);
    pool->m_size = std::max(threads, 1U);
    try {
        for (std::uint32_t i = 1; i < threads; ++i) {
            pool->m_threads.emplace_back([self = pool.get()] { self->help(); });
        }
    } catch (const std::system_error&) {
        // The system has no more threads: those that there are will do.
    }
    return pool;
}

ThreadPool::Turn::~Turn() {
    {
        const std::scoped_lock lock(m_pool.m_mutex);
        --m_pool.m_rendering;
    }
    m_pool.m_wake.notify_all();
}

ThreadPool::~ThreadPool() {
    {
        const std::scoped_lock lock(m_mutex);
        m_stopping = true;
        ++m_posted;
    }
    m_wake.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

Result ThreadPool::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IHostParallel>(this, iid, out, kResultFail);
}

std::uint32_t ThreadPool::GetThreadCount() noexcept {
    return static_cast<std::uint32_t>(m_threads.size()) + 1;
}

template <class Continue>
void ThreadPool::Work::doSome(const Continue& mayContinue) {
    while (mayContinue()) {
        const std::uint32_t i = next.fetch_add(1, std::memory_order_relaxed);
        if (i >= count) {
            return;
        }
        task(context, i);
    }
}

bool ThreadPool::hasRoomFor(std::uint32_t more) const {
    const std::uint32_t rendering = std::max(m_rendering.load(std::memory_order_relaxed), 1U);
    return rendering + m_helping.load(std::memory_order_relaxed) + more <= m_size;
}

ThreadPool::Work* ThreadPool::unfinishedWork() const {
    const auto found = std::find_if(m_works.begin(), m_works.end(), [](const Work* work) {
        return work->next.load(std::memory_order_relaxed) < work->count;
    });
    return found != m_works.end() ? *found : nullptr;
}

bool ThreadPool::Run(ParallelTask task, void* context, std::uint32_t count) noexcept {
    Work work{task, context, count};
    {
        std::unique_lock lock(m_mutex);
        try {
            m_works.push_back(&work);
        } catch (const std::bad_alloc&) {
            return false;
        }
        ++m_posted;
    }
    for (std::uint32_t i = 1; i < std::min(count, GetThreadCount()); ++i) {
        m_wake.notify_one();
    }
    work.doSome([] { return true; });
    waitAwake([&] { return work.helpers == 0; });
    std::unique_lock lock(m_mutex);
    std::erase(m_works, &work);
    m_helped.wait(lock, [&] { return work.helpers == 0; });
    return true;
}

void ThreadPool::help() {
    std::unique_lock lock(m_mutex);
    while (true) {
        Work* work = nullptr;
        m_wake.wait(lock, [&] {
            work = hasRoomFor(1) ? unfinishedWork() : nullptr;
            return m_stopping || work != nullptr;
        });
        if (work == nullptr) {
            return;
        }
        ++work->helpers;
        ++m_helping;
        lock.unlock();
        work->doSome([this] { return hasRoomFor(0); });
        lock.lock();
        --m_helping;
        if (--work->helpers == 0) {
            m_helped.notify_all();
        }
        if (unfinishedWork() == nullptr && hasRoomFor(1)) {
            const std::uint32_t posted = m_posted;
            lock.unlock();
            waitAwake([&] { return m_posted != posted; });
            lock.lock();
        }
    }
}

std::uint32_t wantedThreads() {
    constexpr std::uint32_t kMost = 256;
    const char* text = std::getenv("LUMISET_THREADS");
    if (text != nullptr) {
        const std::string_view view(text);
        std::uint32_t threads = 0;
        const auto [end, error] = std::from_chars(view.data(), view.data() + view.size(), threads);
        if (error == std::errc() && end == view.data() + view.size() && threads >= 1) {
            return std::min(threads, kMost);
        }
    }
    return std::clamp(std::thread::hardware_concurrency(), 1U, kMost);
}

}  // namespace lumiset::hostkit
