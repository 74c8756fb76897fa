#include "frame/primitives/convolve.h"

#include <algorithm>
#include <type_traits>

#include "frame/operations/filter.h"
#include "frame/operations/filter_frames.h"
#include "frame/primitives/copy.h"

namespace lumiset {
namespace {

/// One axis of a convolution: where the results come from and go to, and how many there are.
struct Span {
    std::int32_t from;
    std::int32_t to;
    std::int32_t count;
};

/// The middle of `dst`, rounded up.
Span middle(std::int32_t from, std::int64_t available, std::int32_t dst) {
    const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(available, dst));
    return {from, (dst - count + 1) / 2, count};
}

template <class Tap>
bool convolve(const Frame& src, Frame& dst, const Tap* kernel, std::int32_t kernelSize, std::int32_t anchor,
              std::int32_t margin, std::int32_t divisor, bool includeAlpha, bool rows) {
    using T = std::conditional_t<std::is_same_v<Tap, float>, float, std::uint8_t>;
    const std::int32_t format = dst.Format();
    if (!sameSamples(src, dst) || isFloat(src) != std::is_same_v<T, float> || kernel == nullptr || kernelSize < 1 ||
        anchor < 0 || anchor >= kernelSize || margin < 0) {
        return false;
    }
    const auto along = [&](std::int32_t from, std::int32_t to) {
        return middle(anchor, std::int64_t{from} - kernelSize + 1, to);
    };
    const auto across = [&](std::int32_t from, std::int32_t to) {
        return middle(margin, std::int64_t{from} - 2 * std::int64_t{margin}, to);
    };
    const Span x = rows ? along(src.Width(), dst.Width()) : across(src.Width(), dst.Width());
    const Span y = rows ? across(src.Height(), dst.Height()) : along(src.Height(), dst.Height());
    if (x.count < 1 || y.count < 1) {
        return false;
    }
    const ImgSize size{x.count, y.count};
    const std::int32_t alpha = AlphaIndex(format);
    const bool colorsOnly = alpha >= 0 && !includeAlpha;
    const auto* in = reinterpret_cast<const T*>(src.PixelAddress(x.from, y.from, 0));
    auto* out = reinterpret_cast<T*>(dst.PixelAddress(x.to, y.to, 0));
    const std::int32_t first = colorsOnly && alpha == 0 ? 1 : 0;
    ImgStatus status;
    if constexpr (std::is_same_v<T, float>) {
        const auto function = alpha < 0    ? (rows ? ImgConvolveRowsFC1 : ImgConvolveColumnsFC1)
                              : colorsOnly ? (rows ? ImgConvolveRowsFA4 : ImgConvolveColumnsFA4)
                                           : (rows ? ImgConvolveRowsFC4 : ImgConvolveColumnsFC4);
        status = function(in + first, src.Stride(), out + first, dst.Stride(), size, kernel, kernelSize, anchor);
        if (status == kImgOk && colorsOnly) {
            status = ImgCopyChannelFC4(in + alpha, src.Stride(), out + alpha, dst.Stride(), size);
        }
    } else {
        const auto function = alpha < 0    ? (rows ? ImgConvolveRows8C1 : ImgConvolveColumns8C1)
                              : colorsOnly ? (rows ? ImgConvolveRows8A4 : ImgConvolveColumns8A4)
                                           : (rows ? ImgConvolveRows8C4 : ImgConvolveColumns8C4);
        status =
            function(in + first, src.Stride(), out + first, dst.Stride(), size, kernel, kernelSize, anchor, divisor);
        if (status == kImgOk && colorsOnly) {
            status = ImgCopyChannel8C4(in + alpha, src.Stride(), out + alpha, dst.Stride(), size);
        }
    }
    return status == kImgOk;
}

}  // namespace

bool FrameConvolveRows(const Frame& src, Frame& dst, const std::int32_t* kernel, std::int32_t kernelSize,
                       std::int32_t anchorX, std::int32_t yMargin, std::int32_t divisor, bool includeAlpha) noexcept {
    return convolve(src, dst, kernel, kernelSize, anchorX, yMargin, divisor, includeAlpha, true);
}

bool FrameConvolveRows(const Frame& src, Frame& dst, const float* kernel, std::int32_t kernelSize, std::int32_t anchorX,
                       std::int32_t yMargin, bool includeAlpha) noexcept {
    return convolve(src, dst, kernel, kernelSize, anchorX, yMargin, 1, includeAlpha, true);
}

bool FrameConvolveColumns(const Frame& src, Frame& dst, const std::int32_t* kernel, std::int32_t kernelSize,
                          std::int32_t xMargin, std::int32_t anchorY, std::int32_t divisor,
                          bool includeAlpha) noexcept {
    return convolve(src, dst, kernel, kernelSize, anchorY, xMargin, divisor, includeAlpha, false);
}

bool FrameConvolveColumns(const Frame& src, Frame& dst, const float* kernel, std::int32_t kernelSize,
                          std::int32_t xMargin, std::int32_t anchorY, bool includeAlpha) noexcept {
    return convolve(src, dst, kernel, kernelSize, anchorY, xMargin, 1, includeAlpha, false);
}

}  // namespace lumiset
