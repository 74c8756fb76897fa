#pragma once

#include <stdexcept>
#include <string>

#include "hostkit/parameter_store.h"

namespace lumiset::app {

/// A text is not a preset in JSON; the message is one or more whole sentences.
class PresetJsonError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An effect's values under a preset's name.
struct NamedPreset {
    hostkit::ParameterStore parameters;
    std::string name;
};

/// The preset as people read and edit it: the effect, the name, and the values by label as the effect's panel shows
/// them. Numbers are the shortest that read back to the same bits.
[[nodiscard]] std::string presetToJson(const NamedPreset& preset);

/// Parameters that the text leaves out have their defaults; one without a name is called `otherwise`. Throws
/// `PresetJsonError`.
[[nodiscard]] NamedPreset presetFromJson(const hostkit::EffectCatalogue& catalogue, const std::string& text,
                                         const std::string& otherwise);

}  // namespace lumiset::app
