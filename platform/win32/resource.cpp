#include "platform/resource.h"

#include <windows.h>

#include "platform/win32/module_handle.h"

namespace lumiset::platform {

std::span<const std::uint8_t> findResource(std::uint32_t id) noexcept {
    const HMODULE module = moduleHandle();
    // RT_RCDATA, by its number: the macro's type follows a setting of the whole program.
    const HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(10));
    if (found == nullptr) {
        return {};
    }
    const HGLOBAL loaded = LoadResource(module, found);
    const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    if (bytes == nullptr) {
        return {};
    }
    return {static_cast<const std::uint8_t*>(bytes), SizeofResource(module, found)};
}

}  // namespace lumiset::platform
