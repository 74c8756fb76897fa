// The module's entry points: plain names, the platform's default calling convention.

#include <new>

#include "module/effects_library.h"

namespace {

/// Read by `CanUnloadDLLNow` and never changed: hosts keep track of what they hold themselves.
constexpr std::uint32_t moduleObjectCount = 0;

}  // namespace

extern "C" {

lumiset::IEffectLibrary* GetEffectsLibrary() {
    return new (std::nothrow) lumiset::CLumisetEffects5;
}

std::int32_t CanUnloadDLLNow() {
    return moduleObjectCount == 0 ? 1 : 0;
}

}  // extern "C"
