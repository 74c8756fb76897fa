#include "frame/operations/copy.h"

#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

const auto kSourceSample = [](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
    return sampleAt(src, y, i);
};

TEST(FrameCopy, CopiesSamplesAsTheyStand) {
    for (const std::int32_t format : kAllFormats) {
        expectOnCommonRectangle(format, format, FrameCopy, kSourceSample);
    }
    expectOnCommonRectangle(kFormatArgb8, kFormatBgra8, FrameCopy, kSourceSample);
    expectOnCommonRectangle(kFormatBgraFloat, kFormatArgbFloat, FrameCopy, kSourceSample);
}

TEST(FrameCopy, RefusesFramesOfDifferentSamples) {
    expectRefusesUnsoundFrames(FrameCopy);
    for (const std::int32_t from : kAllFormats) {
        for (const std::int32_t to : kAllFormats) {
            const bool same =
                formatBytesPerPixel(from) == formatBytesPerPixel(to) && BytesPerChannel(from) == BytesPerChannel(to);
            GuardedFrame src(4, 4, from);
            GuardedFrame dst(4, 4, to);
            EXPECT_EQ(FrameCopy(src.frame, dst.frame), same) << from << ", " << to;
        }
    }
}

TEST(FrameCopyRect, ClipsToBothFrames) {
    struct Case {
        std::int32_t x, y, w, h, dx, dy;
        std::int32_t copied[6];  ///< the same after clipping; a width of 0: refused
    };
    // Source 6 x 5, destination 4 x 7.
    const Case cases[] = {
        {1, 2, 2, 2, 1, 3, {1, 2, 2, 2, 1, 3}},       {-3, -1, 4, 2, 0, 0, {0, 0, 4, 2, 0, 0}},
        {0, 0, 100, 100, -5, -5, {0, 0, 4, 5, 0, 0}}, {4, 3, 100, 100, 0, 6, {4, 3, 2, 1, 0, 6}},
        {0, 0, 3, 3, 3, 5, {0, 0, 1, 2, 3, 5}},       {6, 0, 1, 1, 0, 0, {0, 0, 0, 0, 0, 0}},
        {0, 0, 1, 1, 4, 0, {0, 0, 0, 0, 0, 0}},       {0, 0, 0, 4, 0, 0, {0, 0, 0, 0, 0, 0}},
        {0, 0, 4, -2, 0, 0, {0, 0, 0, 0, 0, 0}},      {2147483647, 0, 2147483647, 1, 0, 0, {0, 0, 0, 0, 0, 0}},
    };
    for (const std::int32_t format : kAllFormats) {
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message() << "format " << format << ", case " << &c - cases);
            std::mt19937 random(7);
            GuardedFrame src(6, 5, format);
            GuardedFrame dst(4, 7, format, 12);
            GuardedFrame expected(4, 7, format, 12);
            src.randomize(random);
            dst.randomize(random);
            expected.restore(dst.bytes());
            const auto& [x, y, w, h, dx, dy] = c.copied;
            for (std::int32_t row = 0; row < h; ++row) {
                for (std::int32_t i = 0; i < w * src.channels(); ++i) {
                    setSample(expected, dy + row, dx * src.channels() + i,
                              sampleAt(src, y + row, x * src.channels() + i));
                }
            }
            EXPECT_EQ(FrameCopyRect(src.frame, c.x, c.y, c.w, c.h, dst.frame, c.dx, c.dy), w > 0);
            EXPECT_TRUE(framesAgree(dst, expected));
        }
    }
    GuardedFrame colour(4, 4, kFormatBgra8);
    GuardedFrame mask(4, 4, kFormatMask8);
    EXPECT_FALSE(FrameCopyRect(colour.frame, 0, 0, 4, 4, mask.frame, 0, 0));
}

