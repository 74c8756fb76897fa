#pragma once

#include <string>

#include "adapters/frei0r/hosts/settings.h"

namespace lumiset::frei0r {

/// A line for a POSIX shell that renders the file `input` to `output` with these settings. Parameters that are at
/// their default are left out where the program allows it.
[[nodiscard]] std::string ffmpegCommand(const Settings& settings, const std::string& input, const std::string& output);
[[nodiscard]] std::string meltCommand(const Settings& settings, const std::string& input, const std::string& output);

}  // namespace lumiset::frei0r
