// Warps walk the destination. The source positions of a stretch of pixels are computed together, relative to a whole
// pixel near them, so that single precision is plenty; then each pixel is interpolated with all its channels at once.

#include "frame/primitives/warp.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "frame/primitives/check.h"
#include "frame/primitives/warp_plan.h"

#ifndef LUMISET_WARP_COMMON
#define LUMISET_WARP_COMMON
namespace lumiset {
namespace {

enum class WarpEdge {
    kHard,   ///< touched pixels stay
    kBlend,  ///< touched pixels are mixed into the destination by their coverage
    kAlpha,  ///< touched pixels have their alpha scaled, and win against a smaller alpha
};

template <class T>
struct WarpJob {
    Plane<const T> src;
    Plane<T> dst;
    bool nearest;
    WarpEdge edge;
    std::int32_t alphaIndex;
};

constexpr std::size_t kStretch = 64;  ///< pixels at a time
constexpr std::int32_t kWeightBits = 14;

/// Where a stretch of pixels lies in the source: the pixel at the left top of each, counted from a base pixel, and
/// the shares of the next column and row.
struct Stretch {
    std::int32_t baseColumn;
    std::int32_t baseRow;
    alignas(64) std::int32_t column[kStretch];
    alignas(64) std::int32_t row[kStretch];
    alignas(64) float right[kStretch];
    alignas(64) float below[kStretch];
    // For whole numbers: the shares of the upper two and of the lower two pixels as pairs of 16-bit numbers that add
    // up to 2^kWeightBits.
    alignas(64) std::uint32_t upper[kStretch];
    alignas(64) std::uint32_t lower[kStretch];
};

}  // namespace
}  // namespace lumiset
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/warp.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// Positions of the `count` pixels from (x, y) on.
template <bool kIntegerWeights>
HWY_INLINE void locate(const WarpPlan& plan, bool nearest, std::int32_t x, std::int32_t y, std::size_t count,
                       Stretch& at) {
    const hn::CappedTag<float, 16> d;
    const hn::RebindToSigned<decltype(d)> di;
    const hn::RebindToUnsigned<decltype(d)> du;
    const ImgPixelRect& rect = plan.rect;
    double start[3];
    for (int i = 0; i < 3; ++i) {
        start[i] = plan.matrix[i][0] * x + plan.matrix[i][1] * y + plan.matrix[i][2];
    }
    const double scale = 1 / start[2];
    const double wStep = plan.matrix[2][0] * scale;
    const auto axis = [&](int i, std::int32_t low, std::int32_t high, std::int32_t& base,
                          std::int32_t* HWY_RESTRICT pixel, float* HWY_RESTRICT share) HWY_ATTR {
        const double extent = high - low;
        const double first = start[i] * scale;
        const double whole = std::floor(std::min(std::max(0.0, first), extent));
        base = low + static_cast<std::int32_t>(whole);
        const auto offset = hn::Set(d, static_cast<float>(first - whole));
        const auto step = hn::Set(d, static_cast<float>(plan.matrix[i][0] * scale - whole * wStep));
        const auto lowest = hn::Set(d, static_cast<float>(-whole));
        const auto highest = hn::Set(d, static_cast<float>(extent - whole));
        // The last pixel pair ends at the rectangle's edge.
        const auto lastPair = hn::Set(d, static_cast<float>(extent - whole - (extent > 0 && !nearest ? 1 : 0)));
        for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
            const auto index = hn::ConvertTo(d, hn::Iota(di, static_cast<std::int32_t>(k)));
            const auto w = hn::Add(hn::Set(d, 1.0F), hn::Mul(index, hn::Set(d, static_cast<float>(wStep))));
            auto position = hn::Div(hn::Add(offset, hn::Mul(index, step)), w);
            // A position that is not a number, at the horizon of a steep perspective, counts as the lowest.
            position = hn::IfThenElse(hn::Ge(position, lowest), hn::Min(position, highest), lowest);
            if (nearest) {
                position = hn::Floor(hn::Add(position, hn::Set(d, 0.5F)));
            }
            const auto corner = hn::Min(hn::Floor(position), lastPair);
            hn::Store(hn::ConvertTo(di, corner), di, pixel + k);
            hn::Store(hn::Sub(position, corner), d, share + k);
        }
    };
    axis(0, rect.left, rect.right, at.baseColumn, at.column, at.right);
    axis(1, rect.top, rect.bottom, at.baseRow, at.row, at.below);
    if constexpr (kIntegerWeights) {
        const auto one = hn::Set(d, static_cast<float>(1 << kWeightBits));
        const auto half = hn::Set(d, 0.5F);
        const auto low16 = hn::Set(di, 0xFFFF);
        for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
            const auto right = hn::Load(d, at.right + k);
            const auto below = hn::Mul(hn::Load(d, at.below + k), one);
            const auto lowerBoth = hn::ConvertTo(di, hn::Add(below, half));
            const auto rightBoth = hn::ConvertTo(di, hn::Add(hn::Mul(right, one), half));
            const auto lowerRight = hn::ConvertTo(di, hn::Add(hn::Mul(right, below), half));
            const auto upperRight = hn::Sub(rightBoth, lowerRight);
            const auto lowerLeft = hn::Sub(lowerBoth, lowerRight);
            const auto upperLeft = hn::Sub(hn::Sub(hn::Set(di, 1 << kWeightBits), rightBoth), lowerLeft);
            const auto pair = [&](auto first, auto second) HWY_ATTR {
                return hn::BitCast(du, hn::Or(hn::ShiftLeft<16>(second), hn::And(first, low16)));
            };
            hn::Store(pair(upperLeft, upperRight), du, at.upper + k);
            hn::Store(pair(lowerLeft, lowerRight), du, at.lower + k);
        }
    }
}

