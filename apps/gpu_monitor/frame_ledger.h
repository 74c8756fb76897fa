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

/// What a host says of a frame.
struct FrameMessage {
    platform::CrashReport report;  ///< what there is to report should it never end
    bool ended = false;
};

/// Reads "host;library;effect;GUID;state". A host may have any name, so the fields are counted from the end. Nothing
/// for a text of another form.
std::optional<FrameMessage> parseFrameMessage(std::string_view text);

/// The frames that have started and not ended, by the processes that render them. Where the pipe has several places for
/// hosts, a frame's end may be read before its start.
class FrameLedger {
public:
    void start(const platform::CrashReport& report, const platform::Process& sender);
    void end(const std::string& guid);

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
};

}  // namespace lumiset::monitor
