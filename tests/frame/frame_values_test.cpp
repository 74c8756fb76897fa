#include "frame/operations/values.h"

#include <cmath>
#include <limits>

#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(FrameClampValues, LimitsEverySampleAlphaToo) {
    struct Case {
        float low, high;
        double low8, high8;  ///< truncated levels
    };
    for (const Case& c : {Case{-1, 2, 0, 255}, Case{0.25F, 0.5F, 63, 127}, Case{0.999F, 1, 254, 255}}) {
        for (const std::int32_t format : kAllFormats) {
            std::mt19937 random(5);
            GuardedFrame frame(19, 3, format);
            frame.randomize(random);
            GuardedFrame expected(19, 3, format);
            const bool isFloat = isFloatFormat(format);
            const double low = isFloat ? std::max(0.0, static_cast<double>(c.low)) : c.low8;
            const double high = isFloat ? std::min(1.0, static_cast<double>(c.high)) : c.high8;
            for (std::int32_t y = 0; y < 3; ++y) {
                for (std::int32_t i = 0; i < frame.samplesPerRow(); ++i) {
                    setSample(expected, y, i, std::clamp(sampleAt(frame, y, i), low, high));
                }
            }
            ASSERT_TRUE(FrameClampValues(frame.frame, c.low, c.high));
            EXPECT_TRUE(framesAgree(frame, expected)) << "format " << format;
            EXPECT_FALSE(FrameClampValues(frame.frame, kNaN, 1));
            EXPECT_FALSE(FrameClampValues(frame.frame, 0, kNaN));
        }
    }
}

TEST(FrameSetChannel, SetsOneSampleOfEachPixel) {
    for (const std::int32_t format : kColorFormats) {
        for (std::int32_t channel = 0; channel < 4; ++channel) {
            GuardedFrame frame(21, 2, format);
            GuardedFrame expected(21, 2, format);
            std::mt19937 random(1);
            frame.randomize(random);
            expected.restore(frame.bytes());
            for (std::int32_t i = 0; i < 42; ++i) {
                setSample(expected, i / 21, i % 21 * 4 + channel, isFloatFormat(format) ? 51 / 255.0 : 51);
            }
            ASSERT_TRUE(FrameSetChannel(frame.frame, channel, 51));
            EXPECT_TRUE(framesAgree(frame, expected, 1e-7F)) << "format " << format;
        }
        GuardedFrame frame(2, 2, format);
        GuardedFrame mask(2, 2, MaskFormat(format));
        EXPECT_FALSE(FrameSetChannel(frame.frame, 4, 0));
        EXPECT_FALSE(FrameSetChannel(frame.frame, -1, 0));
        EXPECT_FALSE(FrameSetChannel(frame.frame, 0, 256));
        EXPECT_FALSE(FrameSetChannel(frame.frame, 0, -1));
        EXPECT_FALSE(FrameSetChannel(mask.frame, 0, 0));
    }
}

TEST(FrameFillColor, PutsEachPartOfThePackedColourInItsPlace) {
    struct Case {
        std::int32_t format;
        std::vector<double> pixel;
    };
    const Case cases[] = {
        {kFormatBgra8, {0x33, 0x22, 0x11, 0xFF}},
        {kFormatArgb8, {0xFF, 0x11, 0x22, 0x33}},
        {kFormatBgraFloat, {0.2, 0.1333333, 0.0666667, 1.0}},
        {kFormatArgbFloat, {1.0, 0.0666667, 0.1333333, 0.2}},
        {kFormatMask8, {0x33}},
        {kFormatMaskFloat, {0.2}},
    };
    for (const Case& c : cases) {
        GuardedFrame frame(23, 3, c.format);
        GuardedFrame expected(23, 3, c.format);
        for (std::int32_t y = 0; y < 3; ++y) {
            for (std::int32_t i = 0; i < expected.samplesPerRow(); ++i) {
                setSample(expected, y, i, c.pixel[static_cast<std::size_t>(i) % c.pixel.size()]);
            }
        }
        ASSERT_TRUE(FrameFillColor(frame.frame, 0xFF112233U));
        EXPECT_TRUE(framesAgree(frame, expected, 1e-6F)) << "format " << c.format;
    }
}

