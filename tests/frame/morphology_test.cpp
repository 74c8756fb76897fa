#include <algorithm>
#include <random>

#include "frame/operations/filter.h"
#include "frame/primitives/morphology.h"
#include "tests/frame/filter_support.h"
#include "tests/support/host.h"

namespace lumiset {
namespace {

using test::framesAgree;
using test::GuardedFrame;
using test::onEveryInstructionSet;

/// Sample at (x, y), beyond the picture that of the nearest pixel.
float sampleAt(const GuardedFrame& frame, std::int32_t x, std::int32_t y, std::int32_t c) {
    const std::int32_t i = std::clamp(x, 0, frame.frame.Width() - 1) * frame.channels() + c;
    const std::int32_t row = std::clamp(y, 0, frame.frame.Height() - 1);
    return isFloatFormat(frame.frame.Format()) ? frame.row<float>(row)[i]
                                               : static_cast<float>(frame.row<std::uint8_t>(row)[i]);
}

void storeAt(GuardedFrame& frame, std::int32_t i, std::int32_t y, float value) {
    if (isFloatFormat(frame.frame.Format())) {
        frame.row<float>(y)[i] = value;
    } else {
        frame.row<std::uint8_t>(y)[i] = static_cast<std::uint8_t>(value);
    }
}

/// Every set element of the ellipse, one by one.
void morphPlainly(const GuardedFrame& src, GuardedFrame& expected, std::int32_t maskWidth, std::int32_t maskHeight,
                  bool minimum) {
    const std::int32_t ax = maskWidth >> 1;
    const std::int32_t ay = maskHeight >> 1;
    std::vector<std::pair<std::int32_t, std::int32_t>> set;
    for (std::int32_t y = 0; y < maskHeight; ++y) {
        for (std::int32_t x = 0; x < maskWidth; ++x) {
            const double dx = x - ax;
            const double dy = y - ay;
            if (dx * dx / (static_cast<double>(ax) * ax) + dy * dy / (static_cast<double>(ay) * ay) <= 1.0) {
                set.emplace_back(x - ax, y - ay);
            }
        }
    }
    for (std::int32_t y = 0; y < src.frame.Height(); ++y) {
        for (std::int32_t i = 0; i < src.samplesPerRow(); ++i) {
            const std::int32_t x = i / src.channels();
            const std::int32_t c = i % src.channels();
            float best =
                set.empty() ? sampleAt(src, x, y, c) : sampleAt(src, x + set.front().first, y + set.front().second, c);
            for (const auto& [dx, dy] : set) {
                const float value = sampleAt(src, x + dx, y + dy, c);
                best = minimum ? std::min(best, value) : std::max(best, value);
            }
            storeAt(expected, i, y, best);
        }
    }
}

constexpr std::int32_t kFormats[] = {kFormatMask8, kFormatMaskFloat, kFormatBgra8,
                                     kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};

void expectPlainMorphology(std::int32_t width, std::int32_t height, std::int32_t maskWidth, std::int32_t maskHeight,
                           std::int32_t format, std::mt19937& random) {
    for (const bool minimum : {false, true}) {
        SCOPED_TRACE(::testing::Message() << width << " x " << height << ", mask " << maskWidth << " x " << maskHeight
                                          << ", format " << format << ", minimum " << minimum);
        GuardedFrame src(width, height, format, 8);
        GuardedFrame dst(width, height, format);
        GuardedFrame expected(width, height, format);
        src.randomize(random);
        // Rare extremes far apart, so that each one's whole ellipse shows; and no tile is finished early by noise.
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t i = 0; i < src.samplesPerRow(); ++i) {
                const float value = sampleAt(src, i / src.channels(), y, i % src.channels());
                const bool rare = random() % 97 == 0;
                storeAt(src, i, y,
                        rare ? value : (isFloatFormat(format) ? 0.5F + value / 64.0F : 100.0F + value / 32.0F));
            }
        }
        const auto before = src.bytes();
        morphPlainly(src, expected, maskWidth, maskHeight, minimum);
        ASSERT_TRUE(minimum ? FrameErode(src.frame, dst.frame, maskWidth, maskHeight, nullptr)
                            : FrameDilate(src.frame, dst.frame, maskWidth, maskHeight, nullptr));
        ASSERT_TRUE(framesAgree(dst, expected));
        ASSERT_EQ(src.bytes(), before);
    }
}

