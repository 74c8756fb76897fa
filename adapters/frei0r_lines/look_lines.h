#pragma once

#include <string>
#include <vector>

#include "adapters/frei0r/hosts/command_lines.h"
#include "hostkit/look.h"

namespace lumiset::frei0r {

/// What plug-ins can do of a look, an entry for each effect that is on. `catalogue` must outlive them. Throws
/// `hostkit::LookError` where it has keys or strengths, which plug-ins do not do, and where nothing is on.
[[nodiscard]] std::vector<Settings> settingsOf(const hostkit::EffectCatalogue& catalogue, const hostkit::Look& look);

/// What another program has to be told of a clip that is there, and whether the look makes the first picture's result
/// transparent. Throws media::MediaError.
[[nodiscard]] Clip clipOf(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, const hostkit::Look& look,
                          const std::string& input, const std::string& output);

}  // namespace lumiset::frei0r
