#include "platform/monitor_process.h"

// Needs what windows.h declares.
#include <windows.h>
//
#include <tlhelp32.h>

#include <cwchar>

#include "platform/win32/handle.h"
#include "platform/win32/module_handle.h"

namespace lumiset::platform {

const wchar_t* const kMonitorProgram = L"GPUMonitor.exe";

std::wstring modulePath() {
    std::wstring path(32768, L'\0');  // the longest that there is
    const DWORD length = GetModuleFileNameW(moduleHandle(), path.data(), static_cast<DWORD>(path.size()));
    path.resize(length < path.size() ? length : 0);
    return path;
}

bool isProgram(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool isMonitorListed() {
    const Handle processes(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    if (!processes || Process32FirstW(processes.get(), &entry) == 0) {
        return false;
    }
    do {
        if (_wcsicmp(entry.szExeFile, kMonitorProgram) == 0) {
            return true;
        }
    } while (Process32NextW(processes.get(), &entry) != 0);
    return false;
}

bool startProgram(const std::wstring& path) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    // A folder that a process stands in cannot be removed.
    const std::wstring folder = path.substr(0, path.find_last_of(L"/\\") + 1);
    if (CreateProcessW(path.c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr,
                       folder.empty() ? nullptr : folder.c_str(), &startup, &started) == 0) {
        return false;
    }
    const Handle process(started.hProcess);
    const Handle thread(started.hThread);
    return true;
}

}  // namespace lumiset::platform
