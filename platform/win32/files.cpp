#include "platform/files.h"

#include <windows.h>

#include <atomic>

namespace lumiset::platform {
namespace {

class File {
public:
    explicit File(HANDLE handle) : m_handle(handle) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { close(); }

    explicit operator bool() const { return m_handle != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const { return m_handle; }
    void close() {
        if (m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
            m_handle = INVALID_HANDLE_VALUE;
        }
    }

private:
    HANDLE m_handle;
};

}  // namespace

std::optional<std::string> readFile(const std::wstring& path, std::size_t limit) {
    const File file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
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
    static std::atomic<unsigned> s_counter{0};

    const std::wstring folder = path.substr(0, path.find_last_of(L"\\/:") + 1);
    std::wstring name;
    HANDLE handle = INVALID_HANDLE_VALUE;
    do {
        name = folder + L".lumiset-" + std::to_wstring(GetCurrentProcessId()) + L'-' + std::to_wstring(s_counter++) +
               L".tmp";
        handle = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    } while (handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
    File file(handle);
    if (!file) {
        return false;
    }
    DWORD count = 0;
    const bool written = WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0 &&
                         count == bytes.size() && FlushFileBuffers(file.get()) != 0;
    file.close();
    if (written && MoveFileExW(name.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
        return true;
    }
    DeleteFileW(name.c_str());
    return false;
}

}  // namespace lumiset::platform
