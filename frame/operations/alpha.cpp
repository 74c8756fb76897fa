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
    return runEither(dst, size, &ImgAlphaOver8C4, &ImgAlphaOverFC4, planeOf(top), planeOf(bottom), planeOf(dst), mode,
                     alpha);
}

bool FramePremultiplyAlpha(const Frame& src, Frame& dst) noexcept {
    if (!isColor(src) || !sameFormat(src, dst)) {
        return false;
    }
    return runEither(dst, sizeOf(src, dst), &ImgPremultiply8C4, &ImgPremultiplyFC4, planeOf(src), planeOf(dst),
                     AlphaIndex(src.Format()));
}

}  // namespace lumiset
