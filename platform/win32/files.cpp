#include "platform/files.h"

#include <windows.h>

#include <cwchar>
#include <system_error>

#include "platform/guid.h"
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

// The C++ library's iterator knows no path of more than 260 characters.
std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder, std::error_code& error) {
    std::vector<std::filesystem::path> files;
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((folder / L"*").c_str(), &entry);
    for (bool more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &entry) != 0) {
        const std::wstring_view name = entry.cFileName;
        if (name != L"." && name != L"..") {
            files.push_back(folder / name);
        }
    }
    const DWORD reason = GetLastError();
    error = reason == ERROR_NO_MORE_FILES ? std::error_code()
                                          : std::error_code(static_cast<int>(reason), std::system_category());
    if (search != INVALID_HANDLE_VALUE) {
        FindClose(search);
    }
    return files;
}

// The folder for temporary files belongs to the user as a whole.
std::filesystem::path makeTemporaryFolder() {
    Guid guid{};
    std::error_code error;
    if (!makeGuid(guid)) {
        return {};
    }
    wchar_t name[40];
    std::swprintf(name, std::size(name), L"lumiset-%08x%04x%04x", guid.data1, guid.data2, guid.data3);
    std::filesystem::path folder = std::filesystem::temp_directory_path(error) / name;
    return !error && std::filesystem::create_directory(folder, error) ? folder : std::filesystem::path();
}

}  // namespace lumiset::platform
