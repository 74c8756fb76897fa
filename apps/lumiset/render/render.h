#pragma once

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "apps/lumiset/render/effect_options.h"
#include "media/media.h"

namespace lumiset::app {

struct RenderRequest {
    std::string input;
    std::string output;
    std::vector<EffectRequest> effects;
    std::optional<media::Depth> depth;  ///< of the samples that effects work in; none: the input's
    int bits = 0;  ///< a sample that are written; 0: the input's, or 10 and more of asked-for floats
    bool argb = false;
    int threads = 0;  ///< 0: one a core
    double startSeconds = 0.0;
    double durationSeconds = std::numeric_limits<double>::infinity();
    std::string codec;          ///< empty: the usual one for the extension
    int quality = -1;           ///< -1: the encoder's usual one
    media::Rational frameRate;  ///< pictures a second of an input image sequence; 0: the usual rate
    bool alpha = false;         ///< the output has transparency whatever the first picture is like
    bool gpu = false;           ///< in OpenGL where that is possible
    bool quiet = false;
};

/// Renders the input through the chain, effects of `library`, to the output. Ends the program with status 128 + signal,
/// the output untouched, when a signal comes. Throws media::MediaError, hostkit::RenderError, std::bad_alloc.
void render(const RenderRequest& request, IEffectLibrary& library, const std::vector<hostkit::EffectStage>& chain);

}  // namespace lumiset::app