TEST(FrameMultiplyColor, ScalesBySampleOrder) {
    const float color[4] = {0.5F, 0.0F, 1.0F, 0.25F};
    const double levels[4] = {127, 0, 255, 63};  // truncated
    for (const std::int32_t format : kAllFormats) {
        expectOnCommonRectangle(
            format, format, [&](const Frame& src, Frame& dst) { return FrameMultiplyColor(src, dst, color); },
            [&](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
                const std::int32_t channel = i % src.channels();
                const double s = sampleAt(src, y, i);
                return isFloatFormat(format) ? s * static_cast<double>(color[channel])
                                             : std::floor(s * levels[channel] / 255.0);
            });
        GuardedFrame frame(2, 2, format);
        const float bad[4] = {kNaN, 1, 1, 1};
        EXPECT_FALSE(FrameMultiplyColor(frame.frame, frame.frame, bad));
        EXPECT_FALSE(FrameMultiplyColor(frame.frame, frame.frame, nullptr));
    }
    expectRefusesUnsoundFrames([&](const Frame& src, Frame& dst) { return FrameMultiplyColor(src, dst, color); });
}

TEST(FrameMultiplyColor, LimitsFactorsButThoseOfFloatColours) {
    const float color[4] = {2, -1, 2, 2};
    for (const std::int32_t format : kAllFormats) {
        GuardedFrame frame(1, 1, format);
        const bool colour = AlphaIndex(format) >= 0;
        setSamples(frame, std::vector<double>(colour ? 4 : 1, isFloatFormat(format) ? 0.5 : 100));
        ASSERT_TRUE(FrameMultiplyColor(frame.frame, frame.frame, color));
        EXPECT_EQ(sampleAt(frame, 0, 0), !isFloatFormat(format) ? 100 : colour ? 1.0 : 0.5) << format;
        if (colour) {
            EXPECT_EQ(sampleAt(frame, 0, 1), isFloatFormat(format) ? -0.5 : 0) << format;
        }
    }
}

TEST(FrameInvert, TurnsEverySampleOver) {
    for (const std::int32_t format : kAllFormats) {
        const auto inverted = [&](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
            return static_cast<double>(static_cast<float>(fullScale(format)) - static_cast<float>(sampleAt(src, y, i)));
        };
        expectOnCommonRectangle(format, format, FrameInvert, inverted);
        for (std::int32_t channel = 0; channel < 4; ++channel) {
            std::mt19937 random(2);
            GuardedFrame frame(13, 3, format);
            frame.randomize(random);
            GuardedFrame before(13, 3, format);
            before.restore(frame.bytes());
            GuardedFrame expected(13, 3, format);
            for (std::int32_t y = 0; y < 3; ++y) {
                for (std::int32_t i = 0; i < frame.samplesPerRow(); ++i) {
                    const bool touched = frame.channels() == 1 || i % 4 == channel;
                    setSample(expected, y, i, touched ? inverted(before, before, y, i) : sampleAt(before, y, i));
                }
            }
            ASSERT_TRUE(FrameInvertChannel(frame.frame, channel));
            EXPECT_TRUE(framesAgree(frame, expected)) << "format " << format << ", channel " << channel;
        }
        GuardedFrame frame(2, 2, format);
        EXPECT_FALSE(FrameInvertChannel(frame.frame, 4));
        EXPECT_FALSE(FrameInvertChannel(frame.frame, -1));
    }
    expectRefusesUnsoundFrames(FrameInvert);
}

TEST(FrameMinOf, TakesTheSmallerOfTwoMasks) {
    for (const std::int32_t format : kMaskFormats) {
        std::mt19937 random(9);
        GuardedFrame other(50, 4, format);
        other.randomize(random);
        GuardedFrame a(70, 6, format);
        GuardedFrame dst(60, 5, format);
        a.randomize(random);
        dst.randomize(random);
        GuardedFrame expected(60, 5, format);
        expected.restore(dst.bytes());
        for (std::int32_t y = 0; y < 4; ++y) {
            for (std::int32_t i = 0; i < 50; ++i) {
                setSample(expected, y, i, std::min(sampleAt(a, y, i), sampleAt(other, y, i)));
            }
        }
        ASSERT_TRUE(FrameMinOf(a.frame, other.frame, dst.frame));
        EXPECT_TRUE(framesAgree(dst, expected));
        GuardedFrame colour(60, 5, format == kFormatMask8 ? kFormatBgra8 : kFormatBgraFloat);
        EXPECT_FALSE(FrameMinOf(colour.frame, colour.frame, colour.frame));
        EXPECT_FALSE(FrameMinOf(a.frame, colour.frame, dst.frame));
        EXPECT_FALSE(FrameMinOf(a.frame, other.frame, colour.frame));
    }
}

TEST(FrameValueOperations, RefuseUnsoundFrames) {
    forEachUnsoundFrame([](Frame& bad) {
        EXPECT_FALSE(FrameClampValues(bad, 0, 1));
        EXPECT_FALSE(FrameSetChannel(bad, 0, 0));
        EXPECT_FALSE(FrameFillColor(bad, 0));
        EXPECT_FALSE(FrameInvertChannel(bad, 0));
        EXPECT_FALSE(FrameMinOf(bad, bad, bad));
    });
}

}  // namespace
}  // namespace lumiset::test
