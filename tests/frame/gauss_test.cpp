#include "frame/primitives/gauss.h"

#include <random>

#include "tests/frame/filter_support.h"

namespace lumiset {
namespace {

using test::framesAgree;
using test::GuardedFrame;
using test::onEveryInstructionSet;

template <class T>
void expectGauss(std::int32_t width, std::int32_t height, std::int32_t code, std::mt19937& random) {
    const std::int32_t format = sizeof(T) == 1 ? kFormatMask8 : kFormatMaskFloat;
    const std::int32_t radius = code == 33 ? 1 : 2;
    const std::int32_t weights[2][5] = {{1, 2, 1, 0, 0}, {1, 4, 6, 4, 1}};
    const std::int32_t total = code == 33 ? 16 : 256;
    GuardedFrame src(width + 2 * radius, height + 2 * radius, format, 8);
    GuardedFrame dst(width, height, format);
    GuardedFrame expected(width, height, format);
    src.randomize(random);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            double sum = 0;
            for (std::int32_t j = 0; j <= 2 * radius; ++j) {
                for (std::int32_t i = 0; i <= 2 * radius; ++i) {
                    sum +=
                        static_cast<double>(src.row<T>(y + j)[x + i]) * weights[radius - 1][i] * weights[radius - 1][j];
                }
            }
            expected.row<T>(y)[x] = static_cast<T>(sizeof(T) == 1 ? (sum + total / 2) / total : sum / total);
        }
    }
    SCOPED_TRACE(::testing::Message() << width << " x " << height << ", code " << code << ", format " << format);
    const T* from = src.row<T>(radius) + radius;
    if constexpr (sizeof(T) == 1) {
        ASSERT_EQ(ImgGauss8(from, src.frame.Stride(), dst.row<T>(0), dst.frame.Stride(), {width, height}, code),
                  kImgOk);
    } else {
        ASSERT_EQ(ImgGaussF(from, src.frame.Stride(), dst.row<T>(0), dst.frame.Stride(), {width, height}, code),
                  kImgOk);
    }
    ASSERT_TRUE(framesAgree(dst, expected, sizeof(T) == 1 ? 0.0F : 5e-7F));
}

TEST(ImgGauss, IsTheBinomialKernel) {
    onEveryInstructionSet([] {
        std::mt19937 random(31);
        for (std::int32_t size = 1; size <= 70; ++size) {
            for (const std::int32_t code : {33, 55}) {
                const auto other = static_cast<std::int32_t>(random() % 12 + 1);
                expectGauss<std::uint8_t>(size, other, code, random);
                expectGauss<float>(other, size, code, random);
                expectGauss<float>(size, other, code, random);
            }
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
        expectGauss<std::uint8_t>(2051, 3, 33, random);
        expectGauss<float>(1030, 3, 55, random);
    });
}

TEST(ImgGauss, RefusesOtherMasks) {
    std::uint8_t plane[64] = {};
    std::uint8_t out[16] = {};
    EXPECT_EQ(ImgGauss8(plane + 18, 8, out, 4, {4, 4}, 44), kImgBadMaskSize);
    EXPECT_EQ(ImgGauss8(plane + 18, 8, out, 3, {4, 4}, 33), kImgBadStep);
    EXPECT_EQ(ImgGauss8(nullptr, 8, out, 4, {4, 4}, 33), kImgNullPointer);
}

}  // namespace
}  // namespace lumiset