TEST(FrameCopyChannel, MovesOneChannelBetweenColourFramesAndMasks) {
    struct Pair {
        std::int32_t src, dst;
    };
    for (const Pair& pair : {Pair{kFormatBgra8, kFormatArgb8}, Pair{kFormatArgbFloat, kFormatArgbFloat},
                             Pair{kFormatMask8, kFormatBgra8}, Pair{kFormatMaskFloat, kFormatBgraFloat},
                             Pair{kFormatArgb8, kFormatMask8}, Pair{kFormatBgraFloat, kFormatMaskFloat}}) {
        for (std::int32_t from = 0; from < 4; ++from) {
            for (std::int32_t to = 0; to < 4; ++to) {
                expectOnCommonRectangle(
                    pair.src, pair.dst,
                    [&](const Frame& src, Frame& dst) { return FrameCopyChannel(src, dst, from, to); },
                    [&](const GuardedFrame& src, const GuardedFrame& before, std::int32_t y, std::int32_t i) {
                        const std::int32_t x = i / before.channels();
                        return before.channels() == 4 && i % 4 != to
                                   ? sampleAt(before, y, i)
                                   : sampleAt(src, y, src.channels() == 4 ? x * 4 + from : x);
                    });
            }
        }
    }
}

TEST(FrameCopyChannel, RefusesOtherPairsAndChannels) {
    expectRefusesUnsoundFrames([](const Frame& src, Frame& dst) { return FrameCopyChannel(src, dst, 0, 0); });
    GuardedFrame colour(4, 4, kFormatBgra8);
    GuardedFrame colourFloat(4, 4, kFormatBgraFloat);
    GuardedFrame mask(4, 4, kFormatMask8);
    GuardedFrame otherMask(4, 4, kFormatMask8);
    EXPECT_FALSE(FrameCopyChannel(colour.frame, colourFloat.frame, 0, 0));
    EXPECT_FALSE(FrameCopyChannel(mask.frame, colourFloat.frame, 0, 0));
    EXPECT_FALSE(FrameCopyChannel(mask.frame, otherMask.frame, 0, 0));
    for (const std::int32_t channel : {-1, 4}) {
        EXPECT_FALSE(FrameCopyChannel(colour.frame, colour.frame, channel, 0));
        EXPECT_FALSE(FrameCopyChannel(colour.frame, mask.frame, channel, 0));
        EXPECT_FALSE(FrameCopyChannel(mask.frame, colour.frame, 0, channel));
        EXPECT_TRUE(FrameCopyChannel(mask.frame, colour.frame, channel, 0));
    }
}

TEST(FrameCopyChannelAt, WritesAtAPlaceInsideTheDestination) {
    GuardedFrame mask(3, 2, kFormatMask8);
    setSamples(mask, {10, 20, 30, 40, 50, 60});
    GuardedFrame dst(3, 3, kFormatArgb8);
    ASSERT_TRUE(FrameCopyChannelAt(mask.frame, dst.frame, 0, 2, 1, 2));
    GuardedFrame expected(3, 3, kFormatArgb8);
    setSample(expected, 2, 1 * 4 + 2, 10);
    setSample(expected, 2, 2 * 4 + 2, 20);
    EXPECT_TRUE(framesAgree(dst, expected));
    EXPECT_FALSE(FrameCopyChannelAt(mask.frame, dst.frame, 0, 2, 3, 0));
    EXPECT_FALSE(FrameCopyChannelAt(mask.frame, dst.frame, 0, 2, 0, -1));
    EXPECT_TRUE(framesAgree(dst, expected));
}

TEST(FrameSpreadGrayToColor, FillsTheColoursAndSetsAllOfAlpha) {
    onEveryInstructionSet([] {
        std::mt19937 random(8);
        for (const std::int32_t format : kColorFormats) {
            for (std::int32_t width = 1; width <= 70; ++width) {
                const std::int32_t dstWidth = width % 5 == 0 ? width + 2 : width;
                GuardedFrame mask(width, 2, MaskFormat(format));
                GuardedFrame dst(dstWidth, 3, format);
                GuardedFrame expected(dstWidth, 3, format);
                mask.randomize(random);
                dst.randomize(random);
                expected.restore(dst.bytes());
                for (std::int32_t y = 0; y < 3; ++y) {
                    for (std::int32_t i = 0; i < dstWidth * 4; ++i) {
                        if (i % 4 == AlphaIndex(format)) {
                            setSample(expected, y, i, fullScale(format));
                        } else if (y < 2 && i / 4 < width) {
                            setSample(expected, y, i, sampleAt(mask, y, i / 4));
                        }
                    }
                }
                ASSERT_TRUE(FrameSpreadGrayToColor(mask.frame, dst.frame));
                ASSERT_TRUE(framesAgree(dst, expected)) << "format " << format << ", width " << width;
            }
            GuardedFrame dst(2, 1, format);
            GuardedFrame otherDepth(2, 1, isFloatFormat(format) ? kFormatMask8 : kFormatMaskFloat);
            EXPECT_FALSE(FrameSpreadGrayToColor(otherDepth.frame, dst.frame));
            EXPECT_FALSE(FrameSpreadGrayToColor(dst.frame, otherDepth.frame));
        }
    });
    expectRefusesUnsoundFrames(FrameSpreadGrayToColor);
}

