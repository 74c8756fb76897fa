#pragma once

#include <filesystem>
#include <string>
#include <vector>

// Where hosts on this system look for plug-ins, besides the folders that environment variables name.

namespace lumiset::platform {

/// Each host its own on Windows.
std::vector<std::filesystem::path> frei0rFolders();

std::filesystem::path openFxFolder();

extern const char* const kFrei0rExtension;     ///< of a plug-in's file, with the dot
extern const char* const kOpenFxArchitecture;  ///< the folder in a bundle that holds this system's file

/// Where packages of the system's Python lie; empty where it has none.
std::filesystem::path pythonFolder();

}  // namespace lumiset::platform
