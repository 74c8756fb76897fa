#include "frame/yuv422.h"

#include <cmath>

#include "frame/frame_processor.h"
#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

/// A frame of packed 4:2:2 rows: two bytes a pixel, as two mask samples.
GuardedFrame yuvFrame(std::int32_t width, std::int32_t height) {
    return GuardedFrame(2 * width, height, kFormatMask8, 3);
}
ImgStatus toBgra(const GuardedFrame& yuv, GuardedFrame& bgra, std::uint8_t alpha, bool wholeGroups, ImgSize size) {
    return ImgYuv422ToBgra(yuv.frame.Data(), yuv.frame.Stride(), bgra.frame.Data(), bgra.frame.Stride(), alpha,
                           wholeGroups, size);
}
ImgStatus toYuv(const GuardedFrame& bgra, GuardedFrame& yuv, bool wholeGroups, ImgSize size) {
    return ImgBgraToYuv422(bgra.frame.Data(), bgra.frame.Stride(), yuv.frame.Data(), yuv.frame.Stride(), wholeGroups,
                           size);
}

/// One byte of a row of 4:2:2 made from colours by whole numbers.
std::int32_t expectedYuv(const std::uint8_t* bgra, std::int32_t width, std::int32_t byte) {
    const std::int32_t x = byte / 2;
    const std::uint8_t* p = bgra + 4 * x;
    if (byte % 2 == 0) {
        return (6423 * p[0] + 33030 * p[1] + 16843 * p[2] + 0x108000) >> 16;
    }
    const std::uint8_t* first = bgra + 4 * (x / 2 * 2);
    const std::uint8_t* second = x / 2 * 2 + 1 < width ? first + 4 : first;
    const std::int32_t b = first[0] + second[0];
    const std::int32_t g = first[1] + second[1];
    const std::int32_t r = first[2] + second[2];
    const std::int32_t sum = byte % 4 == 1 ? 28784 * b - 19070 * g - 9714 * r : 28784 * r - 24103 * g - 4681 * b;
    return (sum + (128 << 17) + (1 << 16)) >> 17;
}

TEST(Yuv422, IsMadeByTheSameWholeNumbersOnEveryInstructionSet) {
    onEveryInstructionSet([] {
        std::mt19937 random(51);
        for (std::int32_t width = 2; width <= 70; ++width) {
            GuardedFrame bgra(width, 2, kFormatBgra8);
            bgra.randomize(random);
            for (const bool wholeGroups : {false, true}) {
                GuardedFrame yuv = yuvFrame(width + 1, 2);
                GuardedFrame expected = yuvFrame(width + 1, 2);
                ASSERT_EQ(toYuv(bgra, yuv, wholeGroups, {width, 2}), kImgOk);
                for (std::int32_t y = 0; y < 2; ++y) {
                    for (std::int32_t byte = 0; byte < 2 * width + 2; ++byte) {
                        const bool lastV = width % 2 != 0 && byte == 2 * width + 1 && wholeGroups;
                        if (byte < 2 * width || lastV) {
                            setSample(expected, y, byte, expectedYuv(bgra.row<std::uint8_t>(y), width, byte));
                        }
                    }
                }
                ASSERT_TRUE(framesAgree(yuv, expected)) << "width " << width;
            }
        }
    });
}

TEST(Yuv422, BecomesTheColoursOfTheLimitedRange) {
    onEveryInstructionSet([] {
        std::mt19937 random(52);
        for (std::int32_t width = 2; width <= 70; ++width) {
            GuardedFrame yuv = yuvFrame(width + 1, 3);
            yuv.randomize(random);
            for (const bool wholeGroups : {false, true}) {
                GuardedFrame bgra(width, 3, kFormatBgra8);
                ASSERT_EQ(toBgra(yuv, bgra, 77, wholeGroups, {width, 3}), kImgOk);
                ASSERT_TRUE(bgra.guardsIntact());
                for (std::int32_t y = 0; y < 3; ++y) {
                    for (std::int32_t x = 0; x < width; ++x) {
                        const std::int32_t group = x / 2 * 4;
                        const bool borrowed = !wholeGroups && width % 2 != 0 && x == width - 1;
                        const double luma = (sampleAt(yuv, y, 2 * x) - 16) * 255 / 219;
                        const double u = (sampleAt(yuv, y, group + 1) - 128) * 255 / 224;
                        const double v = (sampleAt(yuv, y, borrowed ? group - 1 : group + 3) - 128) * 255 / 224;
                        const double want[4] = {luma + 1.772 * u, luma - 0.344136 * u - 0.714136 * v, luma + 1.402 * v,
                                                77};
                        for (std::int32_t i = 0; i < 4; ++i) {
                            ASSERT_NEAR(sampleAt(bgra, y, 4 * x + i), std::clamp(want[i], 0.0, 255.0), 0.6)
                                << "width " << width << ", row " << y << ", x " << x << ", sample " << i;
                        }
                    }
                }
            }
        }
    });
}

