#pragma once

// Argument checks that every primitive starts with, in the order null, size, step.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <type_traits>

#include "frame/primitives/status.h"

namespace lumiset {

/// One plane argument: its first sample, bytes from row to row, and bytes of one whole pixel.
struct PlaneArgument {
    const void* data;
    std::int32_t step;
    std::int32_t bytesPerPixel;
};

/// `kImgOk`, or why these planes cannot be worked on. A plane whose pointer was advanced to a later sample is
/// held to the same step: its rows still are whole pixels apart.
[[nodiscard]] constexpr ImgStatus checkPlanes(ImgSize size, std::initializer_list<PlaneArgument> planes) {
    for (const PlaneArgument& plane : planes) {
        if (plane.data == nullptr) {
            return kImgNullPointer;
        }
    }
    if (size.width < 1 || size.height < 1) {
        return kImgBadSize;
    }
    for (const PlaneArgument& plane : planes) {
        if (plane.step < 1 || plane.step < std::int64_t{size.width} * plane.bytesPerPixel) {
            return kImgBadStep;
        }
    }
    return kImgOk;
}

/// An array argument among the planes: only null is refused.
[[nodiscard]] constexpr PlaneArgument arrayArgument(const void* data) {
    return {data, 1, 0};
}

/// A checked plane, as the loops take it.
template <class T>
struct Plane {
    T* data;
    std::int32_t step;  ///< bytes

    operator Plane<const T>() const requires(!std::is_const_v<T>) { return {data, step}; }

    [[nodiscard]] T* row(std::int32_t y) const {
        using Byte = std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>;
        return reinterpret_cast<T*>(reinterpret_cast<Byte*>(data) + static_cast<std::ptrdiff_t>(step) * y);
    }
};

}  // namespace lumiset
