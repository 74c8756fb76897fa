#pragma once

#include <vector>

#include "media/layer.h"
#include "media/scene_canvas.h"

namespace lumiset::media {

/// The landscape's own measure: as high as the frame. A wider frame than 16:9 sees it continued by its mirror image, a
/// taller one the part of it around the house.
struct Landscape {
    explicit Landscape(const SceneCanvas& canvas);

    float unit;    ///< pixels in the height of the design
    float middle;  ///< where the design's middle lies, in pixels from the frame's left edge
    Layer ground;  ///< all that stands before the sky, down to the frame's lower edge
};

/// Sky with its sun, filling the frame but for what `cover` hides altogether.
void drawSky(SceneCanvas& canvas, const Landscape& landscape, const float* cover);
/// Mountains, meadow, house and tree.
void putGround(SceneCanvas& canvas, const Landscape& landscape);

/// What drifts, at the sizes that it has in a frame.
class MovingFigures {
public:
    MovingFigures(const SceneCanvas& canvas, const Landscape& landscape);
    void drawClouds(SceneCanvas& canvas, double seconds, const float* cover) const;
    void drawBalloons(SceneCanvas& canvas, double seconds, const float* cover) const;

private:
    float m_unit;    // of the landscape
    float m_middle;  // likewise
    std::vector<Layer> m_clouds;
    std::vector<Layer> m_balloons;
};

/// A layer at the size and the place that it has in a frame, in pixels.
struct PlacedLayer {
    Layer layer;
    int left;
    int top;
};
/// A woman's head and shoulders, at the frame's lower edge.
[[nodiscard]] PlacedLayer portraitIn(const SceneCanvas& canvas);
/// The title, with its shadow, and the line below it.
[[nodiscard]] PlacedLayer titleIn(const SceneCanvas& canvas);

/// Colour bars, a grey ramp and gratings as fine as the pixels, on a panel.
void drawTestStrip(SceneCanvas& canvas);
/// Seconds, and a hand that turns once a second, at the strip's end.
void drawClock(SceneCanvas& canvas, double seconds);

}  // namespace lumiset::media
