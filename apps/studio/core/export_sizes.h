#pragma once

#include <vector>

#include "apps/studio/core/picture_scaling.h"
#include "media/media.h"

namespace lumiset::studio {

/// Sizes that a clip is sensibly exported at: its own, its own with square pixels where they are others, and the usual
/// smaller ones of the same shape in square pixels, upright clips by their width.
[[nodiscard]] std::vector<Size> exportSizes(const media::VideoFormat& format);

}  // namespace lumiset::studio
