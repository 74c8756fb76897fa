#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hostkit/effect_catalogue.h"

namespace lumiset::app {

/// One thing that was looked for.
struct Finding {
    std::string name;
    std::string found;        ///< in a line
    std::string remedy = {};  ///< a sentence; empty where nothing is wrong
    bool fatal = false;       ///< effects cannot be rendered
};

/// Tells of each folder where hosts look for frei0r plug-ins, and of the one that belongs to this program, which of the
/// plug-ins are there and whether they are of this version.
void addFrei0rFolders(std::vector<Finding>& findings, const hostkit::EffectCatalogue& catalogue);

/// The same of the OpenFX bundle: whether its plug-ins can be used.
void addOpenFxFolders(std::vector<Finding>& findings, const hostkit::EffectCatalogue& catalogue);

/// Where the Python package is, and whether Python looks there.
void addPythonFolder(std::vector<Finding>& findings);

}  // namespace lumiset::app
