#include "frame/primitives/resize.h"

#include <cmath>
#include <numbers>

#include "frame/operations/geometry.h"
#include "frame/primitives/memory.h"
#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

constexpr std::int32_t kModes[] = {kResizeNearest, kResizeLinear, kResizeCubic, kResizeLanczos};
constexpr std::int32_t kLayouts[] = {kFormatBgra8, kFormatBgraFloat, kFormatMask8, kFormatMaskFloat};

/// Weight of a sample at distance `x`, from the filters' definitions.
double weightAt(double x, std::int32_t mode) {
    const double pi = std::numbers::pi;
    x = std::abs(x);
    switch (mode) {
        case kResizeLinear:
            return std::max(0.0, 1 - x);
        case kResizeCubic:
            return x < 1                       ? 1 - 2.5 * x * x + 1.5 * x * x * x
                   : std::max(0.0, 2 - x) == 0 ? 0
                                               : 2 - 4 * x + 2.5 * x * x - 0.5 * x * x * x;
        default:
            return x == 0 ? 1 : x >= 3 ? 0 : 3 * std::sin(pi * x) * std::sin(pi * x / 3) / (pi * pi * x * x);
    }
}

/// Interpolation in both directions at once, in double.
double sampleBetween(const GuardedFrame& src, double sx, double sy, std::int32_t channel, std::int32_t mode) {
    const auto at = [&](double x, double y) {
        const auto column = static_cast<std::int32_t>(std::clamp(x, 0.0, src.frame.Width() - 1.0));
        const auto row = static_cast<std::int32_t>(std::clamp(y, 0.0, src.frame.Height() - 1.0));
        return sampleAt(src, row, column * src.channels() + channel);
    };
    if (mode == kResizeNearest) {
        return at(std::floor(sx + 0.5), std::floor(sy + 0.5));
    }
    double sum = 0;
    double weights = 0;
    for (int j = -2; j <= 3; ++j) {
        for (int i = -2; i <= 3; ++i) {
            const double x = std::floor(sx) + i;
            const double y = std::floor(sy) + j;
            const double weight = weightAt(sx - x, mode) * weightAt(sy - y, mode);
            sum += weight * at(x, y);
            weights += weight;
        }
    }
    return sum / weights;
}

struct ResizeCase {
    std::int32_t srcWidth, srcHeight, dstWidth, dstHeight;
    double xFactor, yFactor, xShift, yShift;
};

std::vector<ResizeCase> resizeCases() {
    std::vector<ResizeCase> cases;
    for (std::int32_t n = 1; n <= 70; n += n < 20 ? 1 : 7) {
        cases.push_back({n, 1 + n % 4, 71 - n, 1 + n % 7, 0, 0, 0, 0});
        cases.push_back({1 + n % 6, n, 1 + n % 3, 71 - n, 0, 0, 0, 0});
    }
    cases.push_back({13, 11, 40, 30, 3.1, 2.7, 0.4, -1.25});
    cases.push_back({13, 11, 30, 20, 1.0, 1.0, -9.5, 5.5});  // most of it beyond the source
    cases.push_back({40, 30, 8, 9, 0.19, 0.31, 0.0, 0.3});
    cases.push_back({5, 5, 9, 9, 1e-3, 1e3, 1e7, -1e7});
    return cases;
}

void resizeAsTold(const ResizeCase& c, std::int32_t format, std::int32_t mode, std::mt19937& random) {
    GuardedFrame src(c.srcWidth, c.srcHeight, format, 8);
    GuardedFrame dst(c.dstWidth, c.dstHeight, format, 4);
    src.randomize(random);
    ASSERT_TRUE(FrameResizeRect(src.frame, dst.frame, {0, 0, c.srcWidth, c.srcHeight}, {0, 0, c.dstWidth, c.dstHeight},
                                mode, c.xFactor, c.yFactor, c.xShift, c.yShift));
    EXPECT_TRUE(dst.guardsIntact());
    const double xFactor = c.xFactor != 0 ? c.xFactor : static_cast<double>(c.dstWidth) / c.srcWidth;
    const double yFactor = c.yFactor != 0 ? c.yFactor : static_cast<double>(c.dstHeight) / c.srcHeight;
    for (std::int32_t y = 0; y < c.dstHeight; ++y) {
        for (std::int32_t i = 0; i < dst.samplesPerRow(); ++i) {
            const double sx = (i / dst.channels() - c.xShift) / xFactor;
            const double sy = (y - c.yShift) / yFactor;
            double expected = sampleBetween(src, sx, sy, i % dst.channels(), mode);
            const bool isFloat = isFloatFormat(format);
            expected = isFloat ? expected : std::clamp(expected, 0.0, 255.0);
            const double error = std::abs(sampleAt(dst, y, i) - expected);
            ASSERT_TRUE(error <= (isFloat ? 3e-6 : 0.5 + 3e-4))
                << c.srcWidth << " x " << c.srcHeight << " to " << c.dstWidth << " x " << c.dstHeight << ", mode "
                << mode << ", format " << format << ", row " << y << ", sample " << i << ": " << sampleAt(dst, y, i)
                << ", expected " << expected;
        }
    }
}

