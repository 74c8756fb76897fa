#include "frame/operations/flip.h"

#include <algorithm>
#include <cstring>

namespace lumiset {
namespace {

bool hasPixels(const Frame& frame) {
    return frame.Data() != nullptr && frame.Width() > 0 && frame.Height() > 0 && frame.BytesPerPixel() > 0;
}

std::size_t rowBytes(const Frame& frame) {
    return static_cast<std::size_t>(frame.Width()) * static_cast<std::size_t>(frame.BytesPerPixel());
}

}  // namespace

bool FrameFlipVertical(Frame& frame) noexcept {
    if (!hasPixels(frame)) {
        return false;
    }
    const std::size_t bytes = rowBytes(frame);
    for (std::int32_t top = 0, bottom = frame.Height() - 1; top < bottom; ++top, --bottom) {
        std::uint8_t* row = frame.PixelAddress(0, top, 0);
        std::swap_ranges(row, row + bytes, frame.PixelAddress(0, bottom, 0));
    }
    return true;
}

bool FrameFlipVerticalCopy(const Frame& src, Frame& dst) noexcept {
    if (!hasPixels(src) || !hasPixels(dst)) {
        return false;
    }
    const std::size_t bytes = std::min(rowBytes(src), rowBytes(dst));
    const std::int32_t rows = std::min(src.Height(), dst.Height());
    for (std::int32_t y = 0; y < rows; ++y) {
        std::memcpy(dst.PixelAddress(0, rows - 1 - y, 0), src.PixelAddress(0, y, 0), bytes);
    }
    return true;
}

}  // namespace lumiset
