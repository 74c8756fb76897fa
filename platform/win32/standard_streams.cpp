#include "platform/standard_streams.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <cerrno>
#include <optional>
#include <string>

#include "platform/text.h"

namespace lumiset::platform {
namespace {

constexpr DWORD kPathRoom = MAX_PATH + 1;

HANDLE handleOf(Stream stream) noexcept {
    return GetStdHandle(stream == Stream::kInput    ? STD_INPUT_HANDLE
                        : stream == Stream::kOutput ? STD_OUTPUT_HANDLE
                                                    : STD_ERROR_HANDLE);
}

bool isConsole(Stream stream, DWORD& mode) noexcept {
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

}  // namespace

void holdStandardStreams() noexcept {
    for (int stream = 0; stream < 3; ++stream) {
        if (_get_osfhandle(stream) < 0) {
            _wopen(L"NUL", (stream == 0 ? _O_WRONLY : _O_RDONLY) | _O_BINARY);
        }
        _setmode(stream, _O_BINARY);
    }
}

bool isTerminal(Stream stream) noexcept {
    DWORD mode = 0;
    if (!isConsole(stream, mode)) {
        return false;
    }
    return stream == Stream::kInput || (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0 ||
           SetConsoleMode(handleOf(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

// What is written to a console as bytes would be read in its code page, which is another one on most systems.
bool writeText(Stream stream, std::string_view text) noexcept try {
    std::FILE* const file = stream == Stream::kOutput ? stdout : stderr;
    DWORD mode = 0;
    const std::optional<std::wstring> wide = isConsole(stream, mode) ? fromUtf8(text) : std::nullopt;
    if (!wide) {
        return std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
    }
    std::fflush(file);
    constexpr std::size_t kMost = 8192;  // some consoles have no room for more at once
    for (std::wstring_view rest = *wide; !rest.empty();) {
        DWORD written = 0;
        const auto count = static_cast<DWORD>(rest.size() < kMost ? rest.size() : kMost);
        if (WriteConsoleW(handleOf(stream), rest.data(), count, &written, nullptr) == 0 || written == 0) {
            return false;
        }
        rest.remove_prefix(written);
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

int readInput(std::uint8_t* buffer, int size) noexcept {
    const int count = _read(0, buffer, static_cast<unsigned>(size));
    return count >= 0 ? count : -errno;
}

std::FILE* openTemporaryFile() noexcept {
    // The C library's own would lie at the root of the disk, where users may not write.
    wchar_t folder[kPathRoom];
    wchar_t name[kPathRoom];
    if (GetTempPathW(kPathRoom, folder) == 0 || GetTempFileNameW(folder, L"lum", 0, name) == 0) {
        errno = EACCES;
        return nullptr;
    }
    const int number = _wopen(name, _O_RDWR | _O_BINARY | _O_TRUNC | _O_TEMPORARY, _S_IREAD | _S_IWRITE);
    return number >= 0 ? _fdopen(number, "w+b") : nullptr;
}

bool seekTo(std::FILE* file, std::int64_t offset, int whence) noexcept {
    return _fseeki64(file, offset, whence) == 0;
}

}  // namespace lumiset::platform
