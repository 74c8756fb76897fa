#pragma once

#include <cstdint>
#include <filesystem>

namespace lumiset::frei0r {

/// Frames a second where a host does not tell.
inline constexpr double kUsualFrameRate = 25.0;

/// True for the files of the one family of hosts that gives times in milliseconds, FFmpeg: its filter library, or one
/// of its programs with that library built in. The others give seconds.
[[nodiscard]] bool countsMilliseconds(const std::filesystem::path& callerFile);

/// Turns the times that a host hands to one instance into seconds.
class HostClock {
public:
    /// `caller` is the address that the host's call returns to: the file around it tells the host. A time that is not
    /// finite or beyond 1e9 either way is none, as FFmpeg has none for frames that it had to copy first: such
    /// frames are counted at 25 a second.
    [[nodiscard]] double seconds(double hostTime, const void* caller);

private:
    const void* m_caller = nullptr;
    double m_unit = 1.0;
    std::int64_t m_countedFrames = 0;
};

}  // namespace lumiset::frei0r
