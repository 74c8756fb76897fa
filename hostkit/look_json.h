#pragma once

#include <string>

#include "hostkit/look.h"

namespace lumiset::hostkit {

/// The newest form of the file that this program writes and reads; docs/lumilook.schema.json describes it.
inline constexpr int kLookVersion = 1;

/// The look as people read and edit it: JSON, effects and parameters by name, values as panels show them, and what is
/// left out at its default. It reads back to the same bits. Throws `ParameterError` for what the effects do not have.
[[nodiscard]] std::string lookToJson(const EffectCatalogue& catalogue, const Look& look);

/// Reads a text that anybody may have written; a look without a name is called `otherwise`. Throws `LookError`, for
/// unknown effects, presets, parameters and values too, which it names.
[[nodiscard]] Look lookFromJson(const EffectCatalogue& catalogue, const std::string& text,
                                const std::string& otherwise);

/// Throws `LookError` for a name or an author that is no single line of at most 200 bytes, for an `about` of more
/// than 1000, and for a `clip` of more than 4096.
void checkLookTexts(const Look& look);

/// Reads a part of the clip, "50%", or seconds as `parseTime` does; false for anything else.
[[nodiscard]] bool parseLookTime(std::string_view text, LookTime& time);

}  // namespace lumiset::hostkit
