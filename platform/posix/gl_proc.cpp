// The host has created a context, so its OpenGL libraries are loaded already; which ones depends on how it
// created it (EGL or GLX). Nothing is loaded here that the host does not use.

#include "platform/gl_proc.h"

#include <dlfcn.h>

#include <initializer_list>

namespace lumiset::platform {
namespace {

/// A symbol of the first of these libraries that the process has loaded and that has it.
void* loadedSymbol(std::initializer_list<const char*> libraries, const char* symbol) noexcept {
    for (const char* library : libraries) {
        if (void* handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD); handle != nullptr) {
            void* found = dlsym(handle, symbol);
            dlclose(handle);  // gives back only the reference that dlopen added
            if (found != nullptr) {
                return found;
            }
        }
    }
    return nullptr;
}

}  // namespace

GLProc glExtensionProc(const char* name) noexcept {
    using GetProc = GLProc (*)(const char*);
    using GetContext = void* (*)();
    // A process may have both libraries; the one whose context is current counts.
    const auto eglContext = reinterpret_cast<GetContext>(loadedSymbol({"libEGL.so.1"}, "eglGetCurrentContext"));
    const auto eglProc = reinterpret_cast<GetProc>(loadedSymbol({"libEGL.so.1"}, "eglGetProcAddress"));
    if (eglContext != nullptr && eglProc != nullptr && eglContext() != nullptr) {
        return eglProc(name);
    }
    const auto glxProc = reinterpret_cast<GetProc>(loadedSymbol({"libGLX.so.0", "libGL.so.1"}, "glXGetProcAddressARB"));
    return glxProc != nullptr ? glxProc(name) : nullptr;
}

GLProc glCoreProc(const char* name) noexcept {
    if (void* found = loadedSymbol({"libOpenGL.so.0", "libGL.so.1"}, name); found != nullptr) {
        return reinterpret_cast<GLProc>(found);
    }
    return glExtensionProc(name);  // a host with EGL alone: it answers for the core functions too
}

}  // namespace lumiset::platform
