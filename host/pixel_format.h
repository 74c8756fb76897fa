#pragma once

#include <cstdint>

namespace lumiset {

/// Pixel format codes. 8-bit samples span 0..255, float samples 0.0..1.0. Hosts hand in the four colour
/// formats; the one-channel formats are masks inside the module.
enum PixelFormat : std::int32_t {
    kFormatBgra8 = 0,
    kFormatArgb8 = 1,
    kFormatBgraFloat = 3,
    kFormatArgbFloat = 4,
    kFormatMask8 = 6,
    kFormatMaskFloat = 7,
};

struct PixelFormatTraits {
    std::int32_t format;
    std::int32_t bytesPerPixel;
    std::int32_t alphaIndex;  ///< sample position of alpha, -1 without
    std::int32_t bytesPerChannel;
    std::int32_t maskFormat;  ///< one-channel format of the same depth, -1 for masks
};

inline constexpr PixelFormatTraits kPixelFormats[] = {
    {kFormatBgra8, 4, 3, 1, kFormatMask8},
    {kFormatArgb8, 4, 0, 1, kFormatMask8},
    {kFormatBgraFloat, 16, 3, 4, kFormatMaskFloat},
    {kFormatArgbFloat, 16, 0, 4, kFormatMaskFloat},
    {kFormatMask8, 1, -1, 1, -1},
    {kFormatMaskFloat, 4, -1, 4, -1},
};

/// Traits of a format code; every number is -1 for a code that does not exist.
constexpr PixelFormatTraits pixelFormatTraits(std::int64_t format) {
    for (const PixelFormatTraits& traits : kPixelFormats) {
        if (traits.format == format) {
            return traits;
        }
    }
    return {-1, -1, -1, -1, -1};
}

constexpr std::int32_t AlphaIndex(std::int64_t format) {
    return pixelFormatTraits(format).alphaIndex;
}
constexpr std::int32_t BytesPerChannel(std::int64_t format) {
    return pixelFormatTraits(format).bytesPerChannel;
}
constexpr std::int32_t MaskFormat(std::int64_t format) {
    return pixelFormatTraits(format).maskFormat;
}
/// Bytes of one pixel of the format, -1 for an unknown code.
constexpr std::int32_t formatBytesPerPixel(std::int64_t format) {
    return pixelFormatTraits(format).bytesPerPixel;
}
/// True for the four formats that a host may hand in for a frame to be rendered.
constexpr bool isHostFormat(std::int64_t format) {
    return AlphaIndex(format) >= 0;
}
constexpr bool isFloatFormat(std::int64_t format) {
    return BytesPerChannel(format) == 4;
}

}  // namespace lumiset
