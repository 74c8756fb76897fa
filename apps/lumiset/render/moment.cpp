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

// Reads on from picture to picture, for inputs that cannot be entered in the middle or do not know their length.
void readUpTo(double seconds, bool asked, const std::string& input, media::Source& source, media::Picture& picture) {
    const double half = 0.5 / std::max(source.format().frameRate.value(), 1e-3);
    media::Picture next;
    bool still = true;
    while (picture.timeSeconds < seconds - half) {
        if (!source.read(next)) {
            if (still) {
                picture.timeSeconds = seconds;
            } else if (asked) {
                throw media::MediaError(fmt::format("'{}' is over before {} s.", input, seconds));
            }
            return;
        }
        still = false;
        std::swap(picture, next);
    }
}

}  // namespace

Moment readMoment(const std::string& input, std::optional<double> timeSeconds) {
    const std::unique_ptr<media::Source> source = media::openSource(input);
    const media::VideoFormat format = source->format();
    const double length = format.durationSeconds;
    const bool still = format.frameCount == 1;
    const bool known = length > 0.0 && !still;
    const double seconds = timeSeconds.value_or(known && length < kShortSeconds ? length / 2.0 : kUsualSeconds);
    const bool enters = known && input != "-" && seconds > 0.0;
    if (enters) {
        source->restart(seconds);
    }
    Moment moment{{}, format};
    if (!source->read(moment.picture)) {
        throw media::MediaError(fmt::format("'{}' has no picture at {} s.", input, seconds));
    }
    if (still) {
        moment.picture.timeSeconds = seconds;
    } else if (!enters) {
        readUpTo(seconds, timeSeconds.has_value(), input, *source, moment.picture);
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
