#pragma once

#include <cstdint>
#include <span>

namespace lumiset::media {

/// Files that every program with this library carries along: the scene's painted layers, PNGs, and a font, TrueType.
enum class EmbeddedFile {
    kLandscape,
    kLandscapeSmall,
    kPortrait,
    kPortraitSmall,
    kTitle,
    kCloud,
    kBalloon,
    kFont,
};
[[nodiscard]] std::span<const std::uint8_t> embeddedFile(EmbeddedFile file);

}  // namespace lumiset::media
