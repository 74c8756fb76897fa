#include "frame/primitives/limits.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/limits.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

/// Below low, above high, and a NaN too.
HWY_INLINE VecF clampTo(VecF v, VecF low, VecF high) {
    return hn::IfThenElse(hn::Ge(v, low), hn::IfThenElse(hn::Gt(v, high), high, v), low);
}

template <Touch kTouch>
void clampF(Plane<float> plane, float low, float high, ImgSize size) {
    const VecF lows = hn::Set(TagF(), low);
    const VecF highs = hn::Set(TagF(), high);
    mapPlane<kTouch>(
        size, plane, [&](VecF v) HWY_ATTR { return clampTo(v, lows, highs); }, Plane<const float>(plane));
}

}  // namespace

void clampRange8C1(Plane<std::uint8_t> plane, std::uint8_t low, std::uint8_t high, ImgSize size) {
    const Vec8 lows = hn::Set(Tag8(), low);
    const Vec8 highs = hn::Set(Tag8(), high);
    mapPlane<Touch::kOneChannel>(
        size, plane, [&](Vec8 v) HWY_ATTR { return hn::IfThenElse(hn::Lt(v, lows), lows, hn::Min(v, highs)); },
        Plane<const std::uint8_t>(plane));
}
void clampRangeFC1(Plane<float> plane, float low, float high, ImgSize size) {
    clampF<Touch::kOneChannel>(plane, low, high, size);
}
void clampRangeFA4(Plane<float> plane, float low, float high, ImgSize size) {
    clampF<Touch::kFirstThree>(plane, low, high, size);
}

void thresholdLess8C1(Plane<std::uint8_t> plane, std::uint8_t threshold, std::uint8_t value, ImgSize size) {
    const Vec8 limit = hn::Set(Tag8(), threshold);
    const Vec8 values = hn::Set(Tag8(), value);
    mapPlane<Touch::kOneChannel>(
        size, plane, [&](Vec8 v) HWY_ATTR { return hn::IfThenElse(hn::Lt(v, limit), values, v); },
        Plane<const std::uint8_t>(plane));
}
void thresholdLessFC1(Plane<float> plane, float threshold, float value, ImgSize size) {
    const VecF limit = hn::Set(TagF(), threshold);
    const VecF values = hn::Set(TagF(), value);
    mapPlane<Touch::kOneChannel>(
        size, plane, [&](VecF v) HWY_ATTR { return hn::IfThenElse(hn::Lt(v, limit), values, v); },
        Plane<const float>(plane));
}

void invert8C1(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    mapPlane<Touch::kOneChannel>(
        size, dst, [](Vec8 v) HWY_ATTR { return hn::Not(v); }, src);
}
void invertFC1(Plane<const float> src, Plane<float> dst, ImgSize size) {
    mapPlane<Touch::kOneChannel>(
        size, dst, [](VecF v) HWY_ATTR { return hn::Sub(hn::Set(TagF(), 1.0F), v); }, src);
}
void invertChannel8(Plane<std::uint8_t> plane, ImgSize size) {
    mapPlane<Touch::kFirst>(
        size, plane, [](Vec8 v) HWY_ATTR { return hn::Not(v); }, Plane<const std::uint8_t>(plane));
}
void invertChannelF(Plane<float> plane, ImgSize size) {
    mapPlane<Touch::kFirst>(
        size, plane, [](VecF v) HWY_ATTR { return hn::Sub(hn::Set(TagF(), 1.0F), v); }, Plane<const float>(plane));
}

void min8C1(Plane<const std::uint8_t> a, Plane<const std::uint8_t> b, Plane<std::uint8_t> dst, ImgSize size) {
    mapPlane<Touch::kOneChannel>(
        size, dst, [](Vec8 u, Vec8 v) HWY_ATTR { return hn::Min(u, v); }, a, b);
}
void minFC1(Plane<const float> a, Plane<const float> b, Plane<float> dst, ImgSize size) {
    mapPlane<Touch::kOneChannel>(
        size, dst, [](VecF u, VecF v) HWY_ATTR { return hn::IfThenElse(hn::Lt(v, u), v, u); }, a, b);
}

void limitFC4(Plane<float> plane, const float* limits, ImgSize size) {
    const VecF highs = repeatFour(TagF(), limits);
    mapPlane<Touch::kAllFour>(
        size, plane, [&](VecF v) HWY_ATTR { return hn::IfThenElse(hn::Gt(v, highs), highs, v); },
        Plane<const float>(plane));
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(clampRange8C1);
ImgStatus ImgClampRange8C1(std::uint8_t* plane, std::int32_t step, std::uint8_t low, std::uint8_t high,
                           ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(clampRange8C1), size, pixels<1>(plane, step), low, high);
}

HWY_EXPORT(clampRangeFC1);
ImgStatus ImgClampRangeFC1(float* plane, std::int32_t step, float low, float high, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(clampRangeFC1), size, pixels<1>(plane, step), low, high);
}

HWY_EXPORT(clampRangeFA4);
ImgStatus ImgClampRangeFA4(float* plane, std::int32_t step, float low, float high, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(clampRangeFA4), size, pixels<4>(plane, step), low, high);
}

HWY_EXPORT(thresholdLess8C1);
ImgStatus ImgThresholdLess8C1(std::uint8_t* plane, std::int32_t step, std::uint8_t threshold, std::uint8_t value,
                              ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(thresholdLess8C1), size, pixels<1>(plane, step), threshold, value);
}

HWY_EXPORT(thresholdLessFC1);
ImgStatus ImgThresholdLessFC1(float* plane, std::int32_t step, float threshold, float value, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(thresholdLessFC1), size, pixels<1>(plane, step), threshold, value);
}

HWY_EXPORT(invert8C1);
ImgStatus ImgInvert8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                       ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(invert8C1), size, pixels<1>(src, srcStep), pixels<1>(dst, dstStep));
}

HWY_EXPORT(invertFC1);
ImgStatus ImgInvertFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                       ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(invertFC1), size, pixels<1>(src, srcStep), pixels<1>(dst, dstStep));
}

HWY_EXPORT(invertChannel8);
ImgStatus ImgInvertChannel8C4(std::uint8_t* plane, std::int32_t step, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(invertChannel8), size, pixels<4>(plane, step));
}

HWY_EXPORT(invertChannelF);
ImgStatus ImgInvertChannelFC4(float* plane, std::int32_t step, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(invertChannelF), size, pixels<4>(plane, step));
}

HWY_EXPORT(min8C1);
ImgStatus ImgMin8C1(const std::uint8_t* a, std::int32_t aStep, const std::uint8_t* b, std::int32_t bStep,
                    std::uint8_t* dst, std::int32_t dstStep, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(min8C1), size, pixels<1>(a, aStep), pixels<1>(b, bStep),
                   pixels<1>(dst, dstStep));
}

HWY_EXPORT(minFC1);
ImgStatus ImgMinFC1(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep, float* dst,
                    std::int32_t dstStep, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(minFC1), size, pixels<1>(a, aStep), pixels<1>(b, bStep),
                   pixels<1>(dst, dstStep));
}

HWY_EXPORT(limitFC4);
ImgStatus ImgLimitFC4(float* plane, std::int32_t step, const float* limits, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(limitFC4), size, pixels<4>(plane, step), limits);
}

}  // namespace lumiset
#endif
