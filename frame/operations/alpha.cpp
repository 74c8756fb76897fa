#include "frame/operations/alpha.h"

#include "frame/image_primitives.h"
#include "frame/operations/operands.h"

namespace lumiset {

bool FrameAlphaOver(const Frame& top, const Frame& bottom, Frame& dst, bool premultiplied) noexcept {
    if (!isColor(top) || !sameFormat(top, bottom) || !sameFormat(top, dst)) {
        return false;
    }
    const std::int32_t mode = premultiplied ? kImgOverPremultiplied : kImgOverStraight;
    const std::int32_t alpha = AlphaIndex(top.Format());
    const ImgSize sources = sizeOf(top, bottom);
    const ImgSize size{std::min(sources.width, dst.Width()), std::min(sources.height, dst.Height())};
    if (isFloat(top)) {
        return ImgAlphaOverFC4(floatsOf(top), top.Stride(), floatsOf(bottom), bottom.Stride(), floatsOf(dst),
                               dst.Stride(), mode, alpha, size) == kImgOk;
    }
    return ImgAlphaOver8C4(bytesOf(top), top.Stride(), bytesOf(bottom), bottom.Stride(), bytesOf(dst), dst.Stride(),
                           mode, alpha, size) == kImgOk;
}

bool FramePremultiplyAlpha(const Frame& src, Frame& dst) noexcept {
    if (!isColor(src) || !sameFormat(src, dst)) {
        return false;
    }
    const std::int32_t alpha = AlphaIndex(src.Format());
    const ImgSize size = sizeOf(src, dst);
    if (isFloat(src)) {
        return ImgPremultiplyFC4(floatsOf(src), src.Stride(), floatsOf(dst), dst.Stride(), alpha, size) == kImgOk;
    }
    return ImgPremultiply8C4(bytesOf(src), src.Stride(), bytesOf(dst), dst.Stride(), alpha, size) == kImgOk;
}

}  // namespace lumiset
