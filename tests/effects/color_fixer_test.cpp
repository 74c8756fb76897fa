// Color Fixer Pro, rendered through the module's exports, against levels worked out by hand.

#include <gtest/gtest.h>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

enum Param : std::uint32_t { kSample, kCorrection, kSaturation, kBrightness, kFilmGamma, kMaxWhite, kMinBlack };

struct Rgb {
    double red, green, blue;
};

class ColorFixerTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    /// Neutral but for the weights on 127, which take a level from the brightest.
    ValueHost neutral() const { return m_effect.presetHost("Reset to None"); }
    ValueHost balanced(std::uint32_t sample) const {
        ValueHost host = neutral();
        host.values[kSample].color = sample;
        host.values[kCorrection].slider = 1.0F;
        return host;
    }
    ValueHost with(Param param, float value) const {
        ValueHost host = neutral();
        host.values[param].slider = value;
        return host;
    }

    /// 8-bit frames must show exactly `expected`, float frames about that: there gains and weights are not whole.
    void expectShown(ValueHost host, const Rgb& pixel, const Rgb& expected) const {
        // Wider than a vector and a rest, so that both are seen.
        constexpr std::int32_t width = 67;
        Picture source(width, 2, {.format = GetParam()});
        for (std::int32_t x = 0; x < width; ++x) {
            source.setPixel(x, 1, pixel.red, pixel.green, pixel.blue, 3 * x);
        }
        Picture result(width, 2, {.format = GetParam()});
        ASSERT_TRUE(m_effect.render(host, source, result));
        const double tolerance = result.isFloat() ? 2.5 : 0.0;
        for (std::int32_t x = 0; x < width; ++x) {
            EXPECT_NEAR(result.get(x, 1, kRed), expected.red, tolerance) << x;
            EXPECT_NEAR(result.get(x, 1, kGreen), expected.green, tolerance) << x;
            EXPECT_NEAR(result.get(x, 1, kBlue), expected.blue, tolerance) << x;
            EXPECT_NEAR(result.get(x, 1, kAlpha), 3 * x, 1e-4) << x;
            if (::testing::Test::HasFailure()) {
                return;
            }
        }
    }

    const EffectTester m_effect{5};
};

TEST_P(ColorFixerTest, RampsStayWithoutSteps) {
    constexpr std::int32_t width = 4000;
    Picture source(width, 1, {.format = GetParam()});
    for (std::int32_t x = 0; x < width; ++x) {
        const double level = 255.0 * x / (width - 1);
        source.setPixel(x, 0, level, level, level, 255);
    }
    Picture result(width, 1, {.format = GetParam()});
    ValueHost host = with(kFilmGamma, 0.8F);
    ASSERT_TRUE(m_effect.render(host, source, result));
    for (std::int32_t x = 1; x < width; ++x) {
        ASSERT_GE(result.get(x, 0, kGreen), result.get(x - 1, 0, kGreen) - 1e-3) << x;
    }
}

TEST_P(ColorFixerTest, ResetToNoneTakesTwoLevelsFromWhiteAndNothingElse) {
    expectShown(neutral(), {0, 128, 255}, {0, 127, 253});
    expectShown(neutral(), {1, 50, 200}, {0, 49, 198});
}

TEST_P(ColorFixerTest, MakesTheSampleGreyAndKeepsItsMean) {
    // 200, 100, 150 to their mean of 150: gains of 192, 384 and 256 on 256.
    const ValueHost host = balanced(0x9664C8);
    expectShown(host, {200, 100, 150}, {148, 148, 148});
    expectShown(host, {100, 100, 100}, {74, 148, 99});
    expectShown(host, {0, 255, 40}, {0, 253, 39});

    ValueHost half = host;
    half.values[kCorrection].slider = 0.5F;  // 175, 125 and 150 to 150: 219, 307 and 256
    expectShown(half, {100, 100, 100}, {84, 118, 99});
    half.values[kCorrection].slider = 0.0F;
    expectShown(half, {100, 100, 100}, {99, 99, 99});
}

TEST_P(ColorFixerTest, ASampleWithoutAColourCountsAsAlmostNoneOfItAndBlackAsWhite) {
    // The mean of 0, 100 and 200 is 100, a hundred times the one level that red counts as.
    expectShown(balanced(0xC86400), {10, 100, 100}, {253, 99, 49});
    expectShown(balanced(0xC86400), {0, 0, 0}, {0, 0, 0});
    expectShown(balanced(0x000000), {10, 100, 200}, {9, 99, 198});
    expectShown(balanced(0xFFFFFF), {10, 100, 200}, {9, 99, 198});
}

TEST_P(ColorFixerTest, SaturationRunsFromLumaToColoursPushedApart) {
    expectShown(with(kSaturation, 0.0F), {200, 100, 50}, {122, 122, 122});
    expectShown(with(kSaturation, 1.0F), {200, 100, 50}, {255, 76, 0});
}

TEST_P(ColorFixerTest, BrightnessBendsAndScales) {
    expectShown(with(kBrightness, 1.0F), {64, 64, 64}, {129, 129, 129});
    expectShown(with(kBrightness, 0.0F), {64, 64, 64}, {16, 16, 16});
}

TEST_P(ColorFixerTest, FilmGammaIsASineAndNoneOfItAStraightLine) {
    expectShown(with(kFilmGamma, 1.0F), {65, 129, 0}, {38, 127, 0});
    expectShown(with(kFilmGamma, 0.5F), {65, 129, 0}, {51, 127, 0});
}

TEST_P(ColorFixerTest, RangeLeavesTwentyLevelsFreeAtEitherEnd) {
    ValueHost host = with(kMaxWhite, 0.0F);
    host.values[kMinBlack].slider = 1.0F;
    expectShown(host, {0, 0, 255}, {19, 19, 233});
}

INSTANTIATE_TEST_SUITE_P(Formats, ColorFixerTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

}  // namespace
}  // namespace lumiset::test
