#pragma once

#include <array>
#include <cstdint>

namespace lumiset {

/// Red, green and blue of a colour 0x00BBGGRR, 0..1.
constexpr std::array<float, 3> unitColor(std::uint32_t color) {
    const auto part = [color](std::uint32_t shift) { return static_cast<float>((color >> shift) & 0xFFU) / 255.0F; };
    return {part(0), part(8), part(16)};
}

}  // namespace lumiset
