#include "gpu/crash_guard.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "gpu/succeeds.h"
#include "platform/crash_reports.h"
#include "platform/guid.h"

namespace lumiset {
namespace {

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
