#pragma once

#include <string>

#include "host/effect_library.h"

namespace lumiset::app {

/// Why an effect does not render in OpenGL though there is one, in a whole sentence or two: the user's options, a crash
/// that was reported, or else the driver.
[[nodiscard]] std::string refusalInOpenGL(IEffectLibrary& library, const std::string& effect);

}  // namespace lumiset::app
