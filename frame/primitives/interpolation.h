#pragma once

#include <cstdint>

namespace lumiset {

/// Interpolation codes; others answer `kImgBadRange`.
inline constexpr std::int32_t kImgNearest = 1;   ///< the pixel at floor(s + 0.5)
inline constexpr std::int32_t kImgLinear = 2;    ///< two pixels in each direction
inline constexpr std::int32_t kImgCubic = 4;     ///< Catmull-Rom: cubic convolution with a = -1/2 (Keys 1981)
inline constexpr std::int32_t kImgLanczos = 16;  ///< sinc windowed by the sinc of three lobes (Duchon 1979), sum 1

}  // namespace lumiset
