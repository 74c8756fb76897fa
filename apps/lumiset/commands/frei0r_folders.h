#pragma once

#include <filesystem>
#include <vector>

#include "apps/lumiset/commands/doctor.h"

namespace lumiset::app {

/// The folders that an environment variable lists with colons between them.
[[nodiscard]] std::vector<std::filesystem::path> foldersIn(const char* variable);

/// Tells of each folder where hosts look for frei0r plug-ins, and of the one that belongs to this program, which of the
/// plug-ins are there and whether they are of this version.
void addFrei0rFolders(std::vector<Finding>& findings, const hostkit::EffectCatalogue& catalogue);

}  // namespace lumiset::app
