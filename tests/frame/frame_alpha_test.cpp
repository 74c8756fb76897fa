#include "frame/operations/alpha.h"

#include <cmath>

#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

/// a * b / 255 as 8-bit pictures are multiplied: in whole levels, rounded down.
double product(double a, double b) {
    return std::floor(a * b / 255);
}

TEST(FrameAlphaOver, CompositesOnePixelAsWorkedByHand) {
    // B, G, R, A of the pixel; top is a little more than half opaque.
    const double top[4] = {200, 100, 0, 128};
    const double bottom[4] = {40, 255, 60, 200};
    // Straight: 200 * 128 / 255 = 100.392, 40 * 127 / 255 = 19.922; alpha 128 + 99.608. Each is cut in 8 bits.
    const double straight8[4] = {100 + 19, 50 + 127, 0 + 29, 128 + 99};
    const double straightFloat[4] = {120.314, 177.196, 29.882, 227.608};
    const double premultiplied8[4] = {200 + 19, 100 + 127, 0 + 29, 128 + 99};
    const double premultipliedFloat[4] = {219.922, 227, 29.882, 227.608};
    for (const std::int32_t format : kColorFormats) {
        for (const bool mode : {false, true}) {
            const double scale = fullScale(format) / 255;
            GuardedFrame upper(1, 1, format);
            GuardedFrame lower(1, 1, format);
            GuardedFrame dst(1, 1, format);
            for (std::int32_t i = 0; i < 4; ++i) {
                const std::int32_t at = AlphaIndex(format) == 3 ? i : 3 - i;
                setSample(upper, 0, at, top[i] * scale);
                setSample(lower, 0, at, bottom[i] * scale);
            }
            ASSERT_TRUE(FrameAlphaOver(upper.frame, lower.frame, dst.frame, mode));
            for (std::int32_t i = 0; i < 4; ++i) {
                const bool isFloat = isFloatFormat(format);
                const double* want =
                    mode ? (isFloat ? premultipliedFloat : premultiplied8) : (isFloat ? straightFloat : straight8);
                EXPECT_NEAR(sampleAt(dst, 0, AlphaIndex(format) == 3 ? i : 3 - i) / scale, want[i], isFloat ? 0.001 : 0)
                    << "format " << format << ", sample " << i;
            }
        }
    }
}

TEST(FrameAlphaOver, GivesOnePictureInAllLayouts) {
    for (const bool premultiplied : {false, true}) {
        for (const std::int32_t format : kColorFormats) {
            const bool isFloat = isFloatFormat(format);
            GuardedFrame lower(200, 6, format);
            std::mt19937 random(21);
            lower.randomize(random);
            expectOnCommonRectangle(
                format, format,
                [&](const Frame& src, Frame& dst) { return FrameAlphaOver(src, lower.frame, dst, premultiplied); },
                [&](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
                    const double a = sampleAt(src, y, i / 4 * 4 + AlphaIndex(format));
                    const double s = sampleAt(src, y, i);
                    const double b = sampleAt(lower, y, i);
                    const bool weighted = !premultiplied && i % 4 != AlphaIndex(format);
                    return isFloat ? (weighted ? s * a : s) + b * (1 - a)
                                   : std::min(255.0, (weighted ? product(s, a) : s) + product(b, 255 - a));
                },
                isFloat ? 1e-6 : 0);
        }
    }
}

TEST(FrameAlphaOver, MayWriteIntoEitherSource) {
    for (const std::int32_t format : kColorFormats) {
        std::mt19937 random(22);
        GuardedFrame upper(45, 3, format);
        GuardedFrame lower(45, 3, format);
        GuardedFrame expected(45, 3, format);
        upper.randomize(random);
        lower.randomize(random);
        ASSERT_TRUE(FrameAlphaOver(upper.frame, lower.frame, expected.frame, false));
        GuardedFrame copy(45, 3, format);
        copy.restore(lower.bytes());
        ASSERT_TRUE(FrameAlphaOver(upper.frame, copy.frame, copy.frame, false));
        EXPECT_TRUE(framesAgree(copy, expected));
        ASSERT_TRUE(FrameAlphaOver(upper.frame, lower.frame, upper.frame, false));
        EXPECT_TRUE(framesAgree(upper, expected));
    }
}

TEST(FramePremultiplyAlpha, MultipliesColoursOnly) {
    for (const std::int32_t format : kColorFormats) {
        const bool isFloat = isFloatFormat(format);
        expectOnCommonRectangle(
            format, format, FramePremultiplyAlpha,
            [&](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
                const double a = sampleAt(src, y, i / 4 * 4 + AlphaIndex(format));
                const double s = sampleAt(src, y, i);
                return i % 4 == AlphaIndex(format) ? s : isFloat ? s * a : product(s, a);
            },
            isFloat ? 1e-6 : 0);
    }
}

TEST(FrameAlphaOperations, RefuseMasksAndMixedFormats) {
    expectRefusesUnsoundFrames([](const Frame& a, Frame& b) { return FrameAlphaOver(a, b, b, false); });
    expectRefusesUnsoundFrames([](const Frame& a, Frame& b) { return FrameAlphaOver(a, a, b, false); });
    expectRefusesUnsoundFrames(FramePremultiplyAlpha);
    GuardedFrame bgra(3, 3, kFormatBgra8);
    GuardedFrame argb(3, 3, kFormatArgb8);
    GuardedFrame mask(3, 3, kFormatMask8);
    const std::vector<std::uint8_t> bytes = bgra.bytes();
    EXPECT_FALSE(FrameAlphaOver(bgra.frame, argb.frame, bgra.frame, false));
    EXPECT_FALSE(FrameAlphaOver(argb.frame, argb.frame, bgra.frame, true));
    EXPECT_FALSE(FrameAlphaOver(mask.frame, mask.frame, mask.frame, false));
    EXPECT_FALSE(FramePremultiplyAlpha(argb.frame, bgra.frame));
    EXPECT_FALSE(FramePremultiplyAlpha(mask.frame, mask.frame));
    EXPECT_EQ(bgra.bytes(), bytes);
}

}  // namespace
}  // namespace lumiset::test
