// Selective Tint, rendered through the module's exports, against colours worked out by hand.

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kSelectiveTint = 4;
constexpr std::uint32_t kGradient = 6;
constexpr std::uint32_t kTestMask = 7;
constexpr std::uint32_t kBlendMode = 19;
/// Parameters of a region, from its colour on.
constexpr std::uint32_t kInner = 10;
constexpr std::uint32_t kOuter = 15;

using RGB = std::array<double, 3>;

class SelectiveTintTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    static void setRegion(ValueHost& host, std::uint32_t region, std::uint32_t color, float blend, float mask) {
        host.values[region].words[0] = color;
        host.values[region + 1].slider = blend;
        host.values[region + 2].slider = mask;
    }
    /// One colour inside and outside, hard edges.
    static ValueHost evenHost(std::uint32_t color, float blend, float mask, std::uint32_t mode = 0) {
        ValueHost host;
        setRegion(host, kInner, color, blend, mask);
        setRegion(host, kOuter, color, blend, mask);
        host.values[kBlendMode].words[0] = mode;
        return host;
    }
    Picture filled(const RGB& color, std::int32_t width = 9, std::int32_t height = 9) const {
        Picture picture(width, height, {.format = GetParam()});
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                picture.setPixel(x, y, 255.0 * color[0], 255.0 * color[1], 255.0 * color[2], 77.0);
            }
        }
        return picture;
    }
    Picture render(ValueHost host, Picture& source) const {
        Picture result(source.width(), source.height(), {.format = GetParam()});
        EXPECT_TRUE(m_effect.render(host, source, result));
        return result;
    }
    /// A frame of `source` comes out as `expected`, by halves of a level in 8 bits; the colours here are whole levels.
    void expectColor(ValueHost host, const RGB& source, const RGB& expected) const {
        Picture frame = filled(source);
        const Picture result = render(host, frame);
        for (const auto& [x, y] : {std::pair{4, 4}, {0, 0}}) {
            for (const Channel channel : {kRed, kGreen, kBlue}) {
                EXPECT_NEAR(result.get(x, y, channel), 255.0 * expected[channel], result.isFloat() ? 0.01 : 0.51)
                    << "channel " << channel << " at " << x << "," << y;
            }
            EXPECT_NEAR(result.get(x, y, kAlpha), 77.0, 1e-4);
        }
    }

    const EffectTester m_effect{kSelectiveTint};
};

TEST_P(SelectiveTintTest, BlendsByEveryMode) {
    // The tint is orange, (1, 0.6, 0). The picture's luma is 0.1794 + 0.1174 + 0.0456 = 0.3424; the tint there is
    // 0.6848 of its colour, (0.6848, 0.41088, 0).
    constexpr std::uint32_t kOrange = 0x0099FF;
    const RGB source = {0.6, 0.2, 0.4};
    const RGB expected[] = {
        {0.6848, 0.41088, 0.0},        // Normal
        {0.74784, 0.164352, 0.0},      // Pop: 1 - 2 * 0.4 * 0.3152; twice the products
        {0.87392, 0.528704, 0.4},      // Screen: 1 - 0.4 * 0.3152, 1 - 0.8 * 0.58912
        {0.41088, 0.082176, 0.0},      // Multiply
        {0.6848, 0.41088, 0.4},        // Lighten
        {0.6, 0.2, 0.0},               // Darken
        {1.0, 0.2 / 0.58912, 0.4},     // Color Dodge
        {1 - 0.4 / 0.6848, 0.0, 0.0},  // Color Burn
        {0.7152, 0.61088, 0.4},        // Negation
        {0.6, 0.2 + 0.4 * 0.6, 0.2},   // Hue: smallest 0.2, largest 0.6
    };
    for (std::uint32_t mode = 0; mode < std::size(expected); ++mode) {
        SCOPED_TRACE(::testing::Message() << "mode " << mode);
        expectColor(evenHost(kOrange, 1.0F, 0.0F, mode), source, expected[mode]);
    }
    expectColor(evenHost(kOrange, 0.25F, 0.0F, 3), source, {0.55272, 0.170544, 0.3});
}

TEST_P(SelectiveTintTest, KeepsTheLimitsOfEveryMode) {
    const RGB black = {0.0, 0.0, 0.0};
    const RGB white = {1.0, 1.0, 1.0};
    constexpr std::uint32_t kWhiteTint = 0xFFFFFF;
    constexpr std::uint32_t kRedTint = 0x0000FF;
    constexpr std::uint32_t kDodge = 6;
    constexpr std::uint32_t kBurn = 7;
    constexpr std::uint32_t kHue = 9;
    for (const std::uint32_t mode : {kDodge, kBurn, kHue}) {
        SCOPED_TRACE(::testing::Message() << "mode " << mode);
        expectColor(evenHost(kWhiteTint, 1.0F, 0.0F, mode), black, black);
        expectColor(evenHost(kWhiteTint, 1.0F, 0.0F, mode), white, white);
        expectColor(evenHost(kRedTint, 1.0F, 0.0F, mode), black, black);
        expectColor(evenHost(kRedTint, 1.0F, 0.0F, mode), white, white);
    }
    expectColor(evenHost(0x808080, 1.0F, 0.0F, kHue), {0.2, 0.6, 0.4}, {0.2, 0.6, 0.4});
    expectColor(evenHost(kRedTint, 1.0F, 0.0F, kHue), {0.2, 0.6, 0.4}, {0.6, 0.2, 0.2});
}

