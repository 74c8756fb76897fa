#include "adapters/frei0r/host_clock.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace lumiset::frei0r {

bool countsMilliseconds(std::string_view callerFile) {
    constexpr auto kNames = std::to_array<std::string_view>({"libavfilter", "ffmpeg", "ffplay", "ffprobe"});
    const std::string_view name = callerFile.substr(callerFile.rfind('/') + 1);
    return std::any_of(kNames.begin(), kNames.end(), [&](std::string_view each) { return name.starts_with(each); });
}

double HostClock::seconds(double hostTime, const void* caller) {
    constexpr double kLatest = 1e9;
    if (!(std::abs(hostTime) <= kLatest)) {
        return static_cast<double>(m_countedFrames++) / kUsualFrameRate;
    }
    if (caller != m_caller) {
        m_caller = caller;
        Dl_info info{};
        const bool known = ::dladdr(caller, &info) != 0 && info.dli_fname != nullptr;
        m_unit = known && countsMilliseconds(info.dli_fname) ? 1e-3 : 1.0;
    }
    return hostTime * m_unit;
}

}  // namespace lumiset::frei0r
