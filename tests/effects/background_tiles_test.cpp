// Where the Background Generator's tiles lie, against positions worked out independently.

#include "effects/background_generator/tiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "tests/frame/filter_support.h"
#include "tests/support/host.h"
#include "tests/support/host_threads.h"

namespace lumiset {
namespace {

TEST(BackgroundTiles, DriftIsSteadyAndStaysOnItsAxis) {
    const double step24 = 0.02 / 24.0;  // speed 0.1 is 0.02 periods a second
    for (int frame = 0; frame < 500; ++frame) {
        const PatternPosition here = positionAt(frame / 24.0, 0.5F, 0.1F, 0.5F, 0.5F);
        EXPECT_NEAR(here.x, std::fmod(0.5 + frame * step24, 1.0), 1e-7);
        EXPECT_EQ(here.y, 0.5);
    }
    EXPECT_EQ(positionAt(1e6, 0.25F, 0.3F, 0.125F, 0.5F).x, 0.125);
    EXPECT_EQ(positionAt(1e6, 0.0F, 0.3F, 0.5F, 0.875F).y, 0.875);
    EXPECT_EQ(positionAt(1e6, 0.3F, 0.0F, 1.0F, 0.25F).x, 0.0) << "still";
    for (const double seconds : {1e12, 1e300, 1.7e308}) {
        const PatternPosition far = positionAt(seconds, 0.3F, 1.0F, 0.9F, 0.9F);
        EXPECT_TRUE(far.x >= 0.0 && far.x < 1.0 && far.y >= 0.0 && far.y < 1.0) << seconds;
    }
}

/// Windows of whole and of parts of pixels, with and without a fade, in parts that begin inside the fade.
TEST(BackgroundTiles, WindowIsTheSameOnAnyNumberOfThreads) {
    constexpr std::int32_t kWidth = 1301;
    constexpr std::int32_t kHeight = 411;
    for (const std::int32_t format : {kFormatBgra8, kFormatBgraFloat}) {
        test::GuardedFrame source(kWidth, kHeight, format);
        std::mt19937 random(7);
        source.randomize(random);
        for (const float crossFade : {0.0F, 0.9F}) {
            for (const float magnify : {0.0F, 0.03F}) {
                const TileAxis columns = tileAxis(kWidth, 70, crossFade, magnify, 0.5, 0.0);
                const TileAxis rows = tileAxis(kHeight, 40, crossFade, magnify, 0.5, 0.0);
                const auto windowBy = [&](std::uint32_t count, bool backwards) {
                    test::HostThreads threads(count, backwards);
                    test::ValueHost host;
                    host.offers = &threads;
                    MemoryAllocator memory(&host);
                    test::GuardedFrame window(columns.windowLength(), rows.windowLength(), format);
                    window.frame.UseResources(&memory);
                    EXPECT_TRUE(fillWindow(source.frame, window.frame, columns, rows, memory));
                    EXPECT_TRUE(window.guardsIntact());
                    EXPECT_EQ(threads.runs() > 0, count > 1);
                    return window.bytes();
                };
                const auto expected = windowBy(1, false);
                EXPECT_TRUE(windowBy(2, true) == expected) << crossFade << ", " << magnify;
                EXPECT_TRUE(windowBy(8, false) == expected) << crossFade << ", " << magnify;
            }
        }
    }
}

TEST(BackgroundTiles, WindowIsTheSeamlessPatternInterpolated) {
    constexpr std::int32_t kWidth = 13;
    constexpr std::int32_t kHeight = 9;
    std::mt19937 random(5);
    Frame source;
    MemoryAllocator allocator;
    ASSERT_TRUE(source.Allocate(kWidth, kHeight, 16, &allocator, kFormatBgraFloat, false));
    auto* samples = reinterpret_cast<float*>(source.Data());
    const auto sourceAt = [&](int x, int y) {
        return double{reinterpret_cast<const float*>(source.PixelAddress(x, y, 0))[2]};
    };
    for (int i = 0; i < kHeight * source.Stride() / 4; ++i) {
        samples[i] = static_cast<float>(random() % 1000) / 999.0F;
    }
    // One axis of the pattern: both pixels that are mixed, and the share of the first.
    struct Mix {
        int near, far;
        double share;
    };
    const auto mixAt = [](int at, int length, int band) {
        const int period = length - band;
        at = (at % period + period) % period;
        return at < band ? Mix{at, at + period, (at + 0.5) / band} : Mix{at, at, 1.0};
    };
    for (int i = 0; i < 40; ++i) {
        const float crossFade = i % 4 == 0 ? 0.0F : static_cast<float>(random() % 101) / 100.0F;
        const float magnify = i % 3 == 0 ? 0.0F : static_cast<float>(random() % 101) / 100.0F;
        const double x0 = i % 5 == 0 ? 0.5 : static_cast<double>(random() % 1000) / 1000.0;
        const double y0 = i % 5 == 0 ? 0.5 : static_cast<double>(random() % 1000) / 1000.0;
        const std::int32_t margin = i % 7;
        const TileAxis columns = tileAxis(kWidth, margin, crossFade, magnify, x0, 0.0);
        const TileAxis rows = tileAxis(kHeight, 2 * margin, crossFade, magnify, y0, 0.0);
        Frame window;
        ASSERT_TRUE(
            window.Allocate(kWidth + 2 * margin, kHeight + 4 * margin, 16, &allocator, kFormatBgraFloat, false));
        ASSERT_TRUE(fillWindow(source, window, columns, rows, allocator));

        const int bandX = static_cast<int>(kWidth * 0.25 * double{crossFade} + 1e-6);
        const int bandY = static_cast<int>(kHeight * 0.25 * double{crossFade} + 1e-6);
        const double magnification = 1.0 + 9.0 * double{magnify};
        const auto patternAt = [&](int x, int y) {
            const Mix a = mixAt(x, kWidth, bandX);
            const Mix b = mixAt(y, kHeight, bandY);
            const double upper = sourceAt(a.near, b.near) * a.share + sourceAt(a.far, b.near) * (1.0 - a.share);
            const double lower = sourceAt(a.near, b.far) * a.share + sourceAt(a.far, b.far) * (1.0 - a.share);
            return upper * b.share + lower * (1.0 - b.share);
        };
        for (int y = 0; y < window.Height(); ++y) {
            for (int x = 0; x < window.Width(); ++x) {
                const double px = (x - margin + 0.5 - kWidth / 2.0) / magnification + kWidth / 2.0 - 0.5 +
                                  (x0 - 0.5) * (kWidth - bandX);
                const double py = (y - 2 * margin + 0.5 - kHeight / 2.0) / magnification + kHeight / 2.0 - 0.5 +
                                  (y0 - 0.5) * (kHeight - bandY);
                const int left = static_cast<int>(std::floor(px));
                const int top = static_cast<int>(std::floor(py));
                const double u = px - left;
                const double v = py - top;
                const double expected = (patternAt(left, top) * (1.0 - u) + patternAt(left + 1, top) * u) * (1.0 - v) +
                                        (patternAt(left, top + 1) * (1.0 - u) + patternAt(left + 1, top + 1) * u) * v;
                const float got = reinterpret_cast<const float*>(window.PixelAddress(x, y, 0))[2];
                ASSERT_NEAR(got, expected, 2e-5) << "case " << i << " at " << x << ", " << y;
            }
        }
    }
}

TEST(BackgroundTiles, ReducedBlurIsAsWideAsTheWholeOne) {
    for (const std::int32_t taps : {1, 2, 7, 60, 61, 100, 121, 324, 999, 1000}) {
        // The triangle's own variance, from its weights 1, 2, ... rising to the middle and falling again.
        double sum = 0.0;
        double first = 0.0;
        double second = 0.0;
        for (std::int32_t k = 0; k < taps; ++k) {
            const double weight = std::min(k + 1, taps - k);
            const double at = k - taps / 2;
            sum += weight;
            first += weight * at;
            second += weight * at * at;
        }
        const double mean = first / sum;
        const double whole = second / sum - mean * mean;

        const ReducedBlur blur = reducedBlur(taps, 2000);
        const double factor = blur.factor;
        EXPECT_LE(2.0F * blur.halfWidth, 61.0F) << taps;
        EXPECT_EQ(blur.length, (2000 + blur.factor - 1) / blur.factor);
        double reducedSum = 0.0;
        double reducedFirst = 0.0;
        double reducedSecond = 0.0;
        for (int k = -40; k <= 40; ++k) {
            const double weight = std::max(0.0, double{blur.halfWidth} - std::fabs(k - double{blur.centre}));
            reducedSum += weight;
            reducedFirst += weight * k * factor;
            reducedSecond += weight * k * k * factor * factor;
        }
        const double reducedMean = reducedFirst / reducedSum;
        double reduced = reducedSecond / reducedSum - reducedMean * reducedMean;
        if (blur.factor > 1) {
            reduced += (factor * factor - 1.0) / 12.0 + factor * factor / 6.0;
        }
        EXPECT_NEAR(reducedMean, mean, 0.02) << taps;
        EXPECT_NEAR(reduced, whole, 0.02 * whole + 1e-4) << taps;
    }
}

}  // namespace
}  // namespace lumiset
