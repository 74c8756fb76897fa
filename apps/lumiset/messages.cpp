#include "apps/lumiset/messages.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace lumiset::app {

void tell(const std::string& text) noexcept {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void holdStandardStreams() noexcept {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace lumiset::app
