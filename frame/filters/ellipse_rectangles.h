#pragma once

// An ellipse of pixels as the rectangles that touch its staircase edge: with a column's reach getting shorter away
// from the middle, one rectangle for each of the few different reaches covers it. A maximum over a rectangle is
// that over blocks in its four corners; since the rectangles overlap, a block need not be wider than the columns that
// are new in its rectangle.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "frame/primitives/block_morphology.h"

namespace lumiset {

/// The largest distance from the anchor, along an axis with anchor `along`, at which the mask is still set when
/// `across` pixels away from the anchor `acrossAnchor` on the other axis. Anchors are at least 1.
inline std::int32_t ellipseReach(std::int32_t along, std::int32_t acrossAnchor, std::int32_t across) {
    const auto isSet = [&](std::int32_t distance) {
        const double a = along;
        const double b = acrossAnchor;
        const double x = distance;
        const double y = across;
        return x * x / (a * a) + y * y / (b * b) <= 1.0;
    };
    const double share =
        1.0 - static_cast<double>(across) * across / (static_cast<double>(acrossAnchor) * acrossAnchor);
    auto reach = std::min(along, static_cast<std::int32_t>(std::sqrt(std::max(0.0, share)) * along) + 2);
    while (reach > 0 && !isSet(reach)) {
        --reach;
    }
    return reach;
}

/// Fills `out`, which has room for maskWidth / 2 + 1, narrow and tall rectangles first. Returns their number.
inline std::int32_t ellipseRectangles(std::int32_t maskWidth, std::int32_t maskHeight, BlockRectangle* out) {
    const std::int32_t anchorX = maskWidth / 2;
    const std::int32_t anchorY = maskHeight / 2;
    std::int32_t count = 0;
    std::int32_t widthBefore = 0;
    for (std::int32_t x = 0; x <= anchorX; ++x) {
        const std::int32_t reach = ellipseReach(anchorY, anchorX, x);
        if (x < anchorX && ellipseReach(anchorY, anchorX, x + 1) == reach) {
            continue;  // the next column's rectangle holds this one
        }
        BlockRectangle& rectangle = out[count];
        rectangle.left = x;
        rectangle.right = std::min(x, maskWidth - 1 - anchorX);
        rectangle.up = reach;
        rectangle.down = std::min(reach, maskHeight - 1 - anchorY);
        const std::int32_t fresh = x + 1 - widthBefore;
        rectangle.blockWidthLog =
            count == 0 ? floorLog2(rectangle.left + rectangle.right + 1) : (fresh == 1 ? 0 : floorLog2(fresh - 1) + 1);
        rectangle.blockHeightLog = floorLog2(rectangle.up + rectangle.down + 1);
        widthBefore = x + 1;
        ++count;
    }
    return count;
}

}  // namespace lumiset
