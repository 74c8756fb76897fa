#include "effects/old_tv_tube.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "frame/frame_operations.h"
#include "frame/image_primitives.h"

namespace lumiset {
namespace {

/// The bent sides are drawn as straight pieces of this many pixels.
constexpr std::int32_t kStrip = 8;

/// Draws a rectangle of `source` on a quadrilateral of `destination`.
void warp(const Frame& source, const ImgPixelRect& rect, Frame& destination, const ImgPoint (&quad)[4]) {
    const ImgSize size{source.Width(), source.Height()};
    const std::int32_t alpha = AlphaIndex(source.Format());
    if (isFloatFormat(source.Format())) {
        ImgWarpQuadFC4(reinterpret_cast<const float*>(source.Data()), source.Stride(), size, rect,
                       reinterpret_cast<float*>(destination.Data()), destination.Stride(), quad, alpha, size);
    } else {
        ImgWarpQuad8C4(source.Data(), source.Stride(), size, rect, destination.Data(), destination.Stride(), quad,
                       alpha, size);
    }
}

/// Walks a side of `length` pixels in strips; `draw(from, to, insetFrom, insetTo)` with how far the sides across
/// lie inwards there: `depth` in the corners, nothing in the middle.
template <class Draw>
void forEachStrip(std::int32_t length, std::int32_t depth, const Draw& draw) {
    const auto inset = [&](std::int32_t at) { return depth - depth * std::sin(std::numbers::pi * at / length); };
    for (std::int32_t from = 0; from < length; from += kStrip) {
        const std::int32_t to = from + kStrip >= length - 3 ? length - 1 : from + kStrip;
        draw(from, to, inset(from), inset(to));
    }
}

}  // namespace

std::int32_t tubeCornerDepth(std::int32_t length, float curvature) {
    return static_cast<std::int32_t>(static_cast<float>(length) * 0.333333F * (curvature * 0.25F));
}

TubeSoftness tubeSoftness(float amount, const FrameFacts& facts) {
    const auto width = static_cast<float>(facts.width);
    const std::int32_t columns = std::max(3, static_cast<std::int32_t>(width * (amount * 0.07F) * 0.49F));
    return {columns, facts.isField ? std::max(columns >> 1, 3) : columns};
}

void bendTube(Frame& frame, Frame& scratch, float curvature) noexcept {
    if (curvature == 0.0F) {
        return;
    }
    const std::int32_t right = frame.Width() - 1;
    const std::int32_t bottom = frame.Height() - 1;
    FrameFillColor(scratch, 0);
    forEachStrip(frame.Width(), tubeCornerDepth(frame.Height(), curvature),
                 [&](std::int32_t from, std::int32_t to, double insetFrom, double insetTo) {
                     const double x0 = from;
                     const double x1 = to;
                     warp(frame, {from, 0, to, bottom}, scratch,
                          {{x0, insetFrom}, {x1, insetTo}, {x1, bottom - insetTo}, {x0, bottom - insetFrom}});
                 });
    FrameFillColor(frame, 0);
    forEachStrip(frame.Height(), tubeCornerDepth(frame.Width(), curvature),
                 [&](std::int32_t from, std::int32_t to, double insetFrom, double insetTo) {
                     const double y0 = from;
                     const double y1 = to;
                     warp(scratch, {0, from, right, to}, frame,
                          {{insetFrom, y0}, {right - insetFrom, y0}, {right - insetTo, y1}, {insetTo, y1}});
                 });
}

void softenTubeEdge(Frame& frame, float amount, const RenderContext& context) noexcept {
    if (amount == 0.0F) {
        return;
    }
    const auto [columns, rows] = tubeSoftness(amount, context);
    const std::int32_t half = columns >> 1;
    const std::int32_t alpha = AlphaIndex(frame.Format());
    const bool isFloat = isFloatFormat(frame.Format());
    // A transparent margin around the picture makes its own border soft too.
    Frame mask;
    if (!mask.Allocate(context.width + columns, context.height + columns, BytesPerChannel(frame.Format()),
                       &context.allocator, MaskFormat(frame.Format()), false) ||
        !FrameFillColor(mask, 0) || !FrameCopyChannelAt(frame, mask, alpha, 0, half, half)) {
        return;
    }
    Frame inside;
    inside.WrapSubRect(mask, half, half, context.width, context.height, false);
    const ImgSize region{context.width, context.height};
    const auto soften = [&] {
        if (isFloat) {
            return ImgBoxInPlaceFC1(reinterpret_cast<float*>(inside.Data()), inside.Stride(), region, {columns, rows},
                                    columns / 2, rows / 2);
        }
        return ImgBoxInPlace8C1(inside.Data(), inside.Stride(), region, {columns, rows}, columns / 2, rows / 2);
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
