#pragma once

#include <string>

#include "host/effect_library.h"

namespace lumiset::render {

/// Why an effect does not render in OpenGL though there is one, in a whole sentence or two: the user's options, a crash
/// that was reported, or else the driver. The name of the program that crashed is anybody's text.
[[nodiscard]] std::string refusalInOpenGL(IEffectLibrary& library, const std::string& effect);

/// Whether something stands that `letEffectsTryOpenGL` removes.
[[nodiscard]] bool crashesAreReported();

/// Removes the reports of crashes. False where some stay.
[[nodiscard]] bool letEffectsTryOpenGL();

}  // namespace lumiset::render
