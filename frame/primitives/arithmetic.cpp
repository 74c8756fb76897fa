#include "frame/primitives/arithmetic.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/arithmetic.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

void scale8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, Vec8 factors, Touch touch, ImgSize size) {
    const Halves wide = split(factors);
    const auto op = [&](Vec8 v) HWY_ATTR { return join(scaledProducts(split(v), wide)); };
    if (touch == Touch::kOneChannel) {
        mapPlane<Touch::kOneChannel>(size, dst, op, src);
    } else {
        mapPlane<Touch::kAllFour>(size, dst, op, src);
    }
}

/// A product shifted right, half to even, where `half` is half a unit of the result (1 without a shift).
HWY_INLINE Vec16 shiftRounded(Vec16 product, int scale, Vec16 half) {
    const Vec16 one = hn::Set(Tag16(), 1);
    const Vec16 whole = hn::ShiftRightSame(product, scale);
    const Vec16 rest = hn::Sub(product, hn::ShiftLeftSame(whole, scale));
    // Above one half, or one half and odd.
    const auto up = hn::Gt(hn::Add(rest, hn::And(whole, one)), half);
    return hn::Min(hn::Add(whole, hn::IfThenElseZero(up, one)), hn::Set(Tag16(), 255));
}
/// The same for a shift of 8, where no sum overflows and no result passes 254.
HWY_INLINE Vec16 shiftRoundedBy8(Vec16 product) {
    const Vec16 odd = hn::And(hn::ShiftRight<8>(product), hn::Set(Tag16(), 1));
    return hn::ShiftRight<8>(hn::Add(product, hn::Add(odd, hn::Set(Tag16(), 127))));
}

}  // namespace

void scaleByColor8C1(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, std::uint8_t value, ImgSize size) {
    scale8(src, dst, hn::Set(Tag8(), value), Touch::kOneChannel, size);
}
void scaleByColor8C4(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, const std::uint8_t* values, ImgSize size) {
    scale8(src, dst, repeatFour(Tag8(), values), Touch::kAllFour, size);
}
void scaleByColorFC1(Plane<const float> src, Plane<float> dst, float value, ImgSize size) {
    const VecF factor = hn::Set(TagF(), value);
    mapPlane<Touch::kOneChannel>(
        size, dst, [&](VecF v) HWY_ATTR { return hn::Mul(v, factor); }, src);
}
void scaleByColorFC4(Plane<const float> src, Plane<float> dst, const float* values, ImgSize size) {
    const VecF factors = repeatFour(TagF(), values);
    mapPlane<Touch::kAllFour>(
        size, dst, [&](VecF v) HWY_ATTR { return hn::Mul(v, factors); }, src);
}
void addFA4(Plane<const float> src, Plane<float> dst, const float* values, ImgSize size) {
    const VecF terms = repeatThree(TagF(), values);
    mapPlane<Touch::kFirstThree>(
        size, dst, [&](VecF v) HWY_ATTR { return hn::Add(v, terms); }, src);
}
void mulFA4(Plane<const float> src, Plane<float> dst, const float* values, ImgSize size) {
    const VecF factors = repeatThree(TagF(), values);
    mapPlane<Touch::kFirstThree>(
        size, dst, [&](VecF v) HWY_ATTR { return hn::Mul(v, factors); }, src);
}

void mulScaled8C1(Plane<std::uint8_t> plane, std::uint8_t value, std::int32_t scale, ImgSize size) {
    const Vec16 factor = hn::Set(Tag16(), value);
    const Plane<const std::uint8_t> src = plane;
    if (scale == 8) {
        mapPlane<Touch::kOneChannel>(
            size, plane,
            [&](Vec8 v) HWY_ATTR {
                const Halves wide = split(v);
                return join({shiftRoundedBy8(hn::Mul(wide.even, factor)), shiftRoundedBy8(hn::Mul(wide.odd, factor))});
            },
            src);
        return;
    }
    const Vec16 half = hn::Set(Tag16(), static_cast<std::uint16_t>(scale == 0 ? 1 : 1 << (scale - 1)));
    mapPlane<Touch::kOneChannel>(
        size, plane,
        [&](Vec8 v) HWY_ATTR {
            const Halves wide = split(v);
            return join({shiftRounded(hn::Mul(wide.even, factor), scale, half),
                         shiftRounded(hn::Mul(wide.odd, factor), scale, half)});
        },
        src);
}

