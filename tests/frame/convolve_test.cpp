#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <type_traits>
#include <vector>

#include "frame/operations/filter.h"
#include "frame/primitives/convolve.h"
#include "frame/primitives/sharpen.h"
#include "tests/frame/filter_support.h"
#include "tests/support/host.h"

namespace lumiset {
namespace {

using test::framesAgree;
using test::GuardedFrame;
using test::onEveryInstructionSet;

double sampleOf(const GuardedFrame& frame, std::int32_t x, std::int32_t y, std::int32_t c) {
    const std::int32_t i = x * frame.channels() + c;
    return isFloatFormat(frame.frame.Format()) ? static_cast<double>(frame.row<float>(y)[i])
                                               : frame.row<std::uint8_t>(y)[i];
}

void storeSample(GuardedFrame& frame, std::int32_t x, std::int32_t y, std::int32_t c, double value) {
    const std::int32_t i = x * frame.channels() + c;
    if (isFloatFormat(frame.frame.Format())) {
        frame.row<float>(y)[i] = static_cast<float>(value);
    } else {
        frame.row<std::uint8_t>(y)[i] = static_cast<std::uint8_t>(value);
    }
}

/// The text-book sum at (x, y) of the source, rounded for 8-bit frames.
template <class Tap>
double convolved(const GuardedFrame& src, std::int32_t x, std::int32_t y, std::int32_t c,
                 const std::vector<Tap>& kernel, std::int32_t anchor, std::int32_t divisor, bool rows) {
    const auto n = static_cast<std::int32_t>(kernel.size());
    double sum = 0;
    for (std::int32_t k = 0; k < n; ++k) {
        const std::int32_t away = k - anchor;
        sum += static_cast<double>(kernel[static_cast<std::size_t>(n - 1 - k)]) *
               (rows ? sampleOf(src, x + away, y, c) : sampleOf(src, x, y + away, c));
    }
    if (std::is_same_v<Tap, float>) {
        return sum;
    }
    const auto whole = static_cast<std::int64_t>(sum) * (divisor < 0 ? -1 : 1);
    const std::int64_t magnitude = std::abs(divisor);
    return whole <= 0 ? 0.0 : static_cast<double>(std::min<std::int64_t>(255, (whole + magnitude / 2) / magnitude));
}

template <class Tap>
void expectConvolution(std::int32_t format, std::int32_t size, const std::vector<Tap>& kernel, std::int32_t divisor,
                       std::mt19937& random) {
    const auto n = static_cast<std::int32_t>(kernel.size());
    for (const bool rows : {true, false}) {
        for (const bool includeAlpha : {true, false}) {
            const std::int32_t anchor =
                includeAlpha ? n / 2 : static_cast<std::int32_t>(random()) & (n - 1 > 0 ? 1 : 0);
            const std::int32_t margin = static_cast<std::int32_t>(random() % 3);
            const auto results = static_cast<std::int32_t>(random() % 15 + 1);  // rows
            const std::int32_t width = rows ? size + n - 1 : size + 2 * margin;
            const std::int32_t height = results + (rows ? 2 * margin : n - 1);
            SCOPED_TRACE(::testing::Message() << "format " << format << ", " << width << " x " << height << ", kernel "
                                              << n << ", rows " << rows << ", alpha " << includeAlpha);
            GuardedFrame src(width, height, format, 8);
            // As large as the source: the result lies about the middle, and what is around it stays.
            GuardedFrame dst(width, height, format);
            src.randomize(random);
            dst.randomize(random);
            GuardedFrame expected(width, height, format);
            expected.restore(dst.bytes());
            const std::int32_t alpha = AlphaIndex(format);
            const std::int32_t leftTo = (width - size + 1) / 2;
            const std::int32_t topTo = (height - results + 1) / 2;
            for (std::int32_t y = 0; y < results; ++y) {
                for (std::int32_t x = 0; x < size; ++x) {
                    for (std::int32_t c = 0; c < src.channels(); ++c) {
                        const std::int32_t fromX = x + (rows ? anchor : margin);
                        const std::int32_t fromY = y + (rows ? margin : anchor);
                        const bool kept = c == alpha && !includeAlpha;
                        storeSample(expected, leftTo + x, topTo + y, c,
                                    kept ? sampleOf(src, fromX, fromY, c)
                                         : convolved(src, fromX, fromY, c, kernel, anchor, divisor, rows));
                    }
                }
            }
            bool done = false;
            if constexpr (std::is_same_v<Tap, float>) {
                done = rows
                           ? FrameConvolveRows(src.frame, dst.frame, kernel.data(), n, anchor, margin, includeAlpha)
                           : FrameConvolveColumns(src.frame, dst.frame, kernel.data(), n, margin, anchor, includeAlpha);
            } else {
                done = rows ? FrameConvolveRows(src.frame, dst.frame, kernel.data(), n, anchor, margin, divisor,
                                                includeAlpha)
                            : FrameConvolveColumns(src.frame, dst.frame, kernel.data(), n, margin, anchor, divisor,
                                                   includeAlpha);
            }
            ASSERT_TRUE(done);
            ASSERT_TRUE(framesAgree(dst, expected));
        }
    }
}

TEST(FrameConvolve, IsTheSumOverTheKernelReversed) {
    onEveryInstructionSet([] {
        std::mt19937 random(11);
        for (std::int32_t turn = 1; turn <= 70; ++turn) {
            const std::int32_t size = turn % 5 == 0 ? 3 * turn : turn;
            const auto n = static_cast<std::size_t>(random() % 9 + 1);
            std::vector<std::int32_t> whole(n);
            std::vector<float> real(n);
            for (std::size_t k = 0; k < n; ++k) {
                whole[k] = static_cast<std::int32_t>(random() % 21) - 6;
                real[k] = static_cast<float>(whole[k]) / 16.0F;
            }
            const std::int32_t divisor = std::initializer_list<std::int32_t>{1, 7, 64, -5}.begin()[turn % 4];
            for (const std::int32_t format : {kFormatBgra8, kFormatArgb8, kFormatMask8}) {
                expectConvolution(format, size, whole, divisor, random);
            }
            for (const std::int32_t format : {kFormatBgraFloat, kFormatArgbFloat, kFormatMaskFloat}) {
                expectConvolution(format, size, real, 1, random);
            }
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
    });
}

TEST(FrameConvolve, SumsLargeKernelsWithoutOverflow) {
    std::mt19937 random(12);
    expectConvolution(kFormatMask8, 700, std::vector<std::int32_t>{1 << 30, 1 << 30, 1 << 30}, 2147483647, random);
    std::vector<std::int32_t> rising(1000);
    std::iota(rising.begin(), rising.end(), 500);
    expectConvolution(kFormatBgra8, 300, rising, 1000000, random);
}

TEST(FrameConvolve, RefusesWhatLeavesNoRegion) {
    GuardedFrame src(5, 5, kFormatMask8);
    GuardedFrame dst(5, 5, kFormatMask8);
    GuardedFrame floats(5, 5, kFormatMaskFloat);
    const std::int32_t kernel[6] = {1, 1, 1, 1, 1, 1};
    const float real[2] = {0.5F, 0.5F};
    EXPECT_FALSE(FrameConvolveRows(src.frame, dst.frame, kernel, 6, 3, 0, 6, true));
    EXPECT_FALSE(FrameConvolveRows(src.frame, dst.frame, kernel, 3, 3, 0, 3, true));
    EXPECT_FALSE(FrameConvolveRows(src.frame, dst.frame, kernel, 3, 1, 3, 3, true));
    EXPECT_FALSE(FrameConvolveColumns(src.frame, dst.frame, kernel, 3, 0, 1, 0, true));
    EXPECT_FALSE(FrameConvolveColumns(src.frame, dst.frame, real, 2, 0, 1, true));
    EXPECT_FALSE(FrameConvolveColumns(floats.frame, floats.frame, kernel, 3, 0, 1, 3, true));
    EXPECT_FALSE(FrameConvolveColumns(src.frame, floats.frame, kernel, 3, 0, 1, 3, true));
}

TEST(ImgConvolve, NamesWhatIsWrong) {
    std::uint8_t plane[64] = {};
    const std::int32_t kernel[3] = {1, 2, 1};
    EXPECT_EQ(ImgConvolveRows8C1(nullptr, 8, plane, 8, {4, 4}, kernel, 3, 1, 4), kImgNullPointer);
    EXPECT_EQ(ImgConvolveRows8C1(plane, 8, plane, 8, {4, 4}, nullptr, 3, 1, 4), kImgNullPointer);
    EXPECT_EQ(ImgConvolveRows8C1(plane, 8, plane, 8, {0, 4}, kernel, 3, 1, 4), kImgBadSize);
    EXPECT_EQ(ImgConvolveRows8C4(plane, 8, plane, 16, {4, 4}, kernel, 3, 1, 4), kImgBadStep);
    EXPECT_EQ(ImgConvolveColumns8C1(plane, 8, plane, 8, {4, 4}, kernel, 0, 0, 4), kImgBadMaskSize);
    EXPECT_EQ(ImgConvolveColumns8C1(plane, 8, plane, 8, {4, 4}, kernel, 3, 3, 4), kImgBadMaskSize);
    EXPECT_EQ(ImgConvolveColumns8A4(plane, 16, plane, 16, {4, 4}, kernel, 3, 1, 0), kImgBadRange);
}

TEST(FrameSharpen, TakesTheNeighboursFromTwiceTheCentre) {
    onEveryInstructionSet([] {
        std::mt19937 random(13);
        for (std::int32_t size = 1; size <= 70; ++size) {
            const std::int32_t format =
                std::initializer_list<std::int32_t>{kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat}
                    .begin()[size % 4];
            const auto height = static_cast<std::int32_t>(random() % 9 + 1);
            GuardedFrame src(size, height, format);
            GuardedFrame dst(size, height, format, 12);
            GuardedFrame expected(size, height, format);
            src.randomize(random);
            for (std::int32_t y = 0; y < height; ++y) {
                for (std::int32_t i = 0; i < 4 * size; ++i) {
                    const auto at = [&](std::int32_t dx, std::int32_t dy) {
                        return sampleOf(src, std::clamp(i / 4 + dx, 0, size - 1), std::clamp(y + dy, 0, height - 1),
                                        i % 4);
                    };
                    double sum = 0;
                    for (std::int32_t k = 0; k < 9; ++k) {
                        sum += (k == 4 ? 16.0 : -1.0) * at(k % 3 - 1, k / 3 - 1);
                    }
                    const double value =
                        isFloatFormat(format) ? sum / 8 : std::clamp(std::floor(sum / 8 + 0.5), 0.0, 255.0);
                    storeSample(expected, i / 4, y, i % 4, i % 4 == AlphaIndex(format) ? at(0, 0) : value);
                }
            }
            ASSERT_TRUE(FrameSharpen(src.frame, dst.frame, nullptr));
            ASSERT_TRUE(framesAgree(dst, expected, isFloatFormat(format) ? 2e-6F : 0.0F)) << "width " << size;
            ASSERT_TRUE(FrameSharpen(src.frame, src.frame, nullptr));
            ASSERT_TRUE(framesAgree(src, dst));
        }
    });
}

TEST(FrameSharpen, AnswersFalseWithoutMemoryAndForMasks) {
    GuardedFrame frame(9, 9, kFormatBgra8);
    const auto before = frame.bytes();
    EXPECT_EQ(test::failEachAllocation([&](IEffectHost* host) {
                  MemoryAllocator allocator(host);
                  const bool done = FrameSharpen(frame.frame, frame.frame, &allocator);
                  EXPECT_TRUE(done || frame.bytes() == before);
                  return done;
              }),
              1);
    GuardedFrame mask(9, 9, kFormatMask8);
    EXPECT_FALSE(FrameSharpen(mask.frame, mask.frame, nullptr));
}

}  // namespace
}  // namespace lumiset