/// The interpolated pixels of a stretch. `right` and `below` are the bytes to the next column and row, 0 where there
/// is none.
HWY_INLINE void samplePixels(const std::uint8_t* base, std::ptrdiff_t step, std::ptrdiff_t right, std::ptrdiff_t below,
                             const Stretch& at, std::size_t count, std::integral_constant<int, 4>,
                             std::uint8_t* HWY_RESTRICT out) {
    const hn::FixedTag<std::uint32_t, 4> du32;
    const hn::FixedTag<std::int32_t, 4> di32;
    const hn::FixedTag<std::uint8_t, 16> du8;
    const hn::FixedTag<std::int16_t, 8> di16;
    const hn::FixedTag<std::uint8_t, 4> dPixel;
    const auto half = hn::Set(di32, 1 << (kWeightBits - 1));
    const auto pixelAt = [&](const std::uint8_t* p) HWY_ATTR {
        std::uint32_t pixel;
        std::memcpy(&pixel, p, sizeof pixel);
        return hn::BitCast(du8, hn::Set(du32, pixel));
    };
    for (std::size_t k = 0; k < count; ++k) {
        const std::uint8_t* p = base + at.row[k] * step + std::ptrdiff_t{at.column[k]} * 4;
        const auto upper = hn::PromoteTo(di16, hn::LowerHalf(hn::InterleaveLower(pixelAt(p), pixelAt(p + right))));
        const auto lower =
            hn::PromoteTo(di16, hn::LowerHalf(hn::InterleaveLower(pixelAt(p + below), pixelAt(p + below + right))));
        auto odd = hn::Zero(di32);
        auto sum = hn::ReorderWidenMulAccumulate(di32, upper, hn::BitCast(di16, hn::Set(du32, at.upper[k])), half, odd);
        sum = hn::ReorderWidenMulAccumulate(di32, lower, hn::BitCast(di16, hn::Set(du32, at.lower[k])), sum, odd);
        const auto rounded = hn::ShiftRight<kWeightBits>(hn::RearrangeToOddPlusEven(sum, odd));
        hn::StoreU(hn::DemoteTo(dPixel, rounded), dPixel, out + 4 * k);
    }
}

HWY_INLINE void samplePixels(const std::uint8_t* base, std::ptrdiff_t step, std::ptrdiff_t right, std::ptrdiff_t below,
                             const Stretch& at, std::size_t count, std::integral_constant<int, 1>,
                             std::uint8_t* HWY_RESTRICT out) {
    const auto first = [](std::uint32_t pair) { return static_cast<std::int16_t>(pair & 0xFFFFU); };
    const auto second = [](std::uint32_t pair) { return static_cast<std::int16_t>(pair >> 16U); };
    for (std::size_t k = 0; k < count; ++k) {
        const std::uint8_t* p = base + at.row[k] * step + at.column[k];
        const std::int32_t sum = p[0] * first(at.upper[k]) + p[right] * second(at.upper[k]) +
                                 p[below] * first(at.lower[k]) + p[below + right] * second(at.lower[k]);
        out[k] = static_cast<std::uint8_t>(std::clamp((sum + (1 << (kWeightBits - 1))) >> kWeightBits, 0, 255));
    }
}

