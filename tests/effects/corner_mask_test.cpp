// The corner-pinned mask before its feather, against small masks drawn by hand and the curves' equation.

#include "effects/corner_mask/corner_mask.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace lumiset {
namespace {

using Rows = std::vector<std::string>;

/// '#' outside, '.' inside, 'X' where rectangles overlap.
Rows traced(const CornerShape& shape, std::int32_t width, std::int32_t height) {
    MemoryAllocator heap;
    CornerOutline outline(heap);
    EXPECT_TRUE(outline.trace(shape, width, height));
    Rows rows(static_cast<std::size_t>(height), std::string(static_cast<std::size_t>(width), '.'));
    for (const PixelRect& rect : outline.outside()) {
        for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
            for (std::int32_t x = rect.left; x < rect.right; ++x) {
                char& pixel = rows.at(static_cast<std::size_t>(y)).at(static_cast<std::size_t>(x));
                pixel = pixel == '.' ? '#' : 'X';
            }
        }
    }
    return rows;
}

CornerShape rectangle(float left, float top, float right, float bottom, float curve = 0.0F) {
    return {{left, top}, {right, top}, {left, bottom}, {right, bottom}, curve};
}

TEST(CornerOutline, LeavesTheInsideOfARectangleWithoutItsOutline) {
    const Rows expected = {"##########",  //
                           "##########",  //
                           "###.....##",  //
                           "###.....##",  //
                           "###.....##",  //
                           "##########"};
    EXPECT_EQ(traced(rectangle(0.2F, 0.4F, 0.8F, 0.7F), 10, 6), expected);
    // The whole frame: its last column and row are the outline.
    EXPECT_EQ(traced(rectangle(0.0F, 0.0F, 1.0F, 1.0F), 5, 3), Rows(3, "#...#"));
}

TEST(CornerOutline, DrawsOnePixelInEachRowOfASlantedSide) {
    // From column 3 to column 1 over four rows: 3, 2.33, 1.67, 1.
    const CornerShape slanted{{0.375F, 0.25F}, {0.75F, 0.25F}, {0.125F, 0.625F}, {0.75F, 0.625F}, 0.0F};
    const Rows expected = {"########",  //
                           "########",  //
                           "####..##",  //
                           "###...##",  //
                           "###...##",  //
                           "##....##",  //
                           "########",  //
                           "########"};
    EXPECT_EQ(traced(slanted, 8, 8), expected);
}

TEST(CornerOutline, KeepsWhatTheRowsOfATwistedShapeLeave) {
    const CornerShape hourglass{{0.0F, 0.0F}, {1.0F, 0.0F}, {1.0F, 1.0F}, {0.0F, 1.0F}, 0.0F};
    const Rows narrow = {"#.....#", "##...##", "###.###", "#######", "###.###", "##...##", "#.....#"};
    EXPECT_EQ(traced(hourglass, 7, 7), narrow);
    // Top and bottom sides crossed: their lines run through the inside.
    const CornerShape crossed{{0.0F, 0.0F}, {1.0F, 1.0F}, {0.0F, 1.0F}, {1.0F, 0.0F}, 0.0F};
    const Rows lines = {"#.....#", "##...##", "#.#.#.#", "#..#..#", "#.#.#.#", "##...##", "#.....#"};
    EXPECT_EQ(traced(crossed, 7, 7), lines);
}

TEST(CornerOutline, DegenerateShapesLeaveNothing) {
    const Rows nothing(5, "######");
    EXPECT_EQ(traced(rectangle(0.5F, 0.5F, 0.5F, 0.5F), 6, 5), nothing) << "all corners in one place";
    EXPECT_EQ(traced(rectangle(0.5F, 0.5F, 0.5F, 0.5F, 1.0F), 6, 5), nothing);
    EXPECT_EQ(traced(rectangle(0.0F, 0.0F, 0.0F, 1.0F), 6, 5), nothing) << "on the left edge";
    EXPECT_EQ(traced(rectangle(1.0F, 0.0F, 1.0F, 1.0F, 0.5F), 6, 5), nothing) << "on the right edge";
    EXPECT_EQ(traced(rectangle(0.4F, 0.0F, 0.5F, 1.0F), 6, 5), nothing) << "neighbouring columns";
    EXPECT_EQ(traced(rectangle(0.0F, 0.0F, 1.0F, 1.0F), 1, 1), Rows{"#"});
    EXPECT_EQ(traced(rectangle(0.0F, 0.0F, 1.0F, 1.0F), 2, 3), Rows(3, "##"));
}

/// How far inside a shape with rounded corners a point lies, about in pixels: a corner's curve, from (0, 1) through
/// (1, 1) to (1, 0) of its own square, is sqrt(1 - u) + sqrt(1 - v) = 1.
double distanceInside(double x, double y, double halfWidth, double halfHeight, double curve) {
    const double roundX = halfWidth * curve;
    const double roundY = halfHeight * curve;
    const double fromSide = std::min(halfWidth - std::abs(x), halfHeight - std::abs(y));
    const double u = (std::abs(x) - (halfWidth - roundX)) / roundX;
    const double v = (std::abs(y) - (halfHeight - roundY)) / roundY;
    if (!(u > 0.0 && v > 0.0) || fromSide < 0.0) {
        return fromSide;
    }
    const double value = std::sqrt(1.0 - u) + std::sqrt(1.0 - v) - 1.0;
    const double slopeX = 0.5 / std::sqrt(1.0 - u) / roundX;
    const double slopeY = 0.5 / std::sqrt(1.0 - v) / roundY;
    return value / std::hypot(slopeX, slopeY);
}

