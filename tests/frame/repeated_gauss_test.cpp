#include "frame/filters/repeated_gauss.h"

#include <cmath>
#include <random>
#include <utility>

#include "frame/primitives/gauss.h"
#include "tests/frame/filter_support.h"
#include "tests/support/host.h"

namespace lumiset {
namespace {

using test::framesAgree;
using test::GuardedFrame;
using test::onEveryInstructionSet;

/// One pass after the other over the whole plane.
template <class T>
void repeatPlainly(GuardedFrame& frame, std::int32_t passes) {
    const std::int32_t width = frame.frame.Width();
    const std::int32_t height = frame.frame.Height();
    GuardedFrame other(width, height, frame.frame.Format());
    other.restore(frame.bytes());
    GuardedFrame* from = &frame;
    GuardedFrame* to = &other;
    for (std::int32_t pass = 0; pass < passes && width > 2 && height > 2; ++pass) {
        const ImgSize size{width - 2, height - 2};
        const std::int32_t step = frame.frame.Stride();
        if constexpr (sizeof(T) == 1) {
            ASSERT_EQ(ImgGauss8(from->row<T>(1) + 1, step, to->row<T>(1) + 1, step, size, 33), kImgOk);
        } else {
            ASSERT_EQ(ImgGaussF(from->row<T>(1) + 1, step, to->row<T>(1) + 1, step, size, 33), kImgOk);
        }
        std::swap(from, to);
    }
    if (from != &frame) {
        frame.restore(other.bytes());
    }
}

[[nodiscard]] bool repeat(const Frame& frame, std::int32_t passes, MemoryAllocator& allocator) {
    RepeatedGaussJob jobs[] = {
        {frame.Data(), frame.Stride(), frame.Width(), frame.Height(), passes, isFloatFormat(frame.Format())}};
    repeatedGauss(jobs, allocator);
    return jobs[0].filtered;
}

template <class T>
void expectRepetition(GuardedFrame& frame, std::int32_t passes, float tolerance) {
    GuardedFrame expected(frame.frame.Width(), frame.frame.Height(), frame.frame.Format());
    expected.restore(frame.bytes());
    repeatPlainly<T>(expected, passes);
    MemoryAllocator allocator;
    ASSERT_TRUE(repeat(frame.frame, passes, allocator));
    SCOPED_TRACE(::testing::Message() << frame.frame.Width() << " x " << frame.frame.Height() << ", " << passes
                                      << " passes, format " << frame.frame.Format());
    ASSERT_TRUE(framesAgree(frame, expected, tolerance));
}

/// A mask as a key gives it: large flat areas, hard and soft edges, and some dirt.
template <class T>
void drawMask(GuardedFrame& frame, std::mt19937& random) {
    const double full = sizeof(T) == 1 ? 255.0 : 1.0;
    const std::int32_t width = frame.frame.Width();
    const std::int32_t height = frame.frame.Height();
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const double away = std::hypot(x - 0.6 * width, y - 0.4 * height) / height;
            const bool dirt = x < width / 8 && random() % 50 == 0;
            frame.row<T>(y)[x] = static_cast<T>(full * (dirt ? 0.7 : away < 0.2 ? 0.0 : away < 0.3 ? 0.3 : 1.0));
        }
    }
}

TEST(RepeatedGauss, EqualsPlainRepetitionOnPlanesOfEverySmallSize) {
    onEveryInstructionSet([] {
        std::mt19937 random(11);
        for (std::int32_t size = 1; size <= 70; ++size) {
            const auto other = static_cast<std::int32_t>(random() % 40 + 1);
            const auto passes = static_cast<std::int32_t>(random() % 12);
            for (const auto& [width, height] : {std::pair{size, other}, {other, size}}) {
                GuardedFrame bytes(width, height, kFormatMask8);
                bytes.randomize(random);
                expectRepetition<std::uint8_t>(bytes, passes, 0.0F);
                GuardedFrame floats(width, height, kFormatMaskFloat);
                floats.randomize(random);
                expectRepetition<float>(floats, passes, 1e-7F);
            }
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
    });
}

TEST(RepeatedGauss, LeavesOutNothingThatChanges) {
    onEveryInstructionSet([] {
        std::mt19937 random(12);
        // Several blocks in both directions, and more passes than run at once.
        for (const std::int32_t passes : {1, 2, 33, 150}) {
            GuardedFrame bytes(717, 131, kFormatMask8);
            drawMask<std::uint8_t>(bytes, random);
            expectRepetition<std::uint8_t>(bytes, passes, 0.0F);
            GuardedFrame floats(389, 131, kFormatMaskFloat);
            drawMask<float>(floats, random);
            expectRepetition<float>(floats, passes, 1e-6F);
        }
        // Slopes that grow over the place, 4097 samples from the left, where blocks are counted anew, from either side.
        for (const std::int32_t width : {6785, 6872}) {
            GuardedFrame bytes(width, 67, kFormatMask8);
            drawMask<std::uint8_t>(bytes, random);
            expectRepetition<std::uint8_t>(bytes, 33, 0.0F);
        }
    });
}

TEST(RepeatedGauss, SpreadsOneSampleByHand) {
    GuardedFrame frame(7, 7, kFormatMask8);
    std::memset(frame.row<std::uint8_t>(0), 0, 7 * static_cast<std::size_t>(frame.frame.Stride()) - 4);
    frame.row<std::uint8_t>(3)[3] = 160;
    MemoryAllocator allocator;
    ASSERT_TRUE(repeat(frame.frame, 1, allocator));
    EXPECT_EQ(frame.row<std::uint8_t>(3)[3], 40);
    EXPECT_EQ(frame.row<std::uint8_t>(3)[2], 20);
    EXPECT_EQ(frame.row<std::uint8_t>(2)[2], 10);
    ASSERT_TRUE(repeat(frame.frame, 1, allocator));
    EXPECT_EQ(frame.row<std::uint8_t>(3)[3], 23);  // (4 * 40 + 8 * 20 + 4 * 10) / 16 = 22.5
    EXPECT_EQ(frame.row<std::uint8_t>(3)[1], 4);   // (2 * 20 + 2 * 10) / 16 = 3.75
}

TEST(RepeatedGauss, LeavesThePlaneAloneWhenMemoryRunsOut) {
    std::mt19937 random(13);
    GuardedFrame frame(40, 30, kFormatMask8);
    frame.randomize(random);
    const std::vector<std::uint8_t> before = frame.bytes();
    test::failEachAllocation([&](IEffectHost* host) {
        MemoryAllocator allocator(host);
        frame.restore(before);
        const bool done = repeat(frame.frame, 5, allocator);
        EXPECT_EQ(frame.bytes() == before, !done);
        return done;
    });
}

}  // namespace
}  // namespace lumiset
