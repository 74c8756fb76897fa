#include "frame/operations/geometry.h"

#include <cstddef>

#include "frame/operations/operands.h"
#include "frame/primitives/border.h"
#include "frame/primitives/resize.h"
#include "frame/scratch_block.h"

namespace lumiset {
namespace {

std::int32_t interpolationOf(std::int32_t mode) {
    switch (mode) {
        case kResizeNearest:
            return kImgNearest;
        case kResizeCubic:
            return kImgCubic;
        case kResizeLanczos:
            return kImgLanczos;
        default:
            return kImgLinear;
    }
}

/// True for a rectangle with pixels that lies in the frame.
bool holds(const Frame& frame, const FrameRect& rect) {
    return rect.left >= 0 && rect.top >= 0 && rect.right > rect.left && rect.bottom > rect.top &&
           rect.right <= frame.Width() && rect.bottom <= frame.Height();
}

ImgSize sizeOf(const FrameRect& rect) {
    return {rect.right - rect.left, rect.bottom - rect.top};
}

const float* floats(const std::uint8_t* data) {
    return reinterpret_cast<const float*>(data);
}
float* floats(std::uint8_t* data) {
    return reinterpret_cast<float*>(data);
}

}  // namespace

bool FrameResizeRect(const Frame& src, Frame& dst, const FrameRect& srcRect, const FrameRect& dstRect,
                     std::int32_t mode, double xFactor, double yFactor, double xShift, double yShift) noexcept {
    if (!sameSamples(src, dst) || !holds(src, srcRect) || !holds(dst, dstRect)) {
        return false;
    }
    const std::int32_t channels = isColor(src) ? 4 : 1;
    const ImgSize from = sizeOf(srcRect);
    const ImgSize to = sizeOf(dstRect);
    const ImgResizeMap map{xFactor == 0 ? static_cast<double>(to.width) / from.width : xFactor,
                           yFactor == 0 ? static_cast<double>(to.height) / from.height : yFactor, xShift, yShift,
                           interpolationOf(mode)};
    MemoryAllocator heap;
    MemoryAllocator& memory = dst.Resources() != nullptr ? *dst.Resources() : heap;
    std::size_t bytes = 0;
    if (ImgResizeBuffer(from, channels, map.interpolation, &bytes, to, &memory) != kImgOk) {
        return false;
    }
    ScratchBlock block(memory);
    block.add<std::uint8_t>(static_cast<std::int64_t>(bytes));
    if (!block.allocate()) {
        return false;
    }
    auto* scratch = block.take<std::uint8_t>(static_cast<std::int64_t>(bytes));
    const std::uint8_t* in = src.PixelAddress(srcRect.left, srcRect.top, 0);
    std::uint8_t* out = dst.PixelAddress(dstRect.left, dstRect.top, 0);
    if (isFloat(src)) {
        const auto resize = channels == 4 ? ImgResizeFC4 : ImgResizeFC1;
        return resize(floats(in), src.Stride(), from, floats(out), dst.Stride(), map, scratch, to, &memory) == kImgOk;
    }
    const auto resize = channels == 4 ? ImgResize8C4 : ImgResize8C1;
    return resize(in, src.Stride(), from, out, dst.Stride(), map, scratch, to, &memory) == kImgOk;
}

std::int64_t FrameResizeScratch(ImgSize from, ImgSize to, std::int32_t channels, std::int32_t mode,
                                const MemoryAllocator& allocator) {
    std::size_t bytes = 0;
    ImgResizeBuffer(from, channels, interpolationOf(mode), &bytes, to, &allocator);
    return static_cast<std::int64_t>(bytes);
}

bool FrameResizeInto(const Frame& src, Frame& dst, std::int32_t mode) noexcept {
    return FrameResizeRect(src, dst, {0, 0, src.Width(), src.Height()}, {0, 0, dst.Width(), dst.Height()}, mode, 0, 0,
                           0, 0);
}

bool FrameReplicateBorder(const Frame& src, Frame& dst, std::int32_t left, std::int32_t top) noexcept {
    if (!isSound(src) || !isSound(dst) || src.BytesPerPixel() != dst.BytesPerPixel()) {
        return false;
    }
    const bool sameData = src.Data() == dst.Data();
    const bool sameSize = src.Width() == dst.Width() && src.Height() == dst.Height();
    if ((!sameData && !sameSize) || (sameData && src.Stride() != dst.Stride())) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    if (left < 0 || top < 0 || left >= (size.width + 1) / 2 || top >= (size.height + 1) / 2) {
        return false;
    }
    const ImgSize inner{size.width - 2 * left, size.height - 2 * top};
    const std::uint8_t* in = src.PixelAddress(left, top, 0);
    switch (src.BytesPerPixel()) {
        case 1:
            return ImgReplicateBorder8C1(in, src.Stride(), inner, dst.Data(), dst.Stride(), left, top, size) == kImgOk;
        case 4:
            return ImgReplicateBorder8C4(in, src.Stride(), inner, dst.Data(), dst.Stride(), left, top, size) == kImgOk;
        case 16:
            return ImgReplicateBorderFC4(floats(in), src.Stride(), inner, floats(dst.Data()), dst.Stride(), left, top,
                                         size) == kImgOk;
        default:
            return false;
    }
}

}  // namespace lumiset
