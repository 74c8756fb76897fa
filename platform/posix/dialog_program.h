#pragma once

#include <string>
#include <vector>

namespace lumiset::platform {

/// Runs a program that shows a dialog and waits for it. `output` receives its first line of standard output. Returns
/// its exit status, or -1 where it is not installed, cannot be started, or was ended by a signal.
int runDialogProgram(const std::vector<std::string>& command, std::string& output);

}  // namespace lumiset::platform
