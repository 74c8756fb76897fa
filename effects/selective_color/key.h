#pragma once

// The chroma key of Selective Color: how far a pixel's colour lies outside a wedge around a key colour in the plane
// of Cb and Cr.

#include <cstdint>

#include "frame/frame.h"

namespace lumiset {

/// A key colour with its acceptance angle, in levels of 255. For 8-bit frames all numbers are whole.
struct ColorKey {
    float keyY;
    float cosine;  ///< direction of the key colour, times 127
    float sine;
    float radius;          ///< its distance from grey, at most 127
    float level;           ///< within this distance of the key colour everything counts as the colour itself
    float tangent;         ///< of the acceptance angle, in sixteenths, at most 255
    float cotangent;       ///< likewise
    bool keepsWholeWedge;  ///< the level reaches to grey
};

inline constexpr float kKeyNoise = 0.6F;            ///< how much a difference in brightness counts
inline constexpr float kKeyLargestDetour = 128.0F;  ///< limit of the distance from the key's axis along the wedge

/// `color` is 0x00BBGGRR, `range` 0..1. A grey key has no direction: every colour lies in its wedge.
ColorKey colorKey(std::uint32_t color, float range, bool wholeNumbers);

/// Writes the key's mask of a colour frame, both of one size: 0 where the colour is the key's, the pixel's alpha where
/// it lies outside the wedge.
void keyMask(const Frame& source, Frame& mask, const ColorKey& key) noexcept;

}  // namespace lumiset
