#pragma once

#include <cstdint>

#include "frame/frame.h"

namespace lumiset {

/// `count` rows of a frame, which must hold them, as a frame of their own. It has no resources: operations on it run on
/// the calling thread.
struct FrameRows final : Frame {
    FrameRows(const Frame& whole, std::int32_t first, std::int32_t count) {
        WrapSubRect(whole, 0, first, whole.Width(), count, whole.Flipped());
    }
};

}  // namespace lumiset
