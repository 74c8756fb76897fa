#pragma once

#include <compare>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace lumiset::platform {

/// What makes two names one file.
struct FileIdentity {
    std::uint64_t volume = 0;
    std::uint64_t number = 0;

    friend auto operator<=>(const FileIdentity&, const FileIdentity&) = default;
};

/// Of a file that has contents to lose; pipes, devices, folders and names of nothing have none.
std::optional<FileIdentity> identityOf(const std::filesystem::path& file);

/// Of the file that standard input is read from.
std::optional<FileIdentity> identityOfInput();

}  // namespace lumiset::platform
