#pragma once

#include <chrono>
#include <string_view>

// The hosts' end of the pipe to the monitor.

namespace lumiset::platform {

enum class PipeAttempt {
    kSent,
    kBusy,         ///< somebody listens and cannot take a message at the moment
    kUnreachable,  ///< there is no pipe, or nobody listens
    kFailed,       ///< the pipe was there and the message did not get through
};

/// Opens the pipe, writes one message and closes it, without waiting. A message arrives whole, and apart from others.
PipeAttempt sendToMonitor(std::string_view message);

/// Waits until the pipe may take a message again. False when it did not within that time, or nobody listens.
bool waitForMonitor(std::chrono::milliseconds time);

}  // namespace lumiset::platform
