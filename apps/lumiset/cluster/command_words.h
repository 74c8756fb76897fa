#pragma once

#include <CLI/App.hpp>
#include <set>
#include <string>
#include <vector>

namespace lumiset::app {

/// The options that a command was given, in their order, as words that another command with the same ones understands.
/// Those whose long names are in `without` are left out.
[[nodiscard]] std::vector<std::string> optionWords(const CLI::App& command, const std::set<std::string>& without);

}  // namespace lumiset::app
