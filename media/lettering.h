#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace lumiset::media {

/// A line of text as how much of each pixel it covers, 0 to 255.
struct TextImage {
    int left = 0;  ///< of the picture's first pixel, from the line's beginning
    int top = 0;   ///< from the capitals' upper edge
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> coverage;

    /// Of a pixel of the picture, 0 to 1; none outside.
    [[nodiscard]] float at(int x, int y) const;
};

/// Draws UTF-8 text, `height` the height of its capitals in pixels. `offset` moves it by parts of a pixel.
[[nodiscard]] TextImage drawText(std::string_view text, float height, float offset = 0);
/// Width of the line in pixels.
[[nodiscard]] float textWidth(std::string_view text, float height);

}  // namespace lumiset::media
