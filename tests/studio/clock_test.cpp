#include <gtest/gtest.h>

#include "apps/studio/core/play_clock.h"
#include "apps/studio/core/render_cost.h"

namespace lumiset::studio {
namespace {

constexpr std::int64_t kOver = -1;

struct ClockCase {
    const char* name;
    std::int64_t start;
    double speed;
    bool loops;
    double passed;
    std::int64_t frame;
};

TEST(PlayClockTest, TellsTheFrameOfEveryMoment) {
    constexpr ClockCase kCases[] = {
        {"the first stays its whole length", 10, 1.0, false, 0.099, 10},
        {"the next one comes on time", 10, 1.0, false, 0.1, 11},
        {"late frames are left out", 10, 1.0, false, 0.55, 15},
        {"twice the speed", 10, 2.0, false, 0.25, 15},
        {"backwards", 15, -1.0, false, 0.3, 12},
        {"the end", 18, 1.0, false, 0.2, kOver},
        {"the end backwards", 12, -1.0, false, 0.3, kOver},
        {"round the loop", 18, 1.0, true, 0.2, 10},
        {"round the loop twice", 18, 1.0, true, 2.2, 10},
        {"round the loop backwards", 11, -4.0, true, 0.05, 19},
        {"at the end it begins anew", 19, 1.0, false, 0.0, 10},
        {"outside of the range too", 3, 1.0, false, 0.1, 11},
        {"and from the back", 30, -1.0, false, 0.1, 18},
        {"a clock that goes backwards", 12, 1.0, false, -5.0, 12},
    };
    for (const ClockCase& each : kCases) {
        const PlayClock clock(each.start, 10.0, each.speed, {10, 19}, each.loops, 1000.0);
        EXPECT_EQ(clock.frameAt(1000.0 + each.passed).value_or(kOver), each.frame) << each.name;
    }
    const PlayClock clock(10, 10.0, 2.0, {10, 19}, true, 5.0);
    EXPECT_NEAR(clock.nextDue(5.07), 5.10, 1e-9);
}

TEST(RateMeterTest, CountsTheLastSecondAlone) {
    RateMeter meter;
    EXPECT_EQ(meter.rate(0.0), 0.0);
    for (int i = 0; i < 50; ++i) {
        meter.shown(i * 0.02);
    }
    EXPECT_NEAR(meter.rate(0.98), 50.0, 1e-6);
    for (int i = 0; i < 11; ++i) {
        meter.shown(3.0 + i * 0.1);
    }
    EXPECT_NEAR(meter.rate(4.0), 10.0, 1e-6);
    EXPECT_EQ(meter.rate(60.0), 0.0);
}

TEST(RenderCostTest, DragsAtTheLargestSizeThatFollowsTheHand) {
    RenderCost cost;
    EXPECT_EQ(cost.divisor(), 1) << "unknown";
    cost.measured(1, 0.030);
    EXPECT_EQ(cost.divisor(), 1);
    cost.forget();
    cost.measured(1, 0.150);
    EXPECT_EQ(cost.divisor(), 2);
    cost.forget();
    cost.measured(2, 0.100);  // 0.4 s at full size
    EXPECT_EQ(cost.divisor(), 4);
    for (int i = 0; i < 8; ++i) {
        cost.measured(4, 0.002);
    }
    EXPECT_EQ(cost.divisor(), 1) << "back to full size when it has become cheap";
}

}  // namespace
}  // namespace lumiset::studio
