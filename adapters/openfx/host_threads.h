#pragma once

#include "adapters/openfx/host.h"
#include "host/host_interfaces.h"
#include "hostkit/com_ptr.h"

namespace lumiset::openfx {

/// The host's own threads for one frame. Null where it has none to offer.
[[nodiscard]] hostkit::ComPtr<IHostParallel> hostThreads(const HostInfo& host);

}  // namespace lumiset::openfx
