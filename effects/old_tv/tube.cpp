#include "effects/old_tv/tube.h"

#include <algorithm>

#include "effects/old_tv/bend.h"
#include "frame/frame_operations.h"
#include "frame/image_primitives.h"

namespace lumiset {

std::int32_t tubeCornerDepth(std::int32_t length, float curvature) {
    return static_cast<std::int32_t>(static_cast<float>(length) * 0.333333F * (curvature * 0.25F));
}

TubeSoftness tubeSoftness(float amount, const FrameFacts& facts) {
    const auto width = static_cast<float>(facts.width);
    const std::int32_t columns = std::max(3, static_cast<std::int32_t>(width * (amount * 0.07F) * 0.49F));
    return {columns, facts.isField ? std::max(columns >> 1, 3) : columns};
}

void bendTube(Frame& frame, Frame& scratch, float curvature, MemoryAllocator& allocator) noexcept {
    if (curvature != 0.0F && bendSides(frame, scratch, tubeCornerDepth(frame.Height(), curvature), true, allocator)) {
        bendSides(scratch, frame, tubeCornerDepth(frame.Width(), curvature), false, allocator);
    }
}

void softenTubeEdge(Frame& frame, float amount, const RenderContext& context) noexcept {
    if (amount == 0.0F) {
        return;
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
        return;
    }
    Frame inside;
    inside.WrapSubRect(mask, half, half, context.width, context.height, false);
    const ImgSize region{context.width, context.height};
    const auto soften = [&] {
        if (isFloat) {
            return ImgBoxInPlaceFC1(reinterpret_cast<float*>(inside.Data()), inside.Stride(), region, kernel,
                                    kernel.width / 2, kernel.height / 2);
        }
        return ImgBoxInPlace8C1(inside.Data(), inside.Stride(), region, kernel, kernel.width / 2, kernel.height / 2);
    };
    // Only what the first pass leaves all but opaque stays, so the second fades inwards alone.
    const auto shrink = [&] {
        if (isFloat) {
            return ImgThresholdLessFC1(reinterpret_cast<float*>(inside.Data()), inside.Stride(), 0.99216F, 0.0F,
                                       region);
        }
        return ImgThresholdLess8C1(inside.Data(), inside.Stride(), 253, 0, region);
    };
    if (soften() == kImgOk && shrink() == kImgOk && soften() == kImgOk) {
        FrameCopyChannel(inside, frame, 0, alpha);
    }
}

}  // namespace lumiset
