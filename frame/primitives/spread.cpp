#include "frame/primitives/spread.h"

#include <cstddef>
#include <cstring>

#include "frame/fetch_ahead.h"
#include "frame/primitives/check.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/spread.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

template <class T>
void spread(Plane<const T> src, Plane<T> dst, T alpha, bool alphaFirst, ImgSize size) {
    const hn::ScalableTag<T> d;
    const std::size_t lanes = hn::Lanes(d);
    const auto width = static_cast<std::size_t>(size.width);
    const auto opaque = hn::Set(d, alpha);
    const auto step = [&](const T* from, T* to) HWY_ATTR {
        fetchAhead(to, 4 * lanes);
        const auto gray = hn::LoadU(d, from);
        if (alphaFirst) {
            hn::StoreInterleaved4(opaque, gray, gray, gray, d, to);
        } else {
            hn::StoreInterleaved4(gray, gray, gray, opaque, d, to);
        }
    };
    HWY_ALIGN T restFrom[HWY_MAX_BYTES / sizeof(T)] = {};
    HWY_ALIGN T restTo[HWY_MAX_BYTES / sizeof(T) * 4];
    for (std::int32_t y = 0; y < size.height; ++y) {
        const T* from = src.row(y);
        T* to = dst.row(y);
        std::size_t x = 0;
        for (; x + lanes <= width; x += lanes) {
            step(from + x, to + 4 * x);
        }
        if (x < width) {
            // The last pixels go through copies, so that nothing past them is read or written.
            std::memcpy(restFrom, from + x, (width - x) * sizeof(T));
            step(restFrom, restTo);
            std::memcpy(to + 4 * x, restTo, (width - x) * 4 * sizeof(T));
        }
    }
}

}  // namespace

void spreadGray8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, std::uint8_t alpha, bool alphaFirst,
                 ImgSize size) {
    spread(src, dst, alpha, alphaFirst, size);
}
void spreadGrayF(Plane<const float> src, Plane<float> dst, float alpha, bool alphaFirst, ImgSize size) {
    spread(src, dst, alpha, alphaFirst, size);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(spreadGray8);
HWY_EXPORT(spreadGrayF);

ImgStatus ImgSpreadGray8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                           std::uint8_t alpha, bool alphaFirst, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(spreadGray8), size, pixels<1>(src, srcStep), pixels<4>(dst, dstStep), alpha,
                   alphaFirst);
}

ImgStatus ImgSpreadGrayFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, float alpha,
                           bool alphaFirst, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(spreadGrayF), size, pixels<1>(src, srcStep), pixels<4>(dst, dstStep), alpha,
                   alphaFirst);
}

}  // namespace lumiset
#endif
