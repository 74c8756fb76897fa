// Selective Color, rendered through the module's exports, on colours whose masks are worked out by hand.

#include <gtest/gtest.h>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

enum Param : std::uint32_t {
    kFirstTint = 1,
    kFirstRange,
    kSecondTint = 5,
    kSecondRange,
    kSoften = 8,
    kStrength,
    kShowMasks
};

struct Rgba {
    double red, green, blue, alpha;
};
constexpr Rgba kRedPixel{255, 0, 0, 255};
constexpr Rgba kBluePixel{0, 0, 255, 255};
constexpr Rgba kGreenPixel{0, 255, 0, 255};
constexpr Rgba kFadedPixel{140, 110, 110, 255};  ///< red's hue, far from red
constexpr std::uint32_t kRedTint = 0x0000FF;
constexpr std::uint32_t kBlueTint = 0xFF0000;
constexpr std::uint32_t kGreyTint = 0x808080;

class SelectiveColorTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    static ValueHost keyed(std::uint32_t first, float firstRange, std::uint32_t second, float secondRange) {
        ValueHost host;
        host.values[kFirstTint].color = first;
        host.values[kFirstRange].slider = firstRange;
        host.values[kSecondTint].color = second;
        host.values[kSecondRange].slider = secondRange;
        host.values[kSoften].slider = 0.0F;
        host.values[kStrength].slider = 1.0F;
        return host;
    }

    /// What becomes of one pixel: a frame so small has no softened border.
    Rgba shown(ValueHost host, const Rgba& pixel) const {
        Picture source(1, 1, {.format = GetParam()});
        source.setPixel(0, 0, pixel.red, pixel.green, pixel.blue, pixel.alpha);
        Picture result(1, 1, {.format = GetParam()});
        EXPECT_TRUE(m_effect.render(host, source, result));
        return {result.get(0, 0, kRed), result.get(0, 0, kGreen), result.get(0, 0, kBlue), result.get(0, 0, kAlpha)};
    }
    /// Compares with what 8-bit frames show and what float frames show.
    void expectShown(const ValueHost& host, const Rgba& pixel, const Rgba& bytes, const Rgba& floats) const {
        const bool isFloat = isFloatFormat(GetParam());
        const Rgba actual = shown(host, pixel);
        const Rgba& expected = isFloat ? floats : bytes;
        const double tolerance = isFloat ? 0.15 : 0.0;
        EXPECT_NEAR(actual.red, expected.red, tolerance);
        EXPECT_NEAR(actual.green, expected.green, tolerance);
        EXPECT_NEAR(actual.blue, expected.blue, tolerance);
        EXPECT_NEAR(actual.alpha, expected.alpha, 1e-4);
    }

    const EffectTester m_effect{8};
};

TEST_P(SelectiveColorTest, KeepsTheKeyFadesItsHueAndDrainsWhatLiesOutsideTheWedge) {
    const ValueHost host = keyed(kRedTint, 0.25F, 0, 0.0F);
    expectShown(host, kRedPixel, kRedPixel, kRedPixel);
    expectShown(host, kBluePixel, {29, 29, 29, 255}, {29.07, 29.07, 29.07, 255});
    // 10 levels along the wedge of 55 between the level, 63, and the radius, 118, and 22 of luma: a mask of 230.
    expectShown(host, kFadedPixel, {120, 117, 117, 255}, {122.49, 117.47, 117.47, 255});
}

TEST_P(SelectiveColorTest, KeepsTheWholeWedgeOnceTheLevelReachesGrey) {
    expectShown(keyed(kRedTint, 0.5F, 0, 0.0F), kFadedPixel, kFadedPixel, kFadedPixel);
    // A grey key has no hue: all colours lie in its wedge.
    for (const Rgba& pixel : {kRedPixel, kBluePixel, kFadedPixel}) {
        expectShown(keyed(kGreyTint, 0.25F, 0, 0.0F), pixel, pixel, pixel);
        expectShown(keyed(kBlueTint, 0.0F, 0x000000, 0.0F), pixel, pixel, pixel);
    }
}

TEST_P(SelectiveColorTest, KeysOnTheSecondColourAloneWhereBothRangesAreZero) {
    const ValueHost host = keyed(kBlueTint, 0.0F, kRedTint, 0.0F);
    expectShown(host, kBluePixel, {29, 29, 29, 255}, {29.07, 29.07, 29.07, 255});
    // Nothing is near enough to count as the key itself: red keeps a mask of 6, in real numbers of 2.
    expectShown(host, kRedPixel, {250, 1, 1, 255}, {253.6, 0.6, 0.6, 255});
}

TEST_P(SelectiveColorTest, KeepsWhateverEitherColourKeeps) {
    const ValueHost host = keyed(kRedTint, 0.25F, kBlueTint, 0.25F);
    expectShown(host, kRedPixel, kRedPixel, kRedPixel);
    expectShown(host, kBluePixel, kBluePixel, kBluePixel);
    expectShown(host, kGreenPixel, {150, 150, 150, 255}, {149.69, 149.69, 149.69, 255});
}

