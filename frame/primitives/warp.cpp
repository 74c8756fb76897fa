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

struct WarpJob {
    Plane<const std::uint8_t> src;
    Plane<std::uint8_t> dst;
    bool nearest;
    bool blendsEdge;  ///< pixels just outside are mixed into the destination by their coverage
};

constexpr std::size_t kStretch = 64;  ///< pixels at a time
constexpr std::int32_t kWeightBits = 14;

/// 0, 1, 2 and so on.
struct Indices {
    constexpr Indices() {
        for (std::size_t i = 0; i < kStretch; ++i) {
            values[i] = static_cast<float>(i);
        }
    }
    alignas(64) float values[kStretch] = {};
};
constexpr Indices kIndices;

/// Where a stretch of pixels lies in the source: the pixel at the left top of each, counted from a base pixel, and
/// the shares of the next column and row.
struct Stretch {
    std::int32_t baseColumn;
    std::int32_t baseRow;
    alignas(64) std::int32_t column[kStretch];
    alignas(64) std::int32_t row[kStretch];
    alignas(64) float right[kStretch];
    alignas(64) float below[kStretch];
    // The shares of the upper two and of the lower two pixels as pairs of 16-bit numbers that add up to
    // 2^kWeightBits.
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

/// Positions along one axis, 0..extent: first + i * step for pixel i. Returns the base pixel.
template <bool kNearest>
HWY_INLINE std::int32_t locateAlong(double first, double step, std::int32_t extent, std::size_t count,
                                    std::int32_t* HWY_RESTRICT pixel, float* HWY_RESTRICT share) {
    const hn::CappedTag<float, 16> d;
    const hn::RebindToSigned<decltype(d)> di;
    const double base = std::floor(std::min(std::max(0.0, first), static_cast<double>(extent)));
    const auto offset = hn::Set(d, static_cast<float>(first - base));
    const auto steps = hn::Set(d, static_cast<float>(step));
    const auto lowest = hn::Set(d, static_cast<float>(-base));
    const auto highest = hn::Set(d, static_cast<float>(extent - base));
    // The last pixel pair ends at the picture's edge.
    const auto lastPair = hn::Set(d, static_cast<float>(extent - base - (extent > 0 && !kNearest ? 1 : 0)));
    for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
        auto position = hn::Add(offset, hn::Mul(hn::Load(d, kIndices.values + k), steps));
        position = hn::Min(hn::Max(position, lowest), highest);
        if constexpr (kNearest) {
            position = hn::Floor(hn::Add(position, hn::Set(d, 0.5F)));
        }
        const auto corner = hn::Min(hn::Floor(position), lastPair);
        hn::Store(hn::ConvertTo(di, corner), di, pixel + k);
        hn::Store(hn::Sub(position, corner), d, share + k);
    }
    return static_cast<std::int32_t>(base);
}

/// Positions of the `count` pixels of a row from (x, y) on.
template <bool kNearest>
HWY_INLINE void locate(const WarpPlan& plan, std::int32_t x, std::int32_t y, std::size_t count, Stretch& at) {
    const hn::CappedTag<float, 16> d;
    const hn::RebindToSigned<decltype(d)> di;
    const hn::RebindToUnsigned<decltype(d)> du;
    const double(*m)[3] = plan.matrix;
    at.baseColumn = locateAlong<kNearest>(m[0][0] * x + m[0][1] * y + m[0][2], m[0][0], plan.lastColumn, count,
                                          at.column, at.right);
    at.baseRow =
        locateAlong<kNearest>(m[1][0] * x + m[1][1] * y + m[1][2], m[1][0], plan.lastRow, count, at.row, at.below);
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
        const auto upper = hn::Or(hn::ShiftLeft<16>(upperRight), hn::And(upperLeft, low16));
        const auto lower = hn::Or(hn::ShiftLeft<16>(lowerRight), hn::And(lowerLeft, low16));
        hn::Store(hn::BitCast(du, upper), du, at.upper + k);
        hn::Store(hn::BitCast(du, lower), du, at.lower + k);
    }
}

