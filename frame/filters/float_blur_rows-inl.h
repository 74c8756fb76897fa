// The horizontal pass of the float blur, which walks x with four sums: a pixel's, or a sample's of four mask rows.
// Compiled once per instruction set; include like row_loops-inl.h.

#if defined(LUMISET_FLOAT_BLUR_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_FLOAT_BLUR_ROWS_INL_H
#undef LUMISET_FLOAT_BLUR_ROWS_INL_H
#else
#define LUMISET_FLOAT_BLUR_ROWS_INL_H
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/filters/blur_rows.h"
#include "frame/filters/triangular_kernel.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using FourDoubles = hn::CappedTag<double, 4>;  ///< four lanes where the vectors hold them, else two
using FourSingles = hn::Rebind<float, FourDoubles>;

/// Columns beyond the inner ones take the nearest inner one.
inline void spreadEdges(float* columns, std::int32_t width, std::int32_t reach) {
    const std::int32_t ring = edgeRing(width);
    for (std::int32_t x = -reach; x < ring; ++x) {
        std::memcpy(columns + 4 * x, columns + 4 * ring, 4 * sizeof(float));
    }
    for (std::int32_t x = width - ring; x < width + reach; ++x) {
        std::memcpy(columns + 4 * x, columns + 4 * (width - 1 - ring), 4 * sizeof(float));
    }
}

/// The horizontal pass over `width` columns of four samples.
inline void walkColumns(const float* columns, std::int32_t width, const TriangularKernel& kernel, float* out) {
    const FourDoubles d;
    const FourSingles single;
    const std::ptrdiff_t reach = std::ptrdiff_t{4} * kernel.half;
    const std::ptrdiff_t back = kernel.even ? 4 : 0;
    const auto factor = hn::Set(d, 1.0 / kernel.divisor);
    const auto load = [&](const float* from) HWY_ATTR { return hn::PromoteTo(d, hn::LoadU(single, from)); };
    for (std::size_t lane = 0; lane < 4; lane += hn::Lanes(d)) {
        const float* at = columns + lane;
        const auto edge = load(at);
        auto slope = hn::Zero(d);
        auto sum = hn::Zero(d);
        for (std::int32_t t = 0; t < kernel.half; ++t) {
            slope = hn::Add(slope, load(at + 4 * t));
            sum = hn::Add(sum, slope);
        }
        sum = hn::Add(sum, hn::Mul(edge, hn::Set(d, kernel.weightBefore())));
        slope = hn::Sub(slope, hn::Mul(edge, hn::Set(d, kernel.half)));
        float* to = out + lane;
        for (std::int32_t x = 0; x < width; ++x, at += 4, to += 4) {
            hn::StoreU(hn::DemoteTo(single, hn::Mul(sum, factor)), single, to);
            const auto change =
                hn::Sub(hn::Add(load(at + reach), load(at - back - reach)), hn::Add(load(at), load(at - back)));
            slope = hn::Add(slope, change);
            sum = hn::Add(sum, slope);
        }
    }
}

/// Puts the kept samples of a finished colour row in their place, and all in their order.
inline void finishColorRow(const TriangularBlurJob& job, const float* src, float* pixels) {
    const std::size_t samples = samplesOfRow(job);
    if (job.keptSample >= 0) {
        for (std::size_t i = static_cast<std::size_t>(job.keptSample); i < samples; i += 4) {
            pixels[i] = src[i];
        }
    }
    if (job.reverseSamples) {
        const hn::CappedTag<float, 4> d;
        for (std::size_t i = 0; i < samples; i += 4) {
            hn::StoreU(hn::Reverse(d, hn::LoadU(d, pixels + i)), d, pixels + i);
        }
    }
}

inline void interleaveRows(const float* rows, std::int64_t stride, std::size_t width, float* out) {
    const hn::ScalableTag<float> d;
    for (std::size_t x = 0; x < width; x += hn::Lanes(d)) {
        const float* from = rows + x;
        hn::StoreInterleaved4(hn::Load(d, from), hn::Load(d, from + stride), hn::Load(d, from + 2 * stride),
                              hn::Load(d, from + 3 * stride), d, out + 4 * x);
    }
}

inline void separateRows(const float* interleaved, std::size_t width, float* const (&rows)[4], std::int32_t count) {
    for (std::int32_t r = 0; r < count; ++r) {
        for (std::size_t x = 0; x < width; ++x) {
            rows[r][x] = interleaved[4 * x + static_cast<std::size_t>(r)];
        }
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
