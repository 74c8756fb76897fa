#pragma once

#include <string>
#include <vector>

#include "apps/lumiset/program.h"

namespace lumiset::app {

/// Builds the whole command line: the program's own options and every command.
void describeCommandLine(CLI::App& app, Program& program);

/// Reads the program's arguments, after which `program` knows what to do; the help and the version are work like any
/// other. Throws `UsageError`.
void parseCommandLine(CLI::App& app, Program& program, const std::vector<std::string>& arguments);

}  // namespace lumiset::app
