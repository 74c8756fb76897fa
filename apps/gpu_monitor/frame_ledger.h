#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/crash_reports.h"
#include "platform/process.h"

namespace lumiset::monitor {

enum class FrameState {
    kStarts,
    kEnded,
    kHostLeaves,  ///< the host ends on purpose, whatever frames are under way
};

/// What a host says of a frame.
struct FrameMessage {
    platform::CrashReport report;  ///< what there is to report should it never end
    FrameState state = FrameState::kStarts;
};

/// Reads "host;library;effect;GUID;state". A host may have any name, so the fields are counted from the end. Nothing
/// for a text of another form. The state 1 is a frame's start, 2 its end and 3, without a GUID, the host's.
std::optional<FrameMessage> parseFrameMessage(std::string_view text);

/// The frames that have started and not ended, by the processes that render them. Where the pipe has several places for
/// hosts, a frame's end may be read before its start. Keeps a bounded number of each, for whoever sends what it likes.
class FrameLedger {
public:
    void start(const platform::CrashReport& report, const platform::Process& sender);
    void end(const std::string& guid);
    /// Forgets the frames of a process, and those that it starts from now on.
    void leave(const platform::Process& process);

    [[nodiscard]] bool empty() const { return m_frames.empty(); }
    /// Those with a frame under way, each once.
    [[nodiscard]] std::vector<platform::Process> processes() const;
    /// Forgets the frames of a process and returns them.
    std::vector<platform::CrashReport> take(const platform::Process& process);

private:
    struct Frame {
        platform::Process sender;
        platform::CrashReport report;
    };
    std::map<std::string, Frame> m_frames;  ///< by GUID
    std::deque<std::string> m_endedFirst;   ///< the latest GUIDs of frames whose start has not been read
    std::deque<platform::Process> m_left;
};

}  // namespace lumiset::monitor
