#include "apps/lumiset/render/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/lumiset/messages.h"
#include "platform/standard_streams.h"

namespace lumiset::app {
namespace {

using namespace std::chrono_literals;

constexpr auto kBarInterval = 100ms;
/// Between lines where the end is not known, and the least between those that tell of a percent each.
constexpr auto kLineInterval = 5s;
constexpr auto kPercentInterval = 1s;
constexpr std::int64_t kBarWidth = 24;

std::string timeText(double seconds) {
    const std::int64_t whole = std::llround(seconds);
    return whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                        : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

}  // namespace

Progress::Progress(bool quiet, std::int64_t expectedFrames, const char* thing)
    : m_quiet(quiet),
      m_terminal(platform::isTerminal(platform::Stream::kError)),
      m_expected(expectedFrames),
      m_thing(thing),
      m_next(m_begin + (m_terminal           ? std::chrono::milliseconds(kBarInterval)
                        : expectedFrames > 0 ? std::chrono::milliseconds(kPercentInterval)
                                             : std::chrono::milliseconds(kLineInterval))) {}

double Progress::elapsedSeconds() const {
    return std::chrono::duration<double>(Clock::now() - m_begin).count();
}

std::string Progress::statusText(std::int64_t framesDone) const {
    const double rate = static_cast<double>(framesDone) / std::max(elapsedSeconds(), 1e-3);
    if (m_expected <= 0) {
        return fmt::format("{} {}s, {:.1f} {}s/s", framesDone, m_thing, rate, m_thing);
    }
    // The count is an estimate, and a file may hold more.
    const std::int64_t total = std::max(m_expected, framesDone);
    std::string text = fmt::format("{} of {} {}s, {:.1f} {}s/s", framesDone, total, m_thing, rate, m_thing);
    if (framesDone > 0) {
        text += fmt::format(", {} left", timeText(static_cast<double>(total - framesDone) / rate));
    }
    return text;
}

void Progress::show(std::int64_t framesDone) {
    if (m_quiet || Clock::now() < m_next) {
        return;
    }
    if (!m_terminal) {
        const std::int64_t percent = m_expected > 0 ? std::min<std::int64_t>(100, 100 * framesDone / m_expected) : -1;
        if (percent < 0 || percent > m_percent) {
            m_percent = percent;
            m_next = Clock::now() + (percent < 0 ? kLineInterval : kPercentInterval);
            tell((percent < 0 ? "" : fmt::format("{:3} %, ", percent)) + statusText(framesDone) + '\n');
        }
        return;
    }
    m_next = Clock::now() + kBarInterval;
    std::string bar;
    if (m_expected > 0) {
        const std::int64_t filled = kBarWidth * std::min(framesDone, m_expected) / m_expected;
        bar = fmt::format("[{:<{}}] ", std::string(static_cast<std::size_t>(filled), '='), kBarWidth);
    }
    tell("\r\x1b[K" + bar + statusText(framesDone));
    m_drawn = true;
}

void Progress::clear() {
    if (m_drawn) {
        tell("\r\x1b[K");
        m_drawn = false;
    }
}

void Progress::finish(std::int64_t framesDone, const std::string& output) {
    clear();
    if (!m_quiet) {
        const double seconds = elapsedSeconds();
        tell(fmt::format("{}: {} {}{} in {:.1f} s, {:.1f} {}s/s\n", output == "-" ? "standard output" : output,
                         framesDone, m_thing, framesDone == 1 ? "" : "s", seconds,
                         static_cast<double>(framesDone) / std::max(seconds, 1e-3), m_thing));
    }
}

}  // namespace lumiset::app
