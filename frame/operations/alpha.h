#pragma once

// Compositing of whole frames. The rules told in copy.h hold here too; all frames of a call have one colour format.

#include "frame/frame.h"

namespace lumiset {

/// `top` over `bottom` into `dst`, on the rectangle common to all three; `dst` may be either of them. With a the
/// top's alpha, straight: colour top * a + bottom * (1 - a); premultiplied: colour top + bottom * (1 - a). Alpha in
/// both: a + bottom's alpha * (1 - a).
bool FrameAlphaOver(const Frame& top, const Frame& bottom, Frame& dst, bool premultiplied) noexcept;

/// Colour times alpha; alpha is copied.
bool FramePremultiplyAlpha(const Frame& src, Frame& dst) noexcept;

}  // namespace lumiset
