#pragma once

#include <optional>
#include <string>

#include "media/media.h"

namespace lumiset::app {

/// One picture of an input.
struct Moment {
    media::Picture picture;
    media::VideoFormat format;
};

/// Reads the picture at `timeSeconds`; without a time the one at 2.2 seconds, or halfway where the input is shorter
/// than 3 seconds. A still picture is taken to stand at that time, for effects that move. Throws media::MediaError.
[[nodiscard]] Moment readMoment(const std::string& input, std::optional<double> timeSeconds);

/// The time that an option was given. Throws `UsageError`, which names the option.
[[nodiscard]] double parseTime(const std::string& text, const std::string& option);

/// "2 s", as people write it.
[[nodiscard]] std::string secondsText(double seconds);

}  // namespace lumiset::app
