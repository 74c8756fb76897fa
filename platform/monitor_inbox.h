#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The monitor's end of the pipe.

namespace lumiset::platform {

struct MonitorMessage {
    std::uint64_t sender;  ///< its process's number
    std::string text;
};

class MonitorInbox {
public:
    MonitorInbox() = default;
    MonitorInbox(const MonitorInbox&) = delete;
    MonitorInbox& operator=(const MonitorInbox&) = delete;
    /// Takes the pipe away, so that hosts see at once that nobody listens.
    virtual ~MonitorInbox() = default;

    /// Waits that long for messages and appends all that are there. False when there is no more to come: the process is
    /// to end, or hosts cannot reach this pipe any more.
    virtual bool receive(std::chrono::milliseconds time, std::vector<MonitorMessage>& messages) = 0;
};

/// Null when another process listens for this user already, or the pipe cannot be made.
std::unique_ptr<MonitorInbox> openMonitorInbox();

}  // namespace lumiset::platform
