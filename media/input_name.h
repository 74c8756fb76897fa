#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumiset::media {

/// A name with a number pattern, "shot_%04d.png:10-80".
struct SequenceName {
    std::string pattern;
    std::optional<int> first;
    std::optional<int> last;
    bool glob = false;  ///< the pattern is a shell's, and the numbers only count its files from 1

    /// Not of a shell's pattern.
    std::string fileName(int number) const;
};

/// Nothing for a name without a pattern, and for the name of a file that exists as it is written.
std::optional<SequenceName> parseSequenceName(const std::string& name);

/// Finds the numbers of an existing sequence and fills in `first` and `last`. Throws MediaError when there is no
/// picture, or when one between the first and the last is missing.
void findSequence(SequenceName& sequence);

/// A shell's pattern, "shots/*.png", for the files that it matches, in the order of their names. Nothing for a name
/// without "*", "?" or "[", and for the name of a file that exists as it is written. Throws MediaError when no file
/// matches.
std::optional<SequenceName> findGlob(const std::string& pattern);

/// The existing files that a name, of an input or an output, stands for.
std::vector<std::string> filesNamed(const std::string& name);

/// A whole text of one to nine digits.
std::optional<int> parseWhole(std::string_view text);

/// "png" of "a/b.PNG"; empty without one.
std::string lowerExtension(const std::string& path);

}  // namespace lumiset::media
