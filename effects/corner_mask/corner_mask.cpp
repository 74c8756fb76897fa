#include "effects/corner_mask/corner_mask.h"

#include <algorithm>

#include "frame/bands.h"
#include "frame/frame_operations.h"

namespace lumiset {
namespace {

/// Feather 1 is this share of the picture's width.
constexpr float kFullFeather = 0.4F;
constexpr float kLeastFeather = 0.0001F;
/// Wider feathers are blurs of this width on a smaller copy: there is nothing fine left to lose.
constexpr float kWidestBlur = 30.0F;
constexpr float kNarrowestBlur = 3.0F;

template <class Sample>
void fillRects(Frame& mask, std::span<const PixelRect> rects, Sample value) {
    inBands(mask.Resources(), {mask.Width(), mask.Height()}, [&](std::int32_t first, std::int32_t count) {
        for (const PixelRect& rect : rects) {
            for (std::int32_t y = std::max(rect.top, first); y < std::min(rect.bottom, first + count); ++y) {
                auto* row = mask.row<Sample>(y);
                std::fill(row + rect.left, row + rect.right, value);
            }
        }
        return true;
    });
}

/// False when there is no memory.
bool soften(Frame& mask, const MaskFeather& feather, MemoryAllocator& allocator) {
    if (feather.copyWidth == mask.Width() && feather.copyHeight == mask.Height()) {
        return FrameBlur(mask, mask, feather.blurWidth, feather.blurHeight, &allocator, true);
    }
    Frame copy;
    Frame blurred;
    for (Frame* small : {&copy, &blurred}) {
        if (!small->Allocate(feather.copyWidth, feather.copyHeight, mask.BytesPerPixel(), &allocator, mask.Format(),
                             mask.Flipped())) {
            return false;
        }
    }
    return FrameResizeInto(mask, copy, kResizeLinear) &&
           FrameBlur(copy, blurred, feather.blurWidth, feather.blurHeight, &allocator, true) &&
           FrameResizeInto(blurred, mask, kResizeLinear);
}

}  // namespace

CornerMaskSettings readCornerMask(const ParamReader& params, bool invert) {
    return {{params.point(kMaskTopLeft), params.point(kMaskTopRight), params.point(kMaskBottomLeft),
             params.point(kMaskBottomRight), params.slider(kMaskCurve)},
            params.slider(kMaskFeather),
            invert};
}

MaskFeather maskFeather(float feather, const FrameFacts& facts) {
    if (!(feather > kLeastFeather)) {
        return {};
    }
    const PixelAspectScale aspect(facts.info, false, false);
    const auto width = static_cast<float>(facts.width);
    const auto height = static_cast<float>(facts.height);
    float extent = aspect.FromStoredX(width) * feather * kFullFeather * aspect.aspect;
    extent *= facts.fieldMode ? 2.0F : 1.0F;
    MaskFeather result{true, facts.width, facts.height, 0.0F, 0.0F};
    if (extent > kWidestBlur) {
        result.copyWidth = std::max(static_cast<std::int32_t>(width * kWidestBlur / extent), 1);
        result.copyHeight = std::max(static_cast<std::int32_t>(height * kWidestBlur / extent), 1);
        extent = kWidestBlur;
    }
    result.blurWidth = std::max(aspect.ToStoredX(extent), kNarrowestBlur);
    result.blurHeight = std::max(aspect.ToStoredY(facts.fieldMode ? extent * 0.5F : extent), kNarrowestBlur);
    return result;
}

bool makeCornerMask(const CornerMaskSettings& settings, const RenderContext& context, std::int32_t format,
                    Frame& mask) {
    CornerOutline outline(context.allocator);
    if (!outline.trace(settings.shape, context.width, context.height) ||
        !mask.Allocate(context.width, context.height, BytesPerChannel(format), &context.allocator, MaskFormat(format),
                       false)) {
        return false;
    }
    FrameFillColor(mask, settings.invert ? 255U : 0U);
    if (isFloatFormat(format)) {
        fillRects(mask, outline.outside(), settings.invert ? 0.0F : 1.0F);
    } else {
        fillRects(mask, outline.outside(), static_cast<std::uint8_t>(settings.invert ? 0 : 255));
    }
    const MaskFeather feather = maskFeather(settings.feather, context);
    return !feather.visible || soften(mask, feather, context.allocator);
}

}  // namespace lumiset
