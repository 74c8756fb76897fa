#pragma once

#include <string>

#include "hostkit/effect_catalogue.h"

namespace lumiset::app {

/// Reads a preset from one file and writes it to another, each a preset file or JSON as its extension says. What stood
/// there before is replaced whole or not at all. Throws `UsageError` for other extensions, `hostkit::PresetFileError`
/// and `media::MediaError`.
void convertPreset(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, const std::string& from,
                   const std::string& to);

}  // namespace lumiset::app
