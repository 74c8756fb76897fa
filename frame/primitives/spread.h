#pragma once

// One channel made into colour. Arguments are checked as told in copy.h; the planes do not overlap.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// Each sample of a one-channel plane to the three colours of a pixel, whose alpha, first or last, becomes `alpha`.
ImgStatus ImgSpreadGray8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                           std::uint8_t alpha, bool alphaFirst, ImgSize size) noexcept;
ImgStatus ImgSpreadGrayFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, float alpha,
                           bool alphaFirst, ImgSize size) noexcept;

}  // namespace lumiset
