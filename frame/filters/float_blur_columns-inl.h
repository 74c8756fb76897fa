// The vertical pass of the float blur, vectorised along the row with its sums in two arrays. Compiled once per
// instruction set; include like row_loops-inl.h.

#if defined(LUMISET_FLOAT_BLUR_COLUMNS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_FLOAT_BLUR_COLUMNS_INL_H
#undef LUMISET_FLOAT_BLUR_COLUMNS_INL_H
#else
#define LUMISET_FLOAT_BLUR_COLUMNS_INL_H
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "frame/filters/blur_rows.h"
#include "frame/filters/column_sums-inl.h"
#include "frame/filters/float_blur_scratch.h"
#include "frame/filters/triangular_kernel.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Singles = hn::Rebind<float, Doubles>;

/// The samples of some vectors of columns of a row.
template <std::size_t kVectors>
struct WholeFloatVectors {
    static constexpr std::size_t kCount = kVectors;
    HWY_INLINE hn::Vec<Singles> load(const float* row, std::size_t v) const {
        return hn::LoadU(Singles(), row + v * hn::Lanes(Singles()));
    }
    HWY_INLINE void store(hn::Vec<Singles> first, float* row) const { hn::StoreU(first, Singles(), row); }
};
/// The last samples of a row, fewer than a vector's.
struct FewFloats {
    static constexpr std::size_t kCount = 1;
    static constexpr std::size_t kMost = HWY_MAX_BYTES / sizeof(double);
    HWY_INLINE hn::Vec<Singles> load(const float* row, std::size_t) const {
        HWY_ALIGN float few[kMost] = {};
        std::memcpy(few, row, count * sizeof(float));
        return hn::Load(Singles(), few);
    }
    HWY_INLINE void store(hn::Vec<Singles> all, float* row) const {
        HWY_ALIGN float few[kMost];
        hn::Store(all, Singles(), few);
        std::memcpy(row, few, count * sizeof(float));
    }
    std::size_t count;
};

/// Runs `work(i, part)` over a row of samples, `part` being those from the i-th on: of `kVectors` vectors, at the end
/// of one.
template <std::size_t kVectors, class Work>
HWY_INLINE void alongRow(std::size_t samples, const Work& work) {
    const std::size_t lanes = hn::Lanes(Singles());
    std::size_t i = 0;
    for (; i + kVectors * lanes <= samples; i += kVectors * lanes) {
        work(i, WholeFloatVectors<kVectors>());
    }
    for (; i < samples; i += lanes) {
        work(i, FewFloats{std::min(lanes, samples - i)});
    }
}

inline const float* sourceRow(const InnerRows& rows, std::int32_t y) {
    return reinterpret_cast<const float*>(rows.source(y));
}

HWY_INLINE bool isFinite(hn::Vec<Doubles> v) {
    const Doubles d;
    return hn::AllTrue(d, hn::Le(hn::Abs(v), hn::Set(d, std::numeric_limits<double>::max())));
}
template <std::size_t kVectors>
HWY_INLINE bool isFinite(const KernelSums<Doubles, kVectors>& sums) {
    auto all = hn::Add(sums.slope[0], sums.sum[0]);
    for (std::size_t v = 1; v < kVectors; ++v) {
        all = hn::Add(all, hn::Add(sums.slope[v], sums.sum[v]));
    }
    return isFinite(all);
}

/// `add(sample)`, which adds up and subtracts samples, without those that are not finite. They show in what comes out,
/// since no double is too small for a sum of floats: so each is looked at only then.
template <class Samples, class Add>
HWY_INLINE auto addFinite(const Samples& samples, const Add& add) {
    const auto all =
        add([&](const float* row, std::size_t v) HWY_ATTR { return hn::PromoteTo(Doubles(), samples.load(row, v)); });
    if (HWY_LIKELY(isFinite(all))) {
        return all;
    }
    return add([&](const float* row, std::size_t v) HWY_ATTR {
        const Singles d;
        const auto value = samples.load(row, v);
        const auto finite = hn::Le(hn::Abs(value), hn::Set(d, std::numeric_limits<float>::max()));
        return hn::PromoteTo(Doubles(), hn::IfThenElseZero(finite, value));
    });
}

/// Sums of row `y`.
inline void startColumns(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                         const FloatBlurScratch& scratch) {
    const Doubles d;
    alongRow<4>(samples, [&](std::size_t i, const auto& part) HWY_ATTR {
        constexpr std::size_t kVectors = std::decay_t<decltype(part)>::kCount;
        const auto sums = addFinite(part, [&](const auto& sample) HWY_ATTR {
            return sumsAtRow<kVectors>(d, kernel, y, [&](std::int32_t row, std::size_t v) HWY_ATTR {
                return sample(sourceRow(rows, row) + i, v);
            });
        });
        for (std::size_t v = 0; v < kVectors; ++v) {
            hn::Store(sums.slope[v], d, scratch.slopes + i + v * hn::Lanes(d));
            hn::Store(sums.sum[v], d, scratch.sums + i + v * hn::Lanes(d));
        }
    });
}

/// Row `y`, and the sums moved on to the next.
template <bool kEven>
void blurredRow(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                const FloatBlurScratch& scratch, float* out) {
    const float* ahead = sourceRow(rows, y + kernel.half);
    const float* here = sourceRow(rows, y);
    const float* before = sourceRow(rows, y - 1);
    const float* behind = sourceRow(rows, y - (kEven ? 1 : 0) - kernel.half);
    const Doubles d;
    const auto factor = hn::Set(d, 1.0 / kernel.divisor);
    alongRow<1>(samples, [&](std::size_t i, const auto& part) HWY_ATTR {
        const auto change = addFinite(part, [&](const auto& sample) HWY_ATTR {
            const auto middle = sample(here + i, 0);
            return hn::Sub(hn::Add(sample(ahead + i, 0), sample(behind + i, 0)),
                           hn::Add(middle, kEven ? sample(before + i, 0) : middle));
        });
        const auto sum = hn::Load(d, scratch.sums + i);
        part.store(hn::DemoteTo(Singles(), hn::Mul(sum, factor)), out + i);
        const auto slope = hn::Add(hn::Load(d, scratch.slopes + i), change);
        hn::Store(slope, d, scratch.slopes + i);
        hn::Store(hn::Add(sum, slope), d, scratch.sums + i);
    });
}

inline void rowDown(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                    const FloatBlurScratch& scratch, float* out) {
    kernel.even ? blurredRow<true>(rows, y, samples, kernel, scratch, out)
                : blurredRow<false>(rows, y, samples, kernel, scratch, out);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
