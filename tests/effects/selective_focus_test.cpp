// Selective Focus, rendered through the module's exports.

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kSelectiveFocus = 3;
enum Param : std::uint32_t { kTopLeft = 1, kTopRight, kBottomLeft, kBottomRight, kCurve, kFeather, kTestMask };
constexpr std::uint32_t kBlur = 10;
constexpr std::uint32_t kInvert = 11;

class SelectiveFocusTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    /// A rectangle over the middle half of the frame.
    static ValueHost hostWith(float curve, float feather, bool testMask, bool invert, float blur = 1.0F) {
        ValueHost host;
        host.values[kCurve].slider = curve;
        host.values[kFeather].slider = feather;
        host.values[kTestMask].words[0] = testMask ? 1 : 0;
        host.values[kBlur].slider = blur;
        host.values[kInvert].words[0] = invert ? 1 : 0;
        return host;
    }
    Picture filled(std::int32_t width, std::int32_t height, double value, double alpha) const {
        Picture picture(width, height, {.format = GetParam()});
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                picture.setPixel(x, y, value, value, value, alpha);
            }
        }
        return picture;
    }
    Picture render(ValueHost host, Picture& source, const FrameRenderInfo& info = frameInfo()) const {
        Picture result(source.width(), source.height(), {.format = GetParam()});
        EXPECT_TRUE(m_effect.render(host, source, result, &info));
        return result;
    }
    /// What a white frame shows under Test Mask: 255 where the mask is empty.
    Picture maskPicture(float curve, float feather, bool invert, std::int32_t width, std::int32_t height) const {
        Picture white = filled(width, height, 255.0, 255.0);
        return render(hostWith(curve, feather, true, invert), white);
    }

    const EffectTester m_effect{kSelectiveFocus};
};

TEST_P(SelectiveFocusTest, BlursByATriangleOutsideTheShapeOnly) {
    // Blur 1 on 30 columns is a kernel of 1, 2, 1; the shape's inside is columns 8 to 21, rows 5 to 15.
    Picture source = filled(30, 21, 0.0, 255.0);
    source.set(3, 10, kGreen, 255.0);
    source.set(14, 10, kGreen, 255.0);
    source.set(8, 7, kGreen, 255.0);
    const Picture result = render(hostWith(0.0F, 0.0F, false, false), source);
    EXPECT_NEAR(result.get(3, 10, kGreen), 64.0, 0.5);
    EXPECT_NEAR(result.get(3, 9, kGreen), 32.0, 0.5);
    EXPECT_NEAR(result.get(4, 11, kGreen), 16.0, 0.5);
    EXPECT_EQ(result.get(14, 10, kGreen), 255.0);
    EXPECT_EQ(result.get(15, 10, kGreen), 0.0);
    // At the edge the blur takes in what lies inside, and the inside stays sharp.
    EXPECT_EQ(result.get(8, 7, kGreen), 255.0);
    EXPECT_NEAR(result.get(7, 7, kGreen), 32.0, 0.5);
    EXPECT_EQ(result.get(9, 7, kGreen), 0.0);

    const Picture inverted = render(hostWith(0.0F, 0.0F, false, true), source);
    EXPECT_EQ(inverted.get(3, 10, kGreen), 255.0);
    EXPECT_NEAR(inverted.get(14, 10, kGreen), 64.0, 0.5);
}

TEST_P(SelectiveFocusTest, AFieldHalvesTheRowsOfTheBlur) {
    Picture source = filled(70, 21, 0.0, 255.0);
    source.set(5, 10, kRed, 255.0);
    FrameRenderInfo info = frameInfo();
    info.flags = FrameRenderInfo::kHasField;
    info.field = 1;
    const Picture result = render(hostWith(0.0F, 0.0F, false, false), source, info);
    // Seven columns by three rows: 4/16 times 2/4.
    EXPECT_NEAR(result.get(5, 10, kRed), 255.0 / 8.0, 0.6);
    EXPECT_NEAR(result.get(2, 10, kRed), 255.0 / 32.0, 0.6);
    EXPECT_GT(result.get(5, 11, kRed), 10.0);
    EXPECT_EQ(result.get(5, 12, kRed), 0.0);
}

