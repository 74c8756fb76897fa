#pragma once

#include <cstdint>
#include <deque>
#include <optional>

namespace lumiset::studio {

/// Frames of a clip, the last one included.
struct FrameRange {
    std::int64_t first = 0;
    std::int64_t last = 0;
    [[nodiscard]] bool contains(std::int64_t frame) const { return frame >= first && frame <= last; }
};

/// Which frame is to be seen while a clip plays, from the time that has passed. Time comes from the caller: a sound
/// device's position, or a steady clock.
class PlayClock {
public:
    /// `speed` is 1 for the clip's own, negative backwards. Beyond the range it begins at the end that it comes from.
    PlayClock(std::int64_t frame, double framesPerSecond, double speed, FrameRange range, bool loops,
              double nowSeconds);

    /// Nothing where the range is over.
    [[nodiscard]] std::optional<std::int64_t> frameAt(double nowSeconds) const;
    /// When the frame behind the one of now is due.
    [[nodiscard]] double nextDue(double nowSeconds) const;
    /// Where it begins.
    [[nodiscard]] std::int64_t start() const { return m_start; }
    [[nodiscard]] double speed() const { return m_speed; }

private:
    std::int64_t m_start;
    double m_framesPerSecond;
    double m_speed;
    FrameRange m_range;
    bool m_loops;
    double m_begin;
};

/// How many frames were shown in the last second.
class RateMeter {
public:
    void shown(double nowSeconds);
    void reset() { m_times.clear(); }
    /// Frames a second; 0 before there were two.
    [[nodiscard]] double rate(double nowSeconds) const;

private:
    std::deque<double> m_times;
};

}  // namespace lumiset::studio
