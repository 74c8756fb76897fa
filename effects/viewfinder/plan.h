#pragma once

// Where everything of the viewfinder stands in a frame, for both renderers. Positions are pixels from the top left
// corner, y down.

#include <array>
#include <cstdint>
#include <span>

#include "effects/effect.h"
#include "effects/viewfinder/strokes.h"

namespace lumiset {

/// The parameters as the renderers use them.
struct ViewfinderSettings {
    std::uint32_t tintColor;
    float tint;
    bool blackAndWhite;
    bool sharpen;
    float resolution;
    bool record;
    bool battery;
    bool safeArea;
    bool focusBox;
    bool counter;
    bool outline;
    std::int32_t startSeconds;  ///< of the counter, within a day
};

/// The pictures of the marks: strips of cells side by side.
enum class Artwork : std::uint8_t { kDigits, kSeparators, kRecord, kBattery, kLight };
inline constexpr std::size_t kArtworkCount = 5;

struct ArtworkCells {
    std::uint32_t resource;  ///< number of the picture; 0 where it is drawn from its strokes
    std::int32_t width;      ///< of one cell
    std::int32_t height;
    std::span<const StrokeShape> shapes;  ///< one for each cell
    float share;                          ///< of the font's height
};
/// What a picture holds.
const ArtworkCells& artworkCells(Artwork artwork);

/// What the scaled pictures depend on.
struct FontSize {
    std::int32_t height;  ///< rows of a whole frame; even on fields, which have half of them
    bool isField;
    float aspect;  ///< of a pixel of a whole frame

    bool operator==(const FontSize&) const = default;
};
/// The font of a frame; of height 0 where it is too low for any.
FontSize fontSize(const FrameFacts& facts);

struct CellSize {
    std::int32_t width;
    std::int32_t height;
};
/// The size of a picture's scaled cells, at least 1 by 1.
CellSize scaledCell(Artwork artwork, const FontSize& font);

/// Taps of the triangle by which a picture is blurred in a direction before it is scaled down there, `scale` of its
/// pixels to one. Odd, so that nothing moves; 1 where it is not blurred.
std::int32_t fontBlurSize(float scale);

/// A glyph or mark: one cell of a picture, in one colour, 0xAABBGGRR.
struct OverlayMark {
    Artwork artwork;
    std::int32_t cell;
    std::int32_t x;
    std::int32_t y;
    std::uint32_t color;
};
inline constexpr std::uint32_t kOutlineColor = 0xFF000000U;
inline constexpr std::uint32_t kMarkColor = 0xFFFFFFFFU;
inline constexpr std::uint32_t kLightColor = 0xFF0000FFU;

/// Rectangles of one indicator, inside the frame. Their shadows are drawn before them all.
struct OverlayLines {
    std::array<PixelRect, 8> rects;  ///< right and bottom are the first column and row outside
    std::size_t count = 0;

    [[nodiscard]] std::span<const PixelRect> all() const { return std::span(rects).first(count); }
};

/// The overlay of a frame, in the order of drawing: the lines, then the marks.
struct OverlayPlan {
    std::int32_t shadow;  ///< offset of everything's black copy to the right and down; 0 for none
    OverlayLines safeArea;
    OverlayLines focusBox;
    FontSize font;
    std::array<OverlayMark, 11> marks;
    std::size_t markCount = 0;

    [[nodiscard]] std::span<const OverlayMark> allMarks() const { return std::span(marks).first(markCount); }
    [[nodiscard]] bool isEmpty() const { return safeArea.count + focusBox.count + markCount == 0; }
};
OverlayPlan planOverlay(const ViewfinderSettings& settings, const FrameFacts& facts);

/// Whether the record light is lit: 0.8 of every 1.1 seconds.
bool isLit(double timeSeconds);

/// The digits of hours, minutes and seconds that the counter shows.
std::array<std::int32_t, 6> counterDigits(std::int32_t startSeconds, double timeSeconds);

/// The grid that the picture is reduced to; as large as the frame where nothing is reduced.
CellSize resolutionGrid(float resolution, std::int32_t width, std::int32_t height);

/// What the red, green and blue of a black and white picture are multiplied with, 0..1.
std::array<float, 3> tintFactors(std::uint32_t tintColor, float tint);

}  // namespace lumiset