TEST(CornerOutline, RoundsTheCornersBySymmetricQuadraticCurves) {
    constexpr std::int32_t kSide = 400;
    for (const float curve : {0.25F, 0.6F, 1.0F}) {
        const Rows rows = traced(rectangle(0.125F, 0.25F, 0.875F, 0.75F, curve), kSide, kSide);
        int inside = 0;
        for (std::int32_t y = 0; y < kSide; ++y) {
            for (std::int32_t x = 0; x < kSide; ++x) {
                const bool in = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '.';
                inside += in ? 1 : 0;
                const double distance =
                    distanceInside(x - kSide / 2, y - kSide / 2, 0.375 * kSide, 0.25 * kSide, double{curve});
                // Lines of ten pixels and whole pixels instead of a curve; single pixels of its flat ends stay outside.
                const bool flat = std::abs(std::abs(y - kSide / 2) - 100) <= 1;
                ASSERT_FALSE(in && distance < -2.0) << x << "," << y << " curve " << curve;
                ASSERT_FALSE(!in && distance > 2.0 && !flat) << x << "," << y << " curve " << curve;
            }
        }
        EXPECT_GT(inside, 30000);
    }
}

TEST(CornerOutline, IsSymmetricToAPixelForSymmetricCorners) {
    // Mirrored about the corners' centre, column 150 and row 100. The curves' points are cut to whole pixels, so a
    // mirrored edge may lie a pixel beside the other.
    for (const float curve : {0.0F, 0.3F, 1.0F}) {
        const Rows rows = traced(rectangle(0.25F, 0.25F, 0.75F, 0.75F, curve), 300, 200);
        const auto hasNear = [&](std::size_t x, std::size_t y, char wanted) {
            const std::size_t reach = curve == 0.0F ? 0 : 1;
            for (std::size_t row = y - reach; row <= y + reach; ++row) {
                if (rows[row].substr(x - reach, 2 * reach + 1).find(wanted) != std::string::npos) {
                    return true;
                }
            }
            return false;
        };
        for (std::size_t y = 2; y < 198; ++y) {
            for (std::size_t x = 2; x < 298; ++x) {
                ASSERT_TRUE(hasNear(300 - x, y, rows[y][x])) << x << "," << y << " curve " << curve;
                ASSERT_TRUE(hasNear(x, 200 - y, rows[y][x])) << x << "," << y << " curve " << curve;
            }
        }
    }
}

FrameFacts facts(std::int32_t width, std::int32_t height, const FrameRenderInfo& info) {
    return {&info, 0.0, fieldMode(&info), isField(&info), width, height};
}

TEST(MaskFeather, BlursASmallerCopyBeyondThirtyPixels) {
    FrameRenderInfo info{};
    info.field = FrameRenderInfo::kWholeFrame;
    EXPECT_FALSE(maskFeather(0.0001F, facts(100, 60, info)).visible);
    const MaskFeather narrow = maskFeather(0.01F, facts(100, 60, info));
    EXPECT_EQ(narrow.blurWidth, 3.0F);
    EXPECT_EQ(narrow.copyWidth, 100);
    const MaskFeather widest = maskFeather(0.7499F, facts(100, 60, info));
    EXPECT_EQ(widest.copyWidth, 100);
    EXPECT_NEAR(widest.blurWidth, 30.0F, 0.01F);
    const MaskFeather scaled = maskFeather(1.0F, facts(100, 60, info));  // 40 pixels
    EXPECT_EQ(scaled.copyWidth, 75);
    EXPECT_EQ(scaled.copyHeight, 45);
    EXPECT_EQ(scaled.blurWidth, 30.0F);
    EXPECT_EQ(scaled.blurHeight, 30.0F);
    const MaskFeather smallest = maskFeather(1.0F, facts(20000, 3, info));
    EXPECT_EQ(smallest.copyHeight, 1);
}

TEST(MaskFeather, FollowsFieldsAndTheShapeOfPixels) {
    FrameRenderInfo info{};
    info.flags = FrameRenderInfo::kHasField | FrameRenderInfo::kHasPixelAspect;
    info.pixelAspect = 2.0;
    info.field = 0;
    const MaskFeather field = maskFeather(0.5F, facts(100, 60, info));  // 20 pixels, twice that on a field
    EXPECT_EQ(field.copyWidth, 75);
    EXPECT_EQ(field.blurWidth, 60.0F);
    EXPECT_EQ(field.blurHeight, 15.0F);
    info.field = FrameRenderInfo::kWholeFrame;
    const MaskFeather whole = maskFeather(0.5F, facts(100, 60, info));
    EXPECT_EQ(whole.copyWidth, 100);
    EXPECT_EQ(whole.blurWidth, 40.0F);
    EXPECT_EQ(whole.blurHeight, 20.0F);
    for (const double aspect : {1e-300, 1e-40, 1e300, HUGE_VAL, 0.0, std::nan("")}) {
        info.pixelAspect = aspect;
        const MaskFeather feather = maskFeather(1.0F, facts(1920, 1080, info));
        EXPECT_TRUE(feather.copyWidth >= 1 && feather.copyWidth <= 1920 && feather.copyHeight >= 1) << aspect;
        EXPECT_TRUE(feather.blurWidth >= 3.0F && feather.blurHeight >= 3.0F) << aspect;
    }
}

}  // namespace
}  // namespace lumiset
