#pragma once

#include <cstdint>
#include <span>

#include "effects/progressive_stretch/stretch_curve.h"
#include "frame/frame.h"

namespace lumiset {

/// A sample between two neighbouring columns or rows.
struct StretchTap {
    std::int32_t first;
    float along;  ///< 0..1 from `first` to the next
};

/// Where place `at` of `size` lies in a picture of `sourceSize`, which fills it by linear interpolation.
StretchTap resizeTap(std::int32_t at, std::int32_t size, std::int32_t sourceSize);

struct StretchJob {
    const Frame& source;
    Frame& destination;  ///< of the source's size and colour format
    StretchRegion region;
    std::span<const StretchTap> resized;    ///< for each column of the frame, its place in the region
    std::span<const StretchTap> stretched;  ///< for each column of the result, its place in the resized picture
};

/// Resizes the region to the whole frame and moves its columns, a row at a time. False when there is no memory.
[[nodiscard]] bool stretchRows(const StretchJob& job, MemoryAllocator& allocator) noexcept;

}  // namespace lumiset
