#include "apps/lumiset/render/moment.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "apps/lumiset/usage_error.h"
#include "hostkit/parameter_text.h"

namespace lumiset::app {
namespace {

constexpr double kUsualSeconds = 2.2;  // by then an old television has torn, and a recording light is on
constexpr double kShortSeconds = 3.0;

/// Reads on to the picture that shows at a time: the last one that has come by then. False where the input is over.
bool readUpTo(double seconds, media::Source& source, media::Picture& picture) {
    const double length = 1.0 / std::max(source.format().frameRate.value(), 1e-3);
    const double latest = seconds + 1e-3 * length;  // for times that a person wrote in decimals
    media::Picture next;
    while (source.read(next)) {
        if (next.timeSeconds > latest) {
            return true;
        }
        std::swap(picture, next);
    }
    return latest < std::max(picture.timeSeconds + length, source.format().durationSeconds);
}

}  // namespace

Moment readMoment(const std::string& input, std::optional<double> timeSeconds) {
    const std::unique_ptr<media::Source> source = media::openSource(input);
    const media::VideoFormat format = source->format();
    const double length = format.durationSeconds;
    const bool still = format.frameCount == 1;
    const bool known = length > 0.0 && !still;
    const double seconds = timeSeconds.value_or(known && length < kShortSeconds ? length / 2.0 : kUsualSeconds);
    const double pictureSeconds = 1.0 / std::max(format.frameRate.value(), 1e-3);
    if (known && input != "-") {
        try {
            source->restart(std::max(0.0, seconds - 0.99 * pictureSeconds));
        } catch (const media::MediaError&) {
            source->restart(0.0);  // a last picture that stays longer than the others
        }
    }
    Moment moment{{}, format};
    if (!source->read(moment.picture)) {
        throw media::MediaError(fmt::format("'{}' has no picture at {} s.", input, seconds));
    }
    if (still) {
        moment.picture.timeSeconds = seconds;
    } else if (!readUpTo(seconds, *source, moment.picture) && timeSeconds.has_value()) {
        throw media::MediaError(fmt::format("'{}' is over before {} s.", input, seconds));
    }
    return moment;
}

double parseTime(const std::string& text, const std::string& option) {
    double seconds = 0.0;
    if (!hostkit::parseTime(text, seconds)) {
        throw UsageError(fmt::format("{} takes seconds or [hours:]minutes:seconds, not \"{}\".", option, text));
    }
    return seconds;
}

std::string secondsText(double seconds) {
    return fmt::format("{:g} s", std::round(seconds * 1000.0) / 1000.0);
}

}  // namespace lumiset::app
