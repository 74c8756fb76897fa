#pragma once

// Whether a frame record can be worked on: the one answer that effects, frame operations and hosts share.

#include <cstdint>
#include <cstdlib>
#include <limits>

#include "host/pixel_format.h"
#include "host/records.h"

namespace lumiset {

/// True when rows of `bytesPerPixel` can be walked in the record's memory, whatever its format says.
inline bool holdsRows(const VideoFrameDesc* frame, std::int32_t bytesPerPixel) {
    if (frame == nullptr || frame->data == nullptr || frame->width < 1 || frame->height < 1 || bytesPerPixel < 1) {
        return false;
    }
    const std::int64_t stride = std::abs(std::int64_t{frame->stride});
    return stride >= std::int64_t{frame->width} * bytesPerPixel && stride <= std::numeric_limits<std::int32_t>::max();
}

/// True for a frame that can be read or written as its record says: its rows fit, its bytes per pixel are those of its
/// format, and float samples lie at multiples of four bytes, on which vector code may rely.
inline bool isSound(const VideoFrameDesc* frame) {
    if (frame == nullptr || frame->bytesPerPixel != formatBytesPerPixel(frame->format) ||
        !holdsRows(frame, frame->bytesPerPixel)) {
        return false;
    }
    return !isFloatFormat(frame->format) ||
           (reinterpret_cast<std::uintptr_t>(frame->data) % sizeof(float) == 0 && frame->stride % 4 == 0);
}

}  // namespace lumiset
