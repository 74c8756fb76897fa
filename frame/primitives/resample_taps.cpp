#include "frame/primitives/resample_taps.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "frame/primitives/interpolation.h"

namespace lumiset {
namespace {

constexpr double kLanczosLobes = 3;

double sinc(double x) {
    if (x == std::floor(x)) {
        return x == 0 ? 1 : 0;  // the sine of a rounded multiple of pi is not quite 0
    }
    const double a = std::numbers::pi * x;
    return std::sin(a) / a;
}

/// Weight of a sample at distance `x`.
double kernelAt(double x, std::int32_t interpolation) {
    const double a = std::abs(x);
    switch (interpolation) {
        case kImgLinear:
            return std::max(0.0, 1 - a);
        case kImgCubic:
            return a < 1 ? (1.5 * a - 2.5) * a * a + 1 : a < 2 ? ((-0.5 * a + 2.5) * a - 4) * a + 2 : 0;
        default:
            return a < kLanczosLobes ? sinc(a) * sinc(a / kLanczosLobes) : 0;
    }
}

}  // namespace

std::int32_t resampleTapCount(std::int32_t interpolation) noexcept {
    switch (interpolation) {
        case kImgNearest:
            return 1;
        case kImgLinear:
            return 2;
        case kImgCubic:
            return 4;
        case kImgLanczos:
            return 6;
        default:
            return 0;
    }
}

ResampleTaps resampleTaps(double s, std::int32_t size, std::int32_t interpolation) noexcept {
    ResampleTaps taps{};
    if (interpolation == kImgNearest) {
        taps.start = static_cast<std::int32_t>(std::clamp(std::floor(s + 0.5), 0.0, size - 1.0));
        taps.weights[0] = 1;
        return taps;
    }
    // Further out all taps stand for the edge sample anyway.
    constexpr double kFar = kLanczosLobes + 1;
    s = std::clamp(s, -kFar, size - 1 + kFar);
    const double whole = std::floor(s);
    const double fraction = s - whole;
    const std::int32_t count = resampleTapCount(interpolation);
    const std::int32_t before = count / 2 - 1;
    taps.start = static_cast<std::int32_t>(whole) - before;
    double weights[kMaxTaps] = {};
    double sum = 0;
    for (std::int32_t k = 0; k < count; ++k) {
        weights[k] = kernelAt(fraction - (k - before), interpolation);
        sum += weights[k];
    }
    for (std::int32_t k = 0; k < count; ++k) {
        taps.weights[k] = static_cast<float>(weights[k] / sum);
    }
    return taps;
}

}  // namespace lumiset
