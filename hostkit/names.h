#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumiset::hostkit {

/// Equal but for the case of ASCII letters.
[[nodiscard]] bool equalIgnoringCase(std::string_view a, std::string_view b);

/// Without white space at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// For file names and identifiers: ASCII letters in lower case, digits, and an underscore for anything else. "Old TV"
/// is `old_tv`.
[[nodiscard]] std::string identifierOf(std::string_view name);

/// Up to three candidates that the writer of `name` may have meant, nearest first: those that it is a part of,
/// and those within a third of their length in edits (Damerau's edit distance, neighbouring letters swapped
/// counting as one edit).
[[nodiscard]] std::vector<std::string> nearestNames(std::string_view name, const std::vector<std::string>& candidates);

/// ` Did you mean "A" or "B"?`, or nothing without a near name.
[[nodiscard]] std::string didYouMean(std::string_view name, const std::vector<std::string>& candidates);

/// One word for a POSIX shell, in quotes where it needs them.
[[nodiscard]] std::string shellWord(const std::string& text);

/// `"A", "B" or "C"`.
[[nodiscard]] std::string quotedList(const std::vector<std::string>& names);

}  // namespace lumiset::hostkit
