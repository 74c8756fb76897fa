#include "platform/message_box.h"

#include <cstdio>
#include <exception>

#include "platform/posix/dialog_program.h"

namespace lumiset::platform {

// There is no one toolkit to show a window with; the error stream is where such hosts collect messages.
void showMessageBox(const char* title, const char* text) noexcept {
    std::fprintf(stderr, "%s: %s\n", title, text);
}

void showFailure(void* /*owner*/, const char* title, const char* text) noexcept {
    try {
        std::string ignored;
        // Without --no-markup a name out of a file could be taken for markup.
        if (runDialogProgram(
                {"zenity", "--error", "--no-markup", std::string("--title=") + title, std::string("--text=") + text},
                ignored) >= 0 ||
            runDialogProgram({"kdialog", "--title", title, "--error", text}, ignored) >= 0) {
            return;
        }
    } catch (const std::exception&) {
        // Memory for the command: the message below needs none.
    }
    showMessageBox(title, text);
}

}  // namespace lumiset::platform
