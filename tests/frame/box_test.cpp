#include "frame/primitives/box.h"

#include <cmath>
#include <random>

#include "tests/frame/filter_support.h"

namespace lumiset {
namespace {

using test::framesAgree;
using test::GuardedFrame;
using test::onEveryInstructionSet;

template <class T>
void boxPlainly(const GuardedFrame& src, GuardedFrame& expected, ImgSize size, ImgSize mask, std::int32_t anchorX,
                std::int32_t anchorY) {
    const std::int64_t area = std::int64_t{mask.width} * mask.height;
    for (std::int32_t y = 0; y < size.height; ++y) {
        for (std::int32_t x = 0; x < size.width; ++x) {
            double sum = 0;
            for (std::int64_t i = 0; i < area; ++i) {
                const auto column = static_cast<std::int32_t>(i % mask.width);
                const auto row = static_cast<std::int32_t>(i / mask.width);
                const auto value = static_cast<double>(src.row<T>(y + row)[x + column]);
                sum += std::isfinite(value) ? value : 0.0;
            }
            const double mean = sum / static_cast<double>(area);
            expected.row<T>(y + anchorY)[x + anchorX] =
                sizeof(T) == 1 ? static_cast<T>((static_cast<std::int64_t>(sum) + area / 2) / area)
                               : static_cast<T>(mean);
        }
    }
}

ImgStatus runBox(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep, ImgSize size,
                 ImgSize mask, std::int32_t ax, std::int32_t ay) {
    return dst == src ? ImgBoxInPlace8C1(dst, dstStep, size, mask, ax, ay)
                      : ImgBox8C1(src, srcStep, dst, dstStep, size, mask, ax, ay);
}
ImgStatus runBox(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size, ImgSize mask,
                 std::int32_t ax, std::int32_t ay) {
    return dst == src ? ImgBoxInPlaceFC1(dst, dstStep, size, mask, ax, ay)
                      : ImgBoxFC1(src, srcStep, dst, dstStep, size, mask, ax, ay);
}

template <class T>
void expectBox(ImgSize size, ImgSize mask, std::mt19937& random) {
    const std::int32_t format = sizeof(T) == 1 ? kFormatMask8 : kFormatMaskFloat;
    const std::int32_t width = size.width + mask.width - 1;
    const std::int32_t height = size.height + mask.height - 1;
    const auto ax = static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(mask.width));
    const auto ay = static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(mask.height));
    SCOPED_TRACE(::testing::Message() << size.width << " x " << size.height << ", window " << mask.width << " x "
                                      << mask.height << " at " << ax << ", " << ay << ", format " << format);
    GuardedFrame src(width, height, format, 8);
    GuardedFrame dst(width, height, format);
    src.randomize(random);
    dst.randomize(random);
    if (sizeof(T) == sizeof(float)) {
        src.row<T>(height / 2)[width / 2] = static_cast<T>(std::nanf(""));
    }
    GuardedFrame expected(width, height, format);
    expected.restore(dst.bytes());
    boxPlainly<T>(src, expected, size, mask, ax, ay);
    const float tolerance = sizeof(T) == 1 ? 0.0F : 2e-7F;
    ASSERT_EQ(
        runBox(src.row<T>(ay) + ax, src.frame.Stride(), dst.row<T>(ay) + ax, dst.frame.Stride(), size, mask, ax, ay),
        kImgOk);
    ASSERT_TRUE(framesAgree(dst, expected, tolerance));
    // In place: the same inside, everything else as it was.
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const bool inside = x >= ax && x < ax + size.width && y >= ay && y < ay + size.height;
            if (!inside) {
                const T value = src.row<T>(y)[x];
                const T finite = value == value ? value : T{0};
                expected.row<T>(y)[x] = finite;
                dst.row<T>(y)[x] = finite;
            } else {
                dst.row<T>(y)[x] = src.row<T>(y)[x] == src.row<T>(y)[x] ? src.row<T>(y)[x] : T{0};
            }
        }
    }
    T* place = dst.row<T>(ay) + ax;
    ASSERT_EQ(runBox(place, dst.frame.Stride(), place, dst.frame.Stride(), size, mask, ax, ay), kImgOk);
    ASSERT_TRUE(framesAgree(dst, expected, tolerance));
}

TEST(ImgBox, IsTheMeanOfTheWindow) {
    onEveryInstructionSet([] {
        std::mt19937 random(21);
        for (std::int32_t size = 1; size <= 70; ++size) {
            const auto draw = [&](std::uint32_t most) { return static_cast<std::int32_t>(random() % most + 1); };
            expectBox<std::uint8_t>({size, draw(20)}, {draw(12), draw(12)}, random);
            expectBox<float>({draw(20), size}, {draw(12), draw(12)}, random);
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
        // Windows of sums beyond what single precision divides exactly.
        expectBox<std::uint8_t>({9, 6}, {65, 65}, random);
        expectBox<std::uint8_t>({5, 5}, {500, 300}, random);
    });
}

TEST(ImgBox, RoundsHalvesUp) {
    std::uint8_t plane[2] = {0, 1};
    std::uint8_t out = 9;
    ASSERT_EQ(ImgBox8C1(plane, 2, &out, 1, {1, 1}, {2, 1}, 0, 0), kImgOk);
    EXPECT_EQ(out, 1);
}

TEST(ImgBox, NamesWhatIsWrong) {
    std::uint8_t plane[64] = {};
    float floats[64] = {};
    EXPECT_EQ(ImgBox8C1(plane, 8, nullptr, 8, {4, 4}, {3, 3}, 1, 1), kImgNullPointer);
    EXPECT_EQ(ImgBoxInPlace8C1(plane, 8, {4, 0}, {3, 3}, 1, 1), kImgBadSize);
    EXPECT_EQ(ImgBoxFC1(floats, 8, floats, 16, {4, 4}, {3, 3}, 1, 1), kImgBadStep);
    EXPECT_EQ(ImgBox8C1(plane, 8, plane, 8, {4, 4}, {0, 3}, 0, 1), kImgBadMaskSize);
    EXPECT_EQ(ImgBoxInPlaceFC1(floats, 16, {4, 4}, {3, 3}, 3, 1), kImgBadMaskSize);
    EXPECT_EQ(ImgBox8C1(plane, 8, plane, 8, {4, 4}, {4096, 4096}, 0, 0), kImgBadMaskSize);
}

}  // namespace
}  // namespace lumiset
