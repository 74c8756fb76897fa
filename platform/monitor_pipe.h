#pragma once

#include <chrono>
#include <string>
#include <string_view>

// The hosts' end of the pipe to the monitor.

namespace lumiset::platform {

enum class PipeAttempt {
    kSent,
    kBusy,         ///< somebody listens and cannot take a message at the moment
    kUnreachable,  ///< there is no pipe, or nobody listens
    kFailed,       ///< the pipe was there and the message did not get through
    kRefused,      ///< the pipe's place is in somebody else's hands
};

enum class PipeRoom {
    kAll,
    kHalf,  ///< the other half is left to messages that must get through once these have
};

/// Opens the pipe, writes one message and closes it, without waiting. A message arrives whole, and apart from others.
PipeAttempt sendToMonitor(std::string_view message, PipeRoom room);

/// What the user is to be told once a message was refused.
std::string pipeRefusal();

/// For a process that is about to end on purpose, whatever frames it has under way: the monitor then reports none of
/// them. A signal handler may bid farewell when that was prepared before.
void prepareFarewell();
void bidFarewell() noexcept;

/// Waits until half of the pipe may take messages again. False when it did not within that time, or nobody listens.
bool waitForMonitor(std::chrono::milliseconds time);

}  // namespace lumiset::platform
