#pragma once

#include <string>

namespace lumiset::app {

/// Writes to standard error. Nobody can be told where that is closed or full, so the work goes on.
void tell(const std::string& text) noexcept;

/// The text as a terminal may show it: control characters, which could be meant for the terminal itself, become "?".
std::string printable(std::string text);

}  // namespace lumiset::app
