#include "frame/primitives/fill.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/fill.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

template <Touch kTouch, class T>
void setSamples(Plane<T> plane, const T* four, ImgSize size) {
    const auto value = repeatFour(hn::ScalableTag<T>(), four);
    mapPlane<kTouch>(size, plane, [&]() HWY_ATTR { return value; });
}

}  // namespace

void set8C4(Plane<std::uint8_t> plane, const std::uint8_t* values, ImgSize size) {
    setSamples<Touch::kAllFour>(plane, values, size);
}
void set8A4(Plane<std::uint8_t> plane, const std::uint8_t* values, ImgSize size) {
    const std::uint8_t four[4] = {values[0], values[1], values[2], 0};
    setSamples<Touch::kFirstThree>(plane, four, size);
}
void setChannel8(Plane<std::uint8_t> plane, std::uint8_t value, ImgSize size) {
    const std::uint8_t four[4] = {value, 0, 0, 0};
    setSamples<Touch::kFirst>(plane, four, size);
}
void setFC1(Plane<float> plane, float value, ImgSize size) {
    const float four[4] = {value, value, value, value};
    setSamples<Touch::kOneChannel>(plane, four, size);
}
void setFC4(Plane<float> plane, const float* values, ImgSize size) {
    setSamples<Touch::kAllFour>(plane, values, size);
}
void setFA4(Plane<float> plane, const float* values, ImgSize size) {
    const float four[4] = {values[0], values[1], values[2], 0};
    setSamples<Touch::kFirstThree>(plane, four, size);
}
void setChannelF(Plane<float> plane, float value, ImgSize size) {
    const float four[4] = {value, 0, 0, 0};
    setSamples<Touch::kFirst>(plane, four, size);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

void set8C1(Plane<std::uint8_t> plane, std::uint8_t value, ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        std::memset(plane.row(y), value, static_cast<std::size_t>(size.width));
    }
}

}  // namespace

ImgStatus ImgSet8C1(std::uint8_t* plane, std::int32_t step, std::uint8_t value, ImgSize size) noexcept {
    return runLoop(set8C1, size, pixels<1>(plane, step), value);
}

HWY_EXPORT(setFC1);
ImgStatus ImgSetFC1(float* plane, std::int32_t step, float value, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(setFC1), size, pixels<1>(plane, step), value);
}

HWY_EXPORT(set8C4);
ImgStatus ImgSet8C4(std::uint8_t* plane, std::int32_t step, const std::uint8_t* values, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(set8C4), size, pixels<4>(plane, step), values);
}

HWY_EXPORT(setFC4);
ImgStatus ImgSetFC4(float* plane, std::int32_t step, const float* values, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(setFC4), size, pixels<4>(plane, step), values);
}

HWY_EXPORT(set8A4);
ImgStatus ImgSet8A4(std::uint8_t* plane, std::int32_t step, const std::uint8_t* values, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(set8A4), size, pixels<4>(plane, step), values);
}

HWY_EXPORT(setFA4);
ImgStatus ImgSetFA4(float* plane, std::int32_t step, const float* values, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(setFA4), size, pixels<4>(plane, step), values);
}

HWY_EXPORT(setChannel8);
ImgStatus ImgSetChannel8C4(std::uint8_t* plane, std::int32_t step, std::uint8_t value, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(setChannel8), size, pixels<4>(plane, step), value);
}

HWY_EXPORT(setChannelF);
ImgStatus ImgSetChannelFC4(float* plane, std::int32_t step, float value, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(setChannelF), size, pixels<4>(plane, step), value);
}

}  // namespace lumiset
#endif
