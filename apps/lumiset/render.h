#pragma once

#include <vector>

#include "apps/lumiset/command_line.h"
#include "hostkit/renderer.h"

namespace lumiset::app {

/// Renders the input through the chain to the output. Ends the program with status 128 + signal, the output
/// untouched, when a signal comes. Throws media::MediaError, hostkit::RenderError, std::bad_alloc.
void render(const RenderRequest& request, const std::vector<hostkit::EffectStage>& chain);

}  // namespace lumiset::app
