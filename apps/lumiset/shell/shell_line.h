#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumiset::app {

/// A word of a command line as a shell reads it.
struct ShellWord {
    std::string text;           ///< without quotes and backslashes
    char openQuote = '\0';      ///< the quote that the line ends in
    std::size_t keptBytes = 0;  ///< what of `text` stands before the part that bash's completion replaces
};

/// Splits an unfinished line; the last word is the one that is being typed, an empty one behind a space. `breaks` are
/// the characters behind which bash completes afresh (COMP_WORDBREAKS). Variables and commands stay as they are.
[[nodiscard]] std::vector<ShellWord> splitShellLine(std::string_view line, std::string_view breaks = {});

/// The rest of `candidate` as it has to stand in bash's line in place of what was typed of it.
[[nodiscard]] std::string bashReplacement(const ShellWord& typed, const std::string& candidate);

}  // namespace lumiset::app
