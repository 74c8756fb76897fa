#pragma once

#include <string>

// The monitor as a program: what it is called, whether it runs, and how it is started.

namespace lumiset::platform {

/// File name of the monitor's executable.
extern const wchar_t* const kMonitorProgram;

/// The file that this code was loaded from: the module or, where it is linked in, the program. Empty when that cannot
/// be told.
std::wstring modulePath();

/// True for a file that can be run.
bool isProgram(const std::wstring& path);

/// True while the process list has a monitor that could serve this user.
bool isMonitorListed();

/// Runs a program without arguments and without waiting for it. It keeps nothing of this process in use: no open file,
/// no folder, no terminal. False when it did not start.
bool startProgram(const std::wstring& path);

}  // namespace lumiset::platform
