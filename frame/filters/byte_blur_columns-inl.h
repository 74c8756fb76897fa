// The vertical pass of the 8-bit blur, vectorised along the row with its sums in two arrays. Compiled once per
// instruction set; include like row_loops-inl.h.

#if defined(LUMISET_BYTE_BLUR_COLUMNS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_BYTE_BLUR_COLUMNS_INL_H
#undef LUMISET_BYTE_BLUR_COLUMNS_INL_H
#else
#define LUMISET_BYTE_BLUR_COLUMNS_INL_H
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/filters/blur_rows.h"
#include "frame/filters/byte_blur_scratch.h"
#include "frame/filters/byte_blur_sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

/// Runs `work(i, load)` over a row of samples, `load` reading a vector of sums.
template <class Work>
HWY_INLINE void alongRow(std::size_t samples, const Work& work) {
    std::size_t i = 0;
    for (; i + lanes() <= samples; i += lanes()) {
        work(i, [](const std::uint8_t* from) HWY_ATTR { return loadSums(from); });
    }
    if (i < samples) {
        work(i, [=](const std::uint8_t* from) HWY_ATTR { return loadFewSums(from, samples - i); });
    }
}

/// Sums of the first row.
inline void startColumns(const InnerRows& rows, std::size_t samples, const TriangularKernel& kernel, std::int32_t bias,
                         const ByteBlurScratch& scratch) {
    const Sums d;
    const std::size_t stored = hwy::RoundUpTo(samples, 2 * lanes()) * sizeof(std::int32_t);
    std::memset(scratch.slopes, 0, stored);
    std::memset(scratch.sums, 0, stored);
    for (std::int32_t t = 0; t < kernel.half; ++t) {
        const std::uint8_t* row = rows.source(t);
        alongRow(samples, [&](std::size_t i, const auto& load) HWY_ATTR {
            const auto all = hn::Add(hn::Load(d, scratch.slopes + i), load(row + i));
            hn::Store(all, d, scratch.slopes + i);
            hn::Store(hn::Add(hn::Load(d, scratch.sums + i), all), d, scratch.sums + i);
        });
    }
    const std::uint8_t* first = rows.source(0);
    alongRow(samples, [&](std::size_t i, const auto& load) HWY_ATTR {
        const auto edge = load(first + i);
        const auto before = hn::Mul(edge, hn::Set(d, kernel.weightBefore()));
        const auto sum = hn::Add(hn::Load(d, scratch.sums + i), hn::Add(before, hn::Set(d, bias)));
        hn::Store(sum, d, scratch.sums + i);
        const auto slope = hn::Load(d, scratch.slopes + i);
        hn::Store(hn::Sub(slope, hn::Mul(edge, hn::Set(d, kernel.half))), d, scratch.slopes + i);
    });
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
