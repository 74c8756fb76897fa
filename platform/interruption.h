#pragma once

#include <functional>

namespace lumiset::platform {

/// From now on `note` is called when the user or the system asks the program to end: with SIGINT for Ctrl-C, SIGTERM
/// and, where there is one, SIGHUP, unless the caller had it ignored. It runs as a signal handler, or on a thread of
/// its own, and the program goes on when it returns. A broken pipe becomes a failed write.
void onInterruption(void (*note)(int signal));

/// The same with a function that may do whatever threads may: it runs on a thread of its own. Once in a program's life.
/// Throws std::system_error.
void onInterruptionInThread(std::function<void(int signal)> note);

}  // namespace lumiset::platform