void squareFC1(Plane<float> plane, ImgSize size) {
    mapPlane<Touch::kOneChannel>(
        size, plane, [](VecF v) HWY_ATTR { return hn::Mul(v, v); }, Plane<const float>(plane));
}
void squareRootFC1(Plane<float> plane, ImgSize size) {
    mapPlane<Touch::kOneChannel>(
        size, plane, [](VecF v) HWY_ATTR { return hn::Sqrt(v); }, Plane<const float>(plane));
}
bool hasNegative(Plane<float> plane, ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        const float* row = plane.row(y);
        bool negative = false;
        for (std::int32_t x = 0; x < size.width; ++x) {
            negative |= row[x] < 0.0F;
        }
        if (negative) {
            return true;
        }
    }
    return false;
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(scaleByColor8C1);
ImgStatus ImgScaleByColor8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             std::uint8_t value, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(scaleByColor8C1), size, pixels<1>(src, srcStep), pixels<1>(dst, dstStep),
                   value);
}

HWY_EXPORT(scaleByColor8C4);
ImgStatus ImgScaleByColor8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             const std::uint8_t* values, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(scaleByColor8C4), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep),
                   values);
}

HWY_EXPORT(scaleByColorFC1);
ImgStatus ImgScaleByColorFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, float value,
                             ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(scaleByColorFC1), size, pixels<1>(src, srcStep), pixels<1>(dst, dstStep),
                   value);
}

HWY_EXPORT(scaleByColorFC4);
ImgStatus ImgScaleByColorFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                             const float* values, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(scaleByColorFC4), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep),
                   values);
}

HWY_EXPORT(addFA4);
ImgStatus ImgAddFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, const float* values,
                    ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(addFA4), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep), values);
}
ImgStatus ImgAddInPlaceFA4(float* plane, std::int32_t step, const float* values, ImgSize size) noexcept {
    return ImgAddFA4(plane, step, plane, step, values, size);
}

HWY_EXPORT(mulFA4);
ImgStatus ImgMulFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, const float* values,
                    ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(mulFA4), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep), values);
}
ImgStatus ImgMulInPlaceFA4(float* plane, std::int32_t step, const float* values, ImgSize size) noexcept {
    return ImgMulFA4(plane, step, plane, step, values, size);
}

HWY_EXPORT(mulScaled8C1);
ImgStatus ImgMulScaled8C1(std::uint8_t* plane, std::int32_t step, std::uint8_t value, std::int32_t scale,
                          ImgSize size) noexcept {
    return runLoop(scale >= 0 && scale <= 15 ? kImgOk : kImgBadRange, HWY_DYNAMIC_DISPATCH(mulScaled8C1), size,
                   pixels<1>(plane, step), value, scale);
}

ImgStatus ImgMulFC1(float* plane, std::int32_t step, float value, ImgSize size) noexcept {
    return ImgScaleByColorFC1(plane, step, plane, step, value, size);
}

HWY_EXPORT(squareFC1);
ImgStatus ImgSquareFC1(float* plane, std::int32_t step, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(squareFC1), size, pixels<1>(plane, step));
}

HWY_EXPORT(hasNegative);
HWY_EXPORT(squareRootFC1);
ImgStatus ImgSquareRootFC1(float* plane, std::int32_t step, ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {pixels<1>(plane, step)});
    const bool negative = status == kImgOk && HWY_DYNAMIC_DISPATCH(hasNegative)({plane, step}, size);
    return runLoop(negative ? kImgBadRange : status, HWY_DYNAMIC_DISPATCH(squareRootFC1), size, pixels<1>(plane, step));
}

}  // namespace lumiset
#endif
