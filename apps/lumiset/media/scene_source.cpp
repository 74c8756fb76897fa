#include "apps/lumiset/media/scene_source.h"

#include <cmath>
#include <regex>

#include <fmt/format.h>

#include "apps/lumiset/media/pixel_loops.h"
#include "apps/lumiset/media/scene.h"

namespace lumiset::media {
namespace {

constexpr int kLargestSide = 16384;

struct SceneName {
    int width = 1280;
    int height = 720;
    double seconds = 4;
    Rational rate{25, 1};
};

// Frames a second as a whole number, a decimal or a ratio such as 30000/1001.
Rational parseRate(const std::string& text) {
    const std::size_t slash = text.find('/');
    if (slash != std::string::npos) {
        return {std::stoi(text.substr(0, slash)), std::stoi(text.substr(slash + 1))};
    }
    const double rate = std::stod(text);
    return rate == std::floor(rate) ? Rational{static_cast<int>(rate), 1}
                                    : Rational{static_cast<int>(std::lround(rate * 1000)), 1000};
}

SceneName parse(const std::string& input) {
    static const std::regex form(
        "scene(:([0-9]{1,5})x([0-9]{1,5})(:([0-9]{1,6}(\\.[0-9]{1,9})?)(:([0-9]{1,6}(/"
        "[0-9]{1,6}|\\.[0-9]{1,3})?))?)?)?");
    std::smatch match;
    if (!std::regex_match(input, match, form)) {
        throw MediaError(
            fmt::format("'{}' is no scene; write scene:WIDTHxHEIGHT:SECONDS:FPS, as in scene:1280x720:4:25.", input));
    }
    SceneName name;
    if (match[2].matched) {
        name.width = std::stoi(match[2].str());
        name.height = std::stoi(match[3].str());
    }
    if (match[5].matched) {
        name.seconds = std::stod(match[5].str());
    }
    if (match[8].matched) {
        name.rate = parseRate(match[8].str());
    }
    if (name.width < 1 || name.height < 1 || name.width > kLargestSide || name.height > kLargestSide) {
        throw MediaError(fmt::format("The size of '{}' has to be 1x1 to {}x{}.", input, kLargestSide, kLargestSide));
    }
    const double rate = name.rate.value();
    if (!(rate >= 0.001 && rate <= 1000) || !(name.seconds * rate >= 0.5)) {
        throw MediaError(
            fmt::format("'{}' has no picture; seconds and frames a second have to be positive, "
                        "and no more than 1000 frames a second.",
                        input));
    }
    return name;
}

class SceneSource final : public Source {
public:
    SceneSource(const SceneName& name, const SourceOptions& options)
        : m_depth(options.depth), m_scene(name.width, name.height) {
        m_format.width = name.width;
        m_format.height = name.height;
        m_format.frameRate = name.rate;
        m_format.timeBase = {name.rate.den, name.rate.num};
        m_format.hasAlpha = true;
        m_format.bitDepth = options.depth == Depth::kFloat ? 16 : 8;
        const double step = m_format.timeBase.value();
        const std::int64_t count = std::llround(name.seconds / step);
        m_first = static_cast<std::int64_t>(std::ceil(std::max(0.0, options.startSeconds) / step - 1e-6));
        const double end = std::min(static_cast<double>(count),
                                    std::ceil((options.startSeconds + options.durationSeconds) / step - 1e-6));
        m_end = static_cast<std::int64_t>(end);
        if (m_first >= m_end) {
            throw MediaError(fmt::format("The scene is over before the start at {} s.", options.startSeconds));
        }
        m_format.frameCount = m_end - m_first;
        m_format.durationSeconds = static_cast<double>(m_format.frameCount) * step;
        m_next = m_first;
    }

    const VideoFormat& format() const override { return m_format; }
    void rewind() override { m_next = m_first; }

    bool read(Picture& picture) override {
        if (m_next >= m_end) {
            return false;
        }
        const double seconds = static_cast<double>(m_next) * m_format.timeBase.value();
        m_scene.render(seconds, m_depth, picture);
        picture.pts = m_next++;
        picture.timeSeconds = seconds;
        picture.interlaced = false;
        picture.topFieldFirst = true;
        return true;
    }

private:
    VideoFormat m_format;
    Depth m_depth;
    Scene m_scene;
    std::int64_t m_first = 0;
    std::int64_t m_end = 0;
    std::int64_t m_next = 0;
};

}  // namespace

bool isSceneName(const std::string& input) {
    return input == "scene" || input.starts_with("scene:");
}

std::unique_ptr<Source> openSceneSource(const std::string& input, const SourceOptions& options) {
    return std::make_unique<SceneSource>(parse(input), options);
}

}  // namespace lumiset::media
