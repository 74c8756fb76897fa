#include "platform/environment.h"

#include <stdlib.h>

#include <algorithm>
#include <string_view>

namespace lumiset::platform {

std::string environmentVariable(const char* name) {
    const char* value = ::getenv(name);
    return value != nullptr ? value : "";
}

std::filesystem::path pathVariable(const char* name) {
    return environmentVariable(name);
}

void setDefaultVariable(const char* name, const char* value) {
    ::setenv(name, value, 0);
}

std::vector<std::filesystem::path> foldersIn(const char* variable) {
    std::vector<std::filesystem::path> folders;
    const std::string value = environmentVariable(variable);
    for (std::string_view rest = value; !rest.empty();) {
        const std::size_t colon = std::min(rest.find(':'), rest.size());
        if (colon > 0) {
            folders.emplace_back(rest.substr(0, colon));
        }
        rest.remove_prefix(std::min(colon + 1, rest.size()));
    }
    return folders;
}

std::filesystem::path userDataFolder() {
    std::filesystem::path data = environmentVariable("XDG_DATA_HOME");
    if (data.is_absolute()) {
        return data;
    }
    const std::string home = environmentVariable("HOME");
    return home.empty() ? std::filesystem::path() : std::filesystem::path(home) / ".local/share";
}

}  // namespace lumiset::platform
