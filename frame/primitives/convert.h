#pragma once

// Change of sample depth. Arguments are checked and pointers may be advanced as told in copy.h; planes do not
// overlap. The value `low` stands for 0 and `high` for 255; `kImgBadRange` unless `high` is above `low`.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// floor((f - low) * (255 / (high - low)) + 0.5), limited to 0..255; a NaN becomes 0. `A4` leaves the fourth
/// sample of `dst`.
ImgStatus ImgFloatToByteA4(const float* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept;
ImgStatus ImgFloatToByteC4(const float* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept;
ImgStatus ImgFloatToByteC1(const float* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept;

/// b * (high - low) / 255 + low.
ImgStatus ImgByteToFloatC4(const std::uint8_t* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept;
ImgStatus ImgByteToFloatC1(const std::uint8_t* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, float low,
                           float high, ImgSize size) noexcept;

}  // namespace lumiset
