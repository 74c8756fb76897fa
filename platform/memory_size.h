#pragma once

#include <cstddef>

namespace lumiset::platform {

/// The memory of this machine; a gigabyte where the system does not tell.
[[nodiscard]] std::size_t memoryBytes();

}  // namespace lumiset::platform
