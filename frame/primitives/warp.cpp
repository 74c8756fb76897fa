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

/// Positions along one axis, 0..extent: (first + i * step) / (1 + i * wStep) for pixel i. Returns the base pixel.
template <bool kNearest>
HWY_INLINE std::int32_t locateAlong(double first, double step, double wStep, std::int32_t extent, std::size_t count,
                                    std::int32_t* HWY_RESTRICT pixel, float* HWY_RESTRICT share) {
    const hn::CappedTag<float, 16> d;
    const hn::RebindToSigned<decltype(d)> di;
    const double base = std::floor(std::min(std::max(0.0, first), static_cast<double>(extent)));
    const auto offset = hn::Set(d, static_cast<float>(first - base));
    const auto steps = hn::Set(d, static_cast<float>(step - base * wStep));
    const auto wSteps = hn::Set(d, static_cast<float>(wStep));
    const auto lowest = hn::Set(d, static_cast<float>(-base));
    const auto highest = hn::Set(d, static_cast<float>(extent - base));
    // The last pixel pair ends at the rectangle's edge.
    const auto lastPair = hn::Set(d, static_cast<float>(extent - base - (extent > 0 && !kNearest ? 1 : 0)));
    for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
        const auto index = hn::Load(d, kIndices.values + k);
        const auto w = hn::Add(hn::Set(d, 1.0F), hn::Mul(index, wSteps));
        auto position = hn::Div(hn::Add(offset, hn::Mul(index, steps)), w);
        // A position that is not a number, at the horizon of a steep perspective, counts as the lowest.
        position = hn::IfThenElse(hn::Ge(position, lowest), hn::Min(position, highest), lowest);
        if constexpr (kNearest) {
            position = hn::Floor(hn::Add(position, hn::Set(d, 0.5F)));
        }
        const auto corner = hn::Min(hn::Floor(position), lastPair);
        hn::Store(hn::ConvertTo(di, corner), di, pixel + k);
        hn::Store(hn::Sub(position, corner), d, share + k);
    }
    return static_cast<std::int32_t>(base);
}

enum Walk { kAlongRow = 0, kDownColumn = 1 };

