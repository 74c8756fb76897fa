#include "gpu/crash_guard.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "gpu/monitor_link.h"
#include "platform/crash_reports.h"
#include "platform/guid.h"
#include "platform/monitor_process.h"

namespace lumiset {
namespace {

constexpr std::size_t kLongestFolder = 1024;

/// For functions that answer with a boolean: a failure of any kind is false.
template <class Work>
bool succeeds(Work work) noexcept {
    try {
        return work();
    } catch (const std::exception&) {
        return false;
    }
}

/// Empty where the module's folder cannot be told.
std::wstring monitorPath() {
    const std::wstring module = platform::modulePath();
    const std::size_t separator = module.find_last_of(L"/\\");
    if (separator >= kLongestFolder) {
        return {};  // also without a separator, whose place would be npos
    }
    return module.substr(0, separator + 1) + platform::kMonitorProgram;
}

std::string messageText(const char* host, const char* library, const char* effect, const char* guid, int state) {
    std::string text;
    for (const char* field : {host, library, effect, guid}) {
        text.append(field != nullptr ? field : "").push_back(';');
    }
    return text + std::to_string(state);
}

}  // namespace

bool MakeFrameGuid(char* buffer, std::size_t size) noexcept {
    Guid guid{};
    if (buffer == nullptr || size < kFrameGuidSize || !platform::makeGuid(guid)) {
        return false;
    }
    const std::array<unsigned, 3> words = {guid.data1, guid.data2, guid.data3};
    const auto& bytes = guid.data4;
    return std::snprintf(buffer, size, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", words[0], words[1], words[2],
                         bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6], bytes[7]) > 0;
}

bool SendMonitorMessage(const char* host, const char* library, const char* effect, const char* guid,
                        int state) noexcept {
    static MonitorLink s_link;
    return succeeds([&] { return s_link.send(messageText(host, library, effect, guid, state), state); });
}

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

bool crashReported(const char* library, const char* effect) noexcept {
    // Reports that cannot be read may be of any effect.
    return !succeeds([&] {
        const std::vector<platform::CrashReport> reports = platform::crashReports();
        return std::none_of(reports.begin(), reports.end(), [&](const platform::CrashReport& report) {
            return report.effectLibrary == library && report.effect == effect;
        });
    });
}

}  // namespace lumiset
