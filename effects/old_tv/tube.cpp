#include "effects/old_tv/tube.h"

#include <algorithm>

#include "effects/old_tv/bend.h"
#include "frame/frame_operations.h"
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

/// Makes `mask` a margin larger than the frame, and `inside` what of it lies over the frame: its alpha, softened.
bool softenAlpha(const Frame& frame, TubeSoftness softness, const RenderContext& context, Frame& mask, Frame& inside) {
    const ImgSize kernel{softness.columns, softness.rows};
    const ImgSize region{context.width, context.height};
    const std::int32_t half = kernel.width >> 1;
    const std::int32_t alpha = AlphaIndex(frame.Format());
    const bool isFloat = isFloatFormat(frame.Format());
    // A transparent margin around the picture makes its own border soft too.
    if (!mask.Allocate(region.width + kernel.width, region.height + kernel.width, BytesPerChannel(frame.Format()),
                       &context.allocator, MaskFormat(frame.Format()), false) ||
        !FrameFillColor(mask, 0) || !FrameCopyChannelAt(frame, mask, alpha, 0, half, half)) {
        return false;
    }
    inside.WrapSubRect(mask, half, half, region.width, region.height, false);
    inside.UseResources(&context.allocator);
    const auto soften = [&] {
        const std::int32_t x = kernel.width / 2;
        const std::int32_t y = kernel.height / 2;
        return (isFloat
                    ? ImgBoxInPlaceFC1(inside.row<float>(0), inside.Stride(), region, kernel, x, y, &context.allocator)
                    : ImgBoxInPlace8C1(inside.Data(), inside.Stride(), region, kernel, x, y, &context.allocator)) ==
               kImgOk;
    };
    // Only what the first pass leaves all but opaque stays, so the second fades inwards alone.
    const auto shrink = [&] {
        return isFloat ? runPrimitive(inside, region, &ImgThresholdLessFC1, planeOf(inside), 0.99216F, 0.0F)
                       : runPrimitive(inside, region, &ImgThresholdLess8C1, planeOf(inside), std::uint8_t{253},
                                      std::uint8_t{0});
    };
    return soften() && shrink() && soften();
}

}  // namespace

std::int64_t tubeScratch(float soften, const RenderContext& context, std::int32_t format) {
    const ImgSize size{context.width, context.height};
    const TubeSoftness softness = tubeSoftness(soften, context);
    const std::int32_t pixelBytes = formatBytesPerPixel(format);
    const std::int64_t mask =
        MemoryAllocator::ReserveForImage(size.width + softness.columns, size.height + softness.columns,
                                         BytesPerChannel(format)) +
        ScratchBlock::reserveFor(
            boxInPlaceScratch(size, {softness.columns, softness.rows}, isFloatFormat(format), context.allocator));
    return std::max(bendScratch(size, pixelBytes, context.allocator),
                    mask + MemoryAllocator::ReserveForImage(size.width, 1, pixelBytes));
}

bool bendTube(const Frame& source, Frame& destination, float curvature, MemoryAllocator& allocator) noexcept {
    return bendSides(source, destination, tubeCornerDepth(source.Height(), curvature),
                     tubeCornerDepth(source.Width(), curvature), allocator);
}

bool finishTube(Frame& frame, float soften, float opacity, const RenderContext& context) noexcept {
    if (soften == 0.0F && opacity == 0.0F) {
        return true;
    }
    Frame surround;  // a row of it
    if (!surround.Allocate(context.width, 1, frame.BytesPerPixel(), &context.allocator, frame.Format(), false) ||
        !FrameFillColor(surround, static_cast<std::uint32_t>(opacity * 255.0F) << 24U)) {
        return false;
    }
    Frame mask;
    Frame inside;
    if (soften > 0.0F && !softenAlpha(frame, tubeSoftness(soften, context), context, mask, inside)) {
        return false;
    }
    const std::int32_t alpha = AlphaIndex(frame.Format());
    return inBands(&context.allocator, {context.width, context.height}, [&](std::int32_t first, std::int32_t rows) {
        bool done = true;
        for (std::int32_t y = first; y < first + rows; ++y) {
            Frame row;
            row.WrapSubRect(frame, 0, y, context.width, 1, false);
            if (soften > 0.0F) {
                Frame softened;
                softened.WrapSubRect(inside, 0, y, context.width, 1, false);
                done = FrameCopyChannel(softened, row, 0, alpha) && done;
            }
            if (opacity > 0.0F) {
                done = FrameAlphaOver(row, surround, row, false) && done;
            }
        }
        return done;
    });
}

}  // namespace lumiset
