#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/process.h"

// The monitor's end of the pipe.

namespace lumiset::platform {

struct MonitorMessage {
    Process sender;
    std::string text;
};

class MonitorInbox {
public:
    MonitorInbox() = default;
    MonitorInbox(const MonitorInbox&) = delete;
    MonitorInbox& operator=(const MonitorInbox&) = delete;
    /// Takes the pipe away, so that hosts see at once that nobody listens.
    virtual ~MonitorInbox() = default;

    /// Waits that long for messages, or until one of the processes has ended, and appends all messages that are there.
    /// Of a process that had ended before the call all have come by then. False when there is no more to come: the
    /// process is to end, or hosts cannot reach this pipe any more.
    virtual bool receive(std::chrono::milliseconds time, const std::vector<Process>& watched,
                         std::vector<MonitorMessage>& messages) = 0;
};

/// Null when another process listens for this user already, or the pipe cannot be made.
std::unique_ptr<MonitorInbox> openMonitorInbox();

}  // namespace lumiset::platform
