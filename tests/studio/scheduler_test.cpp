#include "apps/studio/core/scheduler.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <string>
#include <thread>

namespace lumiset::studio {
namespace {

using namespace std::chrono_literals;

/// Keeps the scheduler's thread busy until it is opened.
class Gate {
public:
    explicit Gate(Scheduler& scheduler) {
        std::promise<void> entered;
        scheduler.add(Scheduler::kOpening, [this, &entered] {
            entered.set_value();
            m_open.get_future().wait();
        });
        entered.get_future().wait();
    }
    void open() { m_open.set_value(); }

private:
    std::promise<void> m_open;
};

TEST(SchedulerTest, DoesTheMostUrgentFirst) {
    std::string done;  // written on one thread, read when it is idle
    Scheduler scheduler;
    Gate gate(scheduler);
    scheduler.add(Scheduler::kThumbnails, [&] { done += 't'; });
    scheduler.add(Scheduler::kThumbnails, [&] { done += 'T'; });
    scheduler.replace(Scheduler::kRefinement, [&] { done += 'r'; });
    scheduler.add(Scheduler::kReadAhead, [&] { done += 'a'; });
    scheduler.replace(Scheduler::kShown, [&] { done += 's'; });
    gate.open();
    scheduler.waitUntilIdle();
    EXPECT_EQ(done, "sratT");
}

TEST(SchedulerTest, ClearsWhatWaitsAndEndsWithWorkWaiting) {
    std::atomic<int> done{0};
    {
        Scheduler scheduler;
        Gate gate(scheduler);
        for (int i = 0; i < 5; ++i) {
            scheduler.add(Scheduler::kThumbnails, [&] { ++done; });
        }
        EXPECT_EQ(scheduler.waiting(Scheduler::kThumbnails), 5U);
        scheduler.clear(Scheduler::kThumbnails);
        scheduler.add(Scheduler::kShown, [&] { ++done; });
        gate.open();
        scheduler.waitUntilIdle();
        EXPECT_EQ(done, 1);
        scheduler.add(Scheduler::kShown, [] { std::this_thread::sleep_for(20ms); });
        scheduler.add(Scheduler::kThumbnails, [&] { std::this_thread::sleep_for(1h); });
    }
    SUCCEED() << "the destructor came back";
}

// A drag over a slow effect: wishes come faster than pictures. Pictures must keep coming, and the last one be right.
TEST(SchedulerTest, ADragShowsPicturesAllTheTimeAndTheLastOneIsRight) {
    std::atomic<int> shown{0};
    std::atomic<int> last{-1};
    std::atomic<int> shownDuringDrag{0};
    Scheduler scheduler;
    for (int wish = 0; wish < 200; ++wish) {
        scheduler.replace(Scheduler::kShown, [&, wish] {
            std::this_thread::sleep_for(8ms);
            EXPECT_LT(last, wish);
            last = wish;
            ++shown;
        });
        std::this_thread::sleep_for(1ms);
        shownDuringDrag = shown.load();
    }
    scheduler.waitUntilIdle();
    EXPECT_EQ(last, 199);
    EXPECT_GE(shownDuringDrag, 5);
    EXPECT_LT(shown, 200) << "each wish was rendered, though newer ones waited";
}

}  // namespace
}  // namespace lumiset::studio