HWY_INLINE void samplePixels(const float* base, std::ptrdiff_t step, std::ptrdiff_t right, std::ptrdiff_t below,
                             const Stretch& at, std::size_t count, std::integral_constant<int, 4>,
                             float* HWY_RESTRICT out) {
    const hn::FixedTag<float, 4> d;
    const auto bytes = [](const float* p, std::ptrdiff_t offset) {
        return reinterpret_cast<const float*>(reinterpret_cast<const std::uint8_t*>(p) + offset);
    };
    for (std::size_t k = 0; k < count; ++k) {
        const float* p = bytes(base, at.row[k] * step + std::ptrdiff_t{at.column[k]} * 16);
        const float* q = bytes(p, below);
        const auto along = hn::Set(d, at.right[k]);
        const auto mix = [&](auto a, auto b, auto share) HWY_ATTR { return hn::Add(a, hn::Mul(hn::Sub(b, a), share)); };
        const auto upper = mix(hn::LoadU(d, p), hn::LoadU(d, bytes(p, right)), along);
        const auto lower = mix(hn::LoadU(d, q), hn::LoadU(d, bytes(q, right)), along);
        hn::StoreU(mix(upper, lower, hn::Set(d, at.below[k])), d, out + 4 * k);
    }
}

template <class T>
T scaled(T value, float share) {
    const float product = static_cast<float>(value) * share;
    if constexpr (sizeof(T) == 1) {
        return static_cast<T>(product + 0.5F);
    } else {
        return product;
    }
}

/// Puts one touched pixel into the destination.
template <int kChannels, class T>
void putTouched(const WarpJob<T>& job, float coverage, const T* pixel, T* out) {
    if (job.edge == WarpEdge::kBlend) {
        for (int c = 0; c < kChannels; ++c) {
            const float mixed = static_cast<float>(pixel[c]) * coverage + static_cast<float>(out[c]) * (1 - coverage);
            out[c] = static_cast<T>(sizeof(T) == 1 ? mixed + 0.5F : mixed);
        }
    } else {
        const T alpha = scaled(pixel[job.alphaIndex], coverage);
        if (alpha > out[job.alphaIndex]) {
            std::copy_n(pixel, kChannels, out);
            out[job.alphaIndex] = alpha;
        }
    }
}

template <int kChannels, class T>
void drawWarp(const WarpPlan& plan, const WarpJob<T>& job) {
    const bool wide = plan.rect.right > plan.rect.left && !job.nearest;
    const bool high = plan.rect.bottom > plan.rect.top && !job.nearest;
    const std::ptrdiff_t right = wide ? static_cast<std::ptrdiff_t>(sizeof(T)) * kChannels : 0;
    const std::ptrdiff_t below = high ? job.src.step : 0;
    Stretch at;
    const auto sample = [&](std::int32_t x, std::int32_t y, std::size_t count, T* out) HWY_ATTR {
        locate<sizeof(T) == 1>(plan, job.nearest, x, y, count, at);
        const T* base = job.src.row(at.baseRow) + std::ptrdiff_t{at.baseColumn} * kChannels;
        samplePixels(base, job.src.step, right, below, at, count, std::integral_constant<int, kChannels>(), out);
    };
    const auto lengthOf = [](std::int32_t x, std::int32_t last) {
        return std::min(static_cast<std::size_t>(last - x) + 1, kStretch);
    };
    for (std::int32_t y = plan.rows().first; y <= plan.rows().last; ++y) {
        const RowSpans spans = plan.spansOf(y);
        T* row = job.dst.row(y);
        const auto drawTouched = [&](std::int32_t x, std::int32_t last) HWY_ATTR {
            while (x <= last) {
                T pixels[kStretch * kChannels];
                const std::size_t count = lengthOf(x, last);
                sample(x, y, count, pixels);
                for (std::size_t k = 0; k < count; ++k, ++x) {
                    const auto coverage = static_cast<float>(plan.coverage(x, y));
                    putTouched<kChannels>(job, coverage, pixels + k * kChannels, row + std::ptrdiff_t{x} * kChannels);
                }
            }
        };
        PixelSpan inside = spans.inside;
        if (job.edge != WarpEdge::kHard) {
            if (inside.empty()) {
                drawTouched(spans.touched.first, spans.touched.last);
                continue;
            }
            drawTouched(spans.touched.first, inside.first - 1);
            drawTouched(inside.last + 1, spans.touched.last);
        }
        while (!inside.empty()) {
            const std::size_t count = lengthOf(inside.first, inside.last);
            sample(inside.first, y, count, row + std::ptrdiff_t{inside.first} * kChannels);
            inside.first += static_cast<std::int32_t>(count);
        }
    }
}

}  // namespace

