#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace lumiset::platform {

enum class Stream { kInput = 0, kOutput = 1, kError = 2 };

/// To be called before anything is opened. Holds the places of the three streams where the caller has closed them: the
/// next files to be opened would get their numbers, and messages would be written into them; using such a place fails
/// as before. From now on all bytes pass as they are, line ends among them.
void holdStandardStreams() noexcept;

/// True where a person reads or types. For the two that are written to: one that understands escape sequences.
bool isTerminal(Stream stream) noexcept;

/// Writes UTF-8, on a terminal as well. False where not all of it could be written.
bool writeText(Stream stream, std::string_view text) noexcept;

/// Bytes of standard input; 0 at its end, a negative `errno` for an error.
int readInput(std::uint8_t* buffer, int size) noexcept;

/// A file without a name, in the folder for temporary files, gone when it is closed. Null with `errno` set where there
/// is no room for one.
std::FILE* openTemporaryFile() noexcept;

/// As fseeko, of files of any size.
bool seekTo(std::FILE* file, std::int64_t offset, int whence) noexcept;

}  // namespace lumiset::platform
