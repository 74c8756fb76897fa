#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace lumiset::platform {

/// The words of the command line behind the program's name, in UTF-8. Takes what `main` was given.
std::vector<std::string> programArguments(int count, const char* const* words);

/// The file of the running program; empty when the system does not tell.
std::filesystem::path thisProgram();

/// The program of that name, without an extension, that a shell would run, or an empty path.
std::filesystem::path findProgram(const std::string& name);

}  // namespace lumiset::platform
