#pragma once

// The four colour formats as types: code that works on pixels is written once over a layout.

#include <cstdint>
#include <utility>

#include "host/pixel_format.h"

namespace lumiset {

/// A four-sample pixel: type of its samples and position of each.
template <class SampleType, int RedAt, int GreenAt, int BlueAt, int AlphaAt>
struct Layout {
    using Sample = SampleType;
    static constexpr int kRed = RedAt;
    static constexpr int kGreen = GreenAt;
    static constexpr int kBlue = BlueAt;
    static constexpr int kAlpha = AlphaAt;
    /// Position of the first of the three colour samples.
    static constexpr int kFirstColor = AlphaAt == 0 ? 1 : 0;
    static constexpr bool kIsFloat = sizeof(SampleType) == sizeof(float);
};
using LayoutBgra8 = Layout<std::uint8_t, 2, 1, 0, 3>;
using LayoutArgb8 = Layout<std::uint8_t, 1, 2, 3, 0>;
using LayoutBgraFloat = Layout<float, 2, 1, 0, 3>;
using LayoutArgbFloat = Layout<float, 1, 2, 3, 0>;

/// Answers `visitor(Layout...{})`, a bool, for a colour format, and false for any other.
template <class Visitor>
bool visitLayout(std::int32_t format, Visitor&& visitor) {
    switch (format) {
        case kFormatBgra8:
            return std::forward<Visitor>(visitor)(LayoutBgra8{});
        case kFormatArgb8:
            return std::forward<Visitor>(visitor)(LayoutArgb8{});
        case kFormatBgraFloat:
            return std::forward<Visitor>(visitor)(LayoutBgraFloat{});
        case kFormatArgbFloat:
            return std::forward<Visitor>(visitor)(LayoutArgbFloat{});
        default:
            return false;
    }
}

}  // namespace lumiset
