// Background Generator, rendered through the module's exports, against pictures worked out by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string_view>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kBackgroundGenerator = 1;
enum Param : std::uint32_t {
    kMagnify = 1,
    kBlur,
    kColor,
    kTint,
    kSaturation,
    kBrightness,
    kClarity,
    kOpacity,
    kAngle = 11,
    kSpeed,
    kCrossFade,
    kStartPosition
};
constexpr Channel kChannels[] = {kRed, kGreen, kBlue, kAlpha};

class BackgroundGeneratorTest : public ::testing::TestWithParam<std::int32_t> {
protected:
    /// Everything that changes the picture is off.
    static ValueHost neutral() {
        ValueHost host;
        host.values[kBlur].slider = 0.0F;
        return host;
    }

    [[nodiscard]] Storage storage() const { return {.format = GetParam()}; }
    [[nodiscard]] bool isFloat() const { return isFloatFormat(GetParam()); }

    Picture rendered(ValueHost& host, Picture& source, const FrameRenderInfo& info = frameInfo()) const {
        Picture result(source.width(), source.height(), source.storage());
        EXPECT_TRUE(m_background.render(host, source, result, &info));
        return result;
    }

    /// Opaque grey of `level(x, y)`.
    template <class Level>
    Picture greyPicture(std::int32_t width, std::int32_t height, Level level) const {
        Picture picture(width, height, storage());
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                const double grey = level(x, y);
                picture.setPixel(x, y, grey, grey, grey, 255.0);
            }
        }
        return picture;
    }

    Picture testCard(std::int32_t width, std::int32_t height, bool flipped = false) const {
        Picture picture(width, height, {.format = GetParam(), .flipped = flipped});
        drawTestCard(picture);
        return picture;
    }

    /// What a row of pixels of one colour becomes; long enough for whole vectors and a rest.
    std::array<double, 4> gradedColor(ValueHost& host, double red, double green, double blue) const {
        Picture source(37, 3, storage());
        for (std::int32_t i = 0; i < 37 * 3; ++i) {
            source.setPixel(i % 37, i / 37, red, green, blue, 255.0);
        }
        const Picture result = rendered(host, source);
        std::array<double, 4> color{};
        for (const Channel channel : kChannels) {
            color[channel] = result.get(0, 0, channel);
            for (std::int32_t i = 0; i < 37 * 3; ++i) {
                EXPECT_EQ(result.get(i % 37, i / 37, channel), color[channel]) << i;
            }
        }
        return color;
    }

    const EffectTester m_background{kBackgroundGenerator};
};

/// Expects that `b` is `a` moved by so many pixels right and down, what leaves at one side coming in at the other.
void expectMoved(const Picture& a, const Picture& b, std::int32_t right, std::int32_t down, double levels) {
    const std::int32_t width = a.width();
    const std::int32_t height = a.height();
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            for (const Channel channel : kChannels) {
                const double expected = a.get((x - right + width) % width, (y - down + height) % height, channel);
                ASSERT_NEAR(b.get(x, y, channel), expected, levels) << x << ", " << y << " channel " << channel;
            }
        }
    }
}

TEST_P(BackgroundGeneratorTest, NeutralSettingsChangeNothingAtAnyTime) {
    Picture source = testCard(53, 37);
    ValueHost host = neutral();
    for (const double time : {0.0, 12.34}) {
        expectMoved(source, rendered(host, source, frameInfo(time)), 0, 0, 0.0);
    }
    ValueHost reset = m_background.presetHost(0U);
    EXPECT_EQ(m_background.effect().GetPresetName(0), std::string_view("Reset to None"));
    expectMoved(source, rendered(reset, source), 0, 0, 0.0);
}

TEST_P(BackgroundGeneratorTest, DriftsRightUpLeftAndDownInEveryRowOrderFieldAndPixelShape) {
    struct Direction {
        float angle;
        std::int32_t right, down;
    };
    constexpr Direction directions[] = {{0.0F, 10, 0}, {0.25F, 0, -8}, {0.5F, -10, 0}, {0.75F, 0, 8}};
    FrameRenderInfo field = frameInfo(0.05);  // at full speed two widths or heights a second
    field.flags = FrameRenderInfo::kHasField | FrameRenderInfo::kHasPixelAspect;
    field.field = 1;
    field.pixelAspect = 1.4222;
    for (const bool flipped : {false, true}) {
        Picture source = testCard(100, 80, flipped);
        ValueHost host = neutral();
        host.values[kSpeed].slider = 1.0F;
        for (const Direction& direction : directions) {
            host.values[kAngle].slider = direction.angle;
            for (const FrameRenderInfo& info : {frameInfo(0.05), field}) {
                expectMoved(source, rendered(host, source, info), direction.right, direction.down, 0.0);
            }
        }
    }
}

