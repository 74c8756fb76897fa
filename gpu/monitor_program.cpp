#include "gpu/monitor_program.h"

#include <string>

#include "gpu/succeeds.h"
#include "platform/monitor_process.h"

namespace lumiset {
namespace {

constexpr std::size_t kLongestFolder = 1024;

/// Empty where the module's folder cannot be told.
std::wstring monitorPath() {
    const std::wstring module = platform::modulePath();
    const std::size_t separator = module.find_last_of(L"/\\");
    if (separator >= kLongestFolder) {
        return {};  // also without a separator, whose place would be npos
    }
    return module.substr(0, separator + 1) + platform::kMonitorProgram;
}

}  // namespace

bool IsMonitorRunning() noexcept {
    return succeeds(platform::isMonitorListed);
}

bool StartMonitor() noexcept {
    return succeeds([] {
        const std::wstring path = monitorPath();
        return !path.empty() && platform::startProgram(path);
    });
}

bool GetMonitorPath(wchar_t* buffer, std::size_t size) noexcept {
    return succeeds([&] {
        const std::wstring path = monitorPath();
        if (buffer == nullptr || path.empty() || path.size() >= size) {
            return false;
        }
        buffer[path.copy(buffer, path.size())] = L'\0';
        return true;
    });
}

}  // namespace lumiset
