#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/preset_saver.h"

namespace lumiset {

/// Preset files of more bytes are not read.
inline constexpr std::size_t kMaxPresetBytes = 1U << 20U;

/// A preset in memory. Texts are UTF-8.
struct Preset {
    std::string name;
    std::string effectLibrary;
    std::string effectName;
    std::vector<PresetEntry> entries;
};

/// Brings sliders and points into 0..1. False where one is not finite.
[[nodiscard]] bool limitValues(PresetEntry& entry);

/// The file's text. Numbers are written the same in every locale, floats by the shortest text that reads back to the
/// same bits.
[[nodiscard]] std::string presetText(const Preset& preset);

/// Nothing for a text that is not a preset: no root element "Preset", no parameters, or a parameter without its
/// numbers. Sliders and points are limited to 0..1. An attribute for a name that is missing reads as empty.
[[nodiscard]] std::optional<Preset> parsePreset(const std::string& text);

}  // namespace lumiset
