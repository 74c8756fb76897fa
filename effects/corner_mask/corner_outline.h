#pragma once

// The outline of a shape that is pinned to four corners: four sides, and a quadratic Bezier curve around each corner.

#include <cstdint>
#include <span>

#include "frame/scratch_block.h"
#include "host/frame_processor.h"
#include "host/records.h"

namespace lumiset {

/// Corners are fractions of the frame with y down, 0..1.
struct CornerShape {
    ParamValue::Point topLeft;
    ParamValue::Point topRight;
    ParamValue::Point bottomLeft;
    ParamValue::Point bottomRight;
    float curve;  ///< 0..1: sharp corners to no straight run
};

/// Which pixels of a frame a shape keeps out.
///
/// The outline is drawn in whole pixels, one for each row that a line crosses, and in every row what lies before the
/// first and behind the last of them is outside. Where corners are crossed the outline also runs through the inside;
/// its own pixels count as outside. A row without outline is outside as a whole.
class CornerOutline {
public:
    explicit CornerOutline(MemoryAllocator& allocator) : m_memory(allocator) {}

    /// False when there is no memory.
    [[nodiscard]] bool trace(const CornerShape& shape, std::int32_t width, std::int32_t height) noexcept;

    /// Rectangles that do not overlap, from the top down.
    [[nodiscard]] std::span<const PixelRect> outside() const { return m_outside; }

private:
    ScratchBlock m_memory;
    std::span<const PixelRect> m_outside;
};

}  // namespace lumiset
