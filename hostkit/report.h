#pragma once

#include <string>

namespace lumiset::hostkit {

/// Tells the person at the terminal, once for each sentence: hosts of plug-ins repeat for every frame what cannot be
/// done. Returns whether it was the first time. Any thread may call it.
bool report(const std::string& sentence) noexcept;

}  // namespace lumiset::hostkit
