#include <array>
#include <limits>

#include "frame/image_primitives.h"
#include "tests/frame/primitives_support.h"

namespace lumiset::test {
namespace {

using U8 = std::uint8_t;

template <class Dst, class Src>
using ConvertFunction = ImgStatus (*)(const Src*, std::int32_t, Dst*, std::int32_t, float, float, ImgSize) noexcept;

TEST(PrimitivesConvert, FloatToByte) {
    const auto call = [](ConvertFunction<U8, float> f, float low, float high) {
        return [=](ImgSize size, Plane<float> src, Plane<U8> dst) {
            return f(src.data, src.step, dst.data, dst.step, low, high, size);
        };
    };
    const auto meaning = [](int samples, float low, float high) {
        return [=](float* src, U8* dst) {
            for (int i = 0; i < samples; ++i) {
                dst[i] = roundedByte((src[i] - low) * (255.0F / (high - low)));
            }
        };
    };
    for (const auto& [low, high] : {std::pair(0.0F, 1.0F), std::pair(-0.2F, 0.7F)}) {
        EXPECT_EQ((findPixelFault<float, U8>({kOneChannel, kOneChannel}, call(ImgFloatToByteC1, low, high),
                                             meaning(1, low, high))),
                  "");
        EXPECT_EQ(
            (findPixelFault<float, U8>({kAllFour, kAllFour}, call(ImgFloatToByteC4, low, high), meaning(4, low, high))),
            "");
        EXPECT_EQ((findPixelFault<float, U8>({kColoursAfterAlpha, kColoursAfterAlpha},
                                             call(ImgFloatToByteA4, low, high), meaning(3, low, high))),
                  "");
    }
}

TEST(PrimitivesConvert, FloatToByteAtTheEdges) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr std::array<float, 9> kIn{
        1.0F, -0.5F, 0.0F, 0.5F, 2.0F, kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN(), 1e30F};
    constexpr std::array<U8, 9> kExpected{255, 0, 0, 128, 255, 255, 0, 0, 255};
    for (const std::int64_t target : machineTargets()) {
        const ForcedTarget forced(target);
        std::array<U8, 9> out{};
        ASSERT_EQ(ImgFloatToByteC1(kIn.data(), 36, out.data(), 9, 0.0F, 1.0F, {9, 1}), kImgOk);
        EXPECT_EQ(out, kExpected) << hwy::TargetName(target);
    }
}

TEST(PrimitivesConvert, ByteToFloat) {
    const auto call = [](ConvertFunction<float, U8> f, float low, float high) {
        return [=](ImgSize size, Plane<U8> src, Plane<float> dst) {
            return f(src.data, src.step, dst.data, dst.step, low, high, size);
        };
    };
    const auto meaning = [](int samples, float low, float high) {
        return [=](U8* src, float* dst) {
            for (int i = 0; i < samples; ++i) {
                dst[i] = static_cast<float>(src[i]) * (high - low) / 255.0F + low;
            }
        };
    };
    EXPECT_EQ((findPixelFault<U8, float>({kOneChannel, kOneChannel}, call(ImgByteToFloatC1, 0, 1), meaning(1, 0, 1))),
              "");
    EXPECT_EQ((findPixelFault<U8, float>({kAllFour, kAllFour}, call(ImgByteToFloatC4, -0.5F, 3), meaning(4, -0.5F, 3))),
              "");
}

TEST(PrimitivesConvert, EveryByteSurvivesTheWayToFloatAndBack) {
    std::array<U8, 256> bytes;
    std::array<float, 256> reals;
    std::array<U8, 256> back{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<U8>(i);
    }
    ASSERT_EQ(ImgByteToFloatC1(bytes.data(), 256, reals.data(), 1024, 0.0F, 1.0F, {256, 1}), kImgOk);
    ASSERT_EQ(ImgFloatToByteC1(reals.data(), 1024, back.data(), 256, 0.0F, 1.0F, {256, 1}), kImgOk);
    EXPECT_EQ(reals[255], 1.0F);
    EXPECT_EQ(back, bytes);
}

TEST(PrimitivesConvert, RefusesAnEmptyRange) {
    float real = 0.25F;
    U8 byte = 7;
    for (const float high : {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_EQ(ImgByteToFloatC1(&byte, 1, &real, 4, 0.0F, high, {1, 1}), kImgBadRange);
        EXPECT_EQ(ImgFloatToByteC1(&real, 4, &byte, 1, 0.0F, high, {1, 1}), kImgBadRange);
    }
    EXPECT_EQ(real, 0.25F);
    EXPECT_EQ(byte, 7);
}

constexpr std::array<float, 3> kLuma{0.114F, 0.587F, 0.299F};

TEST(PrimitivesColor, Luma) {
    const auto sum = [](auto* s) {
        // The outer two first, so that both orders of the colours round alike.
        return kLuma[0] * static_cast<float>(s[0]) + kLuma[2] * static_cast<float>(s[2]) +
               kLuma[1] * static_cast<float>(s[1]);
    };
    const auto byteMeaning = [&](U8* src, U8* dst) { *dst = roundedByte(sum(src)); };
    EXPECT_EQ((findPixelFault<U8, U8>(
                  {{3, 0, 3}, kOneChannel},
                  [](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                      return ImgLuma8C3(src.data, src.step, dst.data, dst.step, kLuma.data(), size);
                  },
                  byteMeaning)),
              "");
    for (const PlaneSpec& spec : {kColours, kColoursAfterAlpha}) {
        EXPECT_EQ((findPixelFault<U8, U8>(
                      {spec, kOneChannel},
                      [](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                          return ImgLuma8A4(src.data, src.step, dst.data, dst.step, kLuma.data(), size);
                      },
                      byteMeaning)),
                  "");
        EXPECT_EQ((findPixelFault<float, float>(
                      {spec, kOneChannel},
                      [](ImgSize size, Plane<float> src, Plane<float> dst) {
                          return ImgLumaFA4(src.data, src.step, dst.data, dst.step, kLuma.data(), size);
                      },
                      [&](float* src, float* dst) { *dst = sum(src); })),
                  "");
    }
}

TEST(PrimitivesColor, Twist) {
    // Leaves 0..255 at both ends.
    constexpr std::array<float, 12> kMatrix{1.5F,  -0.25F, 0.3F,  -20.0F, 0.1F, 0.8F,
                                            0.15F, 12.5F,  -0.7F, 0.2F,   1.9F, 3.0F};
    const auto row = [&](auto* s, std::size_t i) {
        return kMatrix[4 * i] * static_cast<float>(s[0]) + kMatrix[4 * i + 1] * static_cast<float>(s[1]) +
               kMatrix[4 * i + 2] * static_cast<float>(s[2]) + kMatrix[4 * i + 3];
    };
    const auto realMeaning = [&](float* src, float* dst) {
        const std::array<float, 3> out{row(src, 0), row(src, 1), row(src, 2)};
        std::copy(out.begin(), out.end(), dst);
    };
    for (const PlaneSpec& spec : {kColours, kColoursAfterAlpha}) {
        EXPECT_EQ((findPixelFault<U8, U8>(
                      {spec, spec},
                      [&](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                          return ImgColorTwist8A4(src.data, src.step, dst.data, dst.step, kMatrix.data(), size);
                      },
                      [&](U8* src, U8* dst) {
                          for (std::size_t i = 0; i < 3; ++i) {
                              dst[i] = roundedByte(row(src, i));
                          }
                      })),
                  "");
        EXPECT_EQ((findPixelFault<float, float>(
                      {spec, spec},
                      [&](ImgSize size, Plane<float> src, Plane<float> dst) {
                          return ImgColorTwistFA4(src.data, src.step, dst.data, dst.step, kMatrix.data(), size);
                      },
                      realMeaning)),
                  "");
        EXPECT_EQ(findPixelFault<float>(
                      {spec},
                      [&](ImgSize size, Plane<float> p) {
                          return ImgColorTwistInPlaceFA4(p.data, p.step, kMatrix.data(), size);
                      },
                      [&](float* p) { realMeaning(p, p); }),
                  "");
    }
}

/// Hue in sixths of a turn, saturation and value, by the largest channel.
std::array<float, 3> hexagonOf(float r, float g, float b) {
    const float value = std::max({r, g, b});
    const float range = value - std::min({r, g, b});
    float sector = 0;
    if (range > 0) {
        sector = value == r ? (g - b) / range : value == g ? 2.0F + (b - r) / range : 4.0F + (r - g) / range;
        sector = sector < 0 ? sector + 6.0F : sector;
        sector = sector < 6.0F ? sector : 0.0F;
    }
    return {sector, value > 0 ? range / value : 0.0F, value};
}
/// The way back, one colour a call: 5 red, 3 green, 1 blue.
float colourOfHexagon(float sector, float saturation, float value, float corner) {
    const float k = std::fmod(sector + corner, 6.0F);
    return value - value * saturation * std::clamp(std::min(k, 4.0F - k), 0.0F, 1.0F);
}

template <class T>
using HsvFunction = ImgStatus (*)(const T*, std::int32_t, T*, std::int32_t, ImgColorOrder, ImgSize) noexcept;

TEST(PrimitivesColor, HueSaturationValue) {
    for (const ImgColorOrder order : {ImgColorOrder::kRgb, ImgColorOrder::kBgr}) {
        const std::size_t r = order == ImgColorOrder::kRgb ? 0 : 2;
        const std::size_t b = 2 - r;
        const auto byteCall = [&](HsvFunction<U8> f) {
            return [=](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                return f(src.data, src.step, dst.data, dst.step, order, size);
            };
        };
        const auto realCall = [&](HsvFunction<float> f) {
            return [=](ImgSize size, Plane<float> src, Plane<float> dst) {
                return f(src.data, src.step, dst.data, dst.step, order, size);
            };
        };
        EXPECT_EQ((findPixelFault<U8, U8>({kColours, kColoursAfterAlpha}, byteCall(ImgRgbToHsv8A4),
                                          [&](U8* src, U8* dst) {
                                              const auto hsv = hexagonOf(src[r], src[1], src[b]);
                                              const float hue = hsv[0] / 6.0F * 255.0F;
                                              dst[r] = hue < 254.5F ? roundedByte(hue) : U8{0};
                                              dst[1] = roundedByte(hsv[1] * 255.0F);
                                              dst[b] = roundedByte(hsv[2]);
                                          })),
                  "");
        EXPECT_EQ((findPixelFault<U8, U8>({kColoursAfterAlpha, kColours}, byteCall(ImgHsvToRgb8A4),
                                          [&](U8* src, U8* dst) {
                                              const float sector = static_cast<float>(src[r]) / 255.0F * 6.0F;
                                              const float saturation = static_cast<float>(src[1]) / 255.0F;
                                              const float value = src[b];
                                              dst[r] = roundedByte(colourOfHexagon(sector, saturation, value, 5));
                                              dst[1] = roundedByte(colourOfHexagon(sector, saturation, value, 3));
                                              dst[b] = roundedByte(colourOfHexagon(sector, saturation, value, 1));
                                          })),
                  "");
        EXPECT_EQ((findPixelFault<float, float>({kColours, kColoursAfterAlpha}, realCall(ImgRgbToHsvFA4),
                                                [&](float* src, float* dst) {
                                                    const auto hsv = hexagonOf(src[r], src[1], src[b]);
                                                    dst[r] = hsv[0] / 6.0F;
                                                    dst[1] = hsv[1];
                                                    dst[b] = hsv[2];
                                                })),
                  "");
        EXPECT_EQ((findPixelFault<float, float>(
                      {kColoursAfterAlpha, kColours}, realCall(ImgHsvToRgbFA4),
                      [&](float* src, float* dst) {
                          const std::array<float, 3> hsv{src[r], src[1], src[b]};
                          const float sector = (hsv[0] - std::floor(hsv[0])) * 6.0F;
                          dst[r] = colourOfHexagon(sector, hsv[1], hsv[2], 5);
                          dst[1] = colourOfHexagon(sector, hsv[1], hsv[2], 3);
                          dst[b] = colourOfHexagon(sector, hsv[1], hsv[2], 1);
                      },
                      1e-6F)),
                  "");
    }
}

TEST(PrimitivesColor, HueOfKnownColours) {
    struct Case {
        std::array<U8, 3> rgb;
        std::array<U8, 3> hsv;
    };
    // A sixth of a turn is 42.5. The last red has a trace of blue: its hue would round to a full turn.
    constexpr Case kCases[] = {
        {{255, 0, 0}, {0, 255, 255}},    {{0, 255, 0}, {85, 255, 255}},     {{0, 0, 255}, {170, 255, 255}},
        {{255, 255, 0}, {43, 255, 255}}, {{64, 128, 128}, {128, 128, 128}}, {{90, 90, 90}, {0, 0, 90}},
        {{0, 0, 0}, {0, 0, 0}},          {{255, 0, 1}, {0, 255, 255}}};
    for (const Case& c : kCases) {
        std::array<U8, 3> out{};
        ASSERT_EQ(ImgRgbToHsv8A4(c.rgb.data(), 4, out.data(), 4, ImgColorOrder::kRgb, {1, 1}), kImgOk);
        EXPECT_EQ(out, c.hsv) << +c.rgb[0] << ' ' << +c.rgb[1] << ' ' << +c.rgb[2];
    }
    constexpr std::array<U8, 3> kFullTurn{255, 255, 200};
    std::array<U8, 3> red{};
    ASSERT_EQ(ImgHsvToRgb8A4(kFullTurn.data(), 4, red.data(), 4, ImgColorOrder::kRgb, {1, 1}), kImgOk);
    EXPECT_EQ(red, (std::array<U8, 3>{200, 0, 0}));
}

}  // namespace
}  // namespace lumiset::test
