#include "frame/operations/copy.h"

#include "frame/image_primitives.h"
#include "frame/operations/operands.h"
#include "frame/operations/values.h"
#include "frame/primitives/spread.h"

namespace lumiset {
namespace {

/// Copies `size` pixels from (x, y) to (dx, dy) of a frame that holds the same kind of samples.
bool copyPixels(const Frame& src, std::int32_t x, std::int32_t y, Frame& dst, std::int32_t dx, std::int32_t dy,
                ImgSize size) {
    const PlaneOperand from{src.PixelAddress(x, y, 0), src.Stride()};
    const PlaneOperand to{dst.PixelAddress(dx, dy, 0), dst.Stride()};
    Frame inOrder;  // rows that overlap are copied one after the other
    inOrder.WrapSubRect(dst, 0, 0, dst.Width(), dst.Height(), dst.Flipped());
    const Frame& target = src.Data() == dst.Data() ? inOrder : dst;
    if (sameSamples(src, dst)) {
        // Only the size of a pixel counts from here on.
        switch (dst.BytesPerPixel()) {
            case 16:
                return runPrimitive(target, size, &ImgCopyFC4, from, to);
            case 4:
                return runPrimitive(target, size, &ImgCopy8C4, from, to);
            default:
                break;
        }
    }
    // One byte a pixel is a plane of bytes, whatever the format says.
    return src.BytesPerPixel() == 1 && dst.BytesPerPixel() == 1 && runPrimitive(target, size, &ImgCopy8C1, from, to);
}

bool isChannel(std::int32_t channel) {
    return channel >= 0 && channel <= 3;
}

constexpr std::uint32_t kReversed[4] = {3, 2, 1, 0};

}  // namespace

bool FrameCopy(const Frame& src, Frame& dst) noexcept {
    return copyPixels(src, 0, 0, dst, 0, 0, sizeOf(src, dst));
}

bool FrameCopyRect(const Frame& src, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h, Frame& dst,
                   std::int32_t dx, std::int32_t dy) noexcept {
    x = std::max(x, 0);
    y = std::max(y, 0);
    dx = std::max(dx, 0);
    dy = std::max(dy, 0);
    const ImgSize size{std::min({w, src.Width() - x, dst.Width() - dx}),
                       std::min({h, src.Height() - y, dst.Height() - dy})};
    return size.width > 0 && size.height > 0 && copyPixels(src, x, y, dst, dx, dy, size);
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
    const PlaneOperand from = planeOf(src, isColor(src) ? srcChannel : 0);
    const PlaneOperand to{dst.PixelAddress(x, y, isColor(dst) ? dstChannel * depth : 0), dst.Stride()};
    if (isMask(dst)) {
        return runEither(dst, size, &ImgExtractChannel8, &ImgExtractChannelF, from, to);
    }
    return isMask(src) ? runEither(dst, size, &ImgInsertChannel8, &ImgInsertChannelF, from, to)
                       : runEither(dst, size, &ImgCopyChannel8C4, &ImgCopyChannelFC4, from, to);
}

bool FrameSpreadGrayToColor(const Frame& mask, Frame& dst) noexcept {
    if (!isMask(mask) || !isColor(dst) || isFloat(mask) != isFloat(dst)) {
        return false;
    }
    const ImgSize size = sizeOf(mask, dst);
    const std::int32_t alpha = AlphaIndex(dst.Format());
    const bool done =
        isFloat(dst)
            ? runPrimitive(dst, size, &ImgSpreadGrayFC4, planeOf(mask), planeOf(dst), 1.0F, alpha == 0)
            : runPrimitive(dst, size, &ImgSpreadGray8C4, planeOf(mask), planeOf(dst), std::uint8_t{255}, alpha == 0);
    const bool all = size.width == dst.Width() && size.height == dst.Height();
    return done && (all || FrameSetChannel(dst, alpha, 255));
}

bool FrameSwapChannelOrder(const Frame& src, Frame& dst) noexcept {
    if (!isColor(src) || !sameSamples(src, dst)) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    const bool inPlace = src.Data() == dst.Data() && src.Stride() == dst.Stride();
    return inPlace ? runEither(dst, size, &ImgSwapChannels8C4, &ImgSwapChannelsFC4, planeOf(dst), kReversed)
                   : runEither(dst, size, &ImgReorderChannels8C4, &ImgReorderChannelsFC4, planeOf(src), planeOf(dst),
                               kReversed);
}

bool FrameConvertDepth(const Frame& src, Frame& dst) noexcept {
    if (!isSound(src) || !isSound(dst)) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    const auto toByte = [&](auto primitive) {
        return runPrimitive(dst, size, primitive, planeOf(src), planeOf(dst), 0.0F, 1.0F);
    };
    const auto toFloat = [&](auto primitive) {
        return runPrimitive(dst, size, primitive, planeOf(src), planeOf(dst), 0.0F, 1.0F);
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
