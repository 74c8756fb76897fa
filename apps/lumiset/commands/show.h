#pragma once

#include <string>

#include "hostkit/effect_catalogue.h"

namespace lumiset::app {

/// The effects, a line each.
[[nodiscard]] std::string listText(const hostkit::EffectCatalogue& catalogue);
/// The effects as a JSON array.
[[nodiscard]] std::string listJson(const hostkit::EffectCatalogue& catalogue);
/// One effect's parameters and presets in tables.
[[nodiscard]] std::string showText(const hostkit::EffectDescription& effect);
/// One effect's parameters and presets as a JSON object; numbers are those that the panel shows.
[[nodiscard]] std::string showJson(const hostkit::EffectDescription& effect);

}  // namespace lumiset::app
