#pragma once

#include "adapters/frei0r/frei0r_abi.h"

/// Calls `update` from a library that is named as FFmpeg's filter library is.
__attribute__((visibility("default"))) void updateAsFilterLibrary(decltype(&f0r_update) update, Frei0rInstance instance,
                                                                  double time, const std::uint32_t* source,
                                                                  std::uint32_t* destination);
