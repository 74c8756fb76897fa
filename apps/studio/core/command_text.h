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

/// Programs that load the effects as plug-ins.
enum class PluginHost { kFfmpeg, kMelt };

/// A line that renders the whole clip in another program. It looks at the clip, which takes time. Throws
/// `hostkit::LookError` and `frei0r::NameError` for what that program cannot do, media::MediaError.
[[nodiscard]] std::string pluginsCommand(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                                         const hostkit::Look& look, const render::FileJob& job, PluginHost host);

}  // namespace lumiset::studio
