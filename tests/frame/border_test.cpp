#include "frame/primitives/border.h"

#include <algorithm>
#include <cstring>

#include "frame/operations/geometry.h"
#include "tests/frame/operation_support.h"
#include "tests/frame/primitives_support.h"

namespace lumiset::test {
namespace {

/// A source within the region's size; none is cut off at the size that the argument checks are tried with, 5 x 3.
struct Insets {
    explicit Insets(ImgSize size)
        : left(std::min(size.width % 5, size.width - 1)),
          top(std::min(size.height % 3, size.height - 1)),
          source{std::max(size.width - left - size.width % 5 / 2, std::min(size.width, 1)),
                 std::max(size.height - top - size.height % 3 / 2, std::min(size.height, 1))} {
        left = std::max(left, 0);
        top = std::max(top, 0);
    }
    std::int32_t left;
    std::int32_t top;
    ImgSize source;
};

template <class T, class Primitive>
std::string findBorderFault(PlaneSpec spec, const Primitive& primitive) {
    const PlaneSpec specs[] = {spec, spec};
    return findFault<T, T>(
        specs,
        [&](ImgSize size, Plane<T> src, Plane<T> dst) {
            const Insets in(size);
            return primitive(src.data, src.step, in.source, dst.data, dst.step, in.left, in.top, size);
        },
        [&](ImgSize size, Plane<T> src, Plane<T> dst) {
            const Insets in(size);
            for (std::int32_t y = 0; y < size.height; ++y) {
                for (std::int32_t x = 0; x < size.width; ++x) {
                    const std::int32_t fromX = std::clamp(x - in.left, 0, in.source.width - 1);
                    const std::int32_t fromY = std::clamp(y - in.top, 0, in.source.height - 1);
                    std::memcpy(dst.row(y) + x * spec.samples, src.row(fromY) + fromX * spec.samples,
                                sizeof(T) * static_cast<std::size_t>(spec.samples));
                }
            }
        });
}

TEST(ReplicateBorder, RepeatsTheNearestEdgePixel) {
    EXPECT_EQ(findBorderFault<std::uint8_t>(kOneChannel, ImgReplicateBorder8C1), "");
    EXPECT_EQ(findBorderFault<std::uint8_t>(kAllFour, ImgReplicateBorder8C4), "");
    EXPECT_EQ(findBorderFault<float>(kOneChannel, ImgReplicateBorderFC1), "");
    EXPECT_EQ(findBorderFault<float>(kAllFour, ImgReplicateBorderFC4), "");
}

TEST(ReplicateBorder, RefusesASourceThatDoesNotFit) {
    const std::uint8_t src[4] = {1, 2, 3, 4};
    std::uint8_t dst[9] = {};
    for (const auto& [left, top] : {std::pair{2, 0}, {0, 2}, {-1, 0}, {0, -1}, {2147483647, 0}}) {
        EXPECT_EQ(ImgReplicateBorder8C1(src, 2, {2, 2}, dst, 3, left, top, {3, 3}), kImgBadSize);
    }
    EXPECT_TRUE(std::all_of(dst, dst + 9, [](int v) { return v == 0; }));
}

TEST(FrameReplicateBorder, OverwritesTheRingOfOneFrameWithItsInside) {
    for (const std::int32_t format : kAllFormats) {
        GuardedFrame frame(5, 4, format);
        for (std::int32_t y = 0; y < 4; ++y) {
            for (std::int32_t i = 0; i < frame.samplesPerRow(); ++i) {
                setSample(frame, y, i, 10 * y + i / frame.channels());
            }
        }
        ASSERT_TRUE(FrameReplicateBorder(frame.frame, frame.frame, 2, 1));
        for (std::int32_t i = 0; i < frame.samplesPerRow(); ++i) {
            for (std::int32_t y = 0; y < 4; ++y) {
                EXPECT_EQ(sampleAt(frame, y, i), y < 2 ? 12 : 22) << "format " << format;
            }
        }
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(FrameReplicateBorder, WritesToAnotherFrameOfTheSameSizeOnly) {
    std::mt19937 random(1);
    GuardedFrame src(9, 7, kFormatBgra8);
    GuardedFrame dst(9, 7, kFormatBgra8, 8);
    GuardedFrame expected(9, 7, kFormatBgra8);
    src.randomize(random);
    expected.restore(src.bytes());
    ASSERT_TRUE(FrameReplicateBorder(expected.frame, expected.frame, 4, 3));
    ASSERT_TRUE(FrameReplicateBorder(src.frame, dst.frame, 4, 3));
    EXPECT_TRUE(framesAgree(dst, expected));

    GuardedFrame larger(10, 7, kFormatBgra8);
    const auto bytes = larger.bytes();
    EXPECT_FALSE(FrameReplicateBorder(src.frame, larger.frame, 1, 1));
    EXPECT_EQ(larger.bytes(), bytes);
    const auto before = dst.bytes();
    for (const auto& [left, top] : {std::pair{5, 0}, {0, 4}, {-1, 0}, {0, -1}, {2147483647, 0}}) {
        EXPECT_FALSE(FrameReplicateBorder(src.frame, dst.frame, left, top));
    }
    EXPECT_EQ(dst.bytes(), before);
    expectRefusesUnsoundFrames([](const Frame& a, Frame& b) { return FrameReplicateBorder(a, b, 0, 0); });
}

}  // namespace
}  // namespace lumiset::test
