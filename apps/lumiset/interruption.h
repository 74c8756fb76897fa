#pragma once

namespace lumiset::app {

/// From now on SIGINT, SIGTERM and SIGHUP are noted and the program goes on, so that it can clean up; the
/// second one ends it at once. A broken pipe becomes a failed write.
void watchForInterruption();

/// Number of the signal that came, or 0.
[[nodiscard]] int interruptingSignal();

}  // namespace lumiset::app