TEST(Resize, InterpolatesTheSourceAtEveryPixelsPlace) {
    onEveryInstructionSet([] {
        std::mt19937 random(1);
        for (const ResizeCase& c : resizeCases()) {
            for (const std::int32_t format : kLayouts) {
                for (const std::int32_t mode : kModes) {
                    resizeAsTold(c, format, mode, random);
                    if (testing::Test::HasFatalFailure()) {
                        return;
                    }
                }
            }
        }
    });
}

TEST(Resize, PutsPixelCentresAtWholeCoordinates) {
    GuardedFrame src(3, 1, kFormatMask8);
    setSamples(src, {0, 100, 40});
    GuardedFrame dst(6, 1, kFormatMask8);
    ASSERT_TRUE(FrameResizeInto(src.frame, dst.frame, kResizeLinear));
    EXPECT_EQ(samplesIn(dst), (std::vector<double>{0, 50, 100, 70, 40, 40}));
    ASSERT_TRUE(FrameResizeInto(src.frame, dst.frame, kResizeNearest));
    EXPECT_EQ(samplesIn(dst), (std::vector<double>{0, 100, 100, 40, 40, 40}));
    ASSERT_TRUE(FrameResizeInto(src.frame, dst.frame, 77));  // counts as linear
    EXPECT_EQ(samplesIn(dst), (std::vector<double>{0, 50, 100, 70, 40, 40}));
}

TEST(Resize, CopiesBitForBitAtTheSameSize) {
    std::mt19937 random(2);
    for (const std::int32_t format : kAllFormats) {
        for (const std::int32_t mode : kModes) {
            GuardedFrame src(37, 19, format);
            GuardedFrame dst(37, 19, format);
            src.randomize(random);
            ASSERT_TRUE(FrameResizeInto(src.frame, dst.frame, mode));
            EXPECT_TRUE(framesAgree(dst, src)) << "format " << format << ", mode " << mode;
        }
    }
}

TEST(Resize, KeepsAConstantPicture) {
    for (const std::int32_t mode : kModes) {
        GuardedFrame src(9, 8, kFormatMask8);
        GuardedFrame dst(23, 31, kFormatMask8);
        setSamples(src, std::vector<double>(72, 255));
        ASSERT_TRUE(FrameResizeInto(src.frame, dst.frame, mode));
        EXPECT_EQ(samplesIn(dst), std::vector<double>(23 * 31, 255));
    }
}

TEST(Resize, IsTheSameOnEveryInstructionSet) {
    std::mt19937 random(3);
    for (const std::int32_t format : kLayouts) {
        GuardedFrame src(29, 17, format);
        src.randomize(random);
        for (const std::int32_t mode : kModes) {
            std::vector<std::uint8_t> first;
            onEveryInstructionSet([&] {
                GuardedFrame dst(67, 41, format);
                ASSERT_TRUE(FrameResizeInto(src.frame, dst.frame, mode));
                first = first.empty() ? dst.bytes() : first;
                EXPECT_EQ(dst.bytes(), first) << "format " << format << ", mode " << mode;
            });
        }
    }
}

TEST(FrameResizeRect, ReadsAndWritesItsRectanglesAlone) {
    std::mt19937 random(4);
    for (const std::int32_t format : kLayouts) {
        GuardedFrame src(20, 15, format);
        GuardedFrame dst(30, 25, format);
        src.randomize(random);
        dst.randomize(random);
        GuardedFrame expected(30, 25, format);
        expected.restore(dst.bytes());
        ASSERT_TRUE(FrameResizeRect(src.frame, dst.frame, {3, 2, 11, 9}, {5, 6, 27, 20}, kResizeCubic, 0, 0, 0, 0));
        GuardedFrame cut(8, 7, format);
        GuardedFrame scaled(22, 14, format);
        for (std::int32_t y = 0; y < 7; ++y) {
            for (std::int32_t i = 0; i < cut.samplesPerRow(); ++i) {
                setSample(cut, y, i, sampleAt(src, y + 2, i + 3 * src.channels()));
            }
        }
        ASSERT_TRUE(FrameResizeInto(cut.frame, scaled.frame, kResizeCubic));
        for (std::int32_t y = 0; y < 14; ++y) {
            for (std::int32_t i = 0; i < scaled.samplesPerRow(); ++i) {
                setSample(expected, y + 6, i + 5 * dst.channels(), sampleAt(scaled, y, i));
            }
        }
        EXPECT_TRUE(framesAgree(dst, expected));
    }
}

