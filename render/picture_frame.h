#pragma once

#include "hostkit/renderer.h"
#include "media/media.h"

namespace lumiset::render {

/// A picture's pixels as effects take them.
[[nodiscard]] VideoFrameDesc frameOf(media::Picture& picture);
/// The same of a picture that is only read.
[[nodiscard]] VideoFrameDesc frameOf(const media::Picture& picture);
/// What is known about a picture of a source that has `format`.
[[nodiscard]] hostkit::FrameContext contextOf(const media::Picture& picture, const media::VideoFormat& format);

}  // namespace lumiset::render
