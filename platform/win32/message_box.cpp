#include "platform/message_box.h"

#include <windows.h>

#include <exception>

#include "platform/text.h"

namespace lumiset::platform {

void showMessageBox(const char* title, const char* text) noexcept {
    MessageBoxA(nullptr, text, title, MB_OK | MB_ICONERROR);
}

void showFailure(void* owner, const char* title, const char* text) noexcept {
    try {
        const std::wstring wideTitle = fromUtf8(title).value_or(L"");
        const std::wstring wideText = fromUtf8(text).value_or(L"");
        MessageBoxW(owner != nullptr ? static_cast<HWND>(owner) : GetForegroundWindow(), wideText.c_str(),
                    wideTitle.c_str(), MB_OK | MB_ICONERROR);
    } catch (const std::exception&) {
        MessageBoxA(nullptr, text, title, MB_OK | MB_ICONERROR);  // needs no memory of ours
    }
}

}  // namespace lumiset::platform
