#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace lumiset::platform {

/// The bytes of a regular file; nothing when it cannot be read, is something else, or has more than `limit` bytes.
std::optional<std::string> readFile(const std::wstring& path, std::size_t limit);

/// Puts a file of these bytes under the path, whole or not at all, as `PendingFile` does. On false nothing has changed.
/// A file that may not be written to is not replaced either, nor is anything but a file.
bool replaceFile(const std::wstring& path, std::string_view bytes);

/// What lies in a folder, each with the folder before its name, in no order. `error` is set where it cannot be read.
std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder, std::error_code& error);

/// A new folder for temporary files that is this user's own; empty where there is no room for one.
std::filesystem::path makeTemporaryFolder();

}  // namespace lumiset::platform