TEST(FrameSwapChannelOrder, ReversesThePixelsOfOneDepth) {
    const auto reversed = [](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
        return sampleAt(src, y, i / 4 * 4 + 3 - i % 4);
    };
    expectOnCommonRectangle(kFormatBgra8, kFormatArgb8, FrameSwapChannelOrder, reversed);
    expectOnCommonRectangle(kFormatArgbFloat, kFormatBgraFloat, FrameSwapChannelOrder, reversed);
    expectRefusesUnsoundFrames(FrameSwapChannelOrder);
    for (const std::int32_t format : kColorFormats) {
        std::mt19937 random(3);
        GuardedFrame frame(37, 3, format);
        GuardedFrame expected(37, 3, format);
        frame.randomize(random);
        ASSERT_TRUE(FrameSwapChannelOrder(frame.frame, expected.frame));
        const std::vector<std::uint8_t> before = frame.bytes();
        ASSERT_TRUE(FrameSwapChannelOrder(frame.frame, frame.frame));
        EXPECT_TRUE(framesAgree(frame, expected));
        ASSERT_TRUE(FrameSwapChannelOrder(frame.frame, frame.frame));
        EXPECT_EQ(frame.bytes(), before);
        GuardedFrame mask(37, 3, MaskFormat(format));
        EXPECT_FALSE(FrameSwapChannelOrder(mask.frame, mask.frame));
        EXPECT_FALSE(FrameSwapChannelOrder(frame.frame, mask.frame));
    }
}

TEST(FrameConvertDepth, RoundsAndClampsTheSixPairs) {
    struct Pair {
        std::int32_t bytes, floats;
    };
    const Pair pairs[] = {
        {kFormatBgra8, kFormatBgraFloat}, {kFormatArgb8, kFormatArgbFloat}, {kFormatMask8, kFormatMaskFloat}};
    for (const Pair& pair : pairs) {
        expectOnCommonRectangle(pair.floats, pair.bytes, FrameConvertDepth,
                                [](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
                                    return std::floor(std::clamp(sampleAt(src, y, i), 0.0, 1.0) * 255.0 + 0.5);
                                });
        expectOnCommonRectangle(
            pair.bytes, pair.floats, FrameConvertDepth,
            [](const GuardedFrame& src, const GuardedFrame&, std::int32_t y, std::int32_t i) {
                return sampleAt(src, y, i) / 255.0;
            },
            1e-7);
        for (const Pair& other : pairs) {
            GuardedFrame bytes(5, 2, pair.bytes);
            GuardedFrame floats(5, 2, other.floats);
            EXPECT_EQ(FrameConvertDepth(bytes.frame, floats.frame), &pair == &other);
            EXPECT_EQ(FrameConvertDepth(floats.frame, bytes.frame), &pair == &other);
            EXPECT_FALSE(FrameConvertDepth(bytes.frame, bytes.frame));
        }
    }
    expectRefusesUnsoundFrames(FrameConvertDepth);
}

TEST(FrameConvertDepth, BringsEveryLevelBack) {
    GuardedFrame levels(256, 1, kFormatMask8);
    GuardedFrame floats(256, 1, kFormatMaskFloat);
    GuardedFrame back(256, 1, kFormatMask8);
    for (std::int32_t i = 0; i < 256; ++i) {
        setSample(levels, 0, i, i);
    }
    ASSERT_TRUE(FrameConvertDepth(levels.frame, floats.frame));
    ASSERT_TRUE(FrameConvertDepth(floats.frame, back.frame));
    EXPECT_TRUE(framesAgree(back, levels));
}

}  // namespace
}  // namespace lumiset::test
