#include "platform/program.h"

#include <unistd.h>

#include <system_error>

#include "platform/environment.h"

namespace lumiset::platform {

std::vector<std::string> programArguments(int count, const char* const* words) {
    return {words + (count > 0 ? 1 : 0), words + count};
}

std::filesystem::path thisProgram() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::filesystem::path findProgram(const std::string& name) {
    for (const std::filesystem::path& folder : foldersIn("PATH")) {
        std::error_code error;
        std::filesystem::path file = folder / name;
        if (std::filesystem::is_regular_file(file, error) && ::access(file.c_str(), X_OK) == 0) {
            return file;
        }
    }
    return {};
}

}  // namespace lumiset::platform
