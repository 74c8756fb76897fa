#pragma once

// Limits, thresholds, smaller samples and inversion. Arguments are checked and pointers may be advanced as told in
// copy.h. A destination may be one of the sources. One-channel functions serve whole four-channel rows too, with
// the width given in samples.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// In place: samples below `low` become `low`, others above `high` become `high`. A NaN becomes `low`.
ImgStatus ImgClampRange8C1(std::uint8_t* plane, std::int32_t step, std::uint8_t low, std::uint8_t high,
                           ImgSize size) noexcept;
ImgStatus ImgClampRangeFC1(float* plane, std::int32_t step, float low, float high, ImgSize size) noexcept;
/// The same for the first three samples of each pixel.
ImgStatus ImgClampRangeFA4(float* plane, std::int32_t step, float low, float high, ImgSize size) noexcept;

/// In place: samples below `threshold` become `value`, others stay.
ImgStatus ImgThresholdLess8C1(std::uint8_t* plane, std::int32_t step, std::uint8_t threshold, std::uint8_t value,
                              ImgSize size) noexcept;
ImgStatus ImgThresholdLessFC1(float* plane, std::int32_t step, float threshold, float value, ImgSize size) noexcept;

/// 255 - sample, or 1 - sample.
ImgStatus ImgInvert8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                       ImgSize size) noexcept;
ImgStatus ImgInvertFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept;
/// In place, the sample that `plane` points at, of each four-sample pixel.
ImgStatus ImgInvertChannel8C4(std::uint8_t* plane, std::int32_t step, ImgSize size) noexcept;
ImgStatus ImgInvertChannelFC4(float* plane, std::int32_t step, ImgSize size) noexcept;

/// The smaller of two samples.
ImgStatus ImgMin8C1(const std::uint8_t* a, std::int32_t aStep, const std::uint8_t* b, std::int32_t bStep,
                    std::uint8_t* dst, std::int32_t dstStep, ImgSize size) noexcept;
ImgStatus ImgMinFC1(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep, float* dst,
                    std::int32_t dstStep, ImgSize size) noexcept;

/// In place: samples above `limits[i]` of their position i become that limit.
ImgStatus ImgLimitFC4(float* plane, std::int32_t step, const float* limits, ImgSize size) noexcept;

}  // namespace lumiset