TEST(FrameResizeRect, RefusesWhatItCannotDo) {
    GuardedFrame src(8, 6, kFormatBgra8);
    GuardedFrame dst(10, 10, kFormatBgra8);
    const auto before = dst.bytes();
    const FrameRect all{0, 0, 8, 6};
    const FrameRect into{0, 0, 10, 10};
    for (const FrameRect& bad : {FrameRect{-1, 0, 4, 4},
                                 {0, -1, 4, 4},
                                 {0, 0, 11, 4},
                                 {0, 0, 4, 11},
                                 {3, 0, 3, 4},
                                 {0, 4, 4, 3},
                                 {-2147483647, 0, 2147483647, 4}}) {
        EXPECT_FALSE(FrameResizeRect(src.frame, dst.frame, bad, into, kResizeLinear, 0, 0, 0, 0));
        EXPECT_FALSE(FrameResizeRect(src.frame, dst.frame, all, bad, kResizeLinear, 0, 0, 0, 0));
    }
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [factor, shift] : {std::pair{-1.0, 0.0}, {nan, 0.0}, {HUGE_VAL, 0.0}, {1.0, nan}}) {
        EXPECT_FALSE(FrameResizeRect(src.frame, dst.frame, all, into, kResizeLinear, factor, 1, shift, 0));
        EXPECT_FALSE(FrameResizeRect(src.frame, dst.frame, all, into, kResizeLinear, 1, factor, 0, shift));
    }
    GuardedFrame mask(8, 6, kFormatMaskFloat);  // four bytes a pixel, too
    EXPECT_FALSE(FrameResizeInto(mask.frame, dst.frame, kResizeLinear));
    EXPECT_EQ(dst.bytes(), before);
    expectRefusesUnsoundFrames([](const Frame& a, Frame& b) { return FrameResizeInto(a, b, kResizeLinear); });
}

TEST(ImgResize, ChecksItsArguments) {
    std::uint8_t src[16] = {};
    std::uint8_t dst[64] = {};
    std::size_t bytes = 0;
    ASSERT_EQ(ImgResizeBuffer({2, 2}, 4, kImgCubic, &bytes, {4, 4}), kImgOk);
    EXPECT_EQ(ImgResizeBuffer({2, 2}, 4, kImgCubic, nullptr, {4, 4}), kImgNullPointer);
    EXPECT_EQ(ImgResizeBuffer({0, 2}, 4, kImgCubic, &bytes, {4, 4}), kImgBadSize);
    EXPECT_EQ(ImgResizeBuffer({2, 2}, 3, kImgCubic, &bytes, {4, 4}), kImgBadRange);
    EXPECT_EQ(ImgResizeBuffer({2, 2}, 4, 3, &bytes, {4, 4}), kImgBadRange);
    std::vector<std::uint8_t> scratch(bytes + 32);
    const ImgResizeMap map{2, 2, 0, 0, kImgCubic};
    EXPECT_EQ(ImgResize8C4(src, 8, {2, 2}, dst, 16, map, nullptr, {4, 4}), kImgNullPointer);
    EXPECT_EQ(ImgResize8C4(nullptr, 8, {2, 2}, dst, 16, map, scratch.data(), {4, 4}), kImgNullPointer);
    EXPECT_EQ(ImgResize8C4(src, 7, {2, 2}, dst, 16, map, scratch.data(), {4, 4}), kImgBadStep);
    EXPECT_EQ(ImgResize8C4(src, 8, {2, 2}, dst, 15, map, scratch.data(), {4, 4}), kImgBadStep);
    EXPECT_EQ(ImgResize8C4(src, 8, {2, 0}, dst, 16, map, scratch.data(), {4, 4}), kImgBadSize);
    EXPECT_EQ(ImgResize8C4(src, 8, {2, 2}, dst, 16, map, scratch.data(), {4, -4}), kImgBadSize);
    EXPECT_EQ(ImgResizeSimple8C4(src, 8, {2, 2}, dst, 16, 0, 2, kImgLinear, {4, 4}), kImgBadRange);
    EXPECT_EQ(ImgResizeSimple8C4(src, 8, {2, 2}, dst, 16, 2, 2, 5, {4, 4}), kImgBadRange);
    src[0] = 200;
    EXPECT_EQ(ImgResizeSimple8C4(src, 8, {2, 2}, dst, 16, 2, 2, kImgLinear, {4, 4}), kImgOk);
    EXPECT_EQ(dst[0], 200);
    EXPECT_EQ(dst[4], 100);
    EXPECT_EQ(dst[20], 50);
}

}  // namespace
}  // namespace lumiset::test
