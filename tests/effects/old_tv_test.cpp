// Old TV's steps, one at a time, through the module's exports: all other settings stand at neutral.

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kOldTV = 7;
enum Param : std::uint32_t {
    kNoise = 1,
    kGhosting = 8,
    kResolution = 11,
    kIntensity = 12,
    kSeverity = 15,
    kFrequency = 16,
    kSpeed = 19,
    kPeriod = 20,
    kVerticalBlank = 21,
    kRate = 24,
    kOverlap = 25,
    kCurvature = 28,
    kSoftenEdge = 29,
    kOpacity = 30,
};

class OldTVTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    /// Everything off.
    ValueHost quietHost() const {
        ValueHost host = m_effect.presetHost("Reset to None");
        host.values[kSpeed].slider = 0.5F;
        return host;
    }
    Picture render(ValueHost& host, Picture& source, double time, bool field = false) const {
        Picture result(source.width(), source.height(), {.format = GetParam()});
        FrameRenderInfo info = frameInfo(time);
        if (field) {
            info.field = 0;
            info.flags = FrameRenderInfo::kHasField;
        }
        EXPECT_TRUE(m_effect.render(host, source, result, &info));
        return result;
    }
    Picture grey(std::int32_t width, std::int32_t height, double level) const {
        Picture picture(width, height, {.format = GetParam()});
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                picture.setPixel(x, y, level, level, level, 255);
            }
        }
        return picture;
    }

    const EffectTester m_effect{kOldTV};
};

TEST_P(OldTVTest, QuietSettingsKeepThePictureToAFewLevels) {
    Picture source(40, 30, {.format = GetParam()});
    drawTestCard(source);
    ValueHost host = quietHost();
    const Picture result = render(host, source, 3.0);
    for (std::int32_t y = 0; y < 30; ++y) {
        for (std::int32_t x = 0; x < 40; ++x) {
            for (const Channel channel : {kRed, kGreen, kBlue}) {
                ASSERT_NEAR(result.get(x, y, channel), source.get(x, y, channel), 3.0);
            }
            ASSERT_EQ(result.get(x, y, kAlpha), source.get(x, y, kAlpha));
        }
    }
}

TEST_P(OldTVTest, GhostStandsToTheRightAndOnlyBrightens) {
    Picture source = grey(64, 40, 20);
    for (std::int32_t y = 0; y < 40; ++y) {
        source.setPixel(10, y, 200, 200, 200, 255);
        source.setPixel(60, y, 200, 200, 200, 255);  // its ghost comes in again on the left
    }
    ValueHost host = quietHost();
    host.values[kGhosting].slider = 1.0F;  // 0.5 * 1 * 1; a distance of a quarter of the 40 rows: 10 pixels
    const Picture result = render(host, source, 0.0);
    EXPECT_NEAR(result.get(20, 5, kGreen), 0.8 * 200, 3.0);
    EXPECT_NEAR(result.get(10, 5, kGreen), 200, 3.0);
    EXPECT_NEAR(result.get(6, 5, kGreen), 0.8 * 200, 3.0);
    EXPECT_NEAR(result.get(30, 5, kGreen), 20, 2.0);
    EXPECT_NEAR(result.get(0, 5, kGreen), 20, 2.0);
}

TEST_P(OldTVTest, ScanLinesDarkenByASineFromThePicturesBottomUp) {
    Picture source = grey(20, 50, 200);
    ValueHost host = quietHost();
    host.values[kResolution].slider = 0.0F;
    host.values[kIntensity].slider = 0.5F;
    const Picture result = render(host, source, 0.0);
    const double base = 200 * (3.8 * 0.4575 * 0.4575 + 0.2);
    for (std::int32_t y = 0; y < 50; ++y) {
        const double light = (std::sin(62.8 / 50 * (49 - y)) + 1) / 2;
        ASSERT_NEAR(result.get(3, y, kRed), base * ((1 - light) * 0.5 + light), 2.5) << y;
        ASSERT_EQ(result.get(3, y, kAlpha), 255.0);
    }
}

TEST_P(OldTVTest, StaticIsGreyAndDancesWithTime) {
    Picture source = grey(64, 64, 128);
    ValueHost host = quietHost();
    host.values[kNoise].slider = 1.0F;
    const Picture first = render(host, source, 1.0);
    const Picture again = render(host, source, 1.0);
    const Picture later = render(host, source, 1.05);
    EXPECT_EQ(first.bytes(), again.bytes());
    double sum = 0.0;
    double squares = 0.0;
    int changed = 0;
    for (std::int32_t y = 0; y < 64; ++y) {
        for (std::int32_t x = 0; x < 64; ++x) {
            const double value = first.get(x, y, kRed);
            ASSERT_NEAR(value, first.get(x, y, kBlue), 0.01);
            sum += value;
            squares += value * value;
            changed += std::abs(value - later.get(x, y, kRed)) > 5.0 ? 1 : 0;
        }
    }
    const double mean = sum / 4096;
    EXPECT_NEAR(mean, 127.0, 12.0);
    EXPECT_GT(std::sqrt(squares / 4096 - mean * mean), 70.0);
    EXPECT_GT(changed, 3000);
}

