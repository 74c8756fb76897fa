#include "media/scene.h"

#include <algorithm>
#include <cmath>
#include <future>
#include <utility>

#include "media/scene_parts.h"

namespace lumiset::media {
namespace {

constexpr float kMargin = 0.065F;
constexpr float kCorner = 0.07F;
constexpr float kSoftEdge = 0.022F;

// The window's alpha.
float windowAt(const SceneCanvas& canvas, Vec p) {
    const Vec half = canvas.half() - Vec{kMargin, kMargin};
    const float d = roundedBox(p, {0, 0}, half, kCorner);
    return 1 - smooth(-kSoftEdge, kSoftEdge, d);
}

void cutWindow(SceneCanvas& canvas) {
    for (int y = 0; y < canvas.height(); y++) {
        float* row = canvas.row(y);
        for (int x = 0; x < canvas.width(); x++) {
            const float alpha = windowAt(canvas, canvas.pointAt(x, y));
            for (int c = 0; c < 4; c++) {
                row[4 * x + c] *= alpha;
            }
        }
    }
}

void putOver(const SceneCanvas& top, SceneCanvas& canvas) {
    for (int y = 0; y < canvas.height(); y++) {
        const float* from = top.row(y);
        float* to = canvas.row(y);
        for (int x = 0; x < canvas.width(); x++) {
            const float rest = 1 - from[4 * x + 3];
            for (int c = 0; c < 4; c++) {
                to[4 * x + c] = from[4 * x + c] + to[4 * x + c] * rest;
            }
        }
    }
}

std::vector<float> alphaOf(const SceneCanvas& canvas) {
    std::vector<float> alpha(canvas.size());
    for (int y = 0; y < canvas.height(); y++) {
        for (int x = 0; x < canvas.width(); x++) {
            alpha[canvas.index(x, y)] = canvas.row(y)[4 * x + 3];
        }
    }
    return alpha;
}

template <class Sample, class Store>
void writeRow(const float* from, int width, Sample* to, Store store) {
    for (int x = 0; x < width; x++) {
        const float alpha = from[4 * x + 3];
        const float scale = 1 / std::max(alpha, 1e-4F);
        to[4 * x] = store(from[4 * x + 2] * scale);
        to[4 * x + 1] = store(from[4 * x + 1] * scale);
        to[4 * x + 2] = store(from[4 * x] * scale);
        to[4 * x + 3] = store(alpha);
    }
}

}  // namespace

Scene::Scene(int width, int height, ScenePart part)
    : m_part(part),
      m_still(std::make_unique<SceneCanvas>(width, height)),
      m_work(std::make_unique<SceneCanvas>(width, height)) {
    SceneCanvas& still = *m_still;
    // The large layers are made ready at the same time, or one after the other where the system has no more threads.
    auto inFront = std::async([&still] { return std::pair(portraitIn(still), titleIn(still)); });
    const Landscape landscape(still);
    m_moving = std::make_unique<MovingFigures>(still, landscape);
    {
        SceneCanvas ground(width, height);
        if (part != ScenePart::kCutOut) {
            putGround(ground, landscape);
            std::vector<float> hidden = alphaOf(ground);
            std::transform(hidden.begin(), hidden.end(), hidden.begin(), [](float alpha) { return std::floor(alpha); });
            drawSky(still, landscape, hidden.data());
            putOver(ground, still);
        }
        m_aboveClouds = alphaOf(ground);
    }
    const auto [portrait, title] = inFront.get();
    SceneCanvas front(width, height);
    front.put(title.layer, title.left, title.top);
    if (part != ScenePart::kCutOut) {
        drawTestStrip(front);
    }
    still.put(portrait.layer, portrait.left, portrait.top);
    if (part == ScenePart::kWindow) {
        cutWindow(still);
    }
    putOver(front, still);
    front.put(portrait.layer, portrait.left, portrait.top);
    m_aboveBalloons = alphaOf(front);
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) {
            const std::size_t i = still.index(x, y);
            const float window = part == ScenePart::kWindow ? windowAt(still, still.pointAt(x, y)) : 1;
            const float visible = (1 - m_aboveClouds[i]) * (1 - m_aboveBalloons[i]) * window;
            m_aboveClouds[i] = 1 - visible;
        }
    }
}

Scene::~Scene() = default;

void Scene::render(double seconds, Depth depth, Picture& picture) {
    SceneCanvas& canvas = *m_work;
    canvas.copyFrom(*m_still);
    if (m_part != ScenePart::kCutOut) {
        m_moving->drawClouds(canvas, seconds, m_aboveClouds.data());
    }
    m_moving->drawBalloons(canvas, seconds, m_aboveBalloons.data());
    if (m_part != ScenePart::kCutOut) {
        drawClock(canvas, seconds);
    }

    picture.allocate(canvas.width(), canvas.height(), depth);
    for (int y = 0; y < canvas.height(); y++) {
        if (depth == Depth::kFloat) {
            writeRow(canvas.row(y), canvas.width(), samples<float>(picture, y), clamp01);
        } else {
            writeRow(canvas.row(y), canvas.width(), picture.row(y),
                     [](float v) { return static_cast<std::uint8_t>(static_cast<int>(clamp01(v) * 255 + 0.5F)); });
        }
    }
}

}  // namespace lumiset::media
