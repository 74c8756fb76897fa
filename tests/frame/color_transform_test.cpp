#include "frame/operations/color_transform.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

struct Settings {
    float contrast = 0.5F;
    float brightness = 0.5F;
    float saturation = 0.5F;
    float hue = 0.5F;
    std::uint32_t tintColor = 0;
    float tintAmount = 0.5F;
};
constexpr Settings kCases[] = {
    {},
    {0.25F, 0.5F, 0.5F, 0.5F, 0, 0.5F},
    {0.8F, 0.4F, 0.5F, 0.5F, 0, 0.5F},
    {0.5F, 0.5F, 0.0F, 0.5F, 0, 0.5F},
    {0.5F, 0.5F, 1.0F, 0.5F, 0, 0.5F},
    {0.5F, 0.5F, 0.5F, 0.0F, 0, 0.5F},
    {0.5F, 0.5F, 0.5F, 0.75F, 0, 0.5F},
    {0.5F, 0.5F, 0.5F, 0.5F, 0x00204080U, 0.9F},
    {0.6F, 0.7F, 0.3F, 0.1F, 0x00FF8000U, 0.2F},
};

void build(const Settings& s, std::int32_t format, float matrix[3][4], bool keepOrder = true) {
    BuildColorMatrix(s.contrast, s.brightness, s.saturation, s.hue, s.tintColor, s.tintAmount, format, matrix,
                     keepOrder);
}
bool apply(const Settings& s, const Frame& src, Frame& dst) {
    return ColorAdjust(src, dst, s.contrast, s.brightness, s.saturation, s.hue, s.tintColor, s.tintAmount, nullptr);
}

using Pixel = std::array<double, 3>;

/// Turns a pixel in the plane of two of its samples.
void turn(Pixel& p, std::size_t from, std::size_t to, double degrees) {
    const double c = std::cos(degrees / 180 * std::numbers::pi);
    const double s = std::sin(degrees / 180 * std::numbers::pi);
    const Pixel q = p;
    p[from] = c * q[from] - s * q[to];
    p[to] = s * q[from] + c * q[to];
}

/// The adjustment of one pixel, step by step, on samples 0..1 in the order B, G, R.
Pixel adjustByHand(const Settings& s, Pixel p) {
    const Pixel weights = {0.3086, 0.6094, 0.082};
    Pixel w = weights;
    for (Pixel* v : {&p, &w}) {
        turn(*v, 1, 2, 45);
        turn(*v, 2, 0, -35);
    }
    const auto shear = [&](double sign) { p[2] += sign * (p[0] * w[0] / w[2] + p[1] * w[1] / w[2]); };
    shear(1);
    turn(p, 0, 1, 180 - 360 * static_cast<double>(s.hue));
    shear(-1);
    turn(p, 2, 0, 35);
    turn(p, 1, 2, -45);

    const double grey = weights[0] * p[0] + weights[1] * p[1] + weights[2] * p[2];
    const double saturation = 3 * std::pow(static_cast<double>(s.saturation), 1.58496);
    const double c = static_cast<double>(s.contrast);
    const double curved = c < 0.5 ? c / 0.5 * 0.4575 : 0.4575 + (c - 0.5) / 0.5 * 0.5425;
    for (std::size_t i = 0; i < 3; ++i) {
        const double level = static_cast<double>((s.tintColor >> (16 - 8 * i)) & 0xFFU) / 255 - 0.5;
        p[i] = grey + saturation * (p[i] - grey);
        p[i] += 2 * static_cast<double>(s.brightness) - 1 + level * (2 * static_cast<double>(s.tintAmount) - 1);
        p[i] *= 3.8 * curved * curved + 0.2;
    }
    return p;
}

TEST(BuildColorMatrix, MatchesTheStepsOfOnePixelAfterAnother) {
    for (const Settings& s : kCases) {
        for (const std::int32_t format : kColorFormats) {
            const double scale = fullScale(format);
            float matrix[3][4];
            build(s, format, matrix);
            for (const Pixel& p :
                 {Pixel{0, 0, 0}, Pixel{1, 0, 0}, Pixel{0, 1, 0}, Pixel{0, 0, 1}, Pixel{0.3, 0.6, 0.1}}) {
                const Pixel want = adjustByHand(s, p);
                for (std::size_t row = 0; row < 3; ++row) {
                    double sum = static_cast<double>(matrix[row][3]);
                    for (std::size_t k = 0; k < 3; ++k) {
                        sum += static_cast<double>(matrix[row][k]) * p[k] * scale;
                    }
                    EXPECT_NEAR(sum / scale, want[row], 2e-6) << "case " << &s - kCases << ", row " << row;
                }
            }
        }
    }
}

TEST(BuildColorMatrix, IsNearTheIdentityAtTheNeutralSettings) {
    float matrix[3][4];
    build({}, kFormatBgra8, matrix);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            EXPECT_NEAR(matrix[row][column], row == column ? 0.99536 : 0, 2e-5);
        }
    }
}