TEST_P(OldTVTest, StaticLetsThePictureThroughByItsOpacity) {
    Picture dark = grey(37, 9, 40);
    Picture bright = grey(37, 9, 200);
    ValueHost host = quietHost();
    host.values[kNoise].slider = 0.4F;
    const Picture overDark = render(host, dark, 1.0);
    const Picture overBright = render(host, bright, 1.0);
    for (std::int32_t y = 0; y < 9; ++y) {
        for (std::int32_t x = 0; x < 37; ++x) {
            ASSERT_NEAR(overBright.get(x, y, kGreen) - overDark.get(x, y, kGreen), 0.6 * 160, 3.0) << x << ", " << y;
            ASSERT_NEAR(overDark.get(x, y, kAlpha), 255.0, 1.0);
        }
    }
}

TEST_P(OldTVTest, TearsMoveWholeRowsAndLoseNothing) {
    Picture source(96, 48, {.format = GetParam()});
    for (std::int32_t y = 0; y < 48; ++y) {
        for (std::int32_t x = 0; x < 96; ++x) {
            source.setPixel(x, y, 2 * x, 100, y, 255);
        }
    }
    ValueHost host = quietHost();
    host.values[kFrequency].slider = 1.0F;
    host.values[kSeverity].slider = 1.0F;
    const Picture plain = render(host, source, 1e9);  // time begins anew each million seconds: 0, where a tear begins
    const Picture torn = render(host, source, 0.4);
    int moved = 0;
    for (std::int32_t y = 0; y < 48; ++y) {
        double plainSum = 0.0;
        double tornSum = 0.0;
        for (std::int32_t x = 0; x < 96; ++x) {
            plainSum += plain.get(x, y, kRed);
            tornSum += torn.get(x, y, kRed);
        }
        ASSERT_NEAR(plainSum, tornSum, 0.5);
        moved += std::abs(torn.get(0, y, kRed) - plain.get(0, y, kRed)) > 1.0 ? 1 : 0;
    }
    EXPECT_GT(moved, 20);
}

TEST_P(OldTVTest, RollShowsBothPartsAndABlackBarBetween) {
    Picture source(20, 100, {.format = GetParam()});
    for (std::int32_t y = 0; y < 100; ++y) {
        for (std::int32_t x = 0; x < 20; ++x) {
            source.setPixel(x, y, 100 + y, 100 + y, 100 + y, 255);
        }
    }
    ValueHost host = quietHost();
    host.values[kSpeed].slider = 0.25F;  // half speed downwards: 0.6 seconds
    host.values[kPeriod].slider = 0.0F;
    host.values[kVerticalBlank].words[0] = 1;
    const Picture result = render(host, source, 0.3);
    // Half of 105 rows: the source from row 52 on, five black rows, then the source's top.
    EXPECT_NEAR(result.get(4, 0, kRed), 152.0 * 0.995, 2.5);
    EXPECT_NEAR(result.get(4, 47, kRed), 199.0 * 0.995, 2.5);
    EXPECT_EQ(result.get(4, 48, kRed), 0.0);
    EXPECT_EQ(result.get(4, 52, kRed), 0.0);
    EXPECT_EQ(result.get(4, 52, kAlpha), 255.0);
    EXPECT_NEAR(result.get(4, 53, kRed), 100.0 * 0.995, 2.5);
}

TEST_P(OldTVTest, RolledRowsTakeTheirTearsAndLinesAlong) {
    Picture source(96, 100, {.format = GetParam()});
    drawTestCard(source);
    ValueHost host = quietHost();
    host.values[kNoise].slider = 0.3F;
    host.values[kIntensity].slider = 0.5F;
    host.values[kFrequency].slider = 1.0F;
    host.values[kSeverity].slider = 1.0F;
    const Picture still = render(host, source, 0.3);
    host.values[kSpeed].slider = 0.25F;  // rolls as above
    host.values[kPeriod].slider = 0.0F;
    host.values[kVerticalBlank].words[0] = 1;
    const Picture rolled = render(host, source, 0.3);
    for (std::int32_t y = 0; y < 100; ++y) {
        const std::int32_t from = y < 48 ? y + 52 : y - 53;
        for (std::int32_t x = 0; x < 96 && from >= 0; ++x) {
            for (const Channel channel : {kRed, kGreen, kBlue, kAlpha}) {
                ASSERT_EQ(rolled.get(x, y, channel), still.get(x, from, channel)) << x << ", " << y;
            }
        }
    }
}

