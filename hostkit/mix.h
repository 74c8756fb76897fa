#pragma once

#include <memory>
#include <vector>

#include "host/records.h"

namespace lumiset::hostkit {

/// Where an effect shows: a grey picture, 1 white and 0 black, row after row from the top.
struct Mask {
    int width = 0;
    int height = 0;
    std::vector<float> values;
};

/// How much of a result is shown over what it was made from.
struct Mix {
    float strength = 1.0F;             ///< 0 to 1
    std::shared_ptr<const Mask> mask;  ///< stretched over the frame; null: everywhere
};

/// Mixes `result` with `source`, which it was made from, in place: frames of one format, the common top-left part of
/// both. Where the weight, strength times mask, is 0 the source's bytes stand, where it is 1 the result's stay. Alpha
/// is mixed in straight lines, colours weighed by their alpha, so that what a transparent pixel hides never shows.
void mixFrames(const VideoFrameDesc& source, const VideoFrameDesc& result, const Mix& mix);

}  // namespace lumiset::hostkit