using DBytes = hn::FixedTag<std::uint8_t, 16>;
using DWords = hn::FixedTag<std::int16_t, 8>;
using DSums = hn::FixedTag<std::int32_t, 4>;

HWY_INLINE hn::Vec<DBytes> pixelAt(const std::uint8_t* p) {
    std::uint32_t pixel;
    std::memcpy(&pixel, p, sizeof pixel);
    return hn::BitCast(DBytes(), hn::Set(hn::FixedTag<std::uint32_t, 4>(), pixel));
}

/// Two pixels side by side, their samples in pairs, times their shares.
HWY_INLINE hn::Vec<DSums> addPair(const std::uint8_t* left, std::ptrdiff_t right, std::uint32_t shares,
                                  hn::Vec<DSums> sum, hn::Vec<DSums>& odd) {
    const auto samples =
        hn::PromoteTo(DWords(), hn::LowerHalf(hn::InterleaveLower(pixelAt(left), pixelAt(left + right))));
    const auto weights = hn::BitCast(DWords(), hn::Set(hn::FixedTag<std::uint32_t, 4>(), shares));
    return hn::ReorderWidenMulAccumulate(DSums(), samples, weights, sum, odd);
}

HWY_INLINE hn::Vec<DSums> mixPixel(const std::uint8_t* base, std::ptrdiff_t step, std::ptrdiff_t right,
                                   std::ptrdiff_t below, const Stretch& at, std::size_t k) {
    const std::uint8_t* p = base + at.row[k] * step + std::ptrdiff_t{at.column[k]} * 4;
    auto odd = hn::Zero(DSums());
    auto sum = hn::Set(DSums(), 1 << (kWeightBits - 1));
    sum = addPair(p, right, at.upper[k], sum, odd);
    sum = addPair(p + below, right, at.lower[k], sum, odd);
    return hn::ShiftRight<kWeightBits>(hn::RearrangeToOddPlusEven(sum, odd));
}

