#include "effects/old_tv/tube.h"

#include <algorithm>

#include "effects/old_tv/bend.h"
#include "frame/frame_operations.h"
#include "frame/frame_rows.h"
#include "frame/image_primitives.h"
#include "frame/operations/operands.h"
#include "frame/scratch_block.h"

namespace lumiset {

std::int32_t tubeCornerDepth(std::int32_t length, float curvature) {
    return static_cast<std::int32_t>(static_cast<float>(length) * 0.333333F * (curvature * 0.25F));
}

TubeSoftness tubeSoftness(float amount, const FrameFacts& facts) {
    const auto width = static_cast<float>(facts.width);
    const std::int32_t columns = std::max(3, static_cast<std::int32_t>(width * (amount * 0.07F) * 0.49F));
    return {columns, facts.isField ? std::max(columns >> 1, 3) : columns};
}

namespace {

/// The picture's alpha in a margin as wide as the softening reaches.
class SoftEdge {
public:
    SoftEdge(TubeSoftness softness, const RenderContext& context)
        : m_size{context.width, context.height},
          m_kernel{softness.columns, softness.rows},
          m_allocator(context.allocator) {}

    /// The margin is transparent, so that the picture's own border becomes soft too. False when there is no memory.
    bool allocate(std::int32_t format) {
        const std::int32_t margin = m_kernel.width >> 1;
        if (!m_whole.Allocate(m_size.width + m_kernel.width, m_size.height + m_kernel.width, BytesPerChannel(format),
                              &m_allocator, MaskFormat(format), false)) {
            return false;
        }
        m_alpha.WrapSubRect(m_whole, margin, margin, m_size.width, m_size.height, false);
        m_alpha.UseResources(&m_allocator);
        return FrameFillColor(m_whole, 0);
    }
    static std::int64_t scratch(TubeSoftness softness, const RenderContext& context, std::int32_t format) {
        const ImgSize size{context.width, context.height};
        return MemoryAllocator::ReserveForImage(size.width + softness.columns, size.height + softness.columns,
                                                BytesPerChannel(format)) +
               ScratchBlock::reserveFor(boxInPlaceScratch(size, {softness.columns, softness.rows},
                                                          isFloatFormat(format), context.allocator));
    }

    /// A mask to be filled in, and then softened.
    [[nodiscard]] Frame& alpha() { return m_alpha; }
    /// Only what a first pass leaves all but opaque stays, so the second fades inwards alone.
    bool soften() { return filter() && shrink() && filter(); }

private:
    bool filter() {
        const std::int32_t x = m_kernel.width / 2;
        const std::int32_t y = m_kernel.height / 2;
        return (isFloatFormat(m_alpha.Format())
                    ? ImgBoxInPlaceFC1(m_alpha.row<float>(0), m_alpha.Stride(), m_size, m_kernel, x, y, &m_allocator)
                    : ImgBoxInPlace8C1(m_alpha.Data(), m_alpha.Stride(), m_size, m_kernel, x, y, &m_allocator)) ==
               kImgOk;
    }
    bool shrink() {
        return isFloatFormat(m_alpha.Format())
                   ? runPrimitive(m_alpha, m_size, &ImgThresholdLessFC1, planeOf(m_alpha), 0.99216F, 0.0F)
                   : runPrimitive(m_alpha, m_size, &ImgThresholdLess8C1, planeOf(m_alpha), std::uint8_t{253},
                                  std::uint8_t{0});
    }

    ImgSize m_size;
    ImgSize m_kernel;
    MemoryAllocator& m_allocator;
    Frame m_whole;
    Frame m_alpha;
};

}  // namespace

std::int64_t tubeScratch(const TubeLook& look, const RenderContext& context, std::int32_t format) {
    const std::int32_t pixelBytes = formatBytesPerPixel(format);
    return bendScratch({context.width, context.height}, pixelBytes, context.allocator) +
           SoftEdge::scratch(tubeSoftness(look.soften, context), context, format) +
           MemoryAllocator::ReserveForImage(context.width, 1, pixelBytes);
}

bool drawTube(const Frame& picture, Frame& destination, const TubeLook& look, const RenderContext& context) noexcept {
    const bool softens = look.soften > 0.0F;
    const bool surrounds = look.opacity > 0.0F;
    const std::int32_t format = destination.Format();
    const std::int32_t alpha = AlphaIndex(format);
    Frame surround;  // a row of it
    if (surrounds &&
        (!surround.Allocate(context.width, 1, formatBytesPerPixel(format), &context.allocator, format, false) ||
         !FrameFillColor(surround, static_cast<std::uint32_t>(look.opacity * 255.0F) << 24U))) {
        return false;
    }
    SoftEdge edge(tubeSoftness(look.soften, context), context);
    if (softens && !edge.allocate(format)) {
        return false;
    }
    if (look.curvature > 0.0F) {
        if (!bendSides(picture, destination, tubeCornerDepth(context.height, look.curvature),
                       tubeCornerDepth(context.width, look.curvature), softens ? &edge.alpha() : nullptr,
                       context.allocator)) {
            return false;
        }
    } else if (softens && !FrameCopyChannel(destination, edge.alpha(), alpha, 0)) {
        return false;
    }
    if (softens && !edge.soften()) {
        return false;
    }
    if (!softens && !surrounds) {
        return true;
    }
    return inBands(&context.allocator, {context.width, context.height}, [&](std::int32_t first, std::int32_t rows) {
        bool done = true;
        for (std::int32_t y = first; y < first + rows; ++y) {
            FrameRows row(destination, y, 1);
            FrameRows softened(edge.alpha(), y, 1);
            done = (!softens || FrameCopyChannel(softened, row, 0, alpha)) &&
                   (!surrounds || FrameAlphaOver(row, surround, row, false)) && done;
        }
        return done;
    });
}

}  // namespace lumiset
