// The frame goes through the kernel in bands of rows: each is copied beside a border of one repeated pixel, which also
// lets a frame be sharpened in place, and sharpened while it is in the cache.

#include "frame/primitives/sharpen.h"

#include <algorithm>
#include <cstring>

#include "frame/operations/filter.h"
#include "frame/operations/filter_frames.h"
#include "frame/primitives/copy.h"

namespace lumiset {
namespace {

constexpr std::int32_t kBandRows = 8;

/// Copies row `y` of the common rectangle, or the nearest one of it, between its repeated end pixels.
void copyWithEnds(const Frame& src, ImgSize size, std::int32_t y, std::uint8_t* out) {
    const auto pixel = static_cast<std::size_t>(src.BytesPerPixel());
    const std::size_t row = static_cast<std::size_t>(size.width) * pixel;
    std::memcpy(out + pixel, src.PixelAddress(0, std::clamp(y, 0, size.height - 1), 0), row);
    std::memcpy(out, out + pixel, pixel);
    std::memcpy(out + pixel + row, out + row, pixel);
}

/// One band from its bordered copy.
template <class T, class Sharpen, class CopyAlpha>
bool sharpenBand(const Frame& bordered, Frame& dst, std::int32_t y, ImgSize size, std::int32_t alpha,
                 const Sharpen& sharpen, const CopyAlpha& copyAlpha) {
    const auto* from = reinterpret_cast<const T*>(bordered.PixelAddress(1, 1, 0));
    auto* to = reinterpret_cast<T*>(dst.PixelAddress(0, y, 0));
    const std::int32_t first = alpha == 0 ? 1 : 0;
    return copyAlpha(from + alpha, bordered.Stride(), to + alpha, dst.Stride(), size) == kImgOk &&
           sharpen(from + first, bordered.Stride(), to + first, dst.Stride(), size) == kImgOk;
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
    if (!bordered.Allocate(size.width + 2, kBandRows + 2, src.BytesPerPixel(), allocator, src.Format(), false)) {
        return false;
    }
    for (std::int32_t y = 0; y < size.height; y += kBandRows) {
        const std::int32_t rows = std::min(kBandRows, size.height - y);
        // The last band's last two rows come first: in place they are sharpened already where they came from.
        for (std::int32_t i = 0; i < rows + 2; ++i) {
            std::uint8_t* out = bordered.PixelAddress(0, i, 0);
            if (i < 2 && y > 0) {
                std::memcpy(out, bordered.PixelAddress(0, kBandRows + i, 0),
                            static_cast<std::size_t>(bordered.Stride()));
            } else {
                copyWithEnds(src, size, y - 1 + i, out);
            }
        }
        const ImgSize band{size.width, rows};
        const bool done =
            isFloatFormat(src.Format())
                ? sharpenBand<float>(bordered, dst, y, band, alpha, ImgSharpenFA4, ImgCopyChannelFC4)
                : sharpenBand<std::uint8_t>(bordered, dst, y, band, alpha, ImgSharpen8A4, ImgCopyChannel8C4);
        if (!done) {
            return false;
        }
    }
    return true;
}

}  // namespace lumiset
