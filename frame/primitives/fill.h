#pragma once

// Constant fills. Arguments are checked and pointers may be advanced as told in copy.h.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

ImgStatus ImgSet8C1(std::uint8_t* plane, std::int32_t step, std::uint8_t value, ImgSize size) noexcept;
ImgStatus ImgSetFC1(float* plane, std::int32_t step, float value, ImgSize size) noexcept;

/// All four samples of each pixel from `values[4]`.
ImgStatus ImgSet8C4(std::uint8_t* plane, std::int32_t step, const std::uint8_t* values, ImgSize size) noexcept;
ImgStatus ImgSetFC4(float* plane, std::int32_t step, const float* values, ImgSize size) noexcept;

/// The first three samples of each pixel from `values[3]`.
ImgStatus ImgSet8A4(std::uint8_t* plane, std::int32_t step, const std::uint8_t* values, ImgSize size) noexcept;
ImgStatus ImgSetFA4(float* plane, std::int32_t step, const float* values, ImgSize size) noexcept;

/// The sample that `plane` points at, of each four-sample pixel.
ImgStatus ImgSetChannel8C4(std::uint8_t* plane, std::int32_t step, std::uint8_t value, ImgSize size) noexcept;
ImgStatus ImgSetChannelFC4(float* plane, std::int32_t step, float value, ImgSize size) noexcept;

}  // namespace lumiset
