#pragma once

#include <string_view>

#include "media/scene_canvas.h"

namespace lumiset::media {

/// Sky with its sun, filling the frame.
void drawSky(SceneCanvas& canvas);
/// Mountains, meadow, house and tree.
void drawLandscape(SceneCanvas& canvas);
void drawClouds(SceneCanvas& canvas, double seconds, const float* cover);

/// A woman's head and shoulders.
void drawPortrait(SceneCanvas& canvas);
void drawBalloons(SceneCanvas& canvas, double seconds, const float* cover);

/// The title, with its shadow, and the line below it.
void drawTitle(SceneCanvas& canvas);
/// Colour bars, a grey ramp and gratings as fine as the pixels, on a panel.
void drawTestStrip(SceneCanvas& canvas);
/// Seconds, and a hand that turns once a second, at the strip's end.
void drawClock(SceneCanvas& canvas, double seconds);

/// Text in strokes (stroke_text.h). `origin` is the first letter's top left.
void drawText(SceneCanvas& canvas, std::string_view text, Vec origin, float height, float strokeWidth, Color color,
              float alpha, float softness);

}  // namespace lumiset::media
