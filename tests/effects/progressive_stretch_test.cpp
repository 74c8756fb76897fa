// Progressive Stretch, rendered through the module's exports.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

enum Param : std::uint32_t { kStretch, kCrop };

class ProgressiveStretchTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    Picture rendered(float stretch, float crop, Picture& source) const {
        ValueHost host;
        host.values[kStretch].slider = stretch;
        host.values[kCrop].slider = crop;
        Picture result(source.width(), source.height(), source.storage());
        EXPECT_TRUE(m_effect.render(host, source, result));
        return result;
    }

    const EffectTester m_effect{0};
};

TEST_P(ProgressiveStretchTest, UniformStretchResizesTheMiddleAndEndsOnTheLastColumnButOne) {
    Picture source(8, 1, {.format = GetParam()});
    for (std::int32_t x = 0; x < 8; ++x) {
        source.setPixel(x, 0, 32 * x, 16 * x, 255 - 32 * x, 30 * x);
    }
    const Picture result = rendered(1.0F, 0.0F, source);
    // Six columns from the second one on become eight; what the last one shows ends at the seventh.
    constexpr double expected[] = {32, 56, 80, 104, 128, 152, 176, 176};
    for (std::int32_t x = 0; x < 8; ++x) {
        EXPECT_NEAR(result.get(x, 0, kRed), expected[x], 0.01) << x;
        EXPECT_NEAR(result.get(x, 0, kGreen), expected[x] / 2.0, 0.01) << x;
        EXPECT_NEAR(result.get(x, 0, kBlue), 255.0 - expected[x], 0.01) << x;
        EXPECT_NEAR(result.get(x, 0, kAlpha), expected[x] * 30.0 / 32.0, result.isFloat() ? 0.01 : 0.51) << x;
    }
}

TEST_P(ProgressiveStretchTest, WithoutStretchTheMiddleKeepsItsColumns) {
    Picture source(128, 2, {.format = GetParam()});
    for (std::int32_t x = 0; x < 128; ++x) {
        source.setPixel(x, 0, 2 * x, 0, 0, 255);
        source.setPixel(x, 1, 0, 2 * x, 0, 255);
    }
    const Picture result = rendered(0.0F, 0.0F, source);
    for (std::int32_t x = 58; x <= 70; ++x) {
        EXPECT_NEAR(result.get(x, 0, kRed), 2 * x, 1.0) << x;
        EXPECT_NEAR(result.get(x, 1, kGreen), 2 * x, 1.0) << x;
    }
    // The sides show the rest of the middle three quarters.
    EXPECT_NEAR(result.get(0, 0, kRed), 32.0, 1.0);
    EXPECT_NEAR(result.get(127, 0, kRed), 222.0, 1.5);
}

TEST_P(ProgressiveStretchTest, FullCropOnlyZooms) {
    // Half of the columns and three quarters of the rows, about the middle.
    Picture source(64, 48, {.format = GetParam()});
    for (std::int32_t y = 0; y < 48; ++y) {
        for (std::int32_t x = 0; x < 64; ++x) {
            source.setPixel(x, y, 3 * x, 5 * y, 0, 255);
        }
    }
    for (const float stretch : {0.0F, 0.5F, 1.0F}) {
        const Picture result = rendered(stretch, 1.0F, source);
        for (const std::int32_t x : {0, 13, 32, 50}) {
            EXPECT_NEAR(result.get(x, 20, kRed), 3.0 * (14.0 + 36.0 * x / 64.0), 0.6) << x;
        }
        for (const std::int32_t y : {0, 13, 24, 40}) {
            EXPECT_NEAR(result.get(30, y, kGreen), 5.0 * (6.0 + 36.0 * y / 48.0), 0.6) << y;
        }
    }
}

/// Two-way linear interpolation of a picture, edges repeated.
double sampleAt(const Picture& picture, double x, double y, Channel channel) {
    const auto at = [&](std::int32_t i, std::int32_t j) {
        return picture.get(std::min(i, picture.width() - 1), std::min(j, picture.height() - 1), channel);
    };
    const auto i = static_cast<std::int32_t>(x);
    const auto j = static_cast<std::int32_t>(y);
    const double above = at(i, j) + (at(i + 1, j) - at(i, j)) * (x - i);
    const double below = at(i, j + 1) + (at(i + 1, j + 1) - at(i, j + 1)) * (x - i);
    return above + (below - above) * (y - j);
}

TEST_P(ProgressiveStretchTest, UniformStretchInterpolatesNoiseAtEveryWidth) {
    // Without a stretch the columns of the resized picture stand, so it can be worked out at once.
    std::mt19937 random(5);
    for (const std::int32_t width : {2, 3, 7, 8, 15, 16, 31, 32, 33, 47, 64, 100, 131}) {
        Picture source(width, 9, {.format = GetParam()});
        for (std::int32_t y = 0; y < 9; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                source.setPixel(x, y, static_cast<double>(random() % 256), static_cast<double>(random() % 256),
                                static_cast<double>(random() % 256), static_cast<double>(random() % 256));
            }
        }
        for (const double crop : {0.0, 0.5}) {
            const Picture result = rendered(1.0F, static_cast<float>(crop), source);
            const auto cropped = static_cast<std::int32_t>(width * (1.0 - crop * 0.25));
            const auto rows = static_cast<std::int32_t>(9.0 * (1.0 - crop * 0.25));
            const std::int32_t columns = cropped - cropped / 4;
            Picture region(columns, rows, {.format = GetParam()});
            for (std::int32_t y = 0; y < rows; ++y) {
                for (std::int32_t x = 0; x < columns; ++x) {
                    for (const Channel channel : {kRed, kGreen, kBlue, kAlpha}) {
                        region.set(x, y, channel, source.get(x + (width - columns) / 2, y + (9 - rows) / 2, channel));
                    }
                }
            }
            for (std::int32_t y = 0; y < 9; ++y) {
                for (std::int32_t x = 0; x < width - 1; ++x) {
                    for (const Channel channel : {kRed, kBlue, kAlpha}) {
                        const double expected = sampleAt(region, static_cast<double>(x) * columns / width,
                                                         static_cast<double>(y) * rows / 9.0, channel);
                        // Columns are found in single precision, and a byte is rounded three times.
                        ASSERT_NEAR(result.get(x, y, channel), expected, result.isFloat() ? 0.02 : 2.1)
                            << x << "," << y << " of " << width << ", crop " << crop;
                    }
                }
            }
        }
    }
}

TEST_P(ProgressiveStretchTest, LeavesAnEvenPictureEven) {
    Picture source(77, 20, {.format = GetParam()});
    for (std::int32_t y = 0; y < 20; ++y) {
        for (std::int32_t x = 0; x < 77; ++x) {
            source.setPixel(x, y, 255, 1, 128, 77);
        }
    }
    for (const float stretch : {0.0F, 0.3F}) {
        for (const float crop : {0.0F, 0.4F}) {
            const Picture result = rendered(stretch, crop, source);
            for (const std::int32_t x : {0, 20, 38, 39, 60, 76}) {
                EXPECT_NEAR(result.get(x, 7, kRed), 255.0, 1e-3);
                EXPECT_NEAR(result.get(x, 7, kGreen), 1.0, 1e-3);
                EXPECT_NEAR(result.get(x, 7, kBlue), 128.0, 1e-3);
                EXPECT_NEAR(result.get(x, 7, kAlpha), 77.0, 1e-3);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, ProgressiveStretchTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

}  // namespace
}  // namespace lumiset::test
