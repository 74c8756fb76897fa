#include "apps/studio/core/play_clock.h"

#include <algorithm>
#include <cmath>

namespace lumiset::studio {

PlayClock::PlayClock(std::int64_t frame, double framesPerSecond, double speed, FrameRange range, bool loops,
                     double nowSeconds)
    : m_start(frame),
      m_framesPerSecond(framesPerSecond),
      m_speed(speed),
      m_range(range),
      m_loops(loops),
      m_begin(nowSeconds) {
    const bool atEnd = speed > 0.0 ? frame >= range.last : frame <= range.first;
    if (!range.contains(frame) || atEnd) {
        m_start = speed > 0.0 ? range.first : range.last;
    }
}

std::optional<std::int64_t> PlayClock::frameAt(double nowSeconds) const {
    const double passed = std::max(0.0, nowSeconds - m_begin) * m_framesPerSecond * std::abs(m_speed);
    const auto steps = static_cast<std::int64_t>(std::floor(passed + 1e-6));
    const std::int64_t frame = m_speed > 0.0 ? m_start + steps : m_start - steps;
    if (m_range.contains(frame)) {
        return frame;
    }
    if (!m_loops) {
        return std::nullopt;
    }
    const std::int64_t count = m_range.last - m_range.first + 1;
    return m_range.first + ((frame - m_range.first) % count + count) % count;
}

double PlayClock::nextDue(double nowSeconds) const {
    const double rate = m_framesPerSecond * std::abs(m_speed);
    return m_begin + (std::floor(std::max(0.0, nowSeconds - m_begin) * rate + 1e-6) + 1.0) / rate;
}

void RateMeter::shown(double nowSeconds) {
    m_times.push_back(nowSeconds);
    while (m_times.front() < nowSeconds - 1.0) {
        m_times.pop_front();
    }
}

double RateMeter::rate(double nowSeconds) const {
    const auto recent = std::lower_bound(m_times.begin(), m_times.end(), nowSeconds - 1.0);
    const auto count = m_times.end() - recent;
    if (count < 2) {
        return 0.0;
    }
    return static_cast<double>(count - 1) / (m_times.back() - *recent);
}

}  // namespace lumiset::studio
