#include "frame/operations/copy.h"

#include "frame/image_primitives.h"
#include "frame/operations/operands.h"
#include "frame/operations/values.h"
#include "frame/primitives/spread.h"

namespace lumiset {
namespace {

/// Copies between addresses inside two frames that hold the same kind of samples.
bool copyPixels(const Frame& src, const std::uint8_t* from, const Frame& dst, std::uint8_t* to, ImgSize size) {
    if (isSound(src) && sameSamples(src, dst)) {
        // Only the size of a pixel counts from here on.
        switch (dst.BytesPerPixel()) {
            case 16:
                return ImgCopyFC4(reinterpret_cast<const float*>(from), src.Stride(), reinterpret_cast<float*>(to),
                                  dst.Stride(), size) == kImgOk;
            case 4:
                return ImgCopy8C4(from, src.Stride(), to, dst.Stride(), size) == kImgOk;
            default:
                break;
        }
    }
    // One byte a pixel is a plane of bytes, whatever the format says.
    return src.BytesPerPixel() == 1 && dst.BytesPerPixel() == 1 &&
           ImgCopy8C1(from, src.Stride(), to, dst.Stride(), size) == kImgOk;
}

bool isChannel(std::int32_t channel) {
    return channel >= 0 && channel <= 3;
}

constexpr std::uint32_t kReversed[4] = {3, 2, 1, 0};

}  // namespace

bool FrameCopy(const Frame& src, Frame& dst) noexcept {
    return copyPixels(src, src.Data(), dst, dst.Data(), sizeOf(src, dst));
}

bool FrameCopyRect(const Frame& src, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h, Frame& dst,
                   std::int32_t dx, std::int32_t dy) noexcept {
    x = std::max(x, 0);
    y = std::max(y, 0);
    dx = std::max(dx, 0);
    dy = std::max(dy, 0);
    const ImgSize size{std::min({w, src.Width() - x, dst.Width() - dx}),
                       std::min({h, src.Height() - y, dst.Height() - dy})};
    return size.width > 0 && size.height > 0 &&
           copyPixels(src, src.PixelAddress(x, y, 0), dst, dst.PixelAddress(dx, dy, 0), size);
}

bool FrameCopyChannel(const Frame& src, Frame& dst, std::int32_t srcChannel, std::int32_t dstChannel) noexcept {
    return FrameCopyChannelAt(src, dst, srcChannel, dstChannel, 0, 0);
}

bool FrameCopyChannelAt(const Frame& src, Frame& dst, std::int32_t srcChannel, std::int32_t dstChannel, std::int32_t x,
                        std::int32_t y) noexcept {
    if (!isSound(src) || !isSound(dst) || isFloat(src) != isFloat(dst) || x < 0 || y < 0 || x >= dst.Width() ||
        y >= dst.Height() || (isMask(src) && isMask(dst)) || (isColor(src) && !isChannel(srcChannel)) ||
        (isColor(dst) && !isChannel(dstChannel))) {
        return false;
    }
    const ImgSize size{std::min(src.Width(), dst.Width() - x), std::min(src.Height(), dst.Height() - y)};
    const std::int32_t depth = BytesPerChannel(src.Format());
    const std::uint8_t* from = src.PixelAddress(0, 0, isColor(src) ? srcChannel * depth : 0);
    std::uint8_t* to = dst.PixelAddress(x, y, isColor(dst) ? dstChannel * depth : 0);
    const auto run = [&](auto extract, auto insert, auto move, auto* typedFrom, auto* typedTo) {
        const auto primitive = isMask(dst) ? extract : isMask(src) ? insert : move;
        return primitive(typedFrom, src.Stride(), typedTo, dst.Stride(), size) == kImgOk;
    };
    if (isFloat(src)) {
        return run(&ImgExtractChannelF, &ImgInsertChannelF, &ImgCopyChannelFC4, reinterpret_cast<const float*>(from),
                   reinterpret_cast<float*>(to));
    }
    return run(&ImgExtractChannel8, &ImgInsertChannel8, &ImgCopyChannel8C4, from, to);
}

bool FrameSpreadGrayToColor(const Frame& mask, Frame& dst) noexcept {
    if (!isMask(mask) || !isColor(dst) || isFloat(mask) != isFloat(dst)) {
        return false;
    }
    const ImgSize size = sizeOf(mask, dst);
    const std::int32_t alpha = AlphaIndex(dst.Format());
    const ImgStatus status =
        isFloat(dst)
            ? ImgSpreadGrayFC4(floatsOf(mask), mask.Stride(), floatsOf(dst), dst.Stride(), 1.0F, alpha == 0, size)
            : ImgSpreadGray8C4(bytesOf(mask), mask.Stride(), bytesOf(dst), dst.Stride(), 255, alpha == 0, size);
    const bool all = size.width == dst.Width() && size.height == dst.Height();
    return status == kImgOk && (all || FrameSetChannel(dst, alpha, 255));
}

bool FrameSwapChannelOrder(const Frame& src, Frame& dst) noexcept {
    if (!isColor(src) || !sameSamples(src, dst)) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    const bool inPlace = src.Data() == dst.Data() && src.Stride() == dst.Stride();
    if (isFloat(src)) {
        return (inPlace ? ImgSwapChannelsFC4(floatsOf(dst), dst.Stride(), kReversed, size)
                        : ImgReorderChannelsFC4(floatsOf(src), src.Stride(), floatsOf(dst), dst.Stride(), kReversed,
                                                size)) == kImgOk;
    }
    return (inPlace ? ImgSwapChannels8C4(bytesOf(dst), dst.Stride(), kReversed, size)
                    : ImgReorderChannels8C4(bytesOf(src), src.Stride(), bytesOf(dst), dst.Stride(), kReversed, size)) ==
           kImgOk;
}

bool FrameConvertDepth(const Frame& src, Frame& dst) noexcept {
    if (!isSound(src) || !isSound(dst)) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    const auto toByte = [&](auto primitive) {
        return primitive(floatsOf(src), src.Stride(), bytesOf(dst), dst.Stride(), 0.0F, 1.0F, size) == kImgOk;
    };
    const auto toFloat = [&](auto primitive) {
        return primitive(bytesOf(src), src.Stride(), floatsOf(dst), dst.Stride(), 0.0F, 1.0F, size) == kImgOk;
    };
    struct Pair {
        PixelFormat bytes;
        PixelFormat floats;
    };
    for (const Pair& pair : {Pair{kFormatBgra8, kFormatBgraFloat}, Pair{kFormatArgb8, kFormatArgbFloat}}) {
        if (src.Format() == pair.floats && dst.Format() == pair.bytes) {
            return toByte(&ImgFloatToByteC4);
        }
        if (src.Format() == pair.bytes && dst.Format() == pair.floats) {
            return toFloat(&ImgByteToFloatC4);
        }
    }
    if (src.Format() == kFormatMaskFloat && dst.Format() == kFormatMask8) {
        return toByte(&ImgFloatToByteC1);
    }
    return src.Format() == kFormatMask8 && dst.Format() == kFormatMaskFloat && toFloat(&ImgByteToFloatC1);
}

}  // namespace lumiset