TEST_P(SelectiveColorTest, CoversAPixelByItsAlphaAndLeavesIt) {
    const ValueHost host = keyed(kRedTint, 0.25F, 0, 0.0F);
    expectShown(host, {0, 0, 255, 100}, {11, 11, 166, 100}, {11.4, 11.4, 166.4, 100});
    expectShown(host, {0, 0, 255, 0}, {0, 0, 255, 0}, {0, 0, 255, 0});
}

TEST_P(SelectiveColorTest, StrengthLimitsTheGreyAndNoneGivesTheSource) {
    ValueHost host = keyed(kRedTint, 0.25F, 0, 0.0F);
    host.values[kStrength].slider = 0.5F;
    expectShown(host, kBluePixel, {14, 14, 142, 255}, {14.5, 14.5, 142.0, 255});

    Picture source(60, 50, {.format = GetParam()});
    drawTestCard(source);
    for (const bool reset : {false, true}) {
        host = reset ? m_effect.presetHost("Reset to None") : ValueHost();
        host.values[kStrength].slider = 0.0F;
        Picture result(60, 50, {.format = GetParam()});
        ASSERT_TRUE(m_effect.render(host, source, result));
        EXPECT_EQ(result.bytes(), source.bytes());
    }
}

TEST_P(SelectiveColorTest, ShowsTheMasksInTheirColoursOnBlack) {
    constexpr Rgba black{0, 0, 0, 255};
    for (const bool useSecond : {false, true}) {
        ValueHost one = useSecond ? keyed(kBlueTint, 0.0F, kRedTint, 0.25F) : keyed(kRedTint, 0.25F, kBlueTint, 0.0F);
        one.values[kShowMasks].boolean = true;
        expectShown(one, kRedPixel, kRedPixel, kRedPixel);
        expectShown(one, kBluePixel, black, black);
        expectShown(one, kFadedPixel, {25, 0, 0, 255}, {42.66, 0, 0, 255});
        expectShown(one, {255, 0, 0, 0}, kRedPixel, kRedPixel);
    }
    ValueHost both = keyed(kRedTint, 0.25F, kGreyTint, 0.25F);
    both.values[kShowMasks].boolean = true;
    expectShown(both, kBluePixel, {128, 128, 128, 255}, {128, 128, 128, 255});
    expectShown(both, kRedPixel, {192, 64, 64, 255}, {191.5, 64, 64, 255});
    both = keyed(kRedTint, 0.25F, kBlueTint, 0.25F);
    both.values[kShowMasks].boolean = true;
    expectShown(both, kGreenPixel, black, black);
}

/// Red to the left of `edge`, blue from there on.
Picture redAndBlue(std::int32_t width, std::int32_t height, std::int32_t edge, std::int32_t format) {
    Picture picture(width, height, {.format = format});
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            picture.setPixel(x, y, x < edge ? 255 : 0, 0, x < edge ? 0 : 255, 255);
        }
    }
    return picture;
}

TEST_P(SelectiveColorTest, SoftensMoreTheHigherThePictureAndTwiceAsMuchInFields) {
    ValueHost host = keyed(kRedTint, 0.25F, 0, 0.0F);
    host.values[kShowMasks].boolean = true;
    host.values[kSoften].slider = 0.9F;
    Picture source = redAndBlue(40, 100, 20, GetParam());
    Picture result(40, 100, {.format = GetParam()});
    FrameRenderInfo info = frameInfo();
    info.flags = FrameRenderInfo::kHasField;
    ASSERT_TRUE(m_effect.render(host, source, result, &info));
    // 0.9 * 0.0003 * 100 * 100: two passes, each of which rounds.
    constexpr double expected[] = {255, 239, 175, 80, 16, 0};
    for (std::int32_t i = 0; i < 6; ++i) {
        EXPECT_NEAR(result.get(17 + i, 50, kRed), expected[i], result.isFloat() ? 0.5 : 0.0) << i;
    }
    info.field = 0;  // five passes
    ASSERT_TRUE(m_effect.render(host, source, result, &info));
    EXPECT_GT(result.get(23, 50, kRed), 2.0);
    EXPECT_LT(result.get(16, 50, kRed), 254.5);
    EXPECT_EQ(result.get(26, 50, kRed), 0.0);
}

TEST_P(SelectiveColorTest, RepeatsTheMaskInABorderOfThreePixelsOfAllButTheSmallestFrames) {
    ValueHost host = keyed(kRedTint, 0.25F, 0, 0.0F);
    for (const std::int32_t size : {6, 7, 20}) {
        Picture source = redAndBlue(size, size, 3, GetParam());
        Picture result(size, size, {.format = GetParam()});
        ASSERT_TRUE(m_effect.render(host, source, result));
        // The third pixel from the edge is the last one that keeps its own mask, which here means drained.
        EXPECT_NEAR(result.get(0, size / 2, kRed), size == 6 ? 255.0 : 76.2, 0.5) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, SelectiveColorTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

}  // namespace
}  // namespace lumiset::test
