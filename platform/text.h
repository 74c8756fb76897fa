#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lumiset::platform {

/// The text in the system's code page for 8-bit texts; nothing when it does not come back the same from there.
std::optional<std::string> toSystemText(std::wstring_view text);

/// The text in UTF-8; nothing when it is not well formed.
std::optional<std::string> toUtf8(std::wstring_view text);

/// The wide text of UTF-8; nothing when that is not well formed.
std::optional<std::wstring> fromUtf8(std::string_view text);

}  // namespace lumiset::platform
