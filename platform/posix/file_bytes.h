#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace lumiset::platform {

/// `readFile` and `replaceFile` for a path as the system takes it. Where the former answers nothing errno tells why;
/// where the latter answers false this throws std::system_error.
std::optional<std::string> readBytes(const std::string& path, std::size_t limit);
void replaceBytes(const std::string& path, std::string_view bytes);

}  // namespace lumiset::platform
