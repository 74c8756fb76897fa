#pragma once

#include "adapters/openfx/bundle.h"
#include "adapters/openfx/host.h"

namespace lumiset::openfx {

/// Tells the host what the plug-in is. `overlay` is the entry point of its handles for the version of overlays that is
/// told, null for none.
void describe(const HostInfo& host, const Effect& effect, EffectHandle descriptor, MainEntry* overlay);

/// Defines clips and parameters, the same in every context.
void describeInContext(const HostInfo& host, const Effect& effect, EffectHandle descriptor);

}  // namespace lumiset::openfx