TEST_P(BackgroundGeneratorTest, RepeatsAfterEveryWholePeriod) {
    Picture source = testCard(64, 45);
    ValueHost host = neutral();
    host.values[kSpeed].slider = 1.0F;
    host.values[kMagnify].slider = 0.07F;
    host.values[kCrossFade].slider = 0.7F;
    host.values[kBlur].slider = 0.2F;
    for (const float angle : {0.5F, 0.75F}) {
        host.values[kAngle].slider = angle;
        const Picture first = rendered(host, source, frameInfo(0.13));
        expectMoved(first, rendered(host, source, frameInfo(0.63)), 0, 0, 1.0);
        expectMoved(first, rendered(host, source, frameInfo(1000.13)), 0, 0, 1.0);
    }
    host.values[kSpeed].slider = 0.0F;
    host.values[kStartPosition].point = {0.0F, 1.0F};
    const Picture corner = rendered(host, source, frameInfo(7.0));
    host.values[kStartPosition].point = {1.0F, 0.0F};
    expectMoved(corner, rendered(host, source, frameInfo(3.0)), 0, 0, 0.0);
}

TEST_P(BackgroundGeneratorTest, BlurredPictureDriftsAsOnePieceAcrossItsSeams) {
    Picture source = testCard(100, 80);
    ValueHost host = neutral();
    host.values[kBlur].slider = 0.7F;
    host.values[kSpeed].slider = 1.0F;
    const Picture still = rendered(host, source);
    expectMoved(still, rendered(host, source, frameInfo(0.05)), -10, 0, 0.01);
}

TEST_P(BackgroundGeneratorTest, CrossFadeLeavesNoSeam) {
    // A ramp's ends differ by its whole range. A fade of a quarter of 256 pixels rises by 4 levels each.
    for (const bool across : {true, false}) {
        Picture source = greyPicture(across ? 256 : 8, across ? 8 : 256,
                                     [&](std::int32_t x, std::int32_t y) { return across ? x : y; });
        ValueHost host = neutral();
        host.values[kStartPosition].point = {across ? 0.0F : 0.5F, across ? 0.5F : 0.0F};
        const auto largestStep = [&](float crossFade) {
            host.values[kCrossFade].slider = crossFade;
            const Picture result = rendered(host, source);
            double step = 0.0;
            for (std::int32_t i = 1; i < 256; ++i) {
                const double before = across ? result.get(i - 1, 4, kRed) : result.get(4, i - 1, kRed);
                const double behind = across ? result.get(i, 4, kRed) : result.get(4, i, kRed);
                step = std::max(step, std::fabs(behind - before));
            }
            return step;
        };
        EXPECT_NEAR(largestStep(0.0F), 255.0, 0.01);
        EXPECT_LE(largestStep(1.0F), isFloat() ? 5.0 : 6.0);
        EXPECT_LE(largestStep(0.5F), isFloat() ? 9.0 : 10.0);
    }
}

TEST_P(BackgroundGeneratorTest, MagnifiesAboutTheMiddleUpToTenTimes) {
    Picture source = greyPicture(60, 40, [](std::int32_t x, std::int32_t y) { return 3 * x + y; });
    ValueHost host = neutral();
    for (const auto& [magnify, factor] : {std::pair{1.0F / 9.0F, 2.0}, {1.0F, 10.0}}) {
        host.values[kMagnify].slider = magnify;
        for (const auto& [startX, startY] : {std::pair{0.5F, 0.5F}, {0.25F, 0.75F}}) {
            host.values[kStartPosition].point = {startX, startY};
            const Picture result = rendered(host, source);
            for (std::int32_t y = 15; y < 25; ++y) {
                for (std::int32_t x = 20; x < 40; ++x) {
                    const double atX = (x + 0.5 - 30.0) / factor + 60.0 * startX - 0.5;
                    const double atY = (y + 0.5 - 20.0) / factor + 40.0 * startY - 0.5;
                    ASSERT_NEAR(result.get(x, y, kGreen), 3.0 * atX + atY, isFloat() ? 0.01 : 0.51);
                }
            }
        }
    }
}

