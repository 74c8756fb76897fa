#pragma once

#include <string>
#include <vector>

#include "apps/lumiset/command_line.h"
#include "hostkit/effect_catalogue.h"

namespace lumiset::app {

/// Writes the values of the request's effect to its file.
void savePreset(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, const PresetSaveRequest& request);

/// A file's effect, name and values, a line each.
[[nodiscard]] std::string loadPresetText(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                                         const std::string& file);

/// A line for each file: what it is or what is wrong with it. `sound` becomes false when one is no preset.
[[nodiscard]] std::string checkPresetsText(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                                           const std::vector<std::string>& files, bool& sound);

}  // namespace lumiset::app
