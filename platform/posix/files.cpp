#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/posix/descriptor.h"
#include "platform/posix/file_bytes.h"
#include "platform/text.h"

namespace lumiset::platform {
namespace {

/// The path with links followed, so that a link stays one when its file is replaced.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
    return real != nullptr ? real.get() : path;
}

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
    return true;
}

}  // namespace

std::optional<std::string> readBytes(const std::string& path, std::size_t limit) {
    // A pipe without a writer must not keep the caller waiting.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::uint64_t>(status.st_size) > limit) {
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
        if (count < 0 || bytes.size() + static_cast<std::size_t>(count) > limit) {
            return std::nullopt;
        }
        if (count == 0) {
            return bytes;
        }
        bytes.append(block, static_cast<std::size_t>(count));
    }
}

bool replaceBytes(const std::string& path, std::string_view bytes) {
    static std::atomic<unsigned> s_counter{0};

    const std::string target = resolved(path);
    struct stat old {};
    const bool exists = ::stat(target.c_str(), &old) == 0;
    if (exists && (!S_ISREG(old.st_mode) || ::access(target.c_str(), W_OK) != 0)) {
        return false;
    }
    const std::string folder = target.substr(0, target.rfind('/') + 1);
    std::string name;
    int number = -1;
    do {
        name = folder + ".lumiset-" + std::to_string(::getpid()) + '-' + std::to_string(s_counter++) + ".tmp";
        number = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (number < 0 && errno == EEXIST);
    Descriptor file(number);
    if (!file) {
        return false;
    }
    if (writeAll(file.get(), bytes) && (!exists || ::fchmod(file.get(), old.st_mode & 07777) == 0) &&
        ::fsync(file.get()) == 0 && file.close() && std::rename(name.c_str(), target.c_str()) == 0) {
        return true;
    }
    ::unlink(name.c_str());
    return false;
}

std::optional<std::string> readFile(const std::wstring& path, std::size_t limit) {
    const std::optional<std::string> name = toUtf8(path);
    return name ? readBytes(*name, limit) : std::nullopt;
}

bool replaceFile(const std::wstring& path, std::string_view bytes) {
    const std::optional<std::string> name = toUtf8(path);
    return name && replaceBytes(*name, bytes);
}

}  // namespace lumiset::platform