TEST(Yuv422, KnowsBlackWhiteAndThePrimaries) {
    GuardedFrame bgra(8, 1, kFormatBgra8);
    setSamples(bgra, {0, 0, 0,   9, 0, 0, 0,   9, 255, 255, 255, 9, 255, 255, 255, 9,
                      0, 0, 255, 9, 0, 0, 255, 9, 255, 0,   0,   9, 255, 0,   0,   9});
    GuardedFrame yuv = yuvFrame(8, 1);
    ASSERT_EQ(toYuv(bgra, yuv, false, {8, 1}), kImgOk);
    EXPECT_EQ(samplesIn(yuv),
              (std::vector<double>{16, 128, 16, 128, 235, 128, 235, 128, 82, 90, 82, 240, 41, 240, 41, 110}));
}

TEST(Yuv422, BringsSmoothPicturesBack) {
    IFrameProcessor* processor = createFrameProcessor();
    for (const std::int32_t width : {2, 3, 64, 255}) {
        GuardedFrame bgra(width, 40, kFormatBgra8);
        for (std::int32_t y = 0; y < 40; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                const double colours[4] = {40 + 0.5 * x, 200 - 0.6 * x + y, 30 + 0.7 * x + 0.5 * y, 255};
                for (std::int32_t i = 0; i < 4; ++i) {
                    setSample(bgra, y, 4 * x + i, colours[i]);
                }
            }
        }
        std::vector<std::uint8_t> packed(static_cast<std::size_t>(width) * 2 * 40);
        const VideoFrameDesc yuv{packed.data(), width, 40, width * 2, 2, {0, 0}, 99, 0};
        GuardedFrame back(width, 40, kFormatBgra8);
        VideoFrameDesc from;
        VideoFrameDesc to;
        bgra.frame.ToDesc(&from);
        back.frame.ToDesc(&to);
        EXPECT_TRUE(processor->BgraToYuv422(&from, &yuv));
        EXPECT_TRUE(processor->Yuv422ToBgra(&yuv, &to, 255));
        EXPECT_TRUE(framesAgree(back, bgra, 2.0F)) << "width " << width;
        VideoFrameDesc bottomUp = yuv;
        bottomUp.stride = -yuv.stride;
        EXPECT_FALSE(processor->BgraToYuv422(&from, &bottomUp));
        EXPECT_FALSE(processor->Yuv422ToBgra(&bottomUp, &to, 255));
    }
    processor->Release();
}

TEST(Yuv422, RefusesWhatItCannotConvert) {
    GuardedFrame yuv = yuvFrame(4, 2);
    GuardedFrame bgra(4, 2, kFormatBgra8);
    std::uint8_t* y = yuv.frame.Data();
    std::uint8_t* b = bgra.frame.Data();
    EXPECT_EQ(ImgYuv422ToBgra(nullptr, 8, b, 16, 0, false, {4, 2}), kImgNullPointer);
    EXPECT_EQ(ImgBgraToYuv422(b, 16, nullptr, 8, false, {4, 2}), kImgNullPointer);
    EXPECT_EQ(ImgYuv422ToBgra(y, 8, b, 16, 0, false, {1, 2}), kImgBadSize);
    EXPECT_EQ(ImgBgraToYuv422(b, 16, y, 8, false, {4, 0}), kImgBadSize);
    EXPECT_EQ(ImgYuv422ToBgra(y, 7, b, 16, 0, false, {4, 2}), kImgBadStep);
    EXPECT_EQ(ImgBgraToYuv422(b, 15, y, 8, false, {4, 2}), kImgBadStep);
    EXPECT_TRUE(yuv.guardsIntact() && bgra.guardsIntact());
    EXPECT_EQ(samplesIn(bgra), std::vector<double>(32, 0xC7));
}

}  // namespace
}  // namespace lumiset::test
