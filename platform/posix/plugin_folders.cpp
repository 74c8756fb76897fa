#include "platform/plugin_folders.h"

#include "platform/environment.h"

namespace lumiset::platform {

const char* const kFrei0rExtension = ".so";
const char* const kOpenFxArchitecture = "Linux-x86-64";

std::vector<std::filesystem::path> frei0rFolders() {
    std::vector<std::filesystem::path> folders;
    if (const std::string home = environmentVariable("HOME"); !home.empty()) {
        folders.push_back(std::filesystem::path(home) / ".frei0r-1/lib");
    }
    folders.insert(folders.end(), {"/usr/local/lib/frei0r-1", "/usr/lib/frei0r-1"});
    return folders;
}

std::filesystem::path openFxFolder() {
    return "/usr/OFX/Plugins";
}

std::filesystem::path pythonFolder() {
    return "/usr/lib/python3/dist-packages";
}

}  // namespace lumiset::platform
