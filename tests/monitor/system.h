#pragma once

// What the tests of the monitor need of the operating system.

#include <string>
#include <vector>

#include "host/effect_library.h"

namespace lumiset::test {

/// Loads an OpenGL library that does nothing without a context.
void loadDriver();

/// The effects' library of a module's file, loaded for good. Null when it cannot be loaded.
IEffectLibrary* loadLibrary(const std::string& file);

/// Ends this process as a task manager does, on the spot.
[[noreturn]] void killThisProcess();

/// A running program.
struct Child {
    std::intptr_t process = 0;
};
Child start(const std::vector<std::string>& command);
/// True when the program ended by itself with status 0.
bool endsWell(const Child& child);
/// Ends it on the spot.
void kill(const Child& child);

/// The numbers of the monitors that could serve hosts started from here.
std::vector<std::uint64_t> monitors();
/// Ends them all.
void endMonitors();

/// Points programs started from here, and this one, to a place of their own for pipes and settings.
void useFolder(const std::string& folder);

}  // namespace lumiset::test
