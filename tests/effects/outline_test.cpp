// Outline, rendered through the module's exports, against pictures worked out by hand and by brute force.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tests/effects/alpha_rows.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kOutlineIndex = 2;
enum Param : std::uint32_t { kWidth, kSoften, kColor, kOpacity };

class OutlineTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    static ValueHost hostWith(float width, float soften, float opacity) {
        ValueHost host;
        host.values[kWidth].slider = width;
        host.values[kSoften].slider = soften;
        host.values[kColor].color = 0x0000FF;  // red
        host.values[kOpacity].slider = opacity;
        return host;
    }

    /// A transparent picture with one opaque white pixel.
    Picture onePixel(std::int32_t width, std::int32_t height, std::int32_t x, std::int32_t y) const {
        Picture picture(width, height, {.format = GetParam()});
        picture.setPixel(x, y, 255, 255, 255, 255);
        return picture;
    }

    const EffectTester m_outline{kOutlineIndex};
};

/// Columns and rows that are opaque, counted through a pixel.
struct Extent {
    int columns;
    int rows;
};
Extent extentThrough(const Picture& picture, std::int32_t x, std::int32_t y) {
    Extent extent{0, 0};
    for (std::int32_t column = 0; column < picture.width(); ++column) {
        extent.columns += picture.get(column, y, kAlpha) > 254.0 ? 1 : 0;
    }
    for (std::int32_t row = 0; row < picture.height(); ++row) {
        extent.rows += picture.get(x, row, kAlpha) > 254.0 ? 1 : 0;
    }
    return extent;
}

TEST_P(OutlineTest, GrowsAPixelByTheEllipseAndPaintsTheBandInTheColour) {
    // A diameter of 3 sets a plus; the corners lie outside the ellipse.
    Picture source = onePixel(30, 9, 15, 4);
    Picture result(30, 9, {.format = GetParam()});
    ValueHost host = hostWith(1.0F, 0.0F, 1.0F);
    ASSERT_TRUE(m_outline.render(host, source, result));
    const Rows plus = {{0, 0, 0, 0, 0}, {0, 0, 255, 0, 0}, {0, 255, 255, 255, 0}, {0, 0, 255, 0, 0}, {0, 0, 0, 0, 0}};
    EXPECT_EQ(alphaOf(result, 13, 2, 5, 5), plus);
    EXPECT_EQ(result.get(14, 4, kRed), 255.0);
    EXPECT_EQ(result.get(14, 4, kGreen), 0.0);
    EXPECT_EQ(result.get(14, 4, kBlue), 0.0);
    EXPECT_EQ(result.get(15, 4, kGreen), 255.0);  // the source stays on top
}

TEST_P(OutlineTest, AnEvenDiameterGrowsTowardsHigherColumnsAndRows) {
    Picture source = onePixel(20, 9, 10, 4);
    Picture result(20, 9, {.format = GetParam()});
    ValueHost host = hostWith(1.0F, 0.0F, 1.0F);
    ASSERT_TRUE(m_outline.render(host, source, result));
    const Rows corner = {{0, 0, 0, 0}, {0, 255, 255, 0}, {0, 255, 0, 0}, {0, 0, 0, 0}};
    EXPECT_EQ(alphaOf(result, 9, 3, 4, 4), corner);
}

TEST_P(OutlineTest, SoftensByATriangleAndFadesByTheOpacity) {
    Picture source = onePixel(30, 9, 3, 4);
    Picture result(30, 9, {.format = GetParam()});
    ValueHost host = hostWith(0.0F, 1.0F, 1.0F);
    ASSERT_TRUE(m_outline.render(host, source, result));
    const Rows triangle = {{0, 16, 32, 16, 0}, {0, 32, 255, 32, 0}, {0, 16, 32, 16, 0}};
    EXPECT_EQ(alphaOf(result, 1, 3, 5, 3), triangle);

    host = hostWith(0.0F, 1.0F, 0.5F);
    ASSERT_TRUE(m_outline.render(host, source, result));
    // Half is 127 of 255 in 8 bits, and the scaled product rounds 15.94 down.
    EXPECT_NEAR(result.get(2, 4, kAlpha), result.isFloat() ? 16.0 : 15.0, 0.2);
    EXPECT_NEAR(result.get(2, 3, kAlpha), result.isFloat() ? 8.0 : 7.0, 0.2);
}

