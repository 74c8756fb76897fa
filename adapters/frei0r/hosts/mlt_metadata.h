#pragma once

#include <string>

#include "hostkit/effect_catalogue.h"

namespace lumiset::frei0r {

/// YAML that tells programs on MLT about an effect. MLT looks for it as `mltMetadataFile` in the folder `frei0r` of its
/// data.
[[nodiscard]] std::string mltMetadata(const hostkit::EffectDescription& effect);
[[nodiscard]] std::string mltMetadataFile(const hostkit::EffectDescription& effect);

}  // namespace lumiset::frei0r
