#include "platform/gl_proc.h"

#include <windows.h>

namespace lumiset::platform {
namespace {

FARPROC openGlSymbol(const char* name) noexcept {
    // A host with a current context has the library loaded.
    const HMODULE library = GetModuleHandleW(L"opengl32.dll");
    return library != nullptr ? GetProcAddress(library, name) : nullptr;
}

}  // namespace

GLProc glExtensionProc(const char* name) noexcept {
    using GetProc = PROC(WINAPI*)(const char*);
    const auto getProc = reinterpret_cast<GetProc>(reinterpret_cast<void*>(openGlSymbol("wglGetProcAddress")));
    return getProc != nullptr ? reinterpret_cast<GLProc>(reinterpret_cast<void*>(getProc(name))) : nullptr;
}

GLProc glCoreProc(const char* name) noexcept {
    return reinterpret_cast<GLProc>(reinterpret_cast<void*>(openGlSymbol(name)));
}

}  // namespace lumiset::platform
