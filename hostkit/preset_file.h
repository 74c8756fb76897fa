#pragma once

#include <stdexcept>
#include <string>

#include "host/effect_library.h"
#include "host/preset_saver.h"
#include "hostkit/look.h"
#include "hostkit/parameter_store.h"

namespace lumiset::hostkit {

/// A preset file cannot be read, is not one of the effect's, or cannot be written; the text is a whole sentence.
class PresetFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The extension of an effect's preset files, with its point: ".lumva" to ".lumvj" by the effect's index.
[[nodiscard]] std::string presetExtension(const EffectDescription& effect);

/// Reads a preset file for the store's effect and takes its values over; parameters with keyframes become constant.
/// Returns the preset's name. Throws `PresetFileError`, with the store unchanged.
std::string loadPresetFile(IEffectLibrary& library, const std::string& path, ParameterStore& parameters);

/// Reads a preset file for `effect`, and sets in `wanted` what is not at its default. Throws `PresetFileError`, with
/// `wanted` unchanged.
void loadPresetFile(IEffectLibrary& library, const EffectDescription& effect, const std::string& path,
                    LookEffect& wanted);

/// Writes the values at the start of time as a preset file; an existing one is replaced whole or not at all. Throws
/// `PresetFileError`.
void savePresetFile(IEffectLibrary& library, const std::string& path, const ParameterStore& parameters);

/// The effect that a preset file is made for. Throws `PresetFileError` for a file that cannot be read, is no preset, or
/// is one for none of these effects.
[[nodiscard]] const EffectDescription& effectOfPresetFile(IEffectLibrary& library, const EffectCatalogue& catalogue,
                                                          const std::string& path);

}  // namespace lumiset::hostkit
