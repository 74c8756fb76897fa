#pragma once

#include <cstdint>
#include <optional>

#include "media/media.h"

namespace lumiset::media {

inline constexpr int kYuvDepth = 15;
inline constexpr int kToRgbBits = 20;
inline constexpr int kFromRgbBits = 8;

/// Weights between 8-bit RGB and Y, U, V of `kYuvDepth` bits, as fixed-point numbers.
struct YuvWeights {
    std::int16_t lumaZero;
    // To RGB, in units of 2^-20 of a level.
    std::int16_t luma, redFromV, greenFromU, greenFromV, blueFromU;
    // From RGB, of blue, green and red, in units of 2^-8.
    struct FromRgb {
        std::int16_t blue, green, red;
    };
    FromRgb toY, toU, toV;
};

/// Nothing for matrices that are not made of the lumas of red and blue.
std::optional<YuvWeights> yuvWeights(const PictureColor& color);

/// Rows of Y, U, V and alpha, as many chroma samples as luma, to pixels of B, G, R, A; without alpha (null) they are
/// opaque.
void packYuv(const std::uint16_t* const planes[4], int count, const YuvWeights& weights, std::uint8_t* pixels);
/// The way back. Where there is no plane for alpha (null) the colours are laid over black.
void splitToYuv(const std::uint8_t* pixels, int count, const YuvWeights& weights, std::uint16_t* const planes[4]);

}  // namespace lumiset::media
