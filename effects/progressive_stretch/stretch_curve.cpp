#include "effects/progressive_stretch/stretch_curve.h"

#include <algorithm>

namespace lumiset {

StretchRegion stretchRegion(std::int32_t width, std::int32_t height, float crop) {
    const float cut = crop * 0.25F;
    const auto w = static_cast<float>(width);
    const auto h = static_cast<float>(height);
    const auto croppedWidth = static_cast<std::int32_t>(w - cut * w);
    const auto croppedHeight = static_cast<std::int32_t>(h - cut * h);
    const std::int32_t croppedLeft = (width - croppedWidth) >> 1;
    const auto side = static_cast<std::int32_t>((w - w * 0.75F) / 2.0F - static_cast<float>(croppedLeft));
    // The middle 4:3 part of what the crop leaves.
    const std::int32_t inner = croppedWidth - static_cast<std::int32_t>(static_cast<float>(croppedWidth) * 0.25F);
    return {(width - inner) >> 1, (height - croppedHeight) >> 1, inner, croppedHeight, side};
}

StretchCurve::StretchCurve(float stretch, std::int32_t side, std::int32_t half)
    : m_k(1.0F - stretch), m_c(half > 0 ? static_cast<float>(side) / static_cast<float>(half) : 0.0F) {}

float StretchCurve::at(float x) const {
    if (m_c < 0.0001F) {
        return x;
    }
    const float e = 1.0F - m_c;
    const float f = m_k * m_c + e;
    // The quadratic through (0, 0), (e, f) and (1, 1).
    const float q = x / e * f * (x - 1.0F) / (e - 1.0F) + x * (x - e) / (1.0F - e);
    const float v = x <= e ? (1.0F - x * x) * ((x / e - x) * m_k + x) + q * x * x : q;
    return std::clamp(v, 0.0F, 1.0F);
}

float stretchedColumn(const StretchCurve& curve, std::int32_t width, std::int32_t x) {
    const std::int32_t half = width >> 1;
    const auto middle = static_cast<float>(half);
    const float distance = static_cast<float>(x > half ? x - half : half - x) / middle;
    const float moved = curve.at(distance) * middle;
    return std::clamp(x > half ? middle + moved : middle - moved, 0.0F, static_cast<float>(width - 2));
}

}  // namespace lumiset
