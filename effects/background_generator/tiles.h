#pragma once

// Where the Background Generator's tiles lie. The picture becomes a pattern that repeats without a seam: its right and
// lower ends are faded into its left and upper ones, so a period is shorter than the picture by the width of the fade.
// Through a window on this endless pattern, as large as the frame and a margin for the blur, the viewer looks. What
// both renderers derive from the settings stands here, and the processor's tiling.

#include <cstdint>

#include "frame/frame.h"
#include "frame/memory_allocator.h"

namespace lumiset {

/// Parts of a picture's side that Cross Fade 1 fades into each other.
inline constexpr float kWidestBand = 0.25F;

/// One direction of the tiling, in stored pixels.
struct TileAxis {
    std::int32_t length;  ///< of the frame
    std::int32_t margin;  ///< by which the window is longer at each end
    std::int32_t band;    ///< pixels of the picture that are cross-faded
    std::int32_t period;  ///< of the pattern: length - band, at least 1
    double first;         ///< position of the window's first pixel centre in the pattern, 0 <= first < period
    double step;          ///< of the pattern for each pixel: 1 / magnification

    [[nodiscard]] std::int32_t windowLength() const { return length + 2 * margin; }
    /// Pixels of the window are pixels of the pattern.
    [[nodiscard]] bool isShift() const;
};

/// `position` is the point of the pattern, in periods, that stands in the middle of the frame; `rowPhase` is how far
/// the rows of a field lie from the middle of the space that they fill, in rows (0 for frames and columns).
TileAxis tileAxis(std::int32_t length, std::int32_t margin, float crossFade, float magnify, double position,
                  double rowPhase);

/// Fills `window` (of the axes' window lengths and the source's format) with the pattern that `source` makes.
bool fillWindow(const Frame& source, Frame& window, const TileAxis& columns, const TileAxis& rows,
                MemoryAllocator& allocator) noexcept;

/// The point that stands in the middle at a time, in periods, each 0 <= x < 1. `angle` is in turns: the picture
/// drifts to the right at 0, upwards at 0.25, to the left at 0.5, downwards at 0.75. Speed 1 is two periods a second.
struct PatternPosition {
    double x;
    double y;
};
PatternPosition positionAt(double timeSeconds, float angle, float speed, float startX, float startY);

/// A triangular blur of `taps` pixels along one axis, done on a picture reduced by `factor` where it would be long.
/// The reduced one has the same variance as the whole, counting what the reduction and the way back soften.
struct ReducedBlur {
    std::int32_t factor;  ///< 1: nothing is reduced, and the blur is exact
    std::int32_t length;  ///< of the reduced window
    float halfWidth;      ///< of the triangle, in reduced pixels
    float centre;         ///< of the triangle: before the pixel for an even number of taps
};
ReducedBlur reducedBlur(std::int32_t taps, std::int32_t windowLength);

}  // namespace lumiset
