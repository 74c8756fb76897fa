#include <array>

#include "frame/image_primitives.h"
#include "tests/frame/primitives_support.h"

namespace lumiset::test {
namespace {

using U8 = std::uint8_t;

TEST(PrimitivesAlpha, Premultiplies) {
    for (const std::int32_t alpha : {0, 3}) {
        EXPECT_EQ((findPixelFault<U8, U8>(
                      {kAllFour, kAllFour},
                      [&](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                          return ImgPremultiply8C4(src.data, src.step, dst.data, dst.step, alpha, size);
                      },
                      [&](U8* src, U8* dst) {
                          for (int i = 0; i < 4; ++i) {
                              dst[i] = i == alpha ? src[i] : scaledProduct(src[i], src[alpha]);
                          }
                      })),
                  "");
        EXPECT_EQ((findPixelFault<float>(
                      {kAllFour},
                      [&](ImgSize size, Plane<float> p) {
                          return ImgPremultiplyFC4(p.data, p.step, p.data, p.step, alpha, size);
                      },
                      [&](float* p) {
                          for (int i = 0; i < 4; ++i) {
                              p[i] = i == alpha ? p[i] : p[i] * p[alpha];
                          }
                      })),
                  "");
    }
}

TEST(PrimitivesAlpha, Over) {
    for (const std::int32_t mode : {kImgOverStraight, kImgOverPremultiplied}) {
        for (const std::int32_t alpha : {0, 3}) {
            const bool straight = mode == kImgOverStraight;
            EXPECT_EQ((findPixelFault<U8, U8, U8>(
                          {kAllFour, kAllFour, kAllFour},
                          [&](ImgSize size, Plane<U8> t, Plane<U8> b, Plane<U8> dst) {
                              return ImgAlphaOver8C4(t.data, t.step, b.data, b.step, dst.data, dst.step, mode, alpha,
                                                     size);
                          },
                          [&](U8* t, U8* b, U8* dst) {
                              const U8 a = t[alpha];
                              for (int i = 0; i < 4; ++i) {
                                  const int above = straight && i != alpha ? scaledProduct(t[i], a) : t[i];
                                  const int below = scaledProduct(b[i], 255U - a);
                                  dst[i] = static_cast<U8>(std::min(above + below, 255));
                              }
                          })),
                      "");
            EXPECT_EQ((findPixelFault<float, float, float>(
                          {kAllFour, kAllFour, kAllFour},
                          [&](ImgSize size, Plane<float> t, Plane<float> b, Plane<float> dst) {
                              return ImgAlphaOverFC4(t.data, t.step, b.data, b.step, dst.data, dst.step, mode, alpha,
                                                     size);
                          },
                          [&](float* t, float* b, float* dst) {
                              const float a = t[alpha];
                              for (int i = 0; i < 4; ++i) {
                                  dst[i] = (straight && i != alpha ? t[i] * a : t[i]) + b[i] * (1.0F - a);
                              }
                          })),
                      "");
        }
    }
}

TEST(PrimitivesAlpha, OverOfKnownPixels) {
    using Pixel = std::array<U8, 4>;
    struct Case {
        std::int32_t mode;
        Pixel top;
        Pixel bottom;
        Pixel expected;
    };
    constexpr Case kCases[] = {
        {kImgOverStraight, {10, 20, 30, 255}, {200, 200, 200, 200}, {10, 20, 30, 255}},
        {kImgOverStraight, {10, 20, 30, 0}, {200, 100, 50, 200}, {200, 100, 50, 200}},
        {kImgOverStraight, {255, 0, 100, 51}, {0, 255, 100, 255}, {51, 204, 100, 255}},
        {kImgOverPremultiplied, {51, 0, 20, 51}, {0, 255, 100, 255}, {51, 204, 100, 255}},
        {kImgOverPremultiplied, {250, 0, 0, 0}, {100, 0, 0, 100}, {255, 0, 0, 100}},
    };
    for (const Case& c : kCases) {
        Pixel dst{};
        ASSERT_EQ(ImgAlphaOver8A4(c.top.data(), 4, c.bottom.data(), 4, dst.data(), 4, c.mode, {1, 1}), kImgOk);
        EXPECT_EQ(dst, c.expected);
        Pixel inPlace = c.bottom;
        ASSERT_EQ(ImgAlphaOver8A4(c.top.data(), 4, inPlace.data(), 4, inPlace.data(), 4, c.mode, {1, 1}), kImgOk);
        EXPECT_EQ(inPlace, c.expected);
    }
    Pixel half{100, 200, 255, 128};
    ASSERT_EQ(ImgPremultiply8A4(half.data(), 4, half.data(), 4, {1, 1}), kImgOk);
    EXPECT_EQ(half, (Pixel{50, 100, 128, 128}));
}

TEST(PrimitivesAlpha, UnknownModesAndAlphaPositionsAreRefused) {
    std::array<U8, 4> pixel{1, 2, 3, 4};
    std::array<float, 4> real{1, 2, 3, 4};
    U8* p = pixel.data();
    float* f = real.data();
    for (const std::int32_t bad : {-1, 1, 2, 4}) {
        EXPECT_EQ(ImgAlphaOver8C4(p, 4, p, 4, p, 4, kImgOverStraight, bad, {1, 1}), kImgBadRange);
        EXPECT_EQ(ImgAlphaOverFC4(f, 16, f, 16, f, 16, kImgOverPremultiplied, bad, {1, 1}), kImgBadRange);
        EXPECT_EQ(ImgAlphaOver8A4(p, 4, p, 4, p, 4, bad, {1, 1}), kImgBadRange);
        EXPECT_EQ(ImgPremultiply8C4(p, 4, p, 4, bad, {1, 1}), kImgBadRange);
        EXPECT_EQ(ImgPremultiplyFC4(f, 16, f, 16, bad, {1, 1}), kImgBadRange);
    }
    EXPECT_EQ(pixel, (std::array<U8, 4>{1, 2, 3, 4}));
    EXPECT_EQ(real, (std::array<float, 4>{1, 2, 3, 4}));
}

}  // namespace
}  // namespace lumiset::test
