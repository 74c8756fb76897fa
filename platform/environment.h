#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace lumiset::platform {

/// An environment variable in UTF-8; empty where it is not set.
std::string environmentVariable(const char* name);

/// The file or folder that an environment variable names; empty where it is not set.
std::filesystem::path pathVariable(const char* name);

/// Sets an environment variable of this process, unless it is set.
void setDefaultVariable(const char* name, const char* value);

/// The folders that an environment variable lists, with the system's separator between them.
std::vector<std::filesystem::path> foldersIn(const char* variable);

/// Where programs keep files of the user's that are no settings; empty when there is no such place.
std::filesystem::path userDataFolder();

}  // namespace lumiset::platform
