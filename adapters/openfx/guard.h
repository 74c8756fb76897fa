#pragma once

#include <functional>

#include "adapters/openfx/host.h"

namespace lumiset::openfx {

/// Runs `work` and answers its status, or the one for what it throws: hosts know no exceptions. The person is told at
/// the terminal, and by the host where `effect` is not null.
[[nodiscard]] Status guarded(const HostInfo* host, EffectHandle effect, const std::function<Status()>& work) noexcept;

}  // namespace lumiset::openfx
