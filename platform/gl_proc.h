#pragma once

#include "host/arb_table.h"

namespace lumiset::platform {

/// Entry point of an OpenGL extension in the context that is current on this thread, or null.
GLProc glExtensionProc(const char* name) noexcept;

/// Entry point of a function of OpenGL 1.1, which the system's library itself exports, or null. Looked up at
/// run time, so that the module loads on a machine that has no OpenGL.
GLProc glCoreProc(const char* name) noexcept;

}  // namespace lumiset::platform
