#pragma once

#include <vector>

#include "apps/lumiset/command_line.h"
#include "hostkit/effect_catalogue.h"
#include "hostkit/renderer.h"

namespace lumiset::app {

/// The values that a request gives an effect. Throws as `buildChain`.
[[nodiscard]] hostkit::ParameterStore readParameters(IEffectLibrary& library, const hostkit::EffectDescription& effect,
                                                     const EffectRequest& request);

/// The effects of a command line with their values, ready to render. `catalogue` must outlive them. Throws
/// `hostkit::ParameterError`, `hostkit::PresetFileError` and `UsageError`.
[[nodiscard]] std::vector<hostkit::EffectStage> buildChain(IEffectLibrary& library,
                                                           const hostkit::EffectCatalogue& catalogue,
                                                           const std::vector<EffectRequest>& requests);

}  // namespace lumiset::app
