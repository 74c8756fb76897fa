#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "host/records.h"

namespace lumiset {

/// Converts lengths between square pixels and the stored pixels of the frame at hand.
///
/// `doubleForField` counts the rows of a field as twice as high. `invert` moves the correction of pixels
/// that are wider than high from the horizontal to the vertical measure.
struct PixelAspectScale {
    float aspect = 1.0F;  ///< width of a pixel divided by its height; never 0, negative or not finite
    float unitX = 1.0F;   ///< (unitX, unitY): direction of the pixel's extent, length 1
    float unitY = 1.0F;
    bool hasAspect = false;
    bool scaleAlongX = true;
    std::int32_t fixedAspect = 1024;  ///< aspect * 1024, truncated

    PixelAspectScale() = default;
    PixelAspectScale(const FrameRenderInfo* info, bool doubleForField, bool invert) {
        const bool given = info != nullptr && (info->flags & FrameRenderInfo::kHasPixelAspect) != 0;
        if (given) {
            hasAspect = true;
            const float stored = static_cast<float>(info->pixelAspect);
            aspect = std::isfinite(stored) && stored > 0.0F ? stored : 1.0F;
        }
        if (doubleForField && info != nullptr && info->field != FrameRenderInfo::kWholeFrame) {
            hasAspect = true;
            aspect *= 2.0F;
        }
        if (aspect > 1.0F) {
            scaleAlongX = !invert;
            unitX = aspect;
        } else if (given) {
            unitY = 1.0F / aspect;
        }
        const double length = std::hypot(unitX, unitY);
        if (length > 0.0 && std::isfinite(length)) {
            unitX = static_cast<float>(unitX / length);
            unitY = static_cast<float>(unitY / length);
        }
        fixedAspect = static_cast<std::int32_t>(std::min(static_cast<double>(aspect) * 1024.0, 2147483647.0));
    }

    [[nodiscard]] float ToStoredX(float v) const { return scaleAlongX ? v * aspect : v; }
    [[nodiscard]] float ToStoredY(float v) const { return scaleAlongX ? v : v / aspect; }
    [[nodiscard]] float FromStoredX(float v) const { return scaleAlongX ? v / aspect : v; }
    [[nodiscard]] float FromStoredY(float v) const { return scaleAlongX ? v : v * aspect; }
};
using PixelAspectInfo = PixelAspectScale;

/// True when the host renders by field and this call renders one field.
inline bool fieldMode(const FrameRenderInfo* info) {
    return info != nullptr && (info->flags & FrameRenderInfo::kHasField) != 0 &&
           info->field < FrameRenderInfo::kWholeFrame;
}

/// True when the call renders anything but a whole frame, whatever the flags say.
inline bool isField(const FrameRenderInfo* info) {
    return info != nullptr && info->field != FrameRenderInfo::kWholeFrame;
}

}  // namespace lumiset
