#pragma once

#include <optional>
#include <string>

namespace lumiset::media {

/// A name with a number pattern, "shot_%04d.png:10-80".
struct SequenceName {
    std::string pattern;
    std::optional<int> first;
    std::optional<int> last;

    std::string fileName(int number) const;
};

/// Nothing for a name without a pattern, and for the name of a file that exists as it is written.
std::optional<SequenceName> parseSequenceName(const std::string& name);

/// Finds the numbers of an existing sequence and fills in `first` and `last`. Throws MediaError when there is no
/// picture, or when one between the first and the last is missing.
void findSequence(SequenceName& sequence);

/// "png" of "a/b.PNG"; empty without one.
std::string lowerExtension(const std::string& path);

}  // namespace lumiset::media
