#include "hostkit/mix.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "host/pixel_format.h"
#include "hostkit/frame_buffer.h"

namespace lumiset::hostkit {
namespace {

constexpr int kWidth = 7;
constexpr int kHeight = 3;

FrameBuffer filled(PixelFormat format, int seed) {
    FrameBuffer frame(kWidth, kHeight, format, {seed % 2 == 0, 0});
    for (int y = 0; y < kHeight; ++y) {
        for (int i = 0; i < 4 * kWidth; ++i) {
            const int value = (i * 37 + y * 101 + seed * 59) % 256;
            if (isFloatFormat(format)) {
                // Values beyond 0 to 1 and ones that are no numbers pass an effect that is not shown, too.
                const float odd = value % 5 == 0 ? std::numeric_limits<float>::quiet_NaN() : 1.7F;
                reinterpret_cast<float*>(frame.row(y))[i] = i % 3 == 0 ? odd : static_cast<float>(value) / 255.0F;
            } else {
                frame.row(y)[i] = static_cast<std::uint8_t>(value);
            }
        }
    }
    return frame;
}

void expectSame(const FrameBuffer& frame, const FrameBuffer& expected) {
    for (int y = 0; y < kHeight; ++y) {
        EXPECT_EQ(std::memcmp(frame.row(y), expected.row(y),
                              static_cast<std::size_t>(kWidth) * static_cast<std::size_t>(frame.desc().bytesPerPixel)),
                  0)
            << "row " << y;
    }
}

TEST(Mix, IsExactWhereNothingOrAllIsShown) {
    for (const PixelFormat format : {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat}) {
        const FrameBuffer source = filled(format, 1);
        const FrameBuffer result = filled(format, 2);
        const auto black = std::make_shared<Mask>(Mask{2, 1, {0, 0}});
        const auto white = std::make_shared<Mask>(Mask{3, 2, {1, 1, 1, 1, 1, 1}});
        for (const Mix& mix : {Mix{0, nullptr}, Mix{1, black}, Mix{0.4F, black}, Mix{0, white}}) {
            FrameBuffer mixed = filled(format, 2);
            mixFrames(source.desc(), mixed.desc(), mix);
            expectSame(mixed, source);
        }
        for (const Mix& mix : {Mix{1, nullptr}, Mix{1, white}}) {
            FrameBuffer mixed = filled(format, 2);
            mixFrames(source.desc(), mixed.desc(), mix);
            expectSame(mixed, result);
        }
    }
}

TEST(Mix, WeighsColoursByTheirAlpha) {
    const struct {
        std::uint8_t source[4], result[4];
        float strength;
        int expected[4];
    } cases[] = {
        {{0, 100, 200, 255}, {100, 0, 200, 255}, 0.25F, {25, 75, 200, 255}},
        {{0, 100, 200, 255}, {90, 90, 90, 0}, 0.5F, {0, 100, 200, 128}},  // what is transparent has no colour
        {{0, 0, 0, 0}, {90, 80, 70, 200}, 0.25F, {90, 80, 70, 50}},
        {{10, 10, 10, 60}, {70, 70, 70, 30}, 0.5F, {30, 30, 30, 45}},
    };
    for (const auto& each : cases) {
        for (const PixelFormat format : {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat}) {
            const bool isFloat = isFloatFormat(format);
            const bool alphaFirst = AlphaIndex(format) == 0;
            FrameBuffer source(1, 1, format);
            FrameBuffer result(1, 1, format);
            for (int c = 0; c < 4; ++c) {
                const int at = alphaFirst ? 3 - c : c;
                for (auto& [frame, values] : {std::pair(&source, each.source), std::pair(&result, each.result)}) {
                    if (isFloat) {
                        reinterpret_cast<float*>(frame->row(0))[at] = static_cast<float>(values[c]) / 255.0F;
                    } else {
                        frame->row(0)[at] = values[c];
                    }
                }
            }
            mixFrames(source.desc(), result.desc(), {each.strength, nullptr});
            for (int c = 0; c < 4; ++c) {
                const int at = alphaFirst ? 3 - c : c;
                const float found = isFloat ? reinterpret_cast<float*>(result.row(0))[at] * 255.0F
                                            : static_cast<float>(result.row(0)[at]);
                EXPECT_NEAR(found, static_cast<float>(each.expected[c]), isFloat ? 0.51F : 0.0F)
                    << "channel " << c << ", format " << format << ", strength " << each.strength;
            }
        }
    }
}

TEST(Mix, StretchesTheMaskFromTheTopLeft) {
    FrameBuffer source(8, 4, kFormatBgraFloat, {true, 0});
    FrameBuffer result(8, 4, kFormatBgraFloat);
    for (int y = 0; y < 4; ++y) {
        for (int i = 0; i < 32; ++i) {
            reinterpret_cast<float*>(source.row(y))[i] = i % 4 == 3 ? 1.0F : 0.0F;
            reinterpret_cast<float*>(result.row(y))[i] = 1.0F;
        }
    }
    mixFrames(source.desc(), result.desc(), {1, std::make_shared<Mask>(Mask{2, 2, {0, 1, 0, 0.5F}})});
    // The middles of the mask's columns lie at 2 and 6 of 8, those of its rows at 1 and 3 of 4.
    const float across[] = {0, 0, 0.125F, 0.375F, 0.625F, 0.875F, 1, 1};
    const float down[] = {1, 0.875F, 0.625F, 0.5F};
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 8; ++x) {
            EXPECT_NEAR(reinterpret_cast<float*>(result.row(y))[4 * x], across[x] * down[y], 1e-6F) << x << ',' << y;
        }
    }
}

}  // namespace
}  // namespace lumiset::hostkit
