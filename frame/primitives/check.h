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

/// A plane as a primitive is given it: pixels of `kSamples` samples.
template <std::int32_t kSamples, class T>
struct Pixels : Plane<T> {
    constexpr operator PlaneArgument() const {
        return {this->data, this->step, kSamples * static_cast<std::int32_t>(sizeof(T))};
    }
};
template <std::int32_t kSamples, class T>
[[nodiscard]] constexpr Pixels<kSamples, T> pixels(T* data, std::int32_t step) {
    return {{data, step}};
}

/// Pointers among the other arguments are arrays; numbers pass every check.
template <class T>
[[nodiscard]] constexpr PlaneArgument checkedArgument(const T& argument) {
    if constexpr (std::is_convertible_v<T, PlaneArgument>) {
        return argument;
    } else if constexpr (std::is_pointer_v<T>) {
        return arrayArgument(argument);
    } else {
        return arrayArgument(&argument);
    }
}

/// What nearly every primitive is: `loop(arguments..., size)`, with `Pixels` for its planes, unless the check of its
/// arguments or then `ownCheck`, the primitive's own, says that it cannot be.
template <class Loop, class... Arguments>
[[nodiscard]] ImgStatus runLoop(ImgStatus ownCheck, Loop& loop, ImgSize size, const Arguments&... arguments) {
    const ImgStatus status = checkPlanes(size, {checkedArgument(arguments)...});
    if (status != kImgOk || ownCheck != kImgOk) {
        return status != kImgOk ? status : ownCheck;
    }
    loop(arguments..., size);
    return kImgOk;
}
template <class Loop, class... Arguments>
[[nodiscard]] ImgStatus runLoop(Loop& loop, ImgSize size, const Arguments&... arguments) {
    return runLoop(kImgOk, loop, size, arguments...);
}

}  // namespace lumiset
