#pragma once

#include <compare>
#include <cstdint>

namespace lumiset::platform {

/// A process for good: its number may be given to another once it has ended, its time of birth then differs.
struct Process {
    std::uint64_t id = 0;
    std::uint64_t born = 0;  ///< in the system's own unit; 0 when that cannot be told

    friend auto operator<=>(const Process&, const Process&) = default;
};

/// The process that has this number now.
Process findProcess(std::uint64_t id);

/// The one that this code runs in.
Process thisProcess();

/// False once it has ended.
bool isRunning(const Process& process);

}  // namespace lumiset::platform
