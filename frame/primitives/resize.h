#pragma once

// Resampling of pictures. Arguments are checked as told in copy.h; source and destination must not overlap.

#include <cstddef>
#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

class MemoryAllocator;

/// Interpolation codes; others answer `kImgBadRange`.
inline constexpr std::int32_t kImgNearest = 1;   ///< the pixel at floor(s + 0.5)
inline constexpr std::int32_t kImgLinear = 2;    ///< two pixels in each direction
inline constexpr std::int32_t kImgCubic = 4;     ///< Catmull-Rom: cubic convolution with a = -1/2 (Keys 1981)
inline constexpr std::int32_t kImgLanczos = 16;  ///< sinc windowed by the sinc of three lobes (Duchon 1979), sum 1

/// dst(x, y) = src((x - xShift) / xFactor, (y - yShift) / yFactor), pixel centres at whole coordinates. The factors
/// must be above 0 and everything finite (`kImgBadRange`).
struct ImgResizeMap {
    double xFactor;
    double yFactor;
    double xShift;
    double yShift;
    std::int32_t interpolation;
};

// The resizes run in bands on the threads of `threads`, which may be null.

/// Stores the bytes of scratch that the resize of these sizes needs. `channels` is 1 or 4 (`kImgBadRange`
/// otherwise); `kImgNoMemory` where the number cannot be expressed.
ImgStatus ImgResizeBuffer(ImgSize srcSize, std::int32_t channels, std::int32_t interpolation, std::size_t* bytes,
                          ImgSize dstSize, const MemoryAllocator* threads = nullptr) noexcept;

/// Interpolates the source picture at a point for each destination pixel, in shrinking as in enlarging. Coordinates
/// beyond the source take its edge pixel; nothing outside it is read. 8-bit results are computed in single
/// precision and rounded once. `scratch` has the bytes that `ImgResizeBuffer` tells, aligned as `ImgAlloc` does.
ImgStatus ImgResize8C1(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                       std::int32_t dstStep, const ImgResizeMap& map, void* scratch, ImgSize dstSize,
                       const MemoryAllocator* threads = nullptr) noexcept;
ImgStatus ImgResize8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                       std::int32_t dstStep, const ImgResizeMap& map, void* scratch, ImgSize dstSize,
                       const MemoryAllocator* threads = nullptr) noexcept;
ImgStatus ImgResizeFC1(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst, std::int32_t dstStep,
                       const ImgResizeMap& map, void* scratch, ImgSize dstSize,
                       const MemoryAllocator* threads = nullptr) noexcept;
ImgStatus ImgResizeFC4(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst, std::int32_t dstStep,
                       const ImgResizeMap& map, void* scratch, ImgSize dstSize,
                       const MemoryAllocator* threads = nullptr) noexcept;

/// The same without shifts and with scratch of its own; `kImgNoMemory` when there is none.
ImgStatus ImgResizeSimple8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                             std::int32_t dstStep, double xFactor, double yFactor, std::int32_t interpolation,
                             ImgSize dstSize) noexcept;
ImgStatus ImgResizeSimpleFC4(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst, std::int32_t dstStep,
                             double xFactor, double yFactor, std::int32_t interpolation, ImgSize dstSize) noexcept;

}  // namespace lumiset
