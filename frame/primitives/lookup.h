#pragma once

// Tables of 256 entries. Arguments are checked and pointers may be advanced as told in copy.h. The destination may
// be the source.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// The first three samples of each pixel, each through its own `tables[i][256]`; the fourth of `dst` stays.
ImgStatus ImgLookup8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                       const std::uint8_t* const* tables, ImgSize size) noexcept;

}  // namespace lumiset
