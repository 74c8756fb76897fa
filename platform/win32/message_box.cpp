#include "platform/message_box.h"

#include <windows.h>

namespace lumiset::platform {

void showMessageBox(const char* title, const char* text) noexcept {
    MessageBoxA(nullptr, text, title, MB_OK | MB_ICONERROR);
}

}  // namespace lumiset::platform