TEST(BuildColorMatrix, ShowsWhereEachSettingLeads) {
    float matrix[3][4];
    build({.saturation = 0}, kFormatBgraFloat, matrix);  // grey: all rows alike, the first sample weighs 0.3086
    for (const auto& row : matrix) {
        EXPECT_NEAR(row[0], 0.3086 * 0.99536, 1e-5);
        EXPECT_NEAR(row[1], 0.6094 * 0.99536, 1e-5);
        EXPECT_NEAR(row[2], 0.0820 * 0.99536, 1e-5);
    }
    build({.tintColor = 0x000000FF, .tintAmount = 1}, kFormatBgra8, matrix);  // red, the third sample of B, G, R
    EXPECT_NEAR(matrix[2][3], 127.5 * 0.99536, 1e-3);
    EXPECT_NEAR(matrix[0][3], -127.5 * 0.99536, 1e-3);
    build({.contrast = 0}, kFormatBgraFloat, matrix);
    EXPECT_NEAR(matrix[1][1], 0.2, 1e-5);
    build({.contrast = 1}, kFormatBgraFloat, matrix);
    EXPECT_NEAR(matrix[1][1], 4.0, 1e-4);
}

TEST(BuildColorMatrix, ExchangesRedAndBlueOnRequest) {
    const Settings& s = kCases[8];
    float kept[3][4];
    float exchanged[3][4];
    build(s, kFormatBgraFloat, kept);
    build(s, kFormatBgraFloat, exchanged, false);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            EXPECT_EQ(exchanged[row][column], kept[2 - row][column < 3 ? 2 - column : 3]);
        }
    }
}

TEST(ColorAdjust, AppliesTheMatrixToBlueGreenRedAndKeepsAlpha) {
    for (const Settings& s : kCases) {
        for (const std::int32_t format : kColorFormats) {
            float m[3][4];
            build(s, format, m);
            expectOnCommonRectangle(
                format, format, [&](const Frame& src, Frame& dst) { return apply(s, src, dst); },
                [&](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
                    const std::int32_t position = i % 4;
                    if (position == AlphaIndex(format)) {
                        return sampleAt(src, y, i);
                    }
                    const std::int32_t row = AlphaIndex(format) == 3 ? position : 3 - position;
                    double sum = static_cast<double>(m[row][3]);
                    for (std::int32_t k = 0; k < 3; ++k) {
                        sum +=
                            static_cast<double>(m[row][k]) * sampleAt(src, y, i - position + positionOf(format, 2 - k));
                    }
                    return std::clamp(sum, 0.0, fullScale(format));
                },
                isFloatFormat(format) ? 2e-6 : 0.5001);
        }
    }
}

TEST(ColorAdjust, GivesTheSameBytesInBothLayoutsAndInPlace) {
    for (const Settings& s : kCases) {
        for (const std::int32_t format : {kFormatBgra8, kFormatBgraFloat}) {
            const std::int32_t other = format + 1;
            std::mt19937 random(31);
            GuardedFrame bgra(301, 70, format);  // more than one band of rows
            GuardedFrame argb(301, 70, other);
            GuardedFrame expected(301, 70, format);
            bgra.randomize(random);
            ASSERT_TRUE(apply(s, bgra.frame, expected.frame));
            for (std::int32_t y = 0; y < 70; ++y) {
                for (std::int32_t i = 0; i < bgra.samplesPerRow(); ++i) {
                    setSample(argb, y, i, sampleAt(bgra, y, i / 4 * 4 + 3 - i % 4));
                }
            }
            ASSERT_TRUE(apply(s, argb.frame, argb.frame));
            ASSERT_TRUE(apply(s, bgra.frame, bgra.frame));
            EXPECT_TRUE(framesAgree(bgra, expected));
            for (std::int32_t y = 0; y < 70; ++y) {
                for (std::int32_t i = 0; i < bgra.samplesPerRow(); ++i) {
                    ASSERT_EQ(sampleAt(argb, y, i / 4 * 4 + 3 - i % 4), sampleAt(expected, y, i));
                }
            }
        }
    }
}

TEST(ColorAdjust, CopiesMasksAndRefusesTheRest) {
    for (const std::int32_t format : kMaskFormats) {
        expectOnCommonRectangle(
            format, format, [](const Frame& src, Frame& dst) { return apply(kCases[8], src, dst); },
            [](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
                return sampleAt(src, y, i);
            });
    }
    expectRefusesUnsoundFrames([](const Frame& src, Frame& dst) { return apply({}, src, dst); });
    GuardedFrame bgra(3, 3, kFormatBgra8);
    GuardedFrame argb(3, 3, kFormatArgb8);
    GuardedFrame mask(3, 3, kFormatMask8);
    EXPECT_FALSE(apply({}, bgra.frame, argb.frame));
    EXPECT_FALSE(apply({}, mask.frame, argb.frame));
    EXPECT_FALSE(apply({}, argb.frame, mask.frame));
    const float bad = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(apply({.contrast = bad}, bgra.frame, bgra.frame));
    EXPECT_FALSE(apply({.hue = bad}, bgra.frame, bgra.frame));
    EXPECT_FALSE(apply({.tintAmount = std::numeric_limits<float>::infinity()}, bgra.frame, bgra.frame));
}

TEST(FrameColorTransform, IsColorAdjustWithBrightnessFirst) {
    std::mt19937 random(41);
    GuardedFrame src(20, 4, kFormatArgb8);
    GuardedFrame a(20, 4, kFormatArgb8);
    GuardedFrame b(20, 4, kFormatArgb8);
    src.randomize(random);
    ASSERT_TRUE(FrameColorTransform(src.frame, a.frame, 0.6F, 0.3F, 0.2F, 0.7F, 0x00112233U, 0.8F, nullptr));
    ASSERT_TRUE(ColorAdjust(src.frame, b.frame, 0.3F, 0.6F, 0.7F, 0.2F, 0x00112233U, 0.8F, nullptr));
    EXPECT_TRUE(framesAgree(a, b));
}

}  // namespace
}  // namespace lumiset::test
