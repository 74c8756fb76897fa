#pragma once

#include <string>

#include "adapters/openfx/host.h"

namespace lumiset::openfx {

/// Shows the sentence in the host and at the terminal: what a person asked for cannot be done.
void complain(const HostInfo& host, EffectHandle effect, const std::string& sentence) noexcept;

/// The same of a frame. The sentence stays until `clearComplaint` where the host can do that; elsewhere, as it would be
/// a window to close for every frame, it is shown once. Any thread may call these two.
void complainOfFrame(const HostInfo& host, EffectHandle effect, const std::string& sentence) noexcept;
void clearComplaint(const HostInfo& host, EffectHandle effect) noexcept;

/// Asks for yes or no in a window of the host; no where it has none.
[[nodiscard]] bool agrees(const HostInfo& host, EffectHandle effect, const std::string& question);

}  // namespace lumiset::openfx