/// The interpolated pixels of a stretch, and up to three more. `right` and `below` are the bytes to the next column and
/// row, 0 where there is none.
HWY_INLINE void samplePixels(const std::uint8_t* base, std::ptrdiff_t step, std::ptrdiff_t right, std::ptrdiff_t below,
                             const Stretch& at, std::size_t count, std::integral_constant<int, 4>,
                             std::uint8_t* HWY_RESTRICT out) {
    const hn::Half<DBytes> dHalf;
    for (std::size_t k = 0; k < count; k += 4) {
        const auto first = hn::ReorderDemote2To(DWords(), mixPixel(base, step, right, below, at, k),
                                                mixPixel(base, step, right, below, at, k + 1));
        const auto second = hn::ReorderDemote2To(DWords(), mixPixel(base, step, right, below, at, k + 2),
                                                 mixPixel(base, step, right, below, at, k + 3));
        hn::Store(hn::Combine(DBytes(), hn::DemoteTo(dHalf, second), hn::DemoteTo(dHalf, first)), DBytes(),
                  out + 4 * k);
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

template <int kChannels, bool kNearest>
void drawRows(const WarpPlan& plan, const WarpJob& job) {
    const std::ptrdiff_t right = plan.lastColumn > 0 && !kNearest ? kChannels : 0;
    const std::ptrdiff_t below = plan.lastRow > 0 && !kNearest ? job.src.step : 0;
    Stretch at;
    alignas(64) std::uint8_t pixels[kStretch * kChannels];
    // Hands the pixels from `x` to `last` of a row on in stretches.
    const auto eachStretch = [&](std::int32_t x, std::int32_t y, std::int32_t last, const auto& put) HWY_ATTR {
        while (x <= last) {
            const std::size_t count = std::min(static_cast<std::size_t>(last - x) + 1, kStretch);
            locate<kNearest>(plan, x, y, count, at);
            const std::uint8_t* base = job.src.row(at.baseRow) + std::ptrdiff_t{at.baseColumn} * kChannels;
            samplePixels(base, job.src.step, right, below, at, count, std::integral_constant<int, kChannels>(), pixels);
            put(x, static_cast<std::int32_t>(count));
            x += static_cast<std::int32_t>(count);
        }
    };
    for (std::int32_t y = plan.rows().first; y <= plan.rows().last; ++y) {
        std::uint8_t* row = job.dst.row(y);
        const auto [inside, touched] = plan.spansOf(y);
        eachStretch(inside.first, y, inside.last, [&](std::int32_t x, std::int32_t count) {
            std::memcpy(row + std::ptrdiff_t{x} * kChannels, pixels, static_cast<std::size_t>(count) * kChannels);
        });
        if (!job.blendsEdge) {
            continue;
        }
        const auto blend = [&](std::int32_t x, std::int32_t count) {
            for (std::int32_t k = 0; k < count; ++k) {
                const auto coverage = static_cast<float>(plan.coverage(x + k, y));
                for (std::int32_t c = 0; c < kChannels; ++c) {
                    std::uint8_t& out = row[(x + k) * kChannels + c];
                    const auto sample = static_cast<float>(pixels[k * kChannels + c]);
                    out =
                        static_cast<std::uint8_t>(sample * coverage + static_cast<float>(out) * (1 - coverage) + 0.5F);
                }
            }
        };
        // A row that crosses no inner pixel is all edge.
        eachStretch(touched.first, y, inside.empty() ? touched.last : inside.first - 1, blend);
        if (!inside.empty()) {
            eachStretch(inside.last + 1, y, touched.last, blend);
        }
    }
}

template <int kChannels>
void drawWarp(const WarpPlan& plan, const WarpJob& job) {
    job.nearest ? drawRows<kChannels, true>(plan, job) : drawRows<kChannels, false>(plan, job);
}

}  // namespace

void warp8C1(const WarpPlan& plan, const WarpJob& job) {
    drawWarp<1>(plan, job);
}
void warp8C4(const WarpPlan& plan, const WarpJob& job) {
    drawWarp<4>(plan, job);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

HWY_EXPORT(warp8C1);
HWY_EXPORT(warp8C4);

template <std::int32_t kChannels, class Draw>
ImgStatus warpAffine(Pixels<kChannels, const std::uint8_t> src, ImgSize srcSize, Pixels<kChannels, std::uint8_t> dst,
                     ImgSize dstSize, const double (*matrix)[3], std::uint32_t interpolation, const Draw& draw) {
    for (const ImgStatus status :
         {checkPlanes(srcSize, {src, arrayArgument(dst.data), arrayArgument(matrix)}), checkPlanes(dstSize, {dst})}) {
        if (status != kImgOk) {
            return status;
        }
    }
    const std::uint32_t code = interpolation & ~kImgSmoothEdge;
    const auto plan = WarpPlan::ofMatrix(srcSize, matrix, dstSize);
    if (!plan || (code != kImgNearest && code != kImgLinear)) {
        return kImgBadRange;
    }
    draw(*plan, WarpJob{src, dst, code == kImgNearest, code != interpolation});
    return kImgOk;
}

}  // namespace

ImgStatus ImgWarpAffine8C1(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                           std::int32_t dstStep, const double (*matrix)[3], std::uint32_t interpolation,
                           ImgSize dstSize) noexcept {
    return warpAffine(pixels<1>(src, srcStep), srcSize, pixels<1>(dst, dstStep), dstSize, matrix, interpolation,
                      HWY_DYNAMIC_DISPATCH(warp8C1));
}

ImgStatus ImgWarpAffine8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                           std::int32_t dstStep, const double (*matrix)[3], std::uint32_t interpolation,
                           ImgSize dstSize) noexcept {
    return warpAffine(pixels<4>(src, srcStep), srcSize, pixels<4>(dst, dstStep), dstSize, matrix, interpolation,
                      HWY_DYNAMIC_DISPATCH(warp8C4));
}

}  // namespace lumiset
#endif