TEST_P(SelectiveTintTest, DrawsHighlightsTowardsTheColoursOwnBrightness) {
    // Luma 0.8 is 0.36 of the way from the colour to the root of its largest channel.
    constexpr std::uint32_t kDarkBlue = 0x5C0000;
    const double blue = 92.0 / 255.0;
    const double root = std::sqrt(blue);
    expectColor(evenHost(kDarkBlue, 1.0F, 0.0F), {0.8, 0.8, 0.8},
                {0.36 * root, 0.36 * root, blue + 0.36 * (root - blue)});
    expectColor(evenHost(kDarkBlue, 1.0F, 0.0F), {0.0, 0.0, 0.0}, {0.0, 0.0, 0.0});
    expectColor(evenHost(0x000000, 1.0F, 0.0F), {0.8, 0.4, 0.2}, {0.0, 0.0, 0.0});
}

TEST_P(SelectiveTintTest, MaskKeepsColoursUnlikeTheTint) {
    constexpr std::uint32_t kOrange = 0x0099FF;
    const RGB brown = {0.4, 0.24, 0.0};  // the tint's hue, darker
    const RGB azure = {0.0, 0.4, 1.0};   // across the colour circle
    const RGB tintedBrown = {0.520960, 0.312576, 0.0};
    expectColor(evenHost(kOrange, 1.0F, 1.0F), azure, azure);
    expectColor(evenHost(kOrange, 1.0F, 1.0F), brown, tintedBrown);
    // A Mask of 0.5 lets half of the tint through: luma 0.3488, tint (0.6976, 0.41856, 0).
    expectColor(evenHost(kOrange, 1.0F, 0.5F), azure, {0.3488, 0.40928, 0.5});
    // A dull brown of softened chroma (-0.2311, 0.3803), the tint's being (-0.7294, 0.4939): they are 0.5110 apart, so
    // that the tint keeps 0.4669 of its share.
    expectColor(evenHost(kOrange, 1.0F, 1.0F), {0.4, 82.0 / 255.0, 76.0 / 255.0}, {0.532907, 0.363231, 0.158893});
}

TEST_P(SelectiveTintTest, TintsEachSideOfTheMaskAndMixesThemOverTheGradient) {
    ValueHost host;
    setRegion(host, kInner, 0x0000FF, 1.0F, 0.0F);
    setRegion(host, kOuter, 0xFF0000, 1.0F, 0.0F);
    Picture source = filled({0.4, 0.4, 0.4}, 100, 40);
    const Picture hard = render(host, source);
    host.values[kGradient].slider = 0.4F;  // 16 columns
    const Picture soft = render(host, source);
    const double tone = 255.0 * 0.8;
    for (std::int32_t x = 0; x < 100; ++x) {
        const bool inside = x > 20 && x < 80;
        ASSERT_NEAR(hard.get(x, 20, kRed), inside ? tone : 0.0, 0.5) << x;
        ASSERT_NEAR(hard.get(x, 20, kBlue), inside ? 0.0 : tone, 0.5) << x;
        ASSERT_NEAR(soft.get(x, 20, kRed) + soft.get(x, 20, kBlue), tone, 1.0) << x;
    }
    EXPECT_NEAR(soft.get(20, 20, kRed), tone / 2.0, 30.0);  // a good pixel
    EXPECT_NEAR(soft.get(40, 20, kRed), tone, 1.0);
    EXPECT_NEAR(soft.get(5, 20, kRed), 0.0, 1.0);

    host.values[kGradient].slider = 0.0F;
    host.values[kTestMask].words[0] = 1;
    const Picture tested = render(host, source);
    EXPECT_NEAR(tested.get(50, 20, kGreen), 255.0 * 0.4, 1e-3);
    EXPECT_NEAR(tested.get(5, 20, kGreen), 255.0 * 0.6, 1e-3);
}

TEST_P(SelectiveTintTest, ShowsTheSourceWithoutTints) {
    Picture source(61, 45, {.format = GetParam()});
    drawTestCard(source);
    EXPECT_EQ(render(m_effect.presetHost("Reset to None"), source).bytes(), source.bytes());
    EXPECT_EQ(render(ValueHost(), source).bytes(), source.bytes()) << "defaults";
}

INSTANTIATE_TEST_SUITE_P(Formats, SelectiveTintTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

}  // namespace
}  // namespace lumiset::test