TEST(FrameMorphology, IsTheMaximumAndMinimumOverTheEllipse) {
    onEveryInstructionSet([] {
        std::mt19937 random(1);
        for (std::int32_t size = 1; size <= 70; ++size) {
            const std::int32_t format = kFormats[size % 6];
            expectPlainMorphology(size, static_cast<std::int32_t>(random() % 40 + 1),
                                  static_cast<std::int32_t>(random() % 24 + 1),
                                  static_cast<std::int32_t>(random() % 24 + 1), format, random);
            expectPlainMorphology(static_cast<std::int32_t>(random() % 40 + 1), size, size % 9 + 1, size % 7 + 1,
                                  format, random);
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
    });
}

TEST(FrameMorphology, IsExactForLargeFlatAndTallMasks) {
    constexpr std::pair<std::int32_t, std::int32_t> kMasks[] = {{97, 97}, {96, 95}, {3, 150}, {150, 3}, {2, 2},
                                                                {40, 2},  {2, 41},  {193, 5}, {64, 64}};
    std::mt19937 random(2);
    for (const auto& [maskWidth, maskHeight] : kMasks) {
        for (const std::int32_t format : {kFormatMask8, kFormatBgra8, kFormatMaskFloat}) {
            expectPlainMorphology(61, 33, maskWidth, maskHeight, format, random);
        }
    }
    // Wider than one tile and one strip.
    expectPlainMorphology(4500, 6, 9, 7, kFormatMask8, random);
    expectPlainMorphology(1100, 9, 12, 9, kFormatArgb8, random);
}

TEST(FrameMorphology, FinishesUniformPicturesAndSingleDots) {
    GuardedFrame src(1300, 90, kFormatMask8);
    GuardedFrame dst(1300, 90, kFormatMask8);
    for (std::int32_t y = 0; y < 90; ++y) {
        std::fill_n(src.row<std::uint8_t>(y), 1300, std::uint8_t{7});
    }
    src.row<std::uint8_t>(45)[650] = 200;
    ASSERT_TRUE(FrameDilate(src.frame, dst.frame, 61, 41, nullptr));
    for (std::int32_t y = 0; y < 90; ++y) {
        for (std::int32_t x = 0; x < 1300; ++x) {
            const double dx = (x - 650) / 30.0;
            const double dy = (y - 45) / 20.0;
            ASSERT_EQ(dst.row<std::uint8_t>(y)[x], dx * dx + dy * dy <= 1.0 ? 200 : 7) << x << ", " << y;
        }
    }
}

TEST(FrameMorphology, CopiesWithoutASetElementAndWorksInPlace) {
    std::mt19937 random(3);
    GuardedFrame src(33, 21, kFormatMask8);
    GuardedFrame dst(33, 21, kFormatMask8);
    src.randomize(random);
    ASSERT_TRUE(FrameDilate(src.frame, dst.frame, 1, 9, nullptr));
    EXPECT_TRUE(framesAgree(dst, src));
    ASSERT_TRUE(FrameErode(src.frame, dst.frame, 9, 1, nullptr));
    EXPECT_TRUE(framesAgree(dst, src));
    ASSERT_TRUE(FrameDilate(src.frame, dst.frame, 5, 7, nullptr));
    ASSERT_TRUE(FrameDilate(src.frame, src.frame, 5, 7, nullptr));
    EXPECT_TRUE(framesAgree(src, dst));
}

TEST(FrameMorphology, AnswersFalseWithoutMemoryAndForFramesThatDoNotFit) {
    std::mt19937 random(4);
    GuardedFrame frame(20, 10, kFormatMask8);
    frame.randomize(random);
    const auto before = frame.bytes();
    const int calls = test::failEachAllocation([&](IEffectHost* host) {
        MemoryAllocator allocator(host);
        frame.restore(before);
        const bool done = FrameDilate(frame.frame, frame.frame, 7, 5, &allocator);
        EXPECT_TRUE(done || frame.bytes() == before);
        return done;
    });
    EXPECT_GE(calls, 2);
    GuardedFrame floats(20, 10, kFormatMaskFloat);
    GuardedFrame colour(20, 10, kFormatBgra8);
    Frame empty;
    EXPECT_FALSE(FrameDilate(frame.frame, floats.frame, 3, 3, nullptr));
    EXPECT_FALSE(FrameErode(colour.frame, floats.frame, 3, 3, nullptr));
    EXPECT_FALSE(FrameDilate(empty, frame.frame, 3, 3, nullptr));
    EXPECT_FALSE(FrameDilate(frame.frame, frame.frame, 0, 3, nullptr));
}

struct MaskCase {
    const char* name;
    ImgSize size;
    std::int32_t anchorX;
    std::int32_t anchorY;
    std::vector<std::uint8_t> bytes;
};

std::vector<MaskCase> maskCases(std::mt19937& random) {
    std::vector<std::uint8_t> noise(11 * 7);
    for (std::uint8_t& byte : noise) {
        byte = random() % 3 == 0 ? 1 : 0;
    }
    return {{"full", {13, 6}, 2, 5, std::vector<std::uint8_t>(13 * 6, 255)},
            {"one element away from the anchor", {4, 3}, 0, 2, {0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0}},
            {"cross", {3, 3}, 1, 1, {0, 1, 0, 1, 1, 1, 0, 1, 0}},
            {"noise", {11, 7}, 10, 0, noise},
            {"empty", {2, 2}, 0, 0, {0, 0, 0, 0}}};
}

template <class T, class Init, class Run>
void expectMasked(std::int32_t format, bool minimum, const Init& init, const Run& run) {
    std::mt19937 random(6);
    for (const MaskCase& mask : maskCases(random)) {
        for (const auto& [width, height] : {std::pair{1, 1}, {5, 40}, {70, 9}}) {
            SCOPED_TRACE(::testing::Message()
                         << mask.name << ", " << width << " x " << height << ", format " << format);
            GuardedFrame src(width, height, format, 8);
            GuardedFrame dst(width, height, format);
            GuardedFrame expected(width, height, format);
            src.randomize(random);
            for (std::int32_t y = 0; y < height; ++y) {
                for (std::int32_t i = 0; i < src.samplesPerRow(); ++i) {
                    const std::int32_t x = i / src.channels();
                    const std::int32_t c = i % src.channels();
                    bool any = false;
                    float best = sampleAt(src, x, y, c);
                    for (std::int32_t k = 0; k < mask.size.width * mask.size.height; ++k) {
                        if (mask.bytes[static_cast<std::size_t>(k)] != 0) {
                            const float value = sampleAt(src, x + k % mask.size.width - mask.anchorX,
                                                         y + k / mask.size.width - mask.anchorY, c);
                            best = !any ? value : minimum ? std::min(best, value) : std::max(best, value);
                            any = true;
                        }
                    }
                    storeAt(expected, i, y, best);
                }
            }
            ImgMorphState* state = nullptr;
            ASSERT_EQ(init(width, mask.bytes.data(), mask.size, mask.anchorX, mask.anchorY, &state), kImgOk);
            EXPECT_EQ(run(src.row<T>(0), src.frame.Stride(), dst.row<T>(0), dst.frame.Stride(), {width, height}, state),
                      kImgOk);
            ImgMorphFree(state);
            ASSERT_TRUE(framesAgree(dst, expected));
        }
    }
}

TEST(ImgMorphology, TakesAnyMask) {
    expectMasked<std::uint8_t>(kFormatMask8, false, ImgMorphInit8C1, ImgDilate8C1);
    expectMasked<std::uint8_t>(kFormatMask8, true, ImgMorphInit8C1, ImgErode8C1);
    expectMasked<std::uint8_t>(kFormatBgra8, false, ImgMorphInit8C4, ImgDilate8C4);
    expectMasked<std::uint8_t>(kFormatBgra8, true, ImgMorphInit8C4, ImgErode8C4);
    expectMasked<float>(kFormatMaskFloat, false, ImgMorphInitFC1, ImgDilateFC1);
    expectMasked<float>(kFormatMaskFloat, true, ImgMorphInitFC1, ImgErodeFC1);
    expectMasked<float>(kFormatArgbFloat, false, ImgMorphInitFC4, ImgDilateFC4);
    expectMasked<float>(kFormatArgbFloat, true, ImgMorphInitFC4, ImgErodeFC4);
}

TEST(ImgMorphology, NamesWhatIsWrong) {
    const std::uint8_t mask[4] = {1, 1, 1, 1};
    std::uint8_t plane[64] = {};
    ImgMorphState* state = nullptr;
    EXPECT_EQ(ImgMorphInit8C1(8, nullptr, {2, 2}, 0, 0, &state), kImgNullPointer);
    EXPECT_EQ(ImgMorphInit8C1(8, mask, {2, 0}, 0, 0, &state), kImgBadSize);
    EXPECT_EQ(ImgMorphInit8C1(8, mask, {2, 2}, 2, 0, &state), kImgBadMaskSize);
    EXPECT_EQ(state, nullptr);
    ASSERT_EQ(ImgMorphInit8C1(8, mask, {2, 2}, 0, 0, &state), kImgOk);
    EXPECT_EQ(ImgDilate8C1(plane, 16, plane + 32, 16, {9, 2}, state), kImgBadSize);
    EXPECT_EQ(ImgDilate8C1(plane, 8, plane + 32, 8, {8, 2}, nullptr), kImgNullPointer);
    EXPECT_EQ(ImgErode8C4(plane, 16, plane + 32, 16, {4, 2}, state), kImgBadMaskSize);
    ImgMorphFree(state);
    ImgMorphFree(nullptr);
}

}  // namespace
}  // namespace lumiset
