#include "frame/primitives/sharpen.h"

#include <cstring>

#include "frame/operations/filter.h"
#include "frame/operations/filter_frames.h"

namespace lumiset {
namespace {

/// `dst` becomes the common part of `src` with a border of one repeated pixel.
void copyWithBorder(const Frame& src, ImgSize size, Frame& dst) {
    const auto pixel = static_cast<std::size_t>(src.BytesPerPixel());
    const std::size_t row = static_cast<std::size_t>(size.width) * pixel;
    for (std::int32_t y = 0; y < size.height; ++y) {
        std::uint8_t* out = dst.PixelAddress(0, y + 1, 0);
        std::memcpy(out + pixel, src.PixelAddress(0, y, 0), row);
        std::memcpy(out, out + pixel, pixel);
        std::memcpy(out + pixel + row, out + row, pixel);
    }
    std::memcpy(dst.PixelAddress(0, 0, 0), dst.PixelAddress(0, 1, 0), row + 2 * pixel);
    std::memcpy(dst.PixelAddress(0, size.height + 1, 0), dst.PixelAddress(0, size.height, 0), row + 2 * pixel);
}

template <class T>
void copyAlpha(const Frame& bordered, Frame& dst, ImgSize size, std::int32_t alpha) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        const auto* in = reinterpret_cast<const T*>(bordered.PixelAddress(1, y + 1, 0)) + alpha;
        auto* out = reinterpret_cast<T*>(dst.PixelAddress(0, y, 0)) + alpha;
        for (std::int32_t x = 0; x < size.width; ++x) {
            out[4 * x] = in[4 * x];
        }
    }
}

}  // namespace

bool FrameSharpen(const Frame& src, Frame& dst, MemoryAllocator* allocator) noexcept {
    const ImgSize size = commonSize(src, dst);
    const std::int32_t alpha = AlphaIndex(dst.Format());
    if (size.width == 0 || alpha < 0 || src.Format() != dst.Format() ||
        src.BytesPerPixel() != formatBytesPerPixel(src.Format()) || dst.BytesPerPixel() != src.BytesPerPixel()) {
        return false;
    }
    Frame bordered;
    if (!bordered.Allocate(size.width + 2, size.height + 2, src.BytesPerPixel(), allocator, src.Format(), false)) {
        return false;
    }
    copyWithBorder(src, size, bordered);
    const std::int32_t first = alpha == 0 ? BytesPerChannel(src.Format()) : 0;
    std::uint8_t* from = bordered.PixelAddress(1, 1, first);
    std::uint8_t* to = dst.PixelAddress(0, 0, first);
    if (isFloatFormat(src.Format())) {
        copyAlpha<float>(bordered, dst, size, alpha);
        return ImgSharpenFA4(reinterpret_cast<const float*>(from), bordered.Stride(), reinterpret_cast<float*>(to),
                             dst.Stride(), size) == kImgOk;
    }
    copyAlpha<std::uint8_t>(bordered, dst, size, alpha);
    return ImgSharpen8A4(from, bordered.Stride(), to, dst.Stride(), size) == kImgOk;
}

}  // namespace lumiset
