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

using Settings = std::vector<std::pair<std::string, std::string>>;

/// All of a section in no particular order; none when the section does not exist. Throws std::system_error, as
/// `readSetting` does, where it exists and cannot be read, because it is too large for one.
Settings readSettings(const std::string& section);

/// False when nothing could be stored.
bool writeSetting(const std::string& section, const std::string& name, const std::string& value);

/// Stores several at once. On false some may not have been stored.
bool writeSettings(const std::string& section, const Settings& settings);

/// True when the section has no settings at all afterwards. It need not be readable.
bool removeSettings(const std::string& section);

/// Why nothing can be stored in a section, for people: where it is kept and the reason. Empty when it can.
std::string storingProblem(const std::string& section);

}  // namespace lumiset::platform
