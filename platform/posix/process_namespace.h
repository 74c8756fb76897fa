#pragma once

#include <cstdint>

namespace lumiset::platform {

/// The namespace that a process's number counts in: containers and sandboxes number their processes on their own. 0
/// when that cannot be told.
std::uint64_t processNamespace(std::uint64_t id);

}  // namespace lumiset::platform