TEST_P(OldTVTest, BandDoublesAtMostAndLeavesAlpha) {
    Picture source = grey(20, 100, 60);
    ValueHost host = quietHost();
    host.values[kOverlap].slider = 0.4F;
    const Picture result = render(host, source, 0.0);
    EXPECT_NEAR(result.get(4, 20, kGreen), 2 * 59.7, 3.0);
    EXPECT_NEAR(result.get(4, 70, kGreen), 59.7, 2.0);
    EXPECT_LT(result.get(4, 2, kGreen), result.get(4, 10, kGreen));
    source = grey(20, 100, 200);
    EXPECT_EQ(render(host, source, 0.0).get(4, 20, kGreen), 255.0);
}

TEST_P(OldTVTest, TubeIsSymmetricWithTransparentCornersAndKeepsTheMiddles) {
    Picture source = grey(160, 120, 128);
    ValueHost host = quietHost();
    host.values[kCurvature].slider = 1.0F;
    const Picture result = render(host, source, 0.0);
    EXPECT_EQ(result.get(0, 0, kAlpha), 0.0);
    EXPECT_EQ(result.get(159, 119, kAlpha), 0.0);
    EXPECT_EQ(result.get(20, 0, kAlpha), 0.0);
    EXPECT_EQ(result.get(139, 0, kAlpha), 0.0);
    // The middle of a side lies on a straight piece of eight pixels, a little inwards.
    EXPECT_NEAR(result.get(80, 0, kAlpha), 255.0, 20.0);
    EXPECT_NEAR(result.get(0, 60, kAlpha), 255.0, 20.0);
    EXPECT_EQ(result.get(80, 60, kAlpha), 255.0);
    // A corner lies a twelfth of the size inwards.
    EXPECT_EQ(result.get(8, 6, kAlpha), 0.0);
    EXPECT_EQ(result.get(20, 16, kAlpha), 255.0);
    // Upper and lower half are alike to a pixel at either end of a row.
    const auto covered = [&](std::int32_t y) {
        double sum = 0.0;
        for (std::int32_t x = 0; x < 160; ++x) {
            sum += result.get(x, y, kAlpha) / 255.0;
        }
        return sum;
    };
    for (std::int32_t y = 10; y < 60; ++y) {
        ASSERT_NEAR(covered(y), covered(119 - y), 2.0) << y;
    }
}

TEST_P(OldTVTest, SoftEdgeFadesInwardsAndSurroundIsBlackOfItsOpacity) {
    Picture source = grey(200, 100, 128);
    ValueHost host = quietHost();
    host.values[kSoftenEdge].slider = 1.0F;  // 6 columns
    Picture result = render(host, source, 0.0);
    EXPECT_LT(result.get(0, 50, kAlpha), 60.0);
    EXPECT_EQ(result.get(100, 50, kAlpha), 255.0);
    for (std::int32_t x = 1; x < 20; ++x) {
        ASSERT_GE(result.get(x, 50, kAlpha), result.get(x - 1, 50, kAlpha));
    }
    host.values[kOpacity].slider = 0.5F;
    result = render(host, source, 0.0);
    EXPECT_NEAR(result.get(0, 0, kAlpha), 127.0, 12.0);
    EXPECT_LT(result.get(0, 0, kRed), 20.0);
    EXPECT_EQ(result.get(100, 50, kAlpha), 255.0);
    host.values[kSoftenEdge].slider = 0.0F;
    host.values[kCurvature].slider = 1.0F;
    EXPECT_NEAR(render(host, source, 0.0).get(0, 0, kAlpha), 127.0, 1.0);
}

TEST_P(OldTVTest, TinyPicturesHaveNoTubeRollOrBand) {
    Picture source = grey(15, 40, 60);
    ValueHost host = quietHost();
    host.values[kCurvature].slider = 1.0F;
    host.values[kSoftenEdge].slider = 1.0F;
    host.values[kOverlap].slider = 1.0F;
    host.values[kSpeed].slider = 0.25F;
    host.values[kPeriod].slider = 0.0F;
    const Picture result = render(host, source, 0.3);
    for (std::int32_t y = 0; y < 40; ++y) {
        ASSERT_NEAR(result.get(7, y, kRed), 59.7, 2.0);
        ASSERT_EQ(result.get(7, y, kAlpha), 255.0);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, OldTVTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

}  // namespace
}  // namespace lumiset::test
