#include <array>
#include <limits>

#include "frame/image_primitives.h"
#include "tests/frame/primitives_support.h"

namespace lumiset::test {
namespace {

using U8 = std::uint8_t;

constexpr std::array<U8, 4> kBytes{200, 0, 255, 7};
constexpr std::array<float, 4> kReals{0.25F, -3.0F, 1.0F, 7.5F};

TEST(PrimitivesArithmetic, ScalesByColor) {
    for (const U8 value : std::array<U8, 6>{0, 1, 127, 128, 254, 255}) {
        EXPECT_EQ((findPixelFault<U8, U8>(
                      {kOneChannel, kOneChannel},
                      [&](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                          return ImgScaleByColor8C1(src.data, src.step, dst.data, dst.step, value, size);
                      },
                      [&](U8* src, U8* dst) { *dst = scaledProduct(*src, value); })),
                  "");
    }
    EXPECT_EQ((findPixelFault<U8, U8>(
                  {kAllFour, kAllFour},
                  [](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                      return ImgScaleByColor8C4(src.data, src.step, dst.data, dst.step, kBytes.data(), size);
                  },
                  [](U8* src, U8* dst) {
                      for (std::size_t i = 0; i < 4; ++i) {
                          dst[i] = scaledProduct(src[i], kBytes[i]);
                      }
                  })),
              "");
    EXPECT_EQ((findPixelFault<float, float>(
                  {kOneChannel, kOneChannel},
                  [](ImgSize size, Plane<float> src, Plane<float> dst) {
                      return ImgScaleByColorFC1(src.data, src.step, dst.data, dst.step, 0.3F, size);
                  },
                  [](float* src, float* dst) { *dst = *src * 0.3F; })),
              "");
    EXPECT_EQ((findPixelFault<float, float>(
                  {kAllFour, kAllFour},
                  [](ImgSize size, Plane<float> src, Plane<float> dst) {
                      return ImgScaleByColorFC4(src.data, src.step, dst.data, dst.step, kReals.data(), size);
                  },
                  [](float* src, float* dst) {
                      for (std::size_t i = 0; i < 4; ++i) {
                          dst[i] = src[i] * kReals[i];
                      }
                  })),
              "");
}

TEST(PrimitivesArithmetic, ScaledProductsAgreeForEveryPairOfBytes) {
    std::array<U8, 256> row;
    for (std::size_t i = 0; i < row.size(); ++i) {
        row[i] = static_cast<U8>(i);
    }
    for (const std::int64_t target : machineTargets()) {
        const ForcedTarget forced(target);
        for (int value = 0; value < 256; ++value) {
            std::array<U8, 256> result{};
            ASSERT_EQ(ImgScaleByColor8C1(row.data(), 256, result.data(), 256, static_cast<U8>(value), {256, 1}), 0);
            for (std::size_t i = 0; i < row.size(); ++i) {
                ASSERT_EQ(result[i], static_cast<int>(i) * value / 255) << i << " * " << value;
            }
        }
    }
}

TEST(PrimitivesArithmetic, AddsAndMultipliesColours) {
    for (const PlaneSpec& spec : {kColours, kColoursAfterAlpha}) {
        const auto add = [](float* src, float* dst) {
            for (std::size_t i = 0; i < 3; ++i) {
                dst[i] = src[i] + kReals[i];
            }
        };
        const auto multiply = [](float* src, float* dst) {
            for (std::size_t i = 0; i < 3; ++i) {
                dst[i] = src[i] * kReals[i];
            }
        };
        EXPECT_EQ((findPixelFault<float, float>(
                      {spec, spec},
                      [](ImgSize size, Plane<float> src, Plane<float> dst) {
                          return ImgAddFA4(src.data, src.step, dst.data, dst.step, kReals.data(), size);
                      },
                      add)),
                  "");
        EXPECT_EQ((findPixelFault<float, float>(
                      {spec, spec},
                      [](ImgSize size, Plane<float> src, Plane<float> dst) {
                          return ImgMulFA4(src.data, src.step, dst.data, dst.step, kReals.data(), size);
                      },
                      multiply)),
                  "");
        EXPECT_EQ(
            findPixelFault<float>(
                {spec},
                [](ImgSize size, Plane<float> p) { return ImgAddInPlaceFA4(p.data, p.step, kReals.data(), size); },
                [&](float* p) { add(p, p); }),
            "");
        EXPECT_EQ(
            findPixelFault<float>(
                {spec},
                [](ImgSize size, Plane<float> p) { return ImgMulInPlaceFA4(p.data, p.step, kReals.data(), size); },
                [&](float* p) { multiply(p, p); }),
            "");
    }
}

TEST(PrimitivesArithmetic, MulScaledRoundsHalfToEven) {
    struct Case {
        U8 sample;
        U8 value;
        std::int32_t scale;
        U8 expected;
    };
    // 1.5 to 2, 2.5 to 2, just below and above a half, limits, and no shift at all.
    constexpr Case kCases[] = {{3, 128, 8, 2},   {5, 128, 8, 2},     {7, 128, 8, 4},     {1, 128, 8, 0},
                               {1, 129, 8, 1},   {1, 127, 8, 0},     {255, 255, 8, 254}, {255, 255, 0, 255},
                               {20, 12, 0, 240}, {255, 255, 10, 64}, {255, 255, 15, 2},  {64, 255, 1, 255}};
    for (const std::int64_t target : machineTargets()) {
        const ForcedTarget forced(target);
        for (const Case& c : kCases) {
            U8 sample = c.sample;
            ASSERT_EQ(ImgMulScaled8C1(&sample, 1, c.value, c.scale, {1, 1}), kImgOk);
            EXPECT_EQ(sample, c.expected) << +c.sample << " * " << +c.value << " >> " << c.scale;
        }
    }
    EXPECT_EQ(
        (findPixelFault<U8>(
            {kOneChannel}, [](ImgSize size, Plane<U8> p) { return ImgMulScaled8C1(p.data, p.step, 176, 8, size); },
            [](U8* p) { *p = static_cast<U8>(std::nearbyint(*p * 176 / 256.0)); })),
        "");
    U8 sample = 9;
    EXPECT_EQ(ImgMulScaled8C1(&sample, 1, 2, -1, {1, 1}), kImgBadRange);
    EXPECT_EQ(ImgMulScaled8C1(&sample, 1, 2, 16, {1, 1}), kImgBadRange);
    EXPECT_EQ(sample, 9);
}

TEST(PrimitivesArithmetic, LimitsSamples) {
    const auto clamp = [](float* p) { *p = !(*p >= 0.25F) ? 0.25F : *p > 0.75F ? 0.75F : *p; };
    EXPECT_EQ(
        findPixelFault<U8>(
            {kOneChannel}, [](ImgSize size, Plane<U8> p) { return ImgClampRange8C1(p.data, p.step, 20, 200, size); },
            [](U8* p) { *p = std::clamp<U8>(*p, 20, 200); }),
        "");
    EXPECT_EQ(
        findPixelFault<float>(
            {kOneChannel},
            [](ImgSize size, Plane<float> p) { return ImgClampRangeFC1(p.data, p.step, 0.25F, 0.75F, size); }, clamp),
        "");
    EXPECT_EQ(findPixelFault<float>(
                  {kColoursAfterAlpha},
                  [](ImgSize size, Plane<float> p) { return ImgClampRangeFA4(p.data, p.step, 0.25F, 0.75F, size); },
                  [&](float* p) { clamp(p), clamp(p + 1), clamp(p + 2); }),
              "");
    EXPECT_EQ(
        findPixelFault<U8>(
            {kOneChannel}, [](ImgSize size, Plane<U8> p) { return ImgThresholdLess8C1(p.data, p.step, 128, 3, size); },
            [](U8* p) { *p = *p < 128 ? 3 : *p; }),
        "");
    EXPECT_EQ(findPixelFault<float>(
                  {kOneChannel},
                  [](ImgSize size, Plane<float> p) { return ImgThresholdLessFC1(p.data, p.step, 0.5F, -1.0F, size); },
                  [](float* p) { *p = *p < 0.5F ? -1.0F : *p; }),
              "");
    EXPECT_EQ(
        findPixelFault<float>(
            {kAllFour}, [](ImgSize size, Plane<float> p) { return ImgLimitFC4(p.data, p.step, kReals.data(), size); },
            [](float* p) {
                for (std::size_t i = 0; i < 4; ++i) {
                    p[i] = std::min(p[i], kReals[i]);
                }
            }),
        "");
}

TEST(PrimitivesArithmetic, ClampMakesNotANumberTheLowLimit) {
    for (const std::int64_t target : machineTargets()) {
        const ForcedTarget forced(target);
        std::array<float, 9> row;
        row.fill(std::numeric_limits<float>::quiet_NaN());
        ASSERT_EQ(ImgClampRangeFC1(row.data(), 36, 0.25F, 1.0F, {9, 1}), kImgOk);
        for (const float v : row) {
            EXPECT_EQ(v, 0.25F);
        }
    }
}

TEST(PrimitivesArithmetic, Inverts) {
    EXPECT_EQ((findPixelFault<U8, U8>(
                  {kOneChannel, kOneChannel},
                  [](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                      return ImgInvert8C1(src.data, src.step, dst.data, dst.step, size);
                  },
                  [](U8* src, U8* dst) { *dst = static_cast<U8>(255 - *src); })),
              "");
    EXPECT_EQ((findPixelFault<float, float>(
                  {kOneChannel, kOneChannel},
                  [](ImgSize size, Plane<float> src, Plane<float> dst) {
                      return ImgInvertFC1(src.data, src.step, dst.data, dst.step, size);
                  },
                  [](float* src, float* dst) { *dst = 1.0F - *src; })),
              "");
    for (int channel = 0; channel < 4; ++channel) {
        EXPECT_EQ(findPixelFault<U8>(
                      {channelOfFour(channel)},
                      [](ImgSize size, Plane<U8> p) { return ImgInvertChannel8C4(p.data, p.step, size); },
                      [](U8* p) { *p = static_cast<U8>(255 - *p); }),
                  "");
        EXPECT_EQ(findPixelFault<float>(
                      {channelOfFour(channel)},
                      [](ImgSize size, Plane<float> p) { return ImgInvertChannelFC4(p.data, p.step, size); },
                      [](float* p) { *p = 1.0F - *p; }),
                  "");
    }
}

TEST(PrimitivesArithmetic, TakesTheSmallerSample) {
    EXPECT_EQ((findPixelFault<U8, U8, U8>(
                  {kOneChannel, kOneChannel, kOneChannel},
                  [](ImgSize size, Plane<U8> a, Plane<U8> b, Plane<U8> dst) {
                      return ImgMin8C1(a.data, a.step, b.data, b.step, dst.data, dst.step, size);
                  },
                  [](U8* a, U8* b, U8* dst) { *dst = std::min(*a, *b); })),
              "");
    EXPECT_EQ((findPixelFault<float, float, float>(
                  {kOneChannel, kOneChannel, kOneChannel},
                  [](ImgSize size, Plane<float> a, Plane<float> b, Plane<float> dst) {
                      return ImgMinFC1(a.data, a.step, b.data, b.step, dst.data, dst.step, size);
                  },
                  [](float* a, float* b, float* dst) { *dst = std::min(*a, *b); })),
              "");
}

TEST(PrimitivesArithmetic, SquaresAndTakesRoots) {
    EXPECT_EQ(findPixelFault<float>(
                  {kOneChannel}, [](ImgSize size, Plane<float> p) { return ImgSquareFC1(p.data, p.step, size); },
                  [](float* p) { *p = *p * *p; }),
              "");
    PlaneSpec positive = kOneChannel;
    positive.low = 0;
    positive.high = 3;
    EXPECT_EQ(findPixelFault<float>(
                  {positive}, [](ImgSize size, Plane<float> p) { return ImgSquareRootFC1(p.data, p.step, size); },
                  [](float* p) { *p = std::sqrt(*p); }),
              "");
    std::array<float, 35> row;
    row.fill(4.0F);
    row[34] = -0.5F;
    const std::array<float, 35> before = row;
    EXPECT_EQ(ImgSquareRootFC1(row.data(), 140, {35, 1}), kImgBadRange);
    EXPECT_EQ(row, before);
    EXPECT_EQ(ImgSquareRootFC1(row.data(), 140, {34, 1}), kImgOk);
    EXPECT_EQ(row[33], 2.0F);
}

TEST(PrimitivesLookup, ReadsTables) {
    std::array<std::array<U8, 256>, 3> tables;
    std::mt19937 random(5);
    for (auto& table : tables) {
        for (U8& entry : table) {
            entry = static_cast<U8>(random() & 0xFFU);
        }
    }
    const std::array<const U8*, 3> pointers{tables[0].data(), tables[1].data(), tables[2].data()};
    for (const PlaneSpec& spec : {kColours, kColoursAfterAlpha}) {
        EXPECT_EQ((findPixelFault<U8, U8>(
                      {spec, spec},
                      [&](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                          return ImgLookup8A4(src.data, src.step, dst.data, dst.step, pointers.data(), size);
                      },
                      [&](U8* src, U8* dst) {
                          for (std::size_t i = 0; i < 3; ++i) {
                              dst[i] = tables[i][src[i]];
                          }
                      })),
                  "");
    }
}

TEST(PrimitivesArithmetic, NullArraysAreRefused) {
    std::array<U8, 4> bytes{1, 2, 3, 4};
    std::array<float, 4> reals{1, 2, 3, 4};
    const auto byteCopy = bytes;
    const auto realCopy = reals;
    const std::array<const U8*, 3> noTable{bytes.data(), nullptr, bytes.data()};
    const ImgStatus results[] = {
        ImgScaleByColor8C4(bytes.data(), 4, bytes.data(), 4, nullptr, {1, 1}),
        ImgScaleByColorFC4(reals.data(), 16, reals.data(), 16, nullptr, {1, 1}),
        ImgAddInPlaceFA4(reals.data(), 16, nullptr, {1, 1}),
        ImgMulInPlaceFA4(reals.data(), 16, nullptr, {1, 1}),
        ImgLimitFC4(reals.data(), 16, nullptr, {1, 1}),
        ImgLookup8A4(bytes.data(), 4, bytes.data(), 4, nullptr, {1, 1}),
        ImgLookup8A4(bytes.data(), 4, bytes.data(), 4, noTable.data(), {1, 1}),
        ImgSet8C4(bytes.data(), 4, nullptr, {1, 1}),
        ImgSet8A4(bytes.data(), 4, nullptr, {1, 1}),
        ImgSetFC4(reals.data(), 16, nullptr, {1, 1}),
        ImgSetFA4(reals.data(), 16, nullptr, {1, 1}),
        ImgLuma8A4(bytes.data(), 4, bytes.data(), 4, nullptr, {1, 1}),
        ImgLumaFA4(reals.data(), 16, reals.data(), 16, nullptr, {1, 1}),
        ImgColorTwist8A4(bytes.data(), 4, bytes.data(), 4, nullptr, {1, 1}),
        ImgColorTwistInPlaceFA4(reals.data(), 16, nullptr, {1, 1}),
    };
    for (std::size_t i = 0; i < std::size(results); ++i) {
        EXPECT_EQ(results[i], kImgNullPointer) << "call " << i;
    }
    EXPECT_EQ(bytes, byteCopy);
    EXPECT_EQ(reals, realCopy);
}

}  // namespace
}  // namespace lumiset::test
