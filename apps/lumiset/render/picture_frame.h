#pragma once

#include "hostkit/renderer.h"
#include "media/media.h"

namespace lumiset::app {

/// A picture's pixels as effects take them.
[[nodiscard]] VideoFrameDesc frameOf(media::Picture& picture);
/// What is known about a picture of a source that has `format`.
[[nodiscard]] hostkit::FrameContext contextOf(const media::Picture& picture, const media::VideoFormat& format);

}  // namespace lumiset::app
