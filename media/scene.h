#pragma once

#include <memory>
#include <vector>

#include "media/media.h"

namespace lumiset::media {

class MovingFigures;
class SceneCanvas;

enum class ScenePart {
    kWindow,  ///< everything
    kFull,    ///< the landscape fills the frame: opaque
    kCutOut,  ///< the figures in front and the title alone, nothing behind them
};

/// A painted moving picture for showing video effects: a landscape in a window whose soft edge leaves a transparent
/// margin, a portrait, balloons that drift in front and out over the margin, a title, a strip of fine lines and
/// colours. The same time gives the same picture. Built once for a size; what stands still is drawn only then.
class Scene {
public:
    Scene(int width, int height, ScenePart part);
    ~Scene();
    /// Sets the picture's size and pixels, not its times.
    void render(double seconds, Depth depth, Picture& picture);

private:
    ScenePart m_part;
    std::unique_ptr<SceneCanvas> m_still;  ///< everything that does not move
    std::unique_ptr<SceneCanvas> m_work;
    std::unique_ptr<MovingFigures> m_moving;
    std::vector<float> m_aboveClouds;    ///< how much of each pixel hides the clouds
    std::vector<float> m_aboveBalloons;  ///< and the balloons
};

}  // namespace lumiset::media
