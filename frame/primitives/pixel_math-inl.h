// Arithmetic that several families of primitives share, compiled once per instruction set; include like
// row_loops-inl.h.

#if defined(LUMISET_PIXEL_MATH_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_PIXEL_MATH_INL_H
#undef LUMISET_PIXEL_MATH_INL_H
#else
#define LUMISET_PIXEL_MATH_INL_H
#endif

#include <cstdint>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag8 = hn::ScalableTag<std::uint8_t>;
using Tag16 = hn::ScalableTag<std::uint16_t>;
using Tag32 = hn::ScalableTag<std::uint32_t>;
using TagI32 = hn::ScalableTag<std::int32_t>;
using TagF = hn::ScalableTag<float>;
using Vec8 = hn::Vec<Tag8>;
using Vec16 = hn::Vec<Tag16>;
using Vec32 = hn::Vec<Tag32>;
using VecF = hn::Vec<TagF>;

/// Bytes as two vectors of 16-bit numbers.
struct Halves {
    Vec16 even;
    Vec16 odd;
};
HWY_INLINE Halves split(Vec8 v) {
    const Vec16 pairs = hn::BitCast(Tag16(), v);
    return {hn::And(pairs, hn::Set(Tag16(), 0xFF)), hn::ShiftRight<8>(pairs)};
}
/// Takes the low bytes together again; the high ones are 0.
HWY_INLINE Vec8 join(Halves v) {
    return hn::BitCast(Tag8(), hn::Or(v.even, hn::ShiftLeft<8>(v.odd)));
}

/// `scaledProduct` of each two bytes.
HWY_INLINE Vec8 scaledProducts(Halves a, Halves b) {
    const Vec16 one = hn::Set(Tag16(), 1);
    const Vec16 even = hn::Mul(a.even, b.even);
    const Vec16 odd = hn::Mul(a.odd, b.odd);
    const Vec16 evenSum = hn::Add(hn::Add(even, hn::ShiftRight<8>(even)), one);
    const Vec16 oddSum = hn::Add(hn::Add(odd, hn::ShiftRight<8>(odd)), one);
    return hn::BitCast(Tag8(), hn::Or(hn::ShiftRight<8>(evenSum), hn::AndNot(hn::Set(Tag16(), 0xFF), oddSum)));
}

/// floor(v + 0.5) limited to 0..255; a NaN becomes 0.
HWY_INLINE hn::Vec<TagI32> roundToByte(VecF v) {
    const VecF positive = hn::IfThenElseZero(hn::Gt(v, hn::Zero(TagF())), v);
    const VecF limited = hn::Min(positive, hn::Set(TagF(), 255.0F));
    return hn::ConvertTo(TagI32(), hn::Add(limited, hn::Set(TagF(), 0.5F)));
}

/// Byte `kIndex` of each pixel of four, as floats.
template <int kIndex>
HWY_INLINE VecF byteOfPixel(Vec8 pixels) {
    Vec32 v = hn::BitCast(Tag32(), pixels);
    if constexpr (kIndex > 0) {
        v = hn::ShiftRight<8 * kIndex>(v);
    }
    if constexpr (kIndex < 3) {
        v = hn::And(v, hn::Set(Tag32(), 0xFF));
    }
    return hn::ConvertTo(TagF(), hn::BitCast(TagI32(), v));
}

/// Pixels whose first three bytes are these, each limited and rounded, and whose fourth is 0.
HWY_INLINE Vec8 pixelsOf(VecF first, VecF second, VecF third) {
    const auto low = hn::Or(roundToByte(first), hn::ShiftLeft<8>(roundToByte(second)));
    return hn::BitCast(Tag8(), hn::Or(low, hn::ShiftLeft<16>(roundToByte(third))));
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
