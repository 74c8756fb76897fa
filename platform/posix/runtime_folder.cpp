#include "platform/posix/runtime_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace lumiset::platform {
std::string runtimeFolder(const char* variable) {
    // Where sudo keeps the variable it names another user's folder.
    if (variable != nullptr && variable[0] == '/' && isPrivateFolder(variable)) {
        return variable;
    }
    return "/tmp/vantrel-" + std::to_string(::geteuid());
}

bool isPrivateFolder(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool isPipeFolderGood(const std::string& folder) {
    struct stat status {};
    return isPrivateFolder(folder) || (::lstat(folder.c_str(), &status) != 0 && errno == ENOENT);
}

std::string monitorPipePath() {
    return runtimeFolder(std::getenv("XDG_RUNTIME_DIR")) + "/vantrelgpumonitor";
}

}  // namespace lumiset::platform
