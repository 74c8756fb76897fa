#include "platform/monitor_pipe.h"

#include <windows.h>

#include <algorithm>

#include "platform/win32/handle.h"
#include "platform/win32/monitor_pipe_name.h"

namespace lumiset::platform {

PipeAttempt sendToMonitor(std::string_view message, PipeRoom /*room*/) {
    // Whoever made the pipe learns nothing of this user from the connection that it could use in the user's name.
    constexpr DWORD kFlags = SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS;
    const Handle pipe(CreateFileW(kMonitorPipe, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, kFlags, nullptr));
    if (!pipe) {
        return GetLastError() == ERROR_PIPE_BUSY ? PipeAttempt::kBusy : PipeAttempt::kUnreachable;
    }
    DWORD count = 0;
    const auto size = static_cast<DWORD>(message.size());
    return WriteFile(pipe.get(), message.data(), size, &count, nullptr) != 0 && count == size ? PipeAttempt::kSent
                                                                                              : PipeAttempt::kFailed;
}

std::string pipeRefusal() {
    return {};  // never
}

void prepareFarewell() {}

void bidFarewell() noexcept {
    sendToMonitor(";;;;3", PipeRoom::kAll);
}

bool waitForMonitor(std::chrono::milliseconds time) {
    // 0 would stand for the pipe's own time.
    return WaitNamedPipeW(kMonitorPipe, std::max<DWORD>(1, static_cast<DWORD>(time.count()))) != 0;
}

}  // namespace lumiset::platform
