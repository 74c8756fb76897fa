#include "frame/primitives/sharpen.h"

#include <algorithm>

#include "frame/primitives/check.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/sharpen.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

// Plain loops: compiled for each instruction set, they vectorise as they are.
HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

constexpr std::int32_t kChunk = 512;  ///< samples

HWY_INLINE void finish(std::int32_t eighths, std::uint8_t* out) {
    *out = static_cast<std::uint8_t>(std::min(std::max((eighths + 4) >> 3, 0), 255));
}
HWY_INLINE void finish(float eighths, float* out) {
    *out = eighths * 0.125F;
}

template <class Sum, class T>
void sharpen(Plane<const T> src, Plane<T> dst, ImgSize size) {
    const std::int32_t samples = size.width * 4 - 1;
    T results[kChunk];
    for (std::int32_t y = 0; y < size.height; ++y) {
        for (std::int32_t first = 0; first < samples; first += kChunk) {
            const std::int32_t count = std::min(kChunk, samples - first);
            const T* above = src.row(y - 1) + first;
            const T* here = src.row(y) + first;
            const T* below = src.row(y + 1) + first;
            T* out = dst.row(y) + first;
            for (std::int32_t i = 0; i < count; ++i) {
                const auto column = [&](std::int32_t at) {
                    return static_cast<Sum>(static_cast<Sum>(above[at]) + static_cast<Sum>(below[at]));
                };
                const Sum sides = static_cast<Sum>(here[i - 4]) + static_cast<Sum>(here[i + 4]);
                const Sum neighbours = (column(i - 4) + column(i + 4)) + (column(i) + sides);
                finish(static_cast<Sum>(here[i]) * Sum{16} - neighbours, results + i);
            }
            for (std::int32_t i = 0; i < count; ++i) {
                out[i] = i % 4 == 3 ? out[i] : results[i];
            }
        }
    }
}

}  // namespace

void sharpenBytes(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    sharpen<std::int32_t>(src, dst, size);
}
void sharpenFloats(Plane<const float> src, Plane<float> dst, ImgSize size) {
    sharpen<float>(src, dst, size);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(sharpenBytes);
HWY_EXPORT(sharpenFloats);

ImgStatus ImgSharpen8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                        ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(sharpenBytes), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep));
}
ImgStatus ImgSharpenFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                        ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(sharpenFloats), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep));
}

}  // namespace lumiset
#endif
