#include "frame/operations/color.h"

#include <cmath>
#include <functional>

#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

struct Colour {
    double red, green, blue, alpha;
};

/// Writes colours given in 0..1 as the frame stores them.
void setColours(GuardedFrame& f, const std::vector<Colour>& colours) {
    const double full = fullScale(f.frame.Format());
    for (std::int32_t x = 0; x < static_cast<std::int32_t>(colours.size()); ++x) {
        const Colour& c = colours[static_cast<std::size_t>(x)];
        const double samples[4] = {c.red, c.green, c.blue, c.alpha};
        for (std::int32_t channel = 0; channel < 4; ++channel) {
            setSample(f, 0, x * 4 + positionOf(f.frame.Format(), channel), samples[channel] * full);
        }
    }
}
/// A sample by its channel (red 0 to alpha 3), in 0..1.
double colourAt(const GuardedFrame& f, std::int32_t x, std::int32_t channel) {
    return sampleAt(f, 0, x * 4 + positionOf(f.frame.Format(), channel)) / fullScale(f.frame.Format());
}

TEST(FrameToLuma, WeighsTheColoursByName) {
    for (const std::int32_t format : kColorFormats) {
        const bool isFloat = isFloatFormat(format);
        expectOnCommonRectangle(
            format, MaskFormat(format), FrameToLuma,
            [&](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t x) {
                const auto at = [&](std::int32_t channel) {
                    return sampleAt(src, y, x * 4 + positionOf(format, channel));
                };
                return 0.299 * at(0) + 0.587 * at(1) + 0.114 * at(2);
            },
            isFloat ? 1e-6 : 0.5001);
        GuardedFrame colour(4, 4, format);
        GuardedFrame otherDepth(4, 4, isFloat ? kFormatMask8 : kFormatMaskFloat);
        EXPECT_FALSE(FrameToLuma(colour.frame, otherDepth.frame));
        EXPECT_FALSE(FrameToLuma(otherDepth.frame, otherDepth.frame));
        EXPECT_FALSE(FrameToLuma(colour.frame, colour.frame));
    }
    expectRefusesUnsoundFrames(FrameToLuma);
}

TEST(FrameToLuma, ReadsPackedColourWithoutAlpha) {
    std::uint8_t packed[2][8] = {{255, 0, 0, 0, 255, 0, 9, 9}, {0, 0, 255, 10, 10, 10, 9, 9}};
    Frame src;
    src.Wrap(packed, 2, 2, 8, 3, kFormatBgra8, false);
    GuardedFrame dst(2, 2, kFormatMask8);
    ASSERT_TRUE(FrameToLuma(src, dst.frame));
    EXPECT_EQ(samplesIn(dst), (std::vector<double>{29, 150, 76, 10}));
    GuardedFrame floats(2, 2, kFormatMaskFloat);
    EXPECT_FALSE(FrameToLuma(src, floats.frame));
}

TEST(FrameHue, NamesTheHuesOfThePrimaries) {
    const std::vector<Colour> colours = {{1, 0, 0, 0.2}, {1, 1, 0, 0.4}, {0, 1, 0, 0.6},    {0, 1, 1, 0},
                                         {0, 0, 1, 1},   {1, 0, 1, 1},   {0.4, 0.4, 0.4, 1}};
    const double hues[] = {0, 1 / 6.0, 2 / 6.0, 3 / 6.0, 4 / 6.0, 5 / 6.0, 0};
    for (const std::int32_t format : kColorFormats) {
        SCOPED_TRACE(format);
        const double tolerance = isFloatFormat(format) ? 1e-6 : 0.6 / 255;
        GuardedFrame src(7, 1, format);
        GuardedFrame hsv(7, 1, format);
        GuardedFrame back(7, 1, format);
        setColours(src, colours);
        ASSERT_TRUE(FrameRgbToHsv(src.frame, hsv.frame));
        for (std::int32_t x = 0; x < 7; ++x) {
            EXPECT_NEAR(colourAt(hsv, x, 0), hues[x], tolerance);
            EXPECT_NEAR(colourAt(hsv, x, 1), x < 6 ? 1 : 0, tolerance);
            EXPECT_NEAR(colourAt(hsv, x, 2), x < 6 ? 1 : 0.4, tolerance);
        }
        ASSERT_TRUE(FrameHsvToRgb(hsv.frame, back.frame));
        EXPECT_TRUE(framesAgree(back, src, isFloatFormat(format) ? 1e-5F : 3.0F));
        for (std::int32_t x = 0; x < 7; ++x) {
            EXPECT_EQ(colourAt(back, x, 3), colourAt(src, x, 3));
        }
        ASSERT_TRUE(FrameRgbToHsv(src.frame, src.frame));
        EXPECT_TRUE(framesAgree(src, hsv));
        GuardedFrame mask(7, 1, MaskFormat(format));
        EXPECT_FALSE(FrameRgbToHsv(mask.frame, mask.frame));
        EXPECT_FALSE(FrameHsvToRgb(src.frame, mask.frame));
    }
    expectRefusesUnsoundFrames(FrameRgbToHsv);
    expectRefusesUnsoundFrames(FrameHsvToRgb);
}

