#pragma once

#include <string>
#include <vector>

#include "apps/lumiset/program.h"

namespace lumiset::app {

/// One thing that was looked for.
struct Finding {
    std::string name;
    std::string found;        ///< in a line
    std::string remedy = {};  ///< a sentence; empty where nothing is wrong
    bool fatal = false;       ///< effects cannot be rendered
};

/// Looks for everything that belongs to an installation. Changes nothing.
[[nodiscard]] std::vector<Finding> examine(Program& program);

}  // namespace lumiset::app
