#pragma once

namespace lumiset::platform {

/// Tells the user something that only a faulty effect can bring about, and returns once it was seen.
void showMessageBox(const char* title, const char* text) noexcept;

}  // namespace lumiset::platform
