#include "media/scene_source.h"

#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "hostkit/parameter_text.h"
#include "media/input_name.h"
#include "media/rate.h"
#include "media/scene.h"

namespace lumiset::media {
namespace {

constexpr int kLargestSide = 16384;
constexpr double kLongest = 1e6;

struct SceneName {
    ScenePart part = ScenePart::kWindow;
    int width = 1280;
    int height = 720;
    double seconds = 4;
    Rational rate{25, 1};
};

// Takes the text up to a separator off the front, which is all of it where there is none.
std::optional<std::string_view> takePart(std::optional<std::string_view>& text, char separator) {
    const std::optional<std::string_view> whole = text;
    if (whole) {
        const std::size_t at = whole->find(separator);
        text = at == std::string_view::npos ? std::nullopt : std::optional(whole->substr(at + 1));
        return whole->substr(0, at);
    }
    return std::nullopt;
}

constexpr std::pair<const char*, ScenePart> kParts[] = {
    {"scene", ScenePart::kWindow}, {"scene-full", ScenePart::kFull}, {"scene-cutout", ScenePart::kCutOut}};

std::optional<ScenePart> partOf(const std::string& input) {
    const std::string_view word = std::string_view(input).substr(0, input.find(':'));
    for (const auto& [known, part] : kParts) {
        if (word == known) {
            return part;
        }
    }
    return std::nullopt;
}

SceneName parse(const std::string& input) {
    SceneName name;
    name.part = partOf(input).value_or(ScenePart::kWindow);
    std::optional<std::string_view> rest = input;
    takePart(rest, ':');
    bool understood = true;
    if (auto size = takePart(rest, ':')) {
        const auto width = parseWhole(*takePart(size, 'x'));
        const auto height = size ? parseWhole(*size) : std::nullopt;
        name.width = width.value_or(0);
        name.height = height.value_or(0);
        understood = width && height;
    }
    if (const auto seconds = takePart(rest, ':')) {
        understood = hostkit::parseNumber(*seconds, name.seconds) && name.seconds <= kLongest && understood;
    }
    if (rest) {
        const auto rate = parseRate(*rest);
        name.rate = rate.value_or(Rational{0, 1});
        understood = understood && rate;
    }
    if (!understood) {
        throw MediaError(
            fmt::format("'{}' is no scene; write scene:WIDTHxHEIGHT:SECONDS:FPS, as in scene:1280x720:4:25.", input));
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
        : m_depth(options.depth), m_showing(options.showing), m_scene(name.width, name.height, name.part) {
        m_format.width = name.width;
        m_format.height = name.height;
        m_format.frameRate = name.rate;
        m_format.timeBase = {name.rate.den, name.rate.num};
        m_format.color.alpha = name.part == ScenePart::kFull ? AlphaKind::kNone : AlphaKind::kStraight;
        m_format.depth = options.depth;
        m_format.bitDepth = options.depth == Depth::kFloat ? 16 : 8;
        const double step = m_format.timeBase.value();
        const std::int64_t count = std::llround(name.seconds / step);
        const std::int64_t first = numberAt(options.startSeconds);
        const double end = std::min(static_cast<double>(count),
                                    std::ceil((options.startSeconds + options.durationSeconds) / step - 1e-6));
        m_end = static_cast<std::int64_t>(end);
        restart(options.startSeconds);
        m_format.frameCount = m_end - first;
        m_format.durationSeconds = static_cast<double>(m_format.frameCount) * step;
    }

    const VideoFormat& format() const override { return m_format; }
    void restart(double startSeconds) override {
        m_next = numberAt(startSeconds);
        if (m_next >= m_end) {
            throw PastEnd(fmt::format("The scene is over before the start at {} s.", startSeconds));
        }
    }

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
    /// Number of the first picture at or after a time, or of the one that shows then.
    std::int64_t numberAt(double seconds) const {
        const double number = std::max(0.0, seconds) / m_format.timeBase.value();
        return static_cast<std::int64_t>(m_showing ? std::floor(number + 1e-6) : std::ceil(number - 1e-6));
    }

    VideoFormat m_format;
    Depth m_depth;
    bool m_showing;
    Scene m_scene;
    std::int64_t m_end = 0;
    std::int64_t m_next = 0;
};

}  // namespace

bool isSceneName(const std::string& input) {
    return partOf(input).has_value();
}

std::unique_ptr<Source> openSceneSource(const std::string& input, const SourceOptions& options) {
    return std::make_unique<SceneSource>(parse(input), options);
}

}  // namespace lumiset::media
