#include "apps/lumiset/messages.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace lumiset::app {

void tell(const std::string& text) noexcept {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

std::string printable(std::string text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
        if (byte < 0x20 || byte == 0x7F) {
            text[i] = '?';
        } else if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {  // U+0080 to U+009F
            text.replace(i, 2, "?");
        }
    }
    return text;
}

void holdStandardStreams() noexcept {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace lumiset::app
