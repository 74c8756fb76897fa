#pragma once

#include <array>
#include <cstddef>

namespace lumiset {

/// The user's options. They hold for all modules of the maker and across sessions.
enum Option : std::size_t { kForcedCpu, kKnobsDragVertical, kKeyFramesVsPresets, kCropOverscan, kOptionCount };

/// All options as they are stored: "yes" is true, anything else and a missing value false.
[[nodiscard]] std::array<bool, kOptionCount> readOptions() noexcept;

/// Stores one as "yes" or "no". False when it could not be stored.
[[nodiscard]] bool writeOption(Option option, bool value) noexcept;

}  // namespace lumiset
