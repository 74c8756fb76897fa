#pragma once

// Border replication. Arguments are checked as told in copy.h.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// Copies the source to (left, top) of the destination; every destination pixel around it takes the value of the
/// nearest source edge pixel. The source may lie in the destination already, at that very place; otherwise the two
/// must not overlap. `kImgBadSize` where the source at (left, top) does not fit into the destination.
ImgStatus ImgReplicateBorder8C1(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                                std::int32_t dstStep, std::int32_t left, std::int32_t top, ImgSize dstSize) noexcept;
ImgStatus ImgReplicateBorder8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                                std::int32_t dstStep, std::int32_t left, std::int32_t top, ImgSize dstSize) noexcept;
ImgStatus ImgReplicateBorderFC1(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst,
                                std::int32_t dstStep, std::int32_t left, std::int32_t top, ImgSize dstSize) noexcept;
ImgStatus ImgReplicateBorderFC4(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst,
                                std::int32_t dstStep, std::int32_t left, std::int32_t top, ImgSize dstSize) noexcept;

}  // namespace lumiset
