#include "platform/win32/module_handle.h"

namespace lumiset {
namespace {

HINSTANCE g_handle = nullptr;

}  // namespace

HINSTANCE moduleHandle() noexcept {
    return g_handle;
}

}  // namespace lumiset

/// The loader's entry point. Only the attachment to the process matters; it always succeeds.
extern "C" BOOL WINAPI DllMain(HINSTANCE handle, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        lumiset::g_handle = handle;
    }
    return TRUE;
}