TEST_P(BackgroundGeneratorTest, FieldsTogetherShowWhatTheWholeFrameShows) {
    const auto level = [](std::int32_t row) { return 6.0 * row; };
    Picture whole = greyPicture(6, 40, [&](std::int32_t, std::int32_t y) { return level(y); });
    ValueHost host = neutral();
    host.values[kMagnify].slider = 1.0F;
    const Picture expected = rendered(host, whole);
    for (const std::int16_t bottom : {std::int16_t{0}, std::int16_t{1}}) {
        Picture field = greyPicture(6, 20, [&](std::int32_t, std::int32_t y) { return level(2 * y + bottom); });
        FrameRenderInfo info = frameInfo();
        info.flags = FrameRenderInfo::kHasField;
        info.field = bottom;
        const Picture result = rendered(host, field, info);
        for (std::int32_t y = 0; y < 20; ++y) {
            EXPECT_NEAR(result.get(3, y, kBlue), expected.get(3, 2 * y + bottom, kBlue), isFloat() ? 0.01 : 1.0);
        }
    }
}

TEST_P(BackgroundGeneratorTest, BlurIsRoundOnTheScreen) {
    // Columns and rows that a white pixel spreads over.
    const auto spread = [&](std::uint32_t flags, double aspect, std::int16_t fieldNumber) {
        Picture source =
            greyPicture(101, 101, [](std::int32_t x, std::int32_t y) { return x == 50 && y == 50 ? 255 : 0; });
        ValueHost host = neutral();
        host.values[kBlur].slider = 0.2F;  // 6 percent of the height: 6 rows
        FrameRenderInfo info = frameInfo();
        info.flags = flags;
        info.pixelAspect = aspect;
        info.field = fieldNumber;
        const Picture result = rendered(host, source, info);
        std::pair<int, int> lit{0, 0};
        for (std::int32_t i = 0; i < 101; ++i) {
            lit.first += result.get(i, 50, kRed) > 0.0 ? 1 : 0;
            lit.second += result.get(50, i, kRed) > 0.0 ? 1 : 0;
        }
        return lit;
    };
    EXPECT_EQ(spread(0, 1.0, FrameRenderInfo::kWholeFrame), std::pair(6, 6));
    EXPECT_EQ(spread(FrameRenderInfo::kHasPixelAspect, 2.0, FrameRenderInfo::kWholeFrame), std::pair(3, 6));
    EXPECT_EQ(spread(FrameRenderInfo::kHasField, 1.0, 0), std::pair(12, 6));
}

TEST_P(BackgroundGeneratorTest, ClarityMixesTheUnblurredPictureIn) {
    Picture source = testCard(60, 44);
    ValueHost host = neutral();
    const Picture sharp = rendered(host, source);
    host.values[kBlur].slider = 0.5F;
    const Picture soft = rendered(host, source);
    host.values[kClarity].slider = 1.0F;
    expectMoved(sharp, rendered(host, source), 0, 0, 0.0);
    host.values[kClarity].slider = 0.2F;
    const Picture mixed = rendered(host, source);
    for (std::int32_t y = 0; y < 44; ++y) {
        for (std::int32_t x = 0; x < 60; ++x) {
            for (const Channel channel : kChannels) {
                const double expected = 0.8 * soft.get(x, y, channel) + 0.2 * sharp.get(x, y, channel);
                ASSERT_NEAR(mixed.get(x, y, channel), expected, isFloat() ? 0.01 : 0.51);
            }
        }
    }
}

TEST_P(BackgroundGeneratorTest, OpacityScalesAlphaAlone) {
    Picture source = testCard(41, 23);
    ValueHost host = neutral();
    host.values[kOpacity].slider = 0.4F;
    const Picture result = rendered(host, source);
    for (std::int32_t y = 0; y < 23; ++y) {
        for (std::int32_t x = 0; x < 41; ++x) {
            ASSERT_EQ(result.get(x, y, kRed), source.get(x, y, kRed));
            ASSERT_EQ(result.get(x, y, kBlue), source.get(x, y, kBlue));
            ASSERT_NEAR(result.get(x, y, kAlpha), 0.4 * source.get(x, y, kAlpha), isFloat() ? 0.001 : 1.0);
        }
    }
}

