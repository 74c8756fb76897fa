#include "frame/primitives/warp.h"

#include <array>
#include <cmath>
#include <numbers>

#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

struct Point {
    double x;
    double y;
};

ImgStatus warpAffine(const GuardedFrame& src, GuardedFrame& dst, const double (*matrix)[3], std::uint32_t code) {
    const auto warp = src.channels() == 1 ? ImgWarpAffine8C1 : ImgWarpAffine8C4;
    const Frame& from = src.frame;
    const Frame& to = dst.frame;
    return warp(from.Data(), from.Stride(), {from.Width(), from.Height()}, to.Data(), to.Stride(), matrix, code,
                {to.Width(), to.Height()});
}

/// Linear interpolation inside the picture.
double sampleLinear(const GuardedFrame& src, Point at, std::int32_t channel) {
    const double x = std::clamp(at.x, 0.0, src.frame.Width() - 1.0);
    const double y = std::clamp(at.y, 0.0, src.frame.Height() - 1.0);
    const auto column = static_cast<std::int32_t>(x);
    const auto row = static_cast<std::int32_t>(y);
    const auto pixel = [&](std::int32_t i, std::int32_t j) {
        return sampleAt(src, std::min(j, src.frame.Height() - 1),
                        std::min(i, src.frame.Width() - 1) * src.channels() + channel);
    };
    const double fx = x - column;
    const double fy = y - row;
    return (pixel(column, row) * (1 - fx) + pixel(column + 1, row) * fx) * (1 - fy) +
           (pixel(column, row + 1) * (1 - fx) + pixel(column + 1, row + 1) * fx) * fy;
}

TEST(WarpAffine, SamplesWithinTheSourceAndBlendsItsEdge) {
    const double matrix[2][3] = {{0.9, -0.6, 20.2}, {0.7, 1.1, -3.4}};
    const double det = 0.9 * 1.1 + 0.6 * 0.7;
    onEveryInstructionSet([&] {
        std::mt19937 random(4);
        for (const std::int32_t format :
             {static_cast<std::int32_t>(kFormatBgra8), static_cast<std::int32_t>(kFormatMask8)}) {
            for (const std::uint32_t code : {std::uint32_t{kImgNearest}, std::uint32_t{kImgLinear}, 0x80000002U}) {
                GuardedFrame src(31, 27, format);
                GuardedFrame dst(53, 47, format);
                src.randomize(random);
                dst.randomize(random);
                GuardedFrame before(53, 47, format);
                before.restore(dst.bytes());
                ASSERT_EQ(warpAffine(src, dst, matrix, code), kImgOk);
                EXPECT_TRUE(dst.guardsIntact());
                for (std::int32_t y = 0; y < 47; ++y) {
                    for (std::int32_t i = 0; i < dst.samplesPerRow(); ++i) {
                        const std::int32_t x = i / dst.channels();
                        const Point at{(1.1 * (x - 20.2) + 0.6 * (y + 3.4)) / det,
                                       (0.9 * (y + 3.4) - 0.7 * (x - 20.2)) / det};
                        // Lengths in the target of one step in the source's directions.
                        const double alongX = det / std::hypot(1.1, 0.6);
                        const double alongY = det / std::hypot(0.9, 0.7);
                        const double sides[4] = {at.x * alongX, (30 - at.x) * alongX, at.y * alongY,
                                                 (26 - at.y) * alongY};
                        double coverage = 1;
                        for (const double d : sides) {
                            coverage *= std::clamp(1 + d, 0.0, 1.0);
                        }
                        const bool inside = coverage >= 1;
                        const Point sampled =
                            code == kImgNearest ? Point{std::floor(at.x + 0.5), std::floor(at.y + 0.5)} : at;
                        const double value = sampleLinear(src, sampled, i % dst.channels());
                        const double old = sampleAt(before, y, i);
                        const double share = (code & kImgSmoothEdge) != 0 ? coverage : inside ? 1 : 0;
                        const double error = std::abs(sampleAt(dst, y, i) - (value * share + old * (1 - share)));
                        ASSERT_TRUE(error <= 1.1) << "code " << code << ", " << x << ", " << y;
                    }
                }
            }
        }
    });
}

TEST(WarpAffine, RefusesWhatItCannotInvert) {
    std::uint8_t src[16] = {};
    std::uint8_t dst[16] = {};
    const double flat[2][3] = {{1, 2, 0}, {2, 4, 0}};
    const double same[2][3] = {{1, 0, 0}, {0, 1, 0}};
    EXPECT_EQ(ImgWarpAffine8C1(src, 4, {4, 4}, dst, 4, flat, kImgLinear, {4, 4}), kImgBadRange);
    EXPECT_EQ(ImgWarpAffine8C1(src, 4, {4, 4}, dst, 4, same, 3, {4, 4}), kImgBadRange);
    EXPECT_EQ(ImgWarpAffine8C1(src, 4, {4, 4}, dst, 4, same, kImgCubic, {4, 4}), kImgBadRange);
    EXPECT_EQ(ImgWarpAffine8C1(src, 4, {4, 4}, dst, 4, nullptr, kImgLinear, {4, 4}), kImgNullPointer);
    EXPECT_EQ(ImgWarpAffine8C4(src, 4, {1, 4}, dst, 3, same, kImgLinear, {1, 4}), kImgBadStep);
}

TEST(WarpAffine, IsTheSameOnEveryInstructionSet) {
    std::mt19937 random(5);
    const double matrix[2][3] = {{1.3, -0.4, 12.2}, {0.5, 1.2, -3.4}};
    for (const std::int32_t format : {kFormatBgra8, kFormatMask8}) {
        GuardedFrame src(41, 33, format);
        src.randomize(random);
        std::vector<std::uint8_t> first;
        onEveryInstructionSet([&] {
            GuardedFrame dst(67, 53, format);
            ASSERT_EQ(warpAffine(src, dst, matrix, kImgLinear | kImgSmoothEdge), kImgOk);
            first = first.empty() ? dst.bytes() : first;
            EXPECT_EQ(dst.bytes(), first) << "format " << format;
        });
    }
}

}  // namespace
}  // namespace lumiset::test
