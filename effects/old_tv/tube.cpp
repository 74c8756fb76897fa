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

std::int64_t tubeScratch(float softenAmount, const RenderContext& context, std::int32_t format) {
    const TubeSoftness softness = tubeSoftness(softenAmount, context);
    const std::int32_t sampleBytes = BytesPerChannel(format);
    const std::int64_t soften =
        MemoryAllocator::ReserveForImage(context.width + softness.columns, context.height + softness.columns,
                                         sampleBytes) +
        ScratchBlock::reserveFor(boxInPlaceScratch({context.width, context.height}, {softness.columns, softness.rows},
                                                   isFloatFormat(format), context.allocator));
    return std::max(bendScratch(std::max(context.width, context.height)), soften);
}

bool bendTube(Frame& frame, Frame& scratch, float curvature, MemoryAllocator& allocator) noexcept {
    return curvature == 0.0F ||
           (bendSides(frame, scratch, tubeCornerDepth(frame.Height(), curvature), true, allocator) &&
            bendSides(scratch, frame, tubeCornerDepth(frame.Width(), curvature), false, allocator));
}

bool softenTubeEdge(Frame& frame, float amount, const RenderContext& context) noexcept {
    if (amount == 0.0F) {
        return true;
    }
    const TubeSoftness softness = tubeSoftness(amount, context);
    const ImgSize kernel{softness.columns, softness.rows};
    const std::int32_t half = kernel.width >> 1;
    const std::int32_t alpha = AlphaIndex(frame.Format());
    const bool isFloat = isFloatFormat(frame.Format());
    // A transparent margin around the picture makes its own border soft too.
    Frame mask;
    if (!mask.Allocate(context.width + kernel.width, context.height + kernel.width, BytesPerChannel(frame.Format()),
                       &context.allocator, MaskFormat(frame.Format()), false) ||
        !FrameFillColor(mask, 0) || !FrameCopyChannelAt(frame, mask, alpha, 0, half, half)) {
        return false;
    }
    Frame inside;
    inside.WrapSubRect(mask, half, half, context.width, context.height, false);
    inside.UseResources(&context.allocator);
    const ImgSize region{context.width, context.height};
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
    return soften() && shrink() && soften() && FrameCopyChannel(inside, frame, 0, alpha);
}

}  // namespace lumiset
