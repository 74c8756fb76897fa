#include <algorithm>
#include <filesystem>
#include <system_error>

#include "apps/lumiset/commands/doctor.h"
#include "hostkit/dynamic_library.h"
#include "platform/environment.h"
#include "platform/plugin_folders.h"

namespace lumiset::app {

namespace fs = std::filesystem;

void addPythonFolder(std::vector<Finding>& findings) {
    std::vector<fs::path> folders = platform::foldersIn("PYTHONPATH");
    folders.push_back(platform::pythonFolder());
    const std::size_t searched = folders.size();
    for (const char* own : {"python", "../lib/python3/dist-packages"}) {
        folders.push_back((hostkit::codeDirectory() / own).lexically_normal());
    }
    std::error_code error;
    const auto found = std::find_if(folders.begin(), folders.end(), [&](const fs::path& folder) {
        return fs::is_regular_file(folder / "lumiset/__init__.py", error);
    });
    if (found == folders.end()) {
        findings.push_back({"Python", "no package", "Install python3-lumiset to have the effects in Python.", false});
        return;
    }
    const bool isSearched = found < folders.begin() + static_cast<std::ptrdiff_t>(searched);
    findings.push_back({"Python", (*found / "lumiset").string(),
                        isSearched ? "" : "Python does not look there: set PYTHONPATH to " + found->string() + '.',
                        false});
}

}  // namespace lumiset::app
