#pragma once

#include <string>

namespace lumiset::app {

/// From now on what asks the program to end (platform/interruption.h) is noted and the program goes on, so that it can
/// clean up; the second time ends it at once, and leaves neither an unfinished file nor a report of a crash. A broken
/// pipe becomes a failed write.
void watchForInterruption();

/// Number of the signal that came, or 0.
[[nodiscard]] int interruptingSignal();

/// Says that `output` was not completed and ends the program with status 128 + signal, at once: a thread may be waiting
/// for a pipe that will never deliver.
[[noreturn]] void endInterrupted(int signal, const std::string& output);

}  // namespace lumiset::app
