#include "tests/monitor/system.h"

#include <windows.h>
//
#include <tlhelp32.h>

namespace lumiset::test {
namespace {

/// Where a fault would call a debugger.
LONG WINAPI endAtOnce(EXCEPTION_POINTERS* /*fault*/) {
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void loadDriver() {
    SetUnhandledExceptionFilter(endAtOnce);
    LoadLibraryA("opengl32.dll");
}

IEffectLibrary* loadLibrary(const std::string& file) {
    const HMODULE module = LoadLibraryA(file.c_str());
    const FARPROC entry = module != nullptr ? GetProcAddress(module, "GetEffectsLibrary") : nullptr;
    return entry != nullptr ? reinterpret_cast<IEffectLibrary* (*)()>(reinterpret_cast<void*>(entry))() : nullptr;
}

void killThisProcess() {
    TerminateProcess(GetCurrentProcess(), 1);
    std::abort();
}

Child start(const std::vector<std::string>& command) {
    std::string line;
    for (const std::string& argument : command) {
        line += (line.empty() ? "\"" : " \"") + argument + '"';
    }
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (CreateProcessA(command[0].c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &started) == 0) {
        return {};
    }
    CloseHandle(started.hThread);
    return {reinterpret_cast<std::intptr_t>(started.hProcess)};
}

bool endsWell(const Child& child) {
    auto* const process = reinterpret_cast<HANDLE>(child.process);
    DWORD status = 1;
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &status);
    CloseHandle(process);
    return status == 0;
}

void kill(const Child& child) {
    TerminateProcess(reinterpret_cast<HANDLE>(child.process), 1);
    endsWell(child);
}

std::vector<std::uint64_t> monitors() {
    std::vector<std::uint64_t> found;
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(processes, &entry); more != 0; more = Process32Next(processes, &entry)) {
        if (std::string(entry.szExeFile) == "GPUMonitor.exe") {
            found.push_back(entry.th32ProcessID);
        }
    }
    CloseHandle(processes);
    return found;
}

void endMonitors() {
    for (const std::uint64_t id : monitors()) {
        const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, static_cast<DWORD>(id));
        TerminateProcess(process, 0);
        WaitForSingleObject(process, 5000);
        CloseHandle(process);
    }
}

void useFolder(const std::string& /*folder*/) {}  // Windows has one place for each

}  // namespace lumiset::test
