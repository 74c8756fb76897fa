#pragma once

#include <string>

#include "hostkit/effect_catalogue.h"
#include "hostkit/look.h"
#include "render/file_render.h"

namespace lumiset::studio {

/// A line for a shell that renders the same bytes as this job with this look. Throws `hostkit::LookError` for what
/// no line can say.
[[nodiscard]] std::string lumisetCommand(const hostkit::EffectCatalogue& catalogue, const hostkit::Look& look,
                                         const render::FileJob& job);

/// A word as a shell reads it back.
[[nodiscard]] std::string shellWord(const std::string& text);

}  // namespace lumiset::studio
