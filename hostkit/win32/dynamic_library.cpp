#include "hostkit/dynamic_library.h"

#include <windows.h>
//
#include <shlobj.h>

#include <stdexcept>
#include <string>
#include <system_error>

namespace lumiset::hostkit {
namespace {

/// What was loaded to this address; null when nothing was.
HMODULE loadedAt(const void* address, DWORD flags = GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) {
    HMODULE found = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, static_cast<LPCWSTR>(address), &found);
    return found;
}

const void* thisCode() {
    return reinterpret_cast<const void*>(&thisCode);
}

}  // namespace

DynamicLibrary::DynamicLibrary(const std::filesystem::path& path) {
    // The system looks for a bare name in its own folders. For a whole path it wants backslashes, and then looks beside
    // the library for what that needs, too.
    const std::filesystem::path whole =
        path.has_parent_path() ? std::filesystem::absolute(path).make_preferred() : path;
    m_handle = LoadLibraryExW(whole.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
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
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::canonical(fileOfCode(thisCode()), error);
    return error ? std::filesystem::path() : whole.parent_path();
}

std::filesystem::path fileOfCode(const void* address) {
    const HMODULE file = loadedAt(address);
    std::wstring path(32768, L'\0');  // as long as a path can be
    path.resize(file != nullptr ? GetModuleFileNameW(file, path.data(), static_cast<DWORD>(path.size())) : 0);
    return path;
}

void keepThisCodeLoaded() {
    loadedAt(thisCode(), GET_MODULE_HANDLE_EX_FLAG_PIN);
}

std::vector<std::filesystem::path> systemLibraryDirectories() {
    wchar_t* programs = nullptr;
    std::vector<std::filesystem::path> folders;
    if (SHGetKnownFolderPath(FOLDERID_ProgramFiles, 0, nullptr, &programs) == S_OK) {
        folders.emplace_back(programs);
    }
    CoTaskMemFree(programs);
    return folders;
}

std::filesystem::path dynamicLibraryName(const char* stem) {
    return std::string(stem) + ".dll";
}

std::filesystem::path openGLLibraryName() {
    return "opengl32.dll";
}

}  // namespace lumiset::hostkit
