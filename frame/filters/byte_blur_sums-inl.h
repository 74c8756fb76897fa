// Vectors of sums of the 8-bit blur: their samples, their rounding to bytes, and the order of these. Compiled once per
// instruction set; include like row_loops-inl.h.

#if defined(LUMISET_BYTE_BLUR_SUMS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_BYTE_BLUR_SUMS_INL_H
#undef LUMISET_BYTE_BLUR_SUMS_INL_H
#else
#define LUMISET_BYTE_BLUR_SUMS_INL_H
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/filters/triangular_kernel.h"
#include "frame/primitives/whole_division.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Sums = hn::CappedTag<std::int32_t, 16>;
using Words = hn::RebindToUnsigned<Sums>;
using Floats = hn::RebindToFloat<Sums>;
using SumBytes = hn::Rebind<std::uint8_t, Sums>;  ///< as many bytes as there are sums
using WordBytes = hn::Repartition<std::uint8_t, Sums>;
using Block = hn::CappedTag<std::uint8_t, 16>;
using VSums = hn::Vec<Sums>;
using VWords = hn::Vec<Words>;

HWY_INLINE std::size_t lanes() {
    return hn::Lanes(Sums());
}

/// Sum to sample by a single-precision factor; the bits above the low eight are not clear.
struct FactorRounding {
    FactorRounding(std::int32_t divisor, float usedFactor) : bias(0), factor(usedFactor) { (void)divisor; }
    HWY_INLINE VWords operator()(VSums sum) const {
        const Floats d;
        const auto scaled = hn::Mul(hn::ConvertTo(d, sum), hn::Set(d, factor));
        return hn::BitCast(Words(), hn::Add(scaled, hn::Set(d, 8388608.0F)));
    }
    std::int32_t bias;  ///< is added to every sum beforehand
    float factor;
};

/// The same for any size.
struct WholeRounding {
    explicit WholeRounding(std::int32_t divisor) : bias(divisor / 2), division(divisor) {}
    HWY_INLINE VWords operator()(VSums sum) const {
        const Words d;
        const hn::Repartition<std::uint64_t, Words> d64;
        const auto all = hn::BitCast(d, sum);
        const auto factor = hn::Set(d, division.factor);
        const auto even = hn::ShiftRight<32>(hn::MulEven(all, factor));
        const auto odd = hn::MulEven(hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(d64, all))), factor);
        return hn::ShiftRightSame(hn::OddEven(hn::BitCast(d, odd), hn::BitCast(d, even)), division.shift);
    }
    std::int32_t bias;
    WholeDivision division;
};

/// The low bytes of four vectors in one word a lane, the first lowest.
HWY_INLINE VWords pack(VWords a, VWords b, VWords c, VWords e) {
    const auto low = hn::Or(hn::And(a, hn::Set(Words(), 0xFFU)), hn::ShiftLeft<8>(b));
    return hn::Or(low, hn::Or(hn::ShiftLeft<16>(c), hn::ShiftLeft<24>(e)));
}

/// Loads a vector's worth of samples, or fewer at the end of a row.
HWY_INLINE VSums loadSums(const std::uint8_t* from) {
    return hn::PromoteTo(Sums(), hn::LoadU(SumBytes(), from));
}
HWY_INLINE VSums loadFewSums(const std::uint8_t* from, std::size_t count) {
    HWY_ALIGN std::uint8_t few[16] = {};
    std::memcpy(few, from, count);
    return loadSums(few);
}

/// Transposes the 4 x 4 bytes of each block of sixteen; reversed, the second index runs backwards.
HWY_INLINE hn::Vec<WordBytes> transposeBlocks(VWords words, bool reversed) {
    HWY_ALIGN static constexpr std::uint8_t kOrder[2][16] = {{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15},
                                                             {12, 8, 4, 0, 13, 9, 5, 1, 14, 10, 6, 2, 15, 11, 7, 3}};
    const WordBytes d;
    return hn::TableLookupBytes(hn::BitCast(d, words), hn::LoadDup128(d, kOrder[reversed ? 1 : 0]));
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
