#pragma once

// Random noise. The seed decides the picture, the same one on every instruction set and platform, whatever the row
// step; it is advanced, so that the next call gives different noise. Arguments are checked as told in copy.h.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// In place: each sample plus a whole number drawn evenly from low..high, both included, limited to 0..255.
/// `kImgBadRange` with `high` below `low`, or a limit beyond +-65536.
ImgStatus ImgAddUniform8C1(std::uint8_t* plane, std::int32_t step, std::int32_t low, std::int32_t high,
                           std::uint32_t* seed, ImgSize size) noexcept;

/// In place: each sample plus normally distributed noise (Marsaglia's polar method). `kImgBadRange` for a mean or
/// deviation that is not finite, or a negative deviation.
ImgStatus ImgAddGaussF(float* plane, std::int32_t step, float mean, float deviation, std::uint32_t* seed,
                       ImgSize size) noexcept;
/// The same, rounded and limited to 0..255.
ImgStatus ImgAddGauss8C1(std::uint8_t* plane, std::int32_t step, float mean, float deviation, std::uint32_t* seed,
                         ImgSize size) noexcept;

}  // namespace lumiset
