#include "platform/environment.h"

#include <windows.h>

#include <cstdlib>

#include "platform/text.h"

namespace lumiset::platform {
namespace {

std::wstring valueOf(const char* name) {
    const std::wstring wide = fromUtf8(name).value_or(L"");
    std::wstring value(GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
    const DWORD length = GetEnvironmentVariableW(wide.c_str(), value.data(), static_cast<DWORD>(value.size()));
    value.resize(length < value.size() ? length : 0);
    return value;
}

}  // namespace

std::string environmentVariable(const char* name) {
    return toUtf8(valueOf(name)).value_or("");
}

std::filesystem::path pathVariable(const char* name) {
    return valueOf(name);
}

void setDefaultVariable(const char* name, const char* value) {
    if (valueOf(name).empty()) {
        _putenv_s(name, value);
    }
}

std::vector<std::filesystem::path> foldersIn(const char* variable) {
    std::vector<std::filesystem::path> folders;
    const std::wstring value = valueOf(variable) + L';';
    for (std::size_t at = 0; at < value.size();) {
        const std::size_t end = value.find(L';', at);
        if (end > at) {
            folders.emplace_back(value.substr(at, end - at));
        }
        at = end + 1;
    }
    return folders;
}

std::filesystem::path userDataFolder() {
    return valueOf("APPDATA");
}

}  // namespace lumiset::platform
