#include "hostkit/dynamic_library.h"

#include <windows.h>

#include <stdexcept>
#include <string>
#include <system_error>

namespace lumiset::hostkit {

DynamicLibrary::DynamicLibrary(const std::filesystem::path& path) {
    // What the library needs is looked for beside it, too.
    m_handle = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (m_handle == nullptr) {
        throw std::runtime_error(std::system_category().message(static_cast<int>(GetLastError())));
    }
}

DynamicLibrary::~DynamicLibrary() {
    if (!m_keepLoaded) {
        FreeLibrary(static_cast<HMODULE>(m_handle));
    }
}

void* DynamicLibrary::symbol(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

std::filesystem::path codeDirectory() {
    HMODULE self = nullptr;
    wchar_t file[32768];  // as long as a path can be
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCWSTR>(&codeDirectory), &self) == 0 ||
        GetModuleFileNameW(self, file, static_cast<DWORD>(std::size(file))) == 0) {
        return {};
    }
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::canonical(file, error);
    return error ? std::filesystem::path() : whole.parent_path();
}

std::vector<std::filesystem::path> systemLibraryDirectories() {
    return {};
}

std::filesystem::path dynamicLibraryName(const char* stem) {
    return std::string(stem) + ".dll";
}

std::filesystem::path openGLLibraryName() {
    return "opengl32.dll";
}

}  // namespace lumiset::hostkit
