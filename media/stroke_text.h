#pragma once

#include <string_view>
#include <vector>

#include "media/scene_canvas.h"

namespace lumiset::media {

/// A letter as straight strokes, to be drawn with a round pen of any width.
struct TextLetter {
    struct Stroke {
        Vec from, to;
    };
    Box box;  ///< around the strokes' middle lines
    std::vector<Stroke> strokes;

    /// Distance from a point to the nearest stroke's middle line.
    [[nodiscard]] float distanceTo(Vec p) const;
};

/// Places a line of text. `origin` is the top left of the first capital, `height` that of capitals; some letters reach
/// a third of it below them. Characters that this alphabet does not have are drawn as boxes.
[[nodiscard]] std::vector<TextLetter> layOutText(std::string_view text, Vec origin, float height);
/// Width of the text in the unit of `height`.
[[nodiscard]] float textWidth(std::string_view text, float height);

}  // namespace lumiset::media