TEST(FrameRGBArithmetic, TouchesTheColoursOfFloatArgbAlone) {
    const float add[3] = {0.5F, -0.25F, 0.125F};
    const float twist[3][4] = {{0, 0, 1, 0.5F}, {2, 0, 0, 0}, {0.5F, 0.25F, 0, -1}};
    const auto touched = [](const auto& colour) {
        return [colour](const GuardedFrame& src, const GuardedFrame& before, std::int32_t y, std::int32_t i) {
            return i % 4 == 0 ? sampleAt(before, y, i) : colour(src, y, i, i % 4 - 1);
        };
    };
    const auto addRGB = [&](const Frame& src, Frame& dst) { return FrameAddRGB(src, dst, add[0], add[1], add[2]); };
    const auto mulRGB = [&](const Frame& src, Frame& dst) {
        return FrameMultiplyRGB(src, dst, add[0], add[1], add[2]);
    };
    const auto twistRGB = [&](const Frame& src, Frame& dst) { return FrameTwistRGB(src, dst, twist); };
    expectOnCommonRectangle(kFormatArgbFloat, kFormatArgbFloat, addRGB,
                            touched([&](const GuardedFrame& src, std::int32_t y, std::int32_t i, std::int32_t c) {
                                return sampleAt(src, y, i) + static_cast<double>(add[c]);
                            }),
                            1e-6);
    expectOnCommonRectangle(kFormatArgbFloat, kFormatArgbFloat, mulRGB,
                            touched([&](const GuardedFrame& src, std::int32_t y, std::int32_t i, std::int32_t c) {
                                return sampleAt(src, y, i) * static_cast<double>(add[c]);
                            }),
                            1e-6);
    expectOnCommonRectangle(kFormatArgbFloat, kFormatArgbFloat, twistRGB,
                            touched([&](const GuardedFrame& src, std::int32_t y, std::int32_t i, std::int32_t c) {
                                double sum = static_cast<double>(twist[c][3]);
                                for (std::int32_t k = 0; k < 3; ++k) {
                                    sum += static_cast<double>(twist[c][k]) * sampleAt(src, y, i / 4 * 4 + 1 + k);
                                }
                                return sum;
                            }),
                            1e-6);
    for (const std::int32_t format : kAllFormats) {
        GuardedFrame frame(4, 2, format);
        GuardedFrame argb(4, 2, kFormatArgbFloat);
        const bool handled = format == kFormatArgbFloat;
        for (const auto& operation : {std::function<bool(const Frame&, Frame&)>(addRGB),
                                      {mulRGB},
                                      {twistRGB},
                                      {FrameColorToYuv},
                                      {FrameYuvToColor}}) {
            EXPECT_EQ(operation(frame.frame, frame.frame), handled);
            EXPECT_EQ(operation(argb.frame, frame.frame), handled);
            EXPECT_EQ(operation(frame.frame, argb.frame), handled);
        }
    }
    expectRefusesUnsoundFrames(twistRGB);
}

TEST(FrameYuv, FollowsTheChainsOfMatrixScaleAndOffset) {
    expectOnCommonRectangle(
        kFormatArgbFloat, kFormatArgbFloat, FrameColorToYuv,
        [](const GuardedFrame& src, const GuardedFrame& before, std::int32_t y, std::int32_t i) {
            const std::int32_t p = i / 4 * 4;
            const double r = sampleAt(src, y, p + 1);
            const double g = sampleAt(src, y, p + 2);
            const double b = sampleAt(src, y, p + 3);
            switch (i % 4) {
                case 0:
                    return sampleAt(before, y, i);
                case 1:
                    return (0.299 * r + 0.587 * g + 0.114 * b) * 0.8588235;
                case 2:
                    return (-0.168736 * r - 0.331264 * g + 0.5 * b + 0.5) * 0.8784314 + 0.0627451;
                default:
                    return (0.5 * r - 0.418688 * g - 0.081312 * b + 0.5) * 0.8784314 + 0.0627451;
            }
        },
        1e-6);
    expectOnCommonRectangle(
        kFormatArgbFloat, kFormatArgbFloat, FrameYuvToColor,
        [](const GuardedFrame& src, const GuardedFrame& before, std::int32_t y, std::int32_t i) {
            const std::int32_t p = i / 4 * 4;
            const double luma = sampleAt(src, y, p + 1) * 1.1643835;
            const double cb = (sampleAt(src, y, p + 2) - 0.0627451) * 1.1383928 - 0.5;
            const double cr = (sampleAt(src, y, p + 3) - 0.0627451) * 1.1383928 - 0.5;
            switch (i % 4) {
                case 0:
                    return sampleAt(before, y, i);
                case 1:
                    return luma + 1.402 * cr;
                case 2:
                    return luma - 0.344 * cb - 0.714 * cr;
                default:
                    return luma + 1.772 * cb;
            }
        },
        2e-6);
}

TEST(FrameYuv, BringsColoursBack) {
    std::mt19937 random(11);
    GuardedFrame src(50, 4, kFormatArgbFloat);
    src.randomize(random);
    GuardedFrame there(50, 4, kFormatArgbFloat);
    there.restore(src.bytes());
    ASSERT_TRUE(FrameColorToYuv(there.frame, there.frame));
    ASSERT_TRUE(FrameYuvToColor(there.frame, there.frame));
    EXPECT_TRUE(framesAgree(there, src, 2e-3F));
}

}  // namespace
}  // namespace lumiset::test
