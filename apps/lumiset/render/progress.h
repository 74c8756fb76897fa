#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace lumiset::app {

/// Tells on standard error how far a render is: a bar that is drawn over itself on a terminal, else a line
/// a percent, at most one a second, or where the end is not known one every few seconds.
class Progress {
public:
    /// `expectedFrames` 0: not known. `thing` is what is counted, one of them.
    Progress(bool quiet, std::int64_t expectedFrames, const char* thing = "frame");

    /// Call as often as is convenient.
    void show(std::int64_t framesDone);
    /// Takes the bar off the terminal again, before other text.
    void clear();
    /// Says in one line what was written.
    void finish(std::int64_t framesDone, const std::string& output);

private:
    using Clock = std::chrono::steady_clock;
    [[nodiscard]] std::string statusText(std::int64_t framesDone) const;
    [[nodiscard]] double elapsedSeconds() const;

    bool m_quiet;
    bool m_terminal;
    bool m_drawn = false;
    std::int64_t m_expected;
    std::int64_t m_percent = 0;  ///< that was told
    const char* m_thing;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_next;
};

}  // namespace lumiset::app
