#pragma once

#include <string>

namespace lumiset::platform {

/// The folder for this user's pipes, given what XDG_RUNTIME_DIR holds in a process's environment or null: that folder
/// where it is the user's own and nobody else may write to it, else one under /tmp, which may be missing.
std::string runtimeFolder(const char* variable);

/// True for a folder that belongs to this user and that no other may write to. Links are not followed.
bool isPrivateFolder(const std::string& path);

/// The path of the pipe to the monitor.
std::string monitorPipePath();

/// False where somebody else made the folder for this user's pipes, or put a link in its place, before this user did. A
/// folder that is missing is good.
bool isPipeFolderGood(const std::string& folder);

}  // namespace lumiset::platform
