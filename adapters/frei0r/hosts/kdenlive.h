#pragma once

#include <string>

#include "adapters/frei0r/hosts/settings.h"

namespace lumiset::frei0r {

/// XML that gives Kdenlive the panel of an effect.
[[nodiscard]] std::string kdenliveEffect(const hostkit::EffectDescription& effect);

/// XML of one of the user's own effects in Kdenlive: the effect with these settings. `id` is what Kdenlive knows it
/// by, `name` what it shows.
[[nodiscard]] std::string kdenliveTemplate(const Settings& settings, const std::string& id, const std::string& name);

}  // namespace lumiset::frei0r
