#pragma once

#include <cmath>
#include <vector>

#include "tests/support/picture.h"

namespace lumiset::test {

using Rows = std::vector<std::vector<int>>;

/// The alpha of a rectangle, in whole levels.
inline Rows alphaOf(const Picture& picture, std::int32_t left, std::int32_t top, std::int32_t width,
                    std::int32_t height) {
    Rows rows;
    for (std::int32_t y = top; y < top + height; ++y) {
        auto& row = rows.emplace_back();
        for (std::int32_t x = left; x < left + width; ++x) {
            row.push_back(static_cast<int>(std::lround(picture.get(x, y, kAlpha))));
        }
    }
    return rows;
}

}  // namespace lumiset::test
