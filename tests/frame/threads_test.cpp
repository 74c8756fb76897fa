// Frame operations on many of the host's threads: the same bytes as on one, for every format and instruction set.

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "frame/bands.h"
#include "frame/filters/repeated_gauss.h"
#include "frame/frame_operations.h"
#include "frame/primitives/box.h"
#include "tests/frame/filter_support.h"
#include "tests/support/host.h"
#include "tests/support/host_threads.h"

namespace lumiset {
namespace {

using test::GuardedFrame;
using test::HostThreads;

struct Operation {
    const char* name;
    /// Of two frames of one size, which have the allocator's threads.
    std::function<bool(const Frame& src, Frame& dst, MemoryAllocator& memory)> run;
    bool isForColor = true;
    bool isForMasks = true;
};

bool repeat(const Frame& src, Frame& dst, MemoryAllocator& memory) {
    const bool isFloat = isFloatFormat(dst.Format());
    RepeatedGaussJob jobs[] = {{dst.Data(), dst.Stride(), dst.Width(), dst.Height(), 45, isFloat}};
    return FrameCopy(src, dst) && (repeatedGauss(jobs, memory), jobs[0].filtered);
}

bool boxInside(const Frame& src, Frame& dst, MemoryAllocator& memory) {
    const ImgSize size{dst.Width() - 20, dst.Height() - 12};
    return FrameCopy(src, dst) &&
           (isFloatFormat(dst.Format())
                ? ImgBoxInPlaceFC1(dst.row<float>(6) + 10, dst.Stride(), size, {21, 13}, 10, 6, &memory)
                : ImgBoxInPlace8C1(dst.row<std::uint8_t>(6) + 10, dst.Stride(), size, {21, 13}, 10, 6, &memory)) ==
               kImgOk;
}

auto blur(float width, float height, bool includeAlpha) {
    return [=](const Frame& src, Frame& dst, MemoryAllocator& memory) {
        return FrameBlur(src, dst, width, height, &memory, includeAlpha);
    };
}
auto resize(std::int32_t mode, double factor) {
    return [=](const Frame& src, Frame& dst, MemoryAllocator&) {
        return FrameResizeRect(src, dst, {3, 2, src.Width() - 5, src.Height() - 1}, {0, 0, dst.Width(), dst.Height()},
                               mode, factor, 1 / factor, 0.3, -0.6);
    };
}

const Operation kOperations[] = {
    {"blur, odd", blur(9, 31, true)},
    {"blur, even, alpha kept", blur(30, 6, false)},
    {"blur, tall", blur(5, 90, true)},
    {"blur, large", blur(400, 300, true)},
    {"dilate",
     [](const Frame& src, Frame& dst, MemoryAllocator& memory) { return FrameDilate(src, dst, 23, 17, &memory); }},
    {"erode, wide",
     [](const Frame& src, Frame& dst, MemoryAllocator& memory) { return FrameErode(src, dst, 130, 5, &memory); }},
    {"sharpen", [](const Frame& src, Frame& dst, MemoryAllocator& memory) { return FrameSharpen(src, dst, &memory); },
     true, false},
    {"resize, nearest", resize(kResizeNearest, 1.7)},
    {"resize, linear", resize(kResizeLinear, 0.8)},
    {"resize, cubic", resize(kResizeCubic, 2.1)},
    {"box", boxInside, false, true},
    {"repeated Gauss", repeat, false, true},
    {"alpha over", [](const Frame& src, Frame& dst, MemoryAllocator&) { return FrameAlphaOver(src, dst, dst, false); },
     true, false},
};

TEST(FrameOperations, AreTheSameOnAnyNumberOfThreads) {
    test::onEveryInstructionSet([] {
        std::mt19937 random(5);
        for (const std::int32_t format :
             {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat, kFormatMask8, kFormatMaskFloat}) {
            // Odd, and masks large enough for strips of some blurred columns.
            const bool isColor = AlphaIndex(format) >= 0;
            GuardedFrame source(isColor ? 451 : 1733, isColor ? 317 : 141, format);
            source.randomize(random);
            // Huge samples leave rounding errors in sums behind them, which tell where the sums began.
            for (std::int32_t y = 3; isFloatFormat(format) && y < source.height(); y += 40) {
                source.row<float>(y)[17 * y % source.samplesPerRow()] = 1e12F;
            }
            for (const Operation& operation : kOperations) {
                if (!(isColor ? operation.isForColor : operation.isForMasks)) {
                    continue;
                }
                const auto resultBy = [&](HostThreads& threads) {
                    test::ValueHost host;
                    host.offers = &threads;
                    MemoryAllocator memory(&host);
                    auto result = std::make_unique<GuardedFrame>(source.width(), source.height(), format);
                    result->frame.UseResources(&memory);
                    EXPECT_TRUE(operation.run(source.frame, result->frame, memory));
                    EXPECT_TRUE(result->guardsIntact());
                    return result->bytes();
                };
                SCOPED_TRACE(operation.name + (", format " + std::to_string(format)));
                HostThreads one(1);
                const auto expected = resultBy(one);
                for (const std::uint32_t count : {2U, 3U, 8U, 32U}) {
                    HostThreads many(count, count == 2);
                    EXPECT_TRUE(resultBy(many) == expected) << count << " threads";
                    EXPECT_GT(many.runs(), 0);
                }
            }
        }
    });
}

/// The first task of each thread comes last.
class LateThreads final : public HostThreads {
public:
    using HostThreads::HostThreads;
    bool LUMISET_CALL Run(ParallelTask task, void* context, std::uint32_t count) noexcept override {
        for (std::uint32_t i = 0; i < count; ++i) {
            task(context, (i + GetThreadCount()) % count);
        }
        return true;
    }
};

TEST(BandRuns, TakeEveryBandOnce) {
    const auto check = [](HostThreads& host, std::int32_t height, bool late) {
        SCOPED_TRACE(testing::Message() << height << " rows, " << host.GetThreadCount() << " threads, late " << late);
        test::ValueHost offering;
        offering.offers = &host;
        MemoryAllocator memory(&offering);
        const BandRuns runs(memory, {3840, height}, 16);
        std::vector<std::atomic<int>> calls(static_cast<std::size_t>(height));
        std::vector<std::int32_t> taskOf(static_cast<std::size_t>(height), -1);
        std::atomic<int> wrong = 0;
        std::atomic<int> begun = 0;
        std::atomic<int> all = 0;
        runs.run([&](const Bands& bands, std::int32_t band, std::int32_t task, bool goesOn) {
            const auto first = static_cast<std::size_t>(bands.first(band));
            for (std::int32_t y = 0; y < bands.rowsOf(band); ++y) {
                ++calls[first + static_cast<std::size_t>(y)];
                taskOf[first + static_cast<std::size_t>(y)] = task;
            }
            begun += goesOn ? 0 : 1;
            all = bands.count();
            wrong += task >= runs.tasks() || (goesOn && (first == 0 || taskOf[first - 1] != task)) ? 1 : 0;
        });
        EXPECT_EQ(wrong, 0);
        EXPECT_TRUE(std::all_of(calls.begin(), calls.end(), [](const auto& n) { return n == 1; }));
        // Threads that are late find all but their first band taken.
        EXPECT_TRUE(!late || begun == all) << begun << " of " << all;
    };
    for (const auto& [height, threads] : {std::pair{1, 2U}, {40, 3U}, {1077, 2U}, {1077, 7U}, {2160, 500U}}) {
        HostThreads together(threads);
        check(together, height, false);
        HostThreads backwards(threads, true);
        check(backwards, height, false);
    }
    LateThreads two(2);
    check(two, 1077, true);
    LateThreads four(4);
    check(four, 2160, true);
}

}  // namespace
}  // namespace lumiset
