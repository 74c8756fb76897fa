// The first sums of columns that a triangular kernel goes down. Compiled once per instruction set; include like
// row_loops-inl.h.

#if defined(LUMISET_COLUMN_SUMS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_COLUMN_SUMS_INL_H
#undef LUMISET_COLUMN_SUMS_INL_H
#else
#define LUMISET_COLUMN_SUMS_INL_H
#endif

#include <cstddef>
#include <cstdint>

#include "frame/filters/triangular_kernel.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// S and T of some vectors of columns.
template <class D, std::size_t kVectors>
struct KernelSums {
    hn::Vec<D> slope[kVectors];
    hn::Vec<D> sum[kVectors];
};

/// Those of row `y`, from all rows that it is made of: a row's weight is the number of times that it is in a running
/// sum from the anchor outwards. `sample(y, v)` is the v-th vector of row `y`. A line of memory of each row is best
/// taken at a time: these rows are many, and far from each other.
template <std::size_t kVectors, class D, class Sample>
HWY_INLINE KernelSums<D, kVectors> sumsAtRow(D d, const TriangularKernel& kernel, std::int32_t y,
                                             const Sample& sample) {
    KernelSums<D, kVectors> result;
    hn::Vec<D> ahead[kVectors];
    hn::Vec<D> behind[kVectors];
    for (std::size_t v = 0; v < kVectors; ++v) {
        ahead[v] = behind[v] = result.sum[v] = hn::Zero(d);
    }
    const auto addRow = [&](std::int32_t row, auto& running) HWY_ATTR {
        for (std::size_t v = 0; v < kVectors; ++v) {
            running[v] = hn::Add(running[v], sample(row, v));
            result.sum[v] = hn::Add(result.sum[v], running[v]);
        }
    };
    for (std::int32_t t = 0; t < kernel.half; ++t) {
        addRow(y + t, ahead);
    }
    const std::int32_t weightsBehind = kernel.half - (kernel.even ? 0 : 1);
    for (std::int32_t t = 1; t <= weightsBehind; ++t) {
        addRow(y - t, behind);
    }
    for (std::size_t v = 0; v < kVectors; ++v) {
        behind[v] = hn::Add(behind[v], sample(y - weightsBehind - 1, v));
        behind[v] = kernel.even ? hn::Sub(behind[v], sample(y - 1, v)) : behind[v];
        result.slope[v] = hn::Sub(ahead[v], behind[v]);
    }
    return result;
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
