#pragma once

#include "adapters/openfx/instance.h"

namespace lumiset::openfx {

/// Renders what the arguments of the action ask for. Throws `ImageFormatError`, `HostError`, hostkit::RenderError,
/// std::bad_alloc; the output is then as it was.
void render(const Instance& instance, const Properties& inArgs);

}  // namespace lumiset::openfx
