#include "platform/files.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/pending_file.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/file_bytes.h"
#include "platform/text.h"

namespace lumiset::platform {

std::optional<std::string> readBytes(const std::string& path, std::size_t limit) {
    // A pipe without a writer must not keep the caller waiting.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) {
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode) || static_cast<std::uint64_t>(status.st_size) > limit) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : S_ISREG(status.st_mode) ? EFBIG : EINVAL;
        return std::nullopt;
    }
    // It may grow while it is read, so the limit counts again.
    std::string bytes;
    char block[16384];
    for (;;) {
        const ssize_t count = ::read(file.get(), block, sizeof block);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        if (bytes.size() + static_cast<std::size_t>(count) > limit) {
            errno = EFBIG;
            return std::nullopt;
        }
        if (count == 0) {
            return bytes;
        }
        bytes.append(block, static_cast<std::size_t>(count));
    }
}

void replaceBytes(const std::string& path, std::string_view bytes) {
    struct stat old {};
    if (::stat(path.c_str(), &old) == 0 && !S_ISREG(old.st_mode)) {
        throw std::system_error(EINVAL, std::generic_category());
    }
    PendingFile file(path);
    file.write(bytes);
    file.commit();
}

std::optional<std::string> readFile(const std::wstring& path, std::size_t limit) {
    const std::optional<std::string> name = toUtf8(path);
    return name ? readBytes(*name, limit) : std::nullopt;
}

bool replaceFile(const std::wstring& path, std::string_view bytes) {
    const std::optional<std::string> name = toUtf8(path);
    if (!name) {
        return false;
    }
    try {
        replaceBytes(*name, bytes);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder, std::error_code& error) {
    std::vector<std::filesystem::path> files;
    std::filesystem::directory_iterator each(folder, error);
    for (const std::filesystem::directory_iterator end; !error && each != end; each.increment(error)) {
        files.push_back(each->path());
    }
    return files;
}

std::filesystem::path makeTemporaryFolder() {
    std::error_code error;
    std::string name = (std::filesystem::temp_directory_path(error) / "lumiset-XXXXXX").string();
    return ::mkdtemp(name.data()) != nullptr ? name : "";
}

}  // namespace lumiset::platform
