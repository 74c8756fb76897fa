#include "platform/file_identity.h"

#include <sys/stat.h>
#include <unistd.h>

namespace lumiset::platform {
namespace {

std::optional<FileIdentity> identityIn(int result, const struct stat& status) {
    return result == 0 && S_ISREG(status.st_mode) ? std::optional<FileIdentity>({status.st_dev, status.st_ino})
                                                  : std::nullopt;
}

}  // namespace

std::optional<FileIdentity> identityOf(const std::filesystem::path& file) {
    struct stat status {};
    return identityIn(::stat(file.c_str(), &status), status);
}

std::optional<FileIdentity> identityOfInput() {
    struct stat status {};
    return identityIn(::fstat(STDIN_FILENO, &status), status);
}

}  // namespace lumiset::platform
