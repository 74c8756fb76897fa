#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

// The user's settings: texts by name in sections, shared by all processes of the user. A section's name may have
// parts, separated by backslashes: "Common\Monitoring". Any number of threads and processes may read and write at the
// same time; none loses what another wrote, and none sees half of it. Names and values hold any text without NUL.

namespace lumiset::platform {

std::optional<std::string> readSetting(const std::string& section, const std::string& name);

/// All of a section in no particular order; none when the section does not exist.
std::vector<std::pair<std::string, std::string>> readSettings(const std::string& section);

/// False when nothing could be stored.
bool writeSetting(const std::string& section, const std::string& name, const std::string& value);

/// True when the section has no setting of that name afterwards.
bool removeSetting(const std::string& section, const std::string& name);

}  // namespace lumiset::platform
