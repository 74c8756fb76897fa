#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace lumiset::platform {

/// `readFile` and `replaceFile` for a path as the system takes it.
std::optional<std::string> readBytes(const std::string& path, std::size_t limit);
bool replaceBytes(const std::string& path, std::string_view bytes);

}  // namespace lumiset::platform
