#pragma once

#include <string>

namespace lumiset::app {

/// Seconds, or minutes and hours before them with colons: "90", "1:30", "0:01:30.5". `option` is for the message.
/// Throws `UsageError`.
[[nodiscard]] double parseTime(const std::string& text, const std::string& option);

}  // namespace lumiset::app
