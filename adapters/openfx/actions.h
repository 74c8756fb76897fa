#pragma once

#include "adapters/openfx/host_slot.h"
#include "adapters/openfx/instance.h"

namespace lumiset::openfx {

/// What a host's action on the plug-in with that number, or on one of its effects, is answered with. `overlay` is the
/// entry point of its overlays.
[[nodiscard]] Status actOnEffect(std::size_t plugin, MainEntry* overlay, const char* action, const void* handle,
                                 Props inArgs, Props outArgs) noexcept;

/// What a host's action on an overlay is answered with.
[[nodiscard]] Status actOnOverlay(std::size_t plugin, const char* action, const void* handle, Props inArgs) noexcept;

/// The instance behind a host's handle. Throws `HostError` where there is none.
[[nodiscard]] const Instance& instanceOf(const HostInfo& host, EffectHandle effect);

}  // namespace lumiset::openfx
