#include "platform/files.h"

#include <windows.h>

#include <system_error>

#include "platform/pending_file.h"
#include "platform/win32/handle.h"

namespace lumiset::platform {

std::optional<std::string> readFile(const std::wstring& path, std::size_t limit) {
    const Handle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || GetFileType(file.get()) != FILE_TYPE_DISK || GetFileSizeEx(file.get(), &size) == 0 ||
        static_cast<ULONGLONG>(size.QuadPart) > limit) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD count = 0;
    if (ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) == 0) {
        return std::nullopt;
    }
    bytes.resize(count);
    return bytes;
}

bool replaceFile(const std::wstring& path, std::string_view bytes) {
    try {
        PendingFile file(path);
        file.write(bytes);
        file.commit();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

}  // namespace lumiset::platform
