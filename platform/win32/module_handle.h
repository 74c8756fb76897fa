#pragma once

#include <windows.h>

namespace lumiset {

/// The handle that the loader gave the module, by which its resources are found. Set before anything else of the
/// module runs, and never changed.
HINSTANCE moduleHandle() noexcept;

}  // namespace lumiset
