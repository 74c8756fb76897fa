#pragma once

namespace lumiset::platform {

/// Tells the user something that only a faulty effect can bring about, and returns once it was seen.
void showMessageBox(const char* title, const char* text) noexcept;

/// Tells the user that something failed, above the window `owner` or, where that is null, the foreground window, and
/// returns once it was seen. Texts are UTF-8.
void showFailure(void* owner, const char* title, const char* text) noexcept;

}  // namespace lumiset::platform
