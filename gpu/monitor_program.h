#pragma once

#include <cstddef>

// The monitor's process. All functions are safe from any thread and fail silently.

namespace lumiset {

bool IsMonitorRunning() noexcept;

/// Starts the monitor from the folder of the module's file and does not wait for it. False when it did not start.
bool StartMonitor() noexcept;

/// Where the monitor's executable is to be: beside the module's file. `size` counts characters, with the terminator.
bool GetMonitorPath(wchar_t* buffer, std::size_t size) noexcept;

}  // namespace lumiset
