#pragma once

#include <string>

#include "host/effect_library.h"

namespace lumiset::app {

/// The user's options, a line each.
[[nodiscard]] std::string optionsText(IEffectLibrary& library);

/// Stores an option, named as the list shows it in any case of letters. Throws `UsageError` for an unknown name or a
/// value that is neither yes nor no, and `std::runtime_error` where it cannot be stored.
void setOption(IEffectLibrary& library, const std::string& name, const std::string& value);

}  // namespace lumiset::app
