#include "frame/filters/triangular_blur.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace lumiset {
namespace {

template <class T>
void pass(const T* src, std::ptrdiff_t step, std::int32_t count, std::int32_t size, std::int32_t ring, T* dst,
          std::ptrdiff_t dstStep) {
    using Sum = std::conditional_t<std::is_same_v<T, float>, double, std::int64_t>;
    const std::int32_t half = (size + 1) / 2;
    const Sum divisor = static_cast<Sum>((half + 1) * half - (size % 2 != 0 ? half : 0));
    for (std::int32_t i = 0; i < count; ++i) {
        Sum sum = 0;
        for (std::int32_t k = 0; k < size; ++k) {
            const std::int32_t at = std::clamp(i + k - size / 2, ring, count - 1 - ring);
            const T value = src[step * at];
            const Sum weight = static_cast<Sum>(std::min(k, size - 1 - k) + 1);
            if constexpr (std::is_same_v<T, float>) {
                sum += std::isfinite(value) ? weight * static_cast<Sum>(value) : 0.0;
            } else {
                sum += weight * value;
            }
        }
        if constexpr (std::is_same_v<T, float>) {
            dst[dstStep * i] = static_cast<float>(sum / divisor);
        } else {
            dst[dstStep * i] = static_cast<T>((sum + divisor / 2) / divisor);
        }
    }
}

template <class T, int Channels>
bool blur(const TriangularBlurJob& job, MemoryAllocator& allocator) {
    void* block = nullptr;
    const std::size_t rowSamples = static_cast<std::size_t>(job.width) * Channels;
    if (!allocator.AllocBytes(
            &block, static_cast<std::uint32_t>(rowSamples * static_cast<std::size_t>(job.height) * sizeof(T)))) {
        return false;
    }
    T* middle = static_cast<T*>(block);
    const std::int32_t ringX = std::min(2, (job.width - 1) / 2);
    const std::int32_t ringY = std::min(2, (job.height - 1) / 2);
    const auto* src = reinterpret_cast<const T*>(job.src);
    auto* dst = reinterpret_cast<T*>(job.dst);
    const std::ptrdiff_t srcStep = job.srcStride / static_cast<std::ptrdiff_t>(sizeof(T));
    const std::ptrdiff_t dstStep = job.dstStride / static_cast<std::ptrdiff_t>(sizeof(T));
    for (std::size_t x = 0; x < rowSamples; ++x) {
        pass(src + x, srcStep, job.height, job.sizeY, ringY, middle + x, static_cast<std::ptrdiff_t>(rowSamples));
    }
    for (std::int32_t y = 0; y < job.height; ++y) {
        const std::int32_t from = std::clamp(y, ringY, job.height - 1 - ringY);
        for (int c = 0; c < Channels; ++c) {
            const int to = job.reverseSamples ? Channels - 1 - c : c;
            T* out = dst + dstStep * y + to;
            if (c == job.keptSample) {
                for (std::int32_t x = 0; x < job.width; ++x) {
                    out[x * Channels] = src[srcStep * y + x * Channels + c];
                }
            } else {
                pass(middle + rowSamples * static_cast<std::size_t>(from) + c, Channels, job.width, job.sizeX, ringX,
                     out, Channels);
            }
        }
    }
    allocator.FreeBytes(block);
    return true;
}

}  // namespace

bool triangularBlur(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept {
    switch (job.pixels) {
        case BlurPixels::kMask8:
            return blur<std::uint8_t, 1>(job, allocator);
        case BlurPixels::kColor8:
            return blur<std::uint8_t, 4>(job, allocator);
        case BlurPixels::kMaskFloat:
            return blur<float, 1>(job, allocator);
        case BlurPixels::kColorFloat:
            return blur<float, 4>(job, allocator);
    }
    return false;
}

}  // namespace lumiset
