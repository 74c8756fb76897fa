#include "hostkit/thread_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

namespace lumiset::hostkit {
namespace {

/// Counts the calls of each part, and the threads that they come on.
struct Parts {
    explicit Parts(std::uint32_t count) : calls(count) {}
    static void LUMISET_CALL task(void* context, std::uint32_t index) {
        auto& parts = *static_cast<Parts*>(context);
        ++parts.calls[index];
        const std::uint32_t now = ++parts.atWork;
        std::uint32_t most = parts.mostAtWork;
        while (most < now && !parts.mostAtWork.compare_exchange_weak(most, now)) {
        }
        std::this_thread::yield();
        --parts.atWork;
    }
    [[nodiscard]] bool onceEach() const {
        return std::all_of(calls.begin(), calls.end(), [](const auto& count) { return count == 1U; });
    }
    std::vector<std::atomic<std::uint32_t>> calls;
    std::atomic<std::uint32_t> atWork{0};
    std::atomic<std::uint32_t> mostAtWork{0};
};

TEST(ThreadPool, CallsEveryPartOnceForManyCallersAtOnce) {
    for (const std::uint32_t threads : {1U, 2U, 5U}) {
        const ComPtr<ThreadPool> pool = ThreadPool::create(threads);
        EXPECT_EQ(pool->GetThreadCount(), threads);
        std::atomic<int> wrong = 0;
        {
            std::vector<std::jthread> callers;
            for (int caller = 0; caller < 3; ++caller) {
                callers.emplace_back([&] {
                    for (const std::uint32_t count : {0U, 1U, 2U, 7U, 300U}) {
                        Parts parts(count);
                        wrong += pool->Run(&Parts::task, &parts, count) && parts.onceEach() ? 0 : 1;
                    }
                });
            }
        }
        EXPECT_EQ(wrong, 0);
    }
}

/// A helper at work longer than anyone waits awake.
TEST(ThreadPool, ReturnsWhenItsHelpersHaveEnded) {
    struct Pair {
        std::atomic<int> begun{0};
        std::atomic<int> ended{0};
        std::thread::id caller = std::this_thread::get_id();
    };
    const ComPtr<ThreadPool> pool = ThreadPool::create(2);
    for (int i = 0; i < 5; ++i) {
        Pair pair;
        const auto meet = [](void* context, std::uint32_t) {
            auto& both = *static_cast<Pair*>(context);
            for (++both.begun; both.begun < 2;) {
                std::this_thread::yield();
            }
            if (std::this_thread::get_id() != both.caller) {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
            ++both.ended;
        };
        ASSERT_TRUE(pool->Run(meet, &pair, 2));
        EXPECT_EQ(pair.ended, 2);
        std::this_thread::sleep_for(std::chrono::milliseconds(2 * (i % 2)));  // the next helper is asleep or awake
    }
}

TEST(ThreadPool, KeepsToItsSizeWhileFramesAreRenderedSideBySide) {
    const ComPtr<ThreadPool> pool = ThreadPool::create(3);
    const ThreadPool::Turn first(*pool.get());
    const ThreadPool::Turn second(*pool.get());
    const ThreadPool::Turn third(*pool.get());
    Parts parts(2000);
    ASSERT_TRUE(pool->Run(&Parts::task, &parts, 2000));
    EXPECT_TRUE(parts.onceEach());
    EXPECT_EQ(parts.mostAtWork, 1U) << "every thread has a frame of its own";
}

TEST(ThreadPool, HasAsManyThreadsAsTheEnvironmentAllows) {
    const auto wanted = [](const char* text) {
        ::setenv("LUMISET_THREADS", text, 1);
        return wantedThreads();
    };
    EXPECT_EQ(wanted("3"), 3U);
    EXPECT_EQ(wanted("1000"), 256U);
    ::unsetenv("LUMISET_THREADS");
    const std::uint32_t usual = wantedThreads();
    EXPECT_GE(usual, 1U);
    for (const char* text : {"", "0", "-2", "2x", " 2"}) {
        EXPECT_EQ(wanted(text), usual) << text;
    }
    ::unsetenv("LUMISET_THREADS");
}

}  // namespace
}  // namespace lumiset::hostkit
