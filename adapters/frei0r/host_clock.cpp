#include "adapters/frei0r/host_clock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>

#include "hostkit/dynamic_library.h"

namespace lumiset::frei0r {

bool countsMilliseconds(const std::filesystem::path& callerFile) {
    constexpr auto kNames = std::to_array<std::string_view>({"libavfilter", "avfilter", "ffmpeg", "ffplay", "ffprobe"});
    const std::string name = callerFile.filename().string();
    return std::any_of(kNames.begin(), kNames.end(), [&](std::string_view each) { return name.starts_with(each); });
}

double HostClock::seconds(double hostTime, const void* caller) {
    constexpr double kLatest = 1e9;
    if (!(std::abs(hostTime) <= kLatest)) {
        return static_cast<double>(m_countedFrames++) / kUsualFrameRate;
    }
    if (caller != m_caller) {
        m_caller = caller;
        m_unit = countsMilliseconds(hostkit::fileOfCode(caller)) ? 1e-3 : 1.0;
    }
    return hostTime * m_unit;
}

}  // namespace lumiset::frei0r
