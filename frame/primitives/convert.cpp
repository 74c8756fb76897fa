#include "frame/primitives/convert.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/convert.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

template <Touch kTouch>
void floatToByte(Plane<const float> src, Plane<std::uint8_t> dst, float low, float high, ImgSize size) {
    const VecF offset = hn::Set(TagF(), low);
    const VecF scale = hn::Set(TagF(), 255.0F / (high - low));
    mapPlane<kTouch>(
        size, dst,
        [&](VecF v) HWY_ATTR {
            const Vec32 words = roundToByte(hn::Mul(hn::Sub(v, offset), scale));
            return hn::TruncateTo(hn::Rebind<std::uint8_t, TagF>(), words);
        },
        src);
}

template <Touch kTouch>
void byteToFloat(Plane<const std::uint8_t> src, Plane<float> dst, float low, float high, ImgSize size) {
    const VecF offset = hn::Set(TagF(), low);
    const VecF range = hn::Set(TagF(), high - low);
    const VecF steps = hn::Set(TagF(), 255.0F);
    mapPlane<kTouch>(
        size, dst,
        [&](auto bytes) HWY_ATTR {
            const VecF v = hn::ConvertTo(TagF(), hn::PromoteTo(TagI32(), bytes));
            return hn::Add(hn::Div(hn::Mul(v, range), steps), offset);
        },
        src);
}

}  // namespace

void floatToByteC1(Plane<const float> src, Plane<std::uint8_t> dst, float low, float high, ImgSize size) {
    floatToByte<Touch::kOneChannel>(src, dst, low, high, size);
}
void floatToByteC4(Plane<const float> src, Plane<std::uint8_t> dst, float low, float high, ImgSize size) {
    floatToByte<Touch::kAllFour>(src, dst, low, high, size);
}
void floatToByteA4(Plane<const float> src, Plane<std::uint8_t> dst, float low, float high, ImgSize size) {
    floatToByte<Touch::kFirstThree>(src, dst, low, high, size);
}
void byteToFloatC1(Plane<const std::uint8_t> src, Plane<float> dst, float low, float high, ImgSize size) {
    byteToFloat<Touch::kOneChannel>(src, dst, low, high, size);
}
void byteToFloatC4(Plane<const std::uint8_t> src, Plane<float> dst, float low, float high, ImgSize size) {
    byteToFloat<Touch::kAllFour>(src, dst, low, high, size);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

/// Also refuses a range that is not a number.
ImgStatus checkRange(float low, float high) {
    return high > low ? kImgOk : kImgBadRange;
}

}  // namespace

HWY_EXPORT(floatToByteA4);
ImgStatus ImgFloatToByteA4(const float* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept {
    return runLoop(checkRange(low, high), HWY_DYNAMIC_DISPATCH(floatToByteA4), size, pixels<4>(src, srcStep),
                   pixels<4>(dst, dstStep), low, high);
}

HWY_EXPORT(floatToByteC1);
ImgStatus ImgFloatToByteC1(const float* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept {
    return runLoop(checkRange(low, high), HWY_DYNAMIC_DISPATCH(floatToByteC1), size, pixels<1>(src, srcStep),
                   pixels<1>(dst, dstStep), low, high);
}

HWY_EXPORT(floatToByteC4);
ImgStatus ImgFloatToByteC4(const float* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept {
    return runLoop(checkRange(low, high), HWY_DYNAMIC_DISPATCH(floatToByteC4), size, pixels<4>(src, srcStep),
                   pixels<4>(dst, dstStep), low, high);
}

HWY_EXPORT(byteToFloatC1);
ImgStatus ImgByteToFloatC1(const std::uint8_t* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept {
    return runLoop(checkRange(low, high), HWY_DYNAMIC_DISPATCH(byteToFloatC1), size, pixels<1>(src, srcStep),
                   pixels<1>(dst, dstStep), low, high);
}

HWY_EXPORT(byteToFloatC4);
ImgStatus ImgByteToFloatC4(const std::uint8_t* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept {
    return runLoop(checkRange(low, high), HWY_DYNAMIC_DISPATCH(byteToFloatC4), size, pixels<4>(src, srcStep),
                   pixels<4>(dst, dstStep), low, high);
}

}  // namespace lumiset
#endif