void warp8C1(const WarpPlan& plan, const WarpJob<std::uint8_t>& job) {
    drawWarp<1>(plan, job);
}
void warp8C4(const WarpPlan& plan, const WarpJob<std::uint8_t>& job) {
    drawWarp<4>(plan, job);
}
void warpFC4(const WarpPlan& plan, const WarpJob<float>& job) {
    drawWarp<4>(plan, job);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

HWY_EXPORT(warp8C1);
HWY_EXPORT(warp8C4);
HWY_EXPORT(warpFC4);

ImgStatus checkPair(ImgSize srcSize, const PlaneArgument& src, ImgSize dstSize, const PlaneArgument& dst,
                    const void* geometry) {
    const ImgStatus status = checkPlanes(srcSize, {src, arrayArgument(dst.data), arrayArgument(geometry)});
    return status != kImgOk ? status : checkPlanes(dstSize, {dst});
}

template <class Draw>
ImgStatus warpAffine(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                     std::int32_t dstStep, const double (*matrix)[3], std::uint32_t interpolation, ImgSize dstSize,
                     std::int32_t channels, const Draw& draw) {
    const ImgStatus status = checkPair(srcSize, {src, srcStep, channels}, dstSize, {dst, dstStep, channels}, matrix);
    if (status != kImgOk) {
        return status;
    }
    const std::uint32_t code = interpolation & ~kImgSmoothEdge;
    const auto plan = WarpPlan::ofMatrix(srcSize, matrix, dstSize);
    if (!plan || (code != kImgNearest && code != kImgLinear)) {
        return kImgBadRange;
    }
    const WarpEdge edge = (interpolation & kImgSmoothEdge) != 0 ? WarpEdge::kBlend : WarpEdge::kHard;
    draw(*plan, WarpJob<std::uint8_t>{{src, srcStep}, {dst, dstStep}, code == kImgNearest, edge, 0});
    return kImgOk;
}

template <class T, class Draw>
ImgStatus warpQuad(const T* src, std::int32_t srcStep, ImgSize srcSize, const ImgPixelRect& rect, T* dst,
                   std::int32_t dstStep, const ImgPoint* quad, std::int32_t alphaIndex, ImgSize dstSize,
                   const Draw& draw) {
    constexpr std::int32_t kBytes = 4 * sizeof(T);
    const ImgStatus status = checkPair(srcSize, {src, srcStep, kBytes}, dstSize, {dst, dstStep, kBytes}, quad);
    if (status != kImgOk) {
        return status;
    }
    const bool inside = rect.left >= 0 && rect.top >= 0 && rect.right >= rect.left && rect.bottom >= rect.top &&
                        rect.right < srcSize.width && rect.bottom < srcSize.height;
    if (!inside || (alphaIndex != 0 && alphaIndex != 3)) {
        return kImgBadRange;
    }
    const auto plan = WarpPlan::ofQuad(rect, quad, dstSize);
    if (!plan) {
        return kImgBadRange;
    }
    draw(*plan, WarpJob<T>{{src, srcStep}, {dst, dstStep}, false, WarpEdge::kAlpha, alphaIndex});
    return kImgOk;
}

}  // namespace

ImgStatus ImgWarpAffine8C1(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                           std::int32_t dstStep, const double (*matrix)[3], std::uint32_t interpolation,
                           ImgSize dstSize) noexcept {
    return warpAffine(src, srcStep, srcSize, dst, dstStep, matrix, interpolation, dstSize, 1,
                      HWY_DYNAMIC_DISPATCH(warp8C1));
}

ImgStatus ImgWarpAffine8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                           std::int32_t dstStep, const double (*matrix)[3], std::uint32_t interpolation,
                           ImgSize dstSize) noexcept {
    return warpAffine(src, srcStep, srcSize, dst, dstStep, matrix, interpolation, dstSize, 4,
                      HWY_DYNAMIC_DISPATCH(warp8C4));
}

ImgStatus ImgWarpQuad8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, const ImgPixelRect& rect,
                         std::uint8_t* dst, std::int32_t dstStep, const ImgPoint* quad, std::int32_t alphaIndex,
                         ImgSize dstSize) noexcept {
    return warpQuad(src, srcStep, srcSize, rect, dst, dstStep, quad, alphaIndex, dstSize,
                    HWY_DYNAMIC_DISPATCH(warp8C4));
}

ImgStatus ImgWarpQuadFC4(const float* src, std::int32_t srcStep, ImgSize srcSize, const ImgPixelRect& rect, float* dst,
                         std::int32_t dstStep, const ImgPoint* quad, std::int32_t alphaIndex,
                         ImgSize dstSize) noexcept {
    return warpQuad(src, srcStep, srcSize, rect, dst, dstStep, quad, alphaIndex, dstSize,
                    HWY_DYNAMIC_DISPATCH(warpFC4));
}

}  // namespace lumiset
#endif
