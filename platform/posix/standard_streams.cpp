#include "platform/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

namespace lumiset::platform {

void holdStandardStreams() noexcept {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

bool isTerminal(Stream stream) noexcept {
    return ::isatty(static_cast<int>(stream)) != 0;
}

bool writeText(Stream stream, std::string_view text) noexcept {
    std::FILE* const file = stream == Stream::kOutput ? stdout : stderr;
    return std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
}

int readInput(std::uint8_t* buffer, int size) noexcept {
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, buffer, static_cast<std::size_t>(size));
        if (count >= 0) {
            return static_cast<int>(count);
        }
        if (errno != EINTR) {
            return -errno;
        }
    }
}

std::FILE* openTemporaryFile() noexcept {
    return std::tmpfile();
}

bool seekTo(std::FILE* file, std::int64_t offset, int whence) noexcept {
    return ::fseeko(file, offset, whence) == 0;
}

}  // namespace lumiset::platform