/// Positions of the `count` pixels from (x, y) on.
template <Walk kWalk, bool kNearest, bool kIntegerWeights>
HWY_INLINE void locate(const WarpPlan& plan, std::int32_t x, std::int32_t y, std::size_t count, Stretch& at) {
    const hn::CappedTag<float, 16> d;
    const hn::RebindToSigned<decltype(d)> di;
    const hn::RebindToUnsigned<decltype(d)> du;
    const ImgPixelRect& rect = plan.rect;
    double start[3];
    for (int i = 0; i < 3; ++i) {
        start[i] = plan.matrix[i][0] * x + plan.matrix[i][1] * y + plan.matrix[i][2];
    }
    // Divisions, not products with a reciprocal: a map that moves nothing is then exact.
    const double w = start[2];
    const double wStep = plan.matrix[2][kWalk] / w;
    at.baseColumn = rect.left + locateAlong<kNearest>(start[0] / w, plan.matrix[0][kWalk] / w, wStep,
                                                      rect.right - rect.left, count, at.column, at.right);
    at.baseRow = rect.top + locateAlong<kNearest>(start[1] / w, plan.matrix[1][kWalk] / w, wStep,
                                                  rect.bottom - rect.top, count, at.row, at.below);
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
            const auto upper = hn::Or(hn::ShiftLeft<16>(upperRight), hn::And(upperLeft, low16));
            const auto lower = hn::Or(hn::ShiftLeft<16>(lowerRight), hn::And(lowerLeft, low16));
            hn::Store(hn::BitCast(du, upper), du, at.upper + k);
            hn::Store(hn::BitCast(du, lower), du, at.lower + k);
        }
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
HWY_INLINE void copySamples(const T* HWY_RESTRICT from, std::size_t samples, T* HWY_RESTRICT to) {
    const hn::FixedTag<T, 16 / sizeof(T)> d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= samples; i += hn::Lanes(d)) {
        hn::StoreU(hn::LoadU(d, from + i), d, to + i);
    }
    constexpr std::size_t kWord = 4 / sizeof(T);
    for (; i + kWord <= samples; i += kWord) {
        std::memcpy(to + i, from + i, 4);
    }
    for (; i < samples; ++i) {
        to[i] = from[i];
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

/// Interpolates pixels of a warp.
template <int kChannels, bool kNearest, class T>
class Sampler {
public:
    Sampler(const WarpPlan& plan, const WarpJob<T>& job)
        : m_plan(plan),
          m_src(job.src),
          m_right(plan.rect.right > plan.rect.left && !kNearest ? kPixelBytes : 0),
          m_below(plan.rect.bottom > plan.rect.top && !kNearest ? job.src.step : 0) {}

    /// The `count` pixels from (x, y) on, at most `kStretch`, and up to three more.
    template <Walk kWalk>
    HWY_INLINE void sample(std::int32_t x, std::int32_t y, std::size_t count, T* out) {
        locate<kWalk, kNearest, sizeof(T) == 1>(m_plan, x, y, count, m_at);
        const T* base = m_src.row(m_at.baseRow) + std::ptrdiff_t{m_at.baseColumn} * kChannels;
        samplePixels(base, m_src.step, m_right, m_below, m_at, count, std::integral_constant<int, kChannels>(), out);
    }

private:
    static constexpr std::ptrdiff_t kPixelBytes = static_cast<std::ptrdiff_t>(sizeof(T)) * kChannels;

    const WarpPlan& m_plan;
    const Plane<const T> m_src;
    const std::ptrdiff_t m_right;
    const std::ptrdiff_t m_below;
    Stretch m_at;
};

/// Widest part of rows that is walked column by column.
constexpr std::int32_t kNarrow = 16;

/// Draws rows of one narrow span column by column, so that the positions of many pixels are computed together.
template <int kChannels, bool kNearest, class T>
void drawNarrow(const WarpJob<T>& job, Sampler<kChannels, kNearest, T>& sampler, const PixelSpan& columns,
                const PixelSpan& rows) {
    struct Pixel {
        T samples[static_cast<std::size_t>(kChannels)];
    };
    alignas(64) Pixel block[kNarrow][kStretch];
    const std::int32_t width = columns.last - columns.first + 1;
    for (std::int32_t y = rows.first; y <= rows.last; y += static_cast<std::int32_t>(kStretch)) {
        const std::size_t height = std::min(static_cast<std::size_t>(rows.last - y) + 1, kStretch);
        for (std::int32_t x = 0; x < width; ++x) {
            sampler.template sample<kDownColumn>(columns.first + x, y, height, block[x]->samples);
        }
        for (std::size_t i = 0; i < height; ++i) {
            T* out = job.dst.row(y + static_cast<std::int32_t>(i)) + std::ptrdiff_t{columns.first} * kChannels;
            for (std::int32_t x = 0; x < width; ++x) {
                std::memcpy(out + std::ptrdiff_t{x} * kChannels, &block[x][i], sizeof(Pixel));
            }
        }
    }
}

template <int kChannels, bool kNearest, class T>
void drawRows(const WarpPlan& plan, const WarpJob<T>& job) {
    Sampler<kChannels, kNearest, T> sampler(plan, job);
    alignas(64) T pixels[kStretch * kChannels];
    const auto lengthOf = [](std::int32_t x, std::int32_t last) {
        return std::min(static_cast<std::size_t>(last - x) + 1, kStretch);
    };
    for (std::int32_t y = plan.rows().first; y <= plan.rows().last; ++y) {
        const RowSpans spans = plan.spansOf(y);
        const PixelSpan steady = plan.steadyRows();
        const bool plain = job.edge == WarpEdge::kHard ||
                           (spans.touched.first == spans.inside.first && spans.touched.last == spans.inside.last);
        if (y == steady.first && steady.last > y && plain && spans.inside.last - spans.inside.first < kNarrow) {
            drawNarrow(job, sampler, spans.inside, steady);
            y = steady.last;
            continue;
        }
        T* row = job.dst.row(y);
        const auto drawTouched = [&](std::int32_t x, std::int32_t last) HWY_ATTR {
            while (x <= last) {
                const std::size_t count = lengthOf(x, last);
                sampler.template sample<kAlongRow>(x, y, count, pixels);
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
            sampler.template sample<kAlongRow>(inside.first, y, count, pixels);
            copySamples(pixels, count * kChannels, row + std::ptrdiff_t{inside.first} * kChannels);
            inside.first += static_cast<std::int32_t>(count);
        }
    }
}

template <int kChannels, class T>
void drawWarp(const WarpPlan& plan, const WarpJob<T>& job) {
    job.nearest ? drawRows<kChannels, true>(plan, job) : drawRows<kChannels, false>(plan, job);
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
