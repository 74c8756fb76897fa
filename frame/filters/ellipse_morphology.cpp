#include "frame/filters/ellipse_morphology.h"

#include <algorithm>

namespace lumiset {
namespace {

template <class T>
void morph(const EllipseJob& job) {
    const std::int32_t anchorX = job.maskWidth / 2;
    const std::int32_t anchorY = job.maskHeight / 2;
    const auto rowOf = [&](std::int32_t y) {
        return reinterpret_cast<const T*>(job.src + static_cast<std::ptrdiff_t>(job.srcStride) *
                                                        std::clamp(y, 0, job.height - 1));
    };
    for (std::int32_t y = 0; y < job.height; ++y) {
        T* out = reinterpret_cast<T*>(job.dst + static_cast<std::ptrdiff_t>(job.dstStride) * y);
        for (std::int32_t x = 0; x < job.width; ++x) {
            for (std::int32_t c = 0; c < job.channels; ++c) {
                T best = rowOf(y)[x * job.channels + c];
                for (std::int32_t maskY = 0; maskY < job.maskHeight; ++maskY) {
                    const std::int32_t half = ellipseHalfChord(job.maskWidth, job.maskHeight, maskY);
                    const T* row = rowOf(y + maskY - anchorY);
                    for (std::int32_t i = x - half; i <= x + std::min(half, job.maskWidth - 1 - anchorX); ++i) {
                        const T value = row[std::clamp(i, 0, job.width - 1) * job.channels + c];
                        best = job.minimum ? std::min(best, value) : std::max(best, value);
                    }
                }
                out[x * job.channels + c] = best;
            }
        }
    }
}

}  // namespace

std::int32_t ellipseHalfChord(std::int32_t maskWidth, std::int32_t maskHeight, std::int32_t y) {
    const double ax = maskWidth / 2;
    const double ay = maskHeight / 2;
    const double dy = y - ay;
    std::int32_t half = maskWidth / 2;
    while (half >= 0 && !(static_cast<double>(half) * half / (ax * ax) + dy * dy / (ay * ay) <= 1.0)) {
        --half;
    }
    return half;
}

bool ellipseMorphology(const EllipseJob& job, MemoryAllocator&) noexcept {
    if (job.isFloat) {
        morph<float>(job);
    } else {
        morph<std::uint8_t>(job);
    }
    return true;
}

}  // namespace lumiset
