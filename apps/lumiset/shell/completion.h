#pragma once

#include <string>
#include <vector>

#include "apps/lumiset/program.h"

namespace lumiset::app {

/// What may stand at the end of a command line that is being typed.
struct Completion {
    enum Kind {
        kWords,       ///< the candidates are whole words
        kBeginnings,  ///< the candidates go on: "Width=" is followed by a value
        kFiles,       ///< a file's name stands here
    };
    struct Candidate {
        std::string text;
        std::string description;
    };
    Kind kind = kWords;
    std::vector<Candidate> candidates;
};

/// The candidates for the last of `words`, whose first is the program and whose last may be empty. Commands and options
/// are those of `app`; effects, presets and parameters are the module's, which is loaded when they are asked for.
/// Throws where the module cannot be loaded.
[[nodiscard]] Completion complete(const CLI::App& app, Program& program, const std::vector<std::string>& words);

}  // namespace lumiset::app
