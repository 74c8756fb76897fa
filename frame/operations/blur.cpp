#include <algorithm>

#include "frame/filters/triangular_blur.h"
#include "frame/operations/filter.h"
#include "frame/operations/filter_frames.h"

namespace lumiset {
namespace {

constexpr std::int32_t kLargestBlur = 1000;

/// Whole pixels of a blur size; 0 for what is not a number.
std::int32_t wholeSize(float radius) {
    return radius >= 1.0F ? static_cast<std::int32_t>(std::min(radius, static_cast<float>(kLargestBlur))) : 0;
}

}  // namespace

bool FrameBlur(const Frame& src, Frame& dst, float radiusX, float radiusY, MemoryAllocator* allocator,
               bool includeAlpha) noexcept {
    if (!sameSamples(src, dst)) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    const std::int32_t format = dst.Format();
    const std::int32_t sizeX = wholeSize(radiusX);
    const std::int32_t sizeY = wholeSize(radiusY);
    if (sizeX < 1 || sizeY < 1) {
        copyPixels(src, dst, size);
        return true;
    }
    MemoryAllocator heap;
    MemoryAllocator& memory = allocator != nullptr ? *allocator : heap;
    StableSource source(memory);
    if (!source.prepare(src, dst, size)) {
        return false;
    }
    const bool reorder = (src.Format() == kFormatArgb8 && format == kFormatBgra8) ||
                         (src.Format() == kFormatArgbFloat && format == kFormatBgraFloat);
    const std::int32_t alpha = AlphaIndex(reorder ? src.Format() : format);
    const TriangularBlurJob job{source.data(),
                                source.stride(),
                                dst.Data(),
                                dst.Stride(),
                                size.width,
                                size.height,
                                sizeX,
                                sizeY,
                                AlphaIndex(format) < 0 ? 1 : 4,
                                includeAlpha ? -1 : alpha,
                                reorder};
    return isFloatFormat(format) ? triangularBlurFloats(job, memory) : triangularBlurBytes(job, memory);
}

}  // namespace lumiset
