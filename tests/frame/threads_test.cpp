// Frame operations on many of the host's threads: the same bytes as on one, for every format and instruction set.

#include <functional>
#include <memory>
#include <string>

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

}  // namespace
}  // namespace lumiset
