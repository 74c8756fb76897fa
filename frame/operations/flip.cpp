#include "frame/operations/flip.h"

#include <algorithm>
#include <cstring>

#include "frame/bands.h"

namespace lumiset {
namespace {

bool hasPixels(const Frame& frame) {
    return frame.Data() != nullptr && frame.Width() > 0 && frame.Height() > 0 && frame.BytesPerPixel() > 0;
}

std::size_t rowBytes(const Frame& frame) {
    return static_cast<std::size_t>(frame.Width()) * static_cast<std::size_t>(frame.BytesPerPixel());
}

void flipRows(Frame& frame, std::int32_t rows, std::size_t bytes) {
    inBands(frame.Resources(), {frame.Width(), rows / 2}, [&](std::int32_t first, std::int32_t count) {
        for (std::int32_t y = first; y < first + count; ++y) {
            std::uint8_t* row = frame.PixelAddress(0, y, 0);
            std::swap_ranges(row, row + bytes, frame.PixelAddress(0, rows - 1 - y, 0));
        }
        return true;
    });
}

}  // namespace

bool FrameFlipVertical(Frame& frame) noexcept {
    if (!hasPixels(frame)) {
        return false;
    }
    flipRows(frame, frame.Height(), rowBytes(frame));
    return true;
}

bool FrameFlipVerticalCopy(const Frame& src, Frame& dst) noexcept {
    if (!hasPixels(src) || !hasPixels(dst)) {
        return false;
    }
    const std::size_t bytes = std::min(rowBytes(src), rowBytes(dst));
    const std::int32_t rows = std::min(src.Height(), dst.Height());
    if (src.Data() == dst.Data() && src.Stride() == dst.Stride()) {
        flipRows(dst, rows, bytes);
        return true;
    }
    return inBands(dst.Resources(), {dst.Width(), rows}, [&](std::int32_t first, std::int32_t count) {
        for (std::int32_t y = first; y < first + count; ++y) {
            std::memcpy(dst.PixelAddress(0, rows - 1 - y, 0), src.PixelAddress(0, y, 0), bytes);
        }
        return true;
    });
}

}  // namespace lumiset
