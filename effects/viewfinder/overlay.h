#pragma once

#include "effects/viewfinder/camera_font.h"
#include "effects/viewfinder/plan.h"
#include "frame/frame.h"

namespace lumiset {

/// Draws the overlay of a plan over a colour frame: lines opaque, marks by their coverage, straight alpha. Everything
/// has its shadow first where the plan says so. Without a font the marks are left out.
void drawOverlay(Frame& frame, const OverlayPlan& plan, const CCameraFont* font) noexcept;

}  // namespace lumiset