TEST_P(BackgroundGeneratorTest, TintLiftsAndCrushesLevels) {
    // Red with Tint 0.75 lifts red by a quarter of the range and takes as much from below green and blue.
    ValueHost host = neutral();
    host.values[kColor].color = 0x0000FF;
    host.values[kTint].slider = 0.75F;
    struct Level {
        double from, lifted, crushed;
    };
    const double rounding = isFloat() ? 0.01 : 0.5;
    for (const Level& level : {Level{0, 63.75, 0}, {51, 102, 0}, {128, 159.75, 85.667}, {255, 255, 255}}) {
        const auto color = gradedColor(host, level.from, level.from, level.from);
        EXPECT_NEAR(color[kRed], level.lifted, rounding);
        EXPECT_NEAR(color[kGreen], level.crushed, rounding);
        EXPECT_NEAR(color[kBlue], level.crushed, rounding);
        EXPECT_EQ(color[kAlpha], 255.0);
    }
    host.values[kColor].color = 0xFF0000;
    EXPECT_NEAR(gradedColor(host, 51, 51, 51)[kBlue], 102.0, rounding);
    EXPECT_NEAR(gradedColor(host, 51, 51, 51)[kGreen], 0.0, rounding);
    host.values[kColor].color = 0x0000FF;
    // With the tint the other way round red is crushed: (102 - 63.75) / 0.75.
    host.values[kTint].slider = 0.25F;
    EXPECT_NEAR(gradedColor(host, 102, 102, 102)[kRed], 51.0, rounding);
    EXPECT_NEAR(gradedColor(host, 102, 102, 102)[kBlue], 140.25, rounding);
    // Brightness follows: half of the way to white, or to black.
    host.values[kBrightness].slider = 0.75F;
    EXPECT_NEAR(gradedColor(host, 102, 102, 102)[kRed], 153.0, rounding);
    host.values[kBrightness].slider = 0.25F;
    EXPECT_NEAR(gradedColor(host, 102, 102, 102)[kRed], 25.5, rounding);
}

TEST_P(BackgroundGeneratorTest, SaturationWeighsColourAgainstLuma) {
    // Luma of 200, 100, 50 is 123; weights of 128, whole in 8 bits, where the colour's is 127 unless nothing changes.
    struct Case {
        float saturation;
        double red, green, blue;
    };
    constexpr Case cases[] = {
        {0.0F, 122, 122, 122}, {0.5F, 200, 100, 50}, {0.503F, 198, 99, 49}, {0.75F, 236, 87, 13}, {1.0F, 255, 76, 0}};
    for (const Case& expected : cases) {
        ValueHost host = neutral();
        host.values[kSaturation].slider = expected.saturation;
        const auto color = gradedColor(host, 200, 100, 50);
        const double apart = isFloat() ? 1.6 : 0.0;  // nothing is truncated there
        EXPECT_NEAR(color[kRed], expected.red, apart) << expected.saturation;
        EXPECT_NEAR(color[kGreen], expected.green, apart) << expected.saturation;
        EXPECT_NEAR(color[kBlue], expected.blue, apart) << expected.saturation;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, BackgroundGeneratorTest,
                         ::testing::Values(kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat));

TEST(BackgroundGenerator, TellsWhatEveryParameterDoes) {
    const EffectTester tester(kBackgroundGenerator);
    void* object = nullptr;
    ASSERT_EQ(tester.effect().QueryInterface(IParamToolTip::kId, &object), kResultOk);
    const Held<IParamToolTip> tips(static_cast<IParamToolTip*>(object));
    ASSERT_EQ(tester.paramCount(), 16U);
    EXPECT_EQ(tester.presetCount(), 8U);
    for (std::uint32_t index = 0; index < 16; ++index) {
        ParamInfo info{};
        ASSERT_TRUE(tester.effect().GetParamInfo(index, &info));
        EXPECT_EQ(std::string_view(tips->GetParamToolTip(index)).empty(), info.type == kParamGroup) << index;
        if (info.type == kParamSlider) {
            EXPECT_EQ(info.slider.showDecimals, std::string_view(info.label) == "Tint" ? 0U : 1U) << info.label;
        }
    }
}

}  // namespace
}  // namespace lumiset::test