TEST_P(SelectiveFocusTest, TestMaskShowsTheShapeOnBlackAndInvertItsComplement) {
    Picture source = filled(16, 12, 200.0, 90.0);
    const Picture masked = render(hostWith(0.0F, 0.0F, true, false), source);
    const Picture inverted = render(hostWith(0.0F, 0.0F, true, true), source);
    for (std::int32_t y = 0; y < 12; ++y) {
        for (std::int32_t x = 0; x < 16; ++x) {
            const bool inside = x >= 5 && x <= 11 && y >= 3 && y <= 9;
            ASSERT_NEAR(masked.get(x, y, kBlue), inside ? 200.0 : 0.0, 1e-4) << x << "," << y;
            ASSERT_NEAR(inverted.get(x, y, kBlue), inside ? 0.0 : 200.0, 1e-4) << x << "," << y;
            ASSERT_NEAR(masked.get(x, y, kAlpha), 90.0, 1e-4);
        }
    }
    for (const float feather : {0.2F, 0.9F}) {  // below and above the size of the smaller copy
        const Picture soft = maskPicture(0.7F, feather, false, 140, 100);
        const Picture opposite = maskPicture(0.7F, feather, true, 140, 100);
        for (std::int32_t y = 0; y < 100; ++y) {
            for (std::int32_t x = 0; x < 140; ++x) {
                ASSERT_NEAR(soft.get(x, y, kRed) + opposite.get(x, y, kRed), 255.0, soft.isFloat() ? 0.01 : 2.0);
            }
        }
    }
}

TEST_P(SelectiveFocusTest, FeatherRunsEvenlyAcrossTheEdgeAndAlikeOnAllSides) {
    // The inside is columns 51 to 149 and rows 50 to 150; the edge is 24 or 56 pixels wide.
    for (const float feather : {0.3F, 0.7F}) {
        const Picture soft = maskPicture(0.0F, feather, false, 200, 200);
        const auto reach = static_cast<std::int32_t>(feather * 0.4F * 200.0F / 2.0F);
        EXPECT_GT(soft.get(100, 100, kRed), 253.0);
        EXPECT_LT(soft.get(50 - reach - 2, 100, kRed), 3.0);
        EXPECT_GT(soft.get(50 + reach + 3, 100, kRed), 252.0);
        // Even kernels and the smaller copy move both edges by a pixel or two in one direction.
        const double onePixel = 255.0 / reach;
        EXPECT_NEAR(soft.get(50, 100, kRed), 127.5, 2.0 * onePixel);
        double last = 0.0;
        for (std::int32_t i = 0; i <= 100; ++i) {
            const double value = soft.get(i, 100, kRed);
            ASSERT_GE(value, last - 1e-3) << i;
            ASSERT_LE(value - last, 1.5 * onePixel) << i;
            last = value;
            ASSERT_NEAR(value, soft.get(100, i, kRed), 1.2 * onePixel) << "top, " << i;
            const std::int32_t opposite = std::min(200 - i, 199);
            ASSERT_NEAR(value, soft.get(opposite, 100, kRed), 3.0 * onePixel) << "right, " << i;
            ASSERT_NEAR(value, soft.get(100, opposite, kRed), 3.0 * onePixel) << "bottom, " << i;
        }
    }
}

TEST_P(SelectiveFocusTest, ShowsTheSourceWithoutBlur) {
    Picture source(61, 45, {.format = GetParam()});
    drawTestCard(source);
    EXPECT_EQ(render(m_effect.presetHost("Reset to None"), source).bytes(), source.bytes());
    // Wide pixels: four columns, and a row to the last bit, which still counts.
    FrameRenderInfo wide = frameInfo();
    wide.flags = FrameRenderInfo::kHasPixelAspect;
    wide.pixelAspect = 4.0;
    Picture oneRow(80, 45, {.format = GetParam()});
    drawTestCard(oneRow);
    EXPECT_NE(render(hostWith(0.5F, 0.5F, false, false, 0.5F), oneRow, wide).bytes(), oneRow.bytes());
    // A blur below one pixel.
    EXPECT_EQ(render(hostWith(0.5F, 0.5F, false, false, 0.16F), source).bytes(), source.bytes());
    EXPECT_NE(render(hostWith(0.5F, 0.5F, false, false, 0.7F), source).bytes(), source.bytes());
}

INSTANTIATE_TEST_SUITE_P(Formats, SelectiveFocusTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

}  // namespace
}  // namespace lumiset::test
