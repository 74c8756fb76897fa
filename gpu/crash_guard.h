#pragma once

#include <cstddef>

#include "gpu/monitor_link.h"

// A faulty graphics driver can take the host down in the middle of a frame. So that it is known afterwards which effect
// was rendering, every frame in OpenGL is announced to a process of its own, the monitor, when it starts and when it
// ends. A frame that starts and never ends becomes a report among the user's settings, and while that stands the effect
// leaves OpenGL alone.
//
// All functions are safe from any thread and fail silently: a frame renders in any case. Of trouble with the monitor a
// process remembers only that there was some, so that not every frame runs into it again.

namespace lumiset {

/// The smallest buffer that `MakeFrameGuid` takes.
inline constexpr std::size_t kFrameGuidSize = 120;

/// Writes a new identifier in the usual form, lower case without braces. False for a smaller buffer.
bool MakeFrameGuid(char* buffer, std::size_t size) noexcept;

/// Tells the monitor that a frame has come into a state. Null names are sent as empty ones. Starts the monitor, once,
/// where none runs, and waits for a busy pipe 10 seconds at most; neither in the 30 seconds after one that was in vain.
/// False when the monitor was not told.
bool SendMonitorMessage(const char* host, const char* library, const char* effect, const char* guid,
                        int state) noexcept;

/// True while there is a report of a crash in this library's effect, or reports that cannot be read.
[[nodiscard]] bool crashReported(const char* library, const char* effect) noexcept;

}  // namespace lumiset
