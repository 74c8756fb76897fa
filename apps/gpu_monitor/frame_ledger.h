#pragma once

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
    platform::CrashReport frame;  ///< what there is to report should it never end
    bool ended = false;
};

/// Reads "host;library;effect;GUID;state". A host may have any name, so the fields are counted from the end. Nothing
/// for a text of another form.
std::optional<FrameMessage> parseFrameMessage(std::string_view text);

/// The frames that have started and not ended, by the processes that render them.
class FrameLedger {
public:
    void note(const FrameMessage& message, const platform::Process& sender);

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
};

}  // namespace lumiset::monitor
