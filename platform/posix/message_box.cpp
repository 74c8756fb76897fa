#include "platform/message_box.h"

#include <cstdio>

namespace lumiset::platform {

// There is no one toolkit to show a window with; the error stream is where such hosts collect messages.
void showMessageBox(const char* title, const char* text) noexcept {
    std::fprintf(stderr, "%s: %s\n", title, text);
}

}  // namespace lumiset::platform
