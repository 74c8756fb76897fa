#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/monitor_inbox.h"

namespace lumiset::platform {

/// Reads what a host has written, without the NUL. Nothing for bytes of another form, and for a sender whose process
/// cannot be found from here: one in another namespace.
std::optional<MonitorMessage> messageIn(std::string_view bytes, std::uint64_t ourNamespace);

}  // namespace lumiset::platform
