#pragma once

#include <string>
#include <vector>

#include "adapters/frei0r/hosts/settings.h"

namespace lumiset::frei0r {

/// A line for a POSIX shell that renders the file `input` to `output` through these plug-ins in turn. Parameters that
/// are at their default are left out where the program allows it.
[[nodiscard]] std::string ffmpegCommand(const std::vector<Settings>& chain, const std::string& input,
                                        const std::string& output);
[[nodiscard]] std::string meltCommand(const std::vector<Settings>& chain, const std::string& input,
                                      const std::string& output);

}  // namespace lumiset::frei0r
