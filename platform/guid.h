#pragma once

#include "host/unknown.h"

namespace lumiset::platform {

/// A new identifier that no other has. False when the system has none to give.
bool makeGuid(Guid& guid) noexcept;

}  // namespace lumiset::platform