TEST_P(OutlineTest, AFieldHalvesTheRowsOnly) {
    FrameRenderInfo info = frameInfo();
    info.flags = FrameRenderInfo::kHasField;
    for (const std::int16_t field : {std::int16_t{0}, std::int16_t{1}, FrameRenderInfo::kWholeFrame}) {
        info.field = field;
        Picture source = onePixel(90, 21, 45, 10);
        Picture result(90, 21, {.format = GetParam()});
        ValueHost host = hostWith(1.0F, 0.0F, 1.0F);
        ASSERT_TRUE(m_outline.render(host, source, result, &info));
        const Extent extent = extentThrough(result, 45, 10);
        EXPECT_EQ(extent.columns, 9);
        EXPECT_EQ(extent.rows, field == FrameRenderInfo::kWholeFrame ? 9 : 4);
    }
    // Without the flag the field says nothing.
    info.flags = 0;
    info.field = 0;
    Picture source = onePixel(90, 21, 45, 10);
    Picture result(90, 21, {.format = GetParam()});
    ValueHost host = hostWith(1.0F, 0.0F, 1.0F);
    ASSERT_TRUE(m_outline.render(host, source, result, &info));
    EXPECT_EQ(extentThrough(result, 45, 10).rows, 9);
}

TEST_P(OutlineTest, WidePixelsGetFewerRows) {
    FrameRenderInfo info = frameInfo();
    info.flags = FrameRenderInfo::kHasPixelAspect;
    info.pixelAspect = 3.0;
    Picture source = onePixel(90, 21, 45, 10);
    Picture result(90, 21, {.format = GetParam()});
    ValueHost host = hostWith(1.0F, 0.0F, 1.0F);
    ASSERT_TRUE(m_outline.render(host, source, result, &info));
    EXPECT_EQ(extentThrough(result, 45, 10).columns, 9);
    EXPECT_EQ(extentThrough(result, 45, 10).rows, 3);
}

TEST_P(OutlineTest, BandIsTheMaximumOverTheEllipseForAnyShape) {
    constexpr std::int32_t width = 101;
    constexpr std::int32_t height = 37;
    std::mt19937 random(7);
    for (const float size : {0.2F, 0.55F, 0.8F, 1.0F}) {
        Picture source(width, height, {.format = GetParam()});
        for (int i = 0; i < 12; ++i) {
            source.setPixel(static_cast<std::int32_t>(random() % width), static_cast<std::int32_t>(random() % height),
                            9, 9, 9, 255);
        }
        Picture result(width, height, {.format = GetParam()});
        ValueHost host = hostWith(size, 0.0F, 1.0F);
        ASSERT_TRUE(m_outline.render(host, source, result));
        const int diameter = static_cast<int>(static_cast<float>(width) * size * 0.1F);
        const int anchor = diameter / 2;
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                double expected = 0.0;
                for (int j = 0; j < diameter; ++j) {
                    for (int i = 0; i < diameter; ++i) {
                        if ((i - anchor) * (i - anchor) + (j - anchor) * (j - anchor) <= anchor * anchor) {
                            const std::int32_t column = std::clamp(x + i - anchor, 0, width - 1);
                            const std::int32_t row = std::clamp(y + j - anchor, 0, height - 1);
                            expected = std::max(expected, source.get(column, row, kAlpha));
                        }
                    }
                }
                ASSERT_EQ(result.get(x, y, kAlpha), expected) << x << "," << y << " diameter " << diameter;
            }
        }
    }
}

TEST_P(OutlineTest, ResetToNoneShowsAnOpaqueSourceUnchangedOnFramesOfAnySize) {
    for (const auto& [width, height] : {std::pair{33, 17}, {9, 7}, {1, 1}, {2, 31}, {31, 2}}) {
        SCOPED_TRACE(::testing::Message() << width << " by " << height);
        Picture source(width, height, {.format = GetParam()});
        drawTestCard(source);
        Picture result(width, height, {.format = GetParam()});
        ValueHost host = m_outline.presetHost("Reset to None");
        for (std::int32_t i = 0; i < width * height; ++i) {
            source.set(i % width, i / width, kAlpha, (i % width + i / width) % 3 == 1 ? 0 : 255);
        }
        ASSERT_TRUE(m_outline.render(host, source, result));
        const auto seenIn = [](const Picture& picture) {
            return [&picture](std::int32_t x, std::int32_t y, std::int32_t channel) {
                const bool seen = channel == kAlpha || picture.get(x, y, kAlpha) != 0.0;
                return seen ? picture.get(x, y, static_cast<Channel>(channel)) : 0.0;
            };
        };
        EXPECT_TRUE(within(differenceOf(width, height, 4, seenIn(result), seenIn(source)), {}));
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, OutlineTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

}  // namespace
}  // namespace lumiset::test
