#include "platform/process.h"

#include <windows.h>

#include <optional>

#include "platform/win32/handle.h"

namespace lumiset::platform {
namespace {

/// When the process was born; 0 for one that may not be looked at, nothing for one that has ended.
std::optional<std::uint64_t> birthOf(std::uint64_t id) {
    const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, static_cast<DWORD>(id)));
    if (!process) {
        return GetLastError() == ERROR_ACCESS_DENIED ? std::optional<std::uint64_t>(0) : std::nullopt;
    }
    FILETIME birth{};
    FILETIME end{};
    FILETIME inKernel{};
    FILETIME inProgram{};
    // A process that has ended stays as long as somebody has it open.
    if (WaitForSingleObject(process.get(), 0) != WAIT_TIMEOUT ||
        GetProcessTimes(process.get(), &birth, &end, &inKernel, &inProgram) == 0) {
        return std::nullopt;
    }
    return (static_cast<std::uint64_t>(birth.dwHighDateTime) << 32U) | birth.dwLowDateTime;
}

}  // namespace

Process findProcess(std::uint64_t id) {
    return {id, birthOf(id).value_or(0)};
}

Process thisProcess() {
    return findProcess(GetCurrentProcessId());
}

bool isRunning(const Process& process) {
    return birthOf(process.id) == process.born;
}

}  // namespace lumiset::platform
