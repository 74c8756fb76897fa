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

/// p / 255 rounded down, as `scaledProduct` does it, for products p of two bytes.
HWY_INLINE Vec16 over255(Vec16 product) {
    const Vec16 next = hn::Add(product, hn::Set(Tag16(), 1));
#if HWY_TARGET == HWY_EMU128
    return hn::ShiftRight<8>(hn::Add(next, hn::ShiftRight<8>(product)));
#else
    return hn::MulHigh(next, hn::Set(Tag16(), 257));  // the same for every p up to 255 * 255
#endif
}

/// `scaledProduct` of each two bytes.
HWY_INLINE Halves scaledProducts(Halves a, Halves b) {
    return {over255(hn::Mul(a.even, b.even)), over255(hn::Mul(a.odd, b.odd))};
}

/// v limited to 0..255; a NaN becomes 0.
HWY_INLINE VecF limitToByte(VecF v) {
    const VecF zero = hn::Zero(TagF());
    const VecF full = hn::Set(TagF(), 255.0F);
#if HWY_TARGET == HWY_EMU128
    return hn::Min(hn::IfThenElseZero(hn::Gt(v, zero), v), full);
#else
    return hn::Min(hn::Max(v, zero), full);           // of a NaN and a number these instructions give the second operand
#endif
}

/// A byte's value v truncated, in the lowest byte of each lane. The top byte is not 0, the two between are.
HWY_INLINE Vec32 truncateToByte(VecF v) {
    // Above 2^23 the unit of a float is 1: the sum has the number in its lowest bits.
    return hn::BitCast(Tag32(), hn::Add(hn::Floor(v), hn::Set(TagF(), 8388608.0F)));
}
/// The same of floor(v + 0.5) limited to 0..255; a NaN becomes 0.
HWY_INLINE Vec32 roundToByte(VecF v) {
    return truncateToByte(hn::Add(limitToByte(v), hn::Set(TagF(), 0.5F)));
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

/// Pixels whose first three bytes are these, each limited and rounded. The fourth is undefined.
HWY_INLINE Vec8 pixelsOf(VecF first, VecF second, VecF third) {
    const Vec32 high = hn::Or(hn::ShiftLeft<8>(roundToByte(second)), hn::ShiftLeft<16>(roundToByte(third)));
    return hn::BitCast(Tag8(), hn::Or(roundToByte(first), high));
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
