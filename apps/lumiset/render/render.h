#pragma once

#include <vector>

#include "apps/lumiset/render/effect_options.h"
#include "render/file_render.h"

namespace lumiset::app {

struct RenderRequest {
    render::FileJob job;
    std::vector<EffectRequest> effects;
    bool quiet = false;
};

/// Renders the input through the chain, effects of `library`, to the output. Ends the program with status 128 + signal,
/// the output untouched, when a signal comes. Throws media::MediaError, hostkit::RenderError, std::bad_alloc.
void render(const RenderRequest& request, IEffectLibrary& library, const std::vector<hostkit::EffectStage>& chain);

}  // namespace lumiset::app
