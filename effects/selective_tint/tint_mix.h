#pragma once

// The arithmetic of Selective Tint: a picture tinted in one way inside a mask and in another outside.

#include <cstdint>

#include "frame/frame.h"

namespace lumiset {

/// How a tint meets the picture, in the order of the user's list.
enum class TintMode : std::uint32_t {
    kNormal,
    kPop,
    kScreen,
    kMultiply,
    kLighten,
    kDarken,
    kColorDodge,
    kColorBurn,
    kNegation,
    kHue,
    kCount,
};

struct TintSettings {
    std::uint32_t color;  ///< 0x00BBGGRR
    float blend;          ///< 0..1, share of the tint
    float toneMask;       ///< 0..1, how strictly only colours like the tint's are affected
};

/// Chroma differences at which the tone mask begins to hold a colour back, and over which it does so fully. They are
/// between chroma vectors c / (|c| + kToneSoftness), which tell hues apart and all but forget how strong they are.
inline constexpr float kToneCutoff = 0.25F;
inline constexpr float kToneFade = 0.5F;
inline constexpr float kToneSoftness = 0.06F;

/// One side of the mask.
struct TintRegion {
    enum class Kind { kSource, kNegative, kTinted };
    Kind kind;
    float color[3];   ///< red, green, blue, 0..1
    float highlight;  ///< what the brightest parts are drawn to
    float hue[3];     ///< each channel between the colour's smallest and largest one, 0..1
    bool isGrey;
    float tone[2];  ///< the colour's softened chroma
    float blend;
    float toneMask;
};
TintRegion tintedRegion(const TintSettings& settings);
TintRegion plainRegion(TintRegion::Kind kind);

/// Tints the common rectangle of frames of one colour format; `mask` is of the same depth, 0 inside and full outside.
/// Alpha is copied. Samples are straight, 0..1; brighter ones are not cut off but count as white where they are
/// measured.
void tintFrame(const Frame& source, const Frame& mask, Frame& destination, const TintRegion& inside,
               const TintRegion& outside, TintMode mode) noexcept;

}  // namespace lumiset
