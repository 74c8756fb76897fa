#pragma once

#include "host/effect_library.h"

// What hosts and the effects' library are called; each is asked once for the process, and "Unknown" where it tells
// nothing.

namespace lumiset {

/// The module's own entry point, which the library is got from. Set before effects are used; without it the library's
/// name is unknown.
void setLibrarySource(IEffectLibrary* (*source)()) noexcept;

/// `host` matters to the first call alone.
const char* processHostName(IEffectHost& host) noexcept;
const char* processLibraryName() noexcept;

}  // namespace lumiset
