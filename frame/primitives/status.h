#pragma once

// What all image primitives share: status codes, the size of a region, and the 8-bit scaled product.

#include <cstdint>

namespace lumiset {

/// Result of an image primitive. 0 is success; a primitive that answers anything else has written nothing.
using ImgStatus = std::int32_t;
inline constexpr ImgStatus kImgOk = 0;
inline constexpr ImgStatus kImgBadSize = -6;  ///< a width or height below 1
inline constexpr ImgStatus kImgNullPointer = -8;
inline constexpr ImgStatus kImgNoMemory = -9;
inline constexpr ImgStatus kImgBadRange = -13;     ///< a number that the primitive does not take; each says which
inline constexpr ImgStatus kImgBadStep = -14;      ///< a row step below 1 or too small for the row
inline constexpr ImgStatus kImgBadMaskSize = -33;  ///< an unknown mask, or an anchor outside it

/// Region of a primitive, in pixels.
struct ImgSize {
    std::int32_t width;
    std::int32_t height;
};

/// a * b / 255 rounded down, for a and b of 0..255.
constexpr std::uint8_t scaledProduct(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t p = a * b;
    return static_cast<std::uint8_t>((p + (p >> 8U) + 1U) >> 8U);
}

}  // namespace lumiset
