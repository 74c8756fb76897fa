#pragma once

// What an old television shows on its glass: the picture with everything that happens to it before the tube bends it.

#include <cstdint>

#include "effects/effect.h"
#include "effects/old_tv/plan.h"
#include "frame/frame.h"

namespace lumiset {

/// Colour, ghost, static, scan lines, torn and rolled rows, and the bright band of a tube, from `source` into all of
/// `picture`, two frames of the context's size and of one colour format. False when there is no memory; then nothing
/// has been written.
bool drawPicture(const Frame& source, Frame& picture, const OldTVSettings& settings, const OldTVEvents& events,
                 const RenderContext& context) noexcept;

/// What it takes from the allocator's reserve.
std::int64_t pictureScratch(const OldTVSettings& settings, const RenderContext& context, std::int32_t format);

}  // namespace lumiset
