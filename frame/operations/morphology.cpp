#include "frame/filters/ellipse_rectangles.h"
#include "frame/operations/filter.h"
#include "frame/operations/filter_frames.h"
#include "frame/primitives/block_morphology.h"
#include "frame/scratch_block.h"

namespace lumiset {
namespace {

bool morph(const Frame& src, Frame& dst, std::int32_t maskWidth, std::int32_t maskHeight, MemoryAllocator* allocator,
           bool minimum) {
    if (!sameFormat(src, dst) || maskWidth < 1 || maskHeight < 1) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    const std::int32_t format = dst.Format();
    if (maskWidth < 2 || maskHeight < 2) {
        copyPixels(src, dst, size);
        return true;
    }
    MemoryAllocator heap;
    MemoryAllocator& memory = allocator != nullptr ? *allocator : heap;
    StableSource source(memory);
    if (!source.prepare(src, dst, size)) {
        return false;
    }
    const std::int64_t mostRectangles = maskWidth / 2 + 1;
    ScratchBlock block(memory);
    block.add<BlockRectangle>(mostRectangles);
    if (!block.allocate()) {
        return false;
    }
    auto* rectangles = block.take<BlockRectangle>(mostRectangles);
    const std::int32_t count = ellipseRectangles(maskWidth, maskHeight, rectangles);
    return blockMorphology({source.data(), source.stride(), dst.Data(), dst.Stride(), size.width, size.height,
                            AlphaIndex(format) < 0 ? 1 : 4, isFloatFormat(format), minimum, rectangles, count, true},
                           memory);
}

}  // namespace

bool FrameDilate(const Frame& src, Frame& dst, std::int32_t maskWidth, std::int32_t maskHeight,
                 MemoryAllocator* allocator) noexcept {
    return morph(src, dst, maskWidth, maskHeight, allocator, false);
}

bool FrameErode(const Frame& src, Frame& dst, std::int32_t maskWidth, std::int32_t maskHeight,
                MemoryAllocator* allocator) noexcept {
    return morph(src, dst, maskWidth, maskHeight, allocator, true);
}

}  // namespace lumiset
