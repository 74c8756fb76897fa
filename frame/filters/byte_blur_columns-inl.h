// The vertical pass of the 8-bit blur, vectorised along the row with its sums in two arrays. Compiled once per
// instruction set; include like row_loops-inl.h.

#if defined(LUMISET_BYTE_BLUR_COLUMNS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_BYTE_BLUR_COLUMNS_INL_H
#undef LUMISET_BYTE_BLUR_COLUMNS_INL_H
#else
#define LUMISET_BYTE_BLUR_COLUMNS_INL_H
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/filters/blur_rows.h"
#include "frame/filters/byte_blur_scratch.h"
#include "frame/filters/byte_blur_sums-inl.h"
#include "frame/filters/column_sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

/// Sums of row `y`.
inline void startColumns(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                         std::int32_t bias, const ByteBlurScratch& scratch) {
    const Sums d;
    constexpr std::size_t kVectors = 4;
    const auto keep = [&](const auto& sums, std::size_t v, std::size_t i) HWY_ATTR {
        hn::Store(sums.slope[v], d, scratch.slopes + i);
        hn::Store(hn::Add(sums.sum[v], hn::Set(d, bias)), d, scratch.sums + i);
    };
    std::size_t i = 0;
    for (; i + kVectors * lanes() <= samples; i += kVectors * lanes()) {
        const auto sums = sumsAtRow<kVectors>(d, kernel, y, [&](std::int32_t row, std::size_t v) HWY_ATTR {
            return loadSums(rows.source(row) + i + v * lanes());
        });
        for (std::size_t v = 0; v < kVectors; ++v) {
            keep(sums, v, i + v * lanes());
        }
    }
    for (; i < samples; i += lanes()) {
        const std::size_t few = std::min(lanes(), samples - i);
        keep(sumsAtRow<1>(d, kernel, y,
                          [&](std::int32_t row, std::size_t)
                              HWY_ATTR { return loadFewSums(rows.source(row) + i, few); }),
             0, i);
    }
}

/// Differences of samples, which fit 16 bits: twice as many a vector.
using Changes = hn::Repartition<std::int16_t, Sums>;

HWY_INLINE hn::Vec<Changes> loadChanges(const std::uint8_t* from) {
    return hn::PromoteTo(Changes(), hn::LoadU(hn::Rebind<std::uint8_t, Changes>(), from));
}

/// The sums of a vector of columns on their way down four rows.
struct ColumnSums {
    HWY_INLINE ColumnSums(const ByteBlurScratch& scratch, std::size_t i)
        : slope(hn::Load(Sums(), scratch.slopes + i)), sum(hn::Load(Sums(), scratch.sums + i)) {}

    template <class Rounding>
    HWY_INLINE VWords next(const Rounding& rounding, VSums change) {
        const auto result = rounding(sum);
        slope = hn::Add(slope, change);
        sum = hn::Add(sum, slope);
        return result;
    }
    template <bool kColor>
    HWY_INLINE void finish(const ByteBlurScratch& scratch, std::size_t i, std::uint32_t* out) const {
        hn::Store(slope, Sums(), scratch.slopes + i);
        hn::Store(sum, Sums(), scratch.sums + i);
        auto words = pack(results[0], results[1], results[2], results[3]);
        if constexpr (kColor) {
            words = hn::BitCast(Words(), transposeBlocks(words, false));
        }
        hn::Store(words, Words(), out + i);
    }

    VSums slope;
    VSums sum;
    VWords results[4];
};

/// Four rows from `y` on, a sample's four in one word; of colours a pixel's four in one word.
template <bool kEven, bool kColor, class Rounding>
HWY_NOINLINE void fourRows(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                           const Rounding& rounding, const ByteBlurScratch& scratch, std::uint32_t* out) {
    const std::uint8_t* ahead[4];
    const std::uint8_t* here[4];
    const std::uint8_t* before[4];
    const std::uint8_t* behind[4];
    for (std::int32_t r = 0; r < 4; ++r) {
        ahead[r] = rows.source(y + r + kernel.half);
        here[r] = rows.source(y + r);
        before[r] = rows.source(y + r - 1);
        behind[r] = rows.source(y + r - (kEven ? 1 : 0) - kernel.half);
    }
    const auto vectorPair = [&](std::size_t i, const auto& load) HWY_ATTR {
        ColumnSums low(scratch, i);
        ColumnSums high(scratch, i + lanes());
        for (int r = 0; r < 4; ++r) {
            const auto middle = load(here[r] + i);
            const auto change = hn::Sub(hn::Add(load(ahead[r] + i), load(behind[r] + i)),
                                        hn::Add(middle, kEven ? load(before[r] + i) : middle));
            const hn::Half<Changes> half;
            low.results[r] = low.next(rounding, hn::PromoteTo(Sums(), hn::LowerHalf(half, change)));
            high.results[r] = high.next(rounding, hn::PromoteTo(Sums(), hn::UpperHalf(half, change)));
        }
        low.template finish<kColor>(scratch, i, out);
        high.template finish<kColor>(scratch, i + lanes(), out);
    };
    std::size_t i = 0;
    for (; i + 2 * lanes() <= samples; i += 2 * lanes()) {
        vectorPair(i, [](const std::uint8_t* from) HWY_ATTR { return loadChanges(from); });
    }
    if (i < samples) {
        vectorPair(i, [=](const std::uint8_t* from) HWY_ATTR {
            HWY_ALIGN std::uint8_t few[32] = {};
            std::memcpy(few, from, samples - i);
            return loadChanges(few);
        });
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
