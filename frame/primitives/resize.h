#pragma once

// Resampling of pictures. Arguments are checked as told in copy.h; source and destination must not overlap.

#include <cstddef>
#include <cstdint>

#include "frame/primitives/interpolation.h"
#include "frame/primitives/status.h"

namespace lumiset {

class MemoryAllocator;

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
/// Each of these is a constant that is called like a function.
template <class T>
struct ImgResize {
    std::int32_t channels;
    ImgStatus operator()(const T* src, std::int32_t srcStep, ImgSize srcSize, T* dst, std::int32_t dstStep,
                         const ImgResizeMap& map, void* scratch, ImgSize dstSize,
                         const MemoryAllocator* threads = nullptr) const noexcept;
};
inline constexpr ImgResize<std::uint8_t> ImgResize8C1{1};
inline constexpr ImgResize<std::uint8_t> ImgResize8C4{4};
inline constexpr ImgResize<float> ImgResizeFC1{1};
inline constexpr ImgResize<float> ImgResizeFC4{4};

/// The same without shifts and with scratch of its own; `kImgNoMemory` when there is none.
ImgStatus ImgResizeSimple8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                             std::int32_t dstStep, double xFactor, double yFactor, std::int32_t interpolation,
                             ImgSize dstSize) noexcept;
ImgStatus ImgResizeSimpleFC4(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst, std::int32_t dstStep,
                             double xFactor, double yFactor, std::int32_t interpolation, ImgSize dstSize) noexcept;

}  // namespace lumiset
