// The geometry of a progressive stretch.

#include "effects/progressive_stretch/stretch_curve.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace lumiset {
namespace {

TEST(StretchRegion, IsTheMiddleFourByThreePartOfWhatTheCropLeaves) {
    const StretchRegion whole = stretchRegion(1920, 1080, 0.0F);
    EXPECT_EQ(whole.left, 240);
    EXPECT_EQ(whole.top, 0);
    EXPECT_EQ(whole.width, 1440);
    EXPECT_EQ(whole.height, 1080);
    EXPECT_EQ(whole.side, 240);
    const StretchRegion cropped = stretchRegion(1920, 1080, 1.0F);
    EXPECT_EQ(cropped.left, 420);
    EXPECT_EQ(cropped.top, 135);
    EXPECT_EQ(cropped.width, 1080);
    EXPECT_EQ(cropped.height, 810);
    EXPECT_EQ(cropped.side, 0);
}

TEST(StretchCurve, RunsThroughItsFixedPointsAndNeverFalls) {
    constexpr std::int32_t half = 960;
    for (const std::int32_t side : {0, 1, 100, 240}) {
        for (const float stretch : {0.0F, 0.25F, 0.5501F, 1.0F}) {
            SCOPED_TRACE(::testing::Message() << "side " << side << " stretch " << stretch);
            const StretchCurve curve(stretch, side, half);
            EXPECT_NEAR(curve.at(0.0F), 0.0F, 1e-6F);
            EXPECT_NEAR(curve.at(1.0F), 1.0F, 1e-6F);
            const float share = static_cast<float>(side) / half;
            if (side > 0) {
                // Where the middle ends, the sides have been squeezed by as much as is not stretched.
                EXPECT_NEAR(curve.at(1.0F - share), 1.0F - share * stretch, 1e-5F);
                const float slope = curve.at(0.001F) / 0.001F;
                EXPECT_NEAR(slope, 1.0F + (1.0F / (1.0F - share) - 1.0F) * (1.0F - stretch), 0.01F);
            }
            float before = 0.0F;
            for (int i = 1; i <= 1000; ++i) {
                const float now = curve.at(static_cast<float>(i) / 1000.0F);
                EXPECT_GE(now, before - 1e-6F) << i;
                before = std::max(now, before);
                if (stretch == 1.0F || side == 0) {
                    EXPECT_NEAR(now, static_cast<float>(i) / 1000.0F, 3e-5F);
                }
            }
        }
    }
}

TEST(StretchCurve, NeverReadsBeyondTheLastColumn) {
    for (std::int32_t width = 2; width < 200; ++width) {
        for (const float crop : {0.0F, 0.3F, 1.0F}) {
            const StretchRegion region = stretchRegion(width, 50, crop);
            for (const float stretch : {0.0F, 0.5F, 1.0F}) {
                const StretchCurve curve(stretch, region.side, width >> 1);
                for (std::int32_t x = 0; x < width; ++x) {
                    const float column = stretchedColumn(curve, width, x);
                    ASSERT_GE(column, 0.0F);
                    ASSERT_LE(column, static_cast<float>(width - 2));
                }
                EXPECT_NEAR(stretchedColumn(curve, width, 0), 0.0F, 1e-3F);
            }
        }
    }
}

}  // namespace
}  // namespace lumiset
