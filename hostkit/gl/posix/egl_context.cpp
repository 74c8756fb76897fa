// A context through EGL, which needs neither a window nor a display server. The library is opened at run time, so
// that there may be none.

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dlfcn.h>

#include <array>
#include <string>
#include <vector>

#include "hostkit/gl/gl_context.h"

namespace lumiset::hostkit {
namespace {

/// libEGL and the functions of it that are used here. It stays loaded: drivers do not unload cleanly.
class Egl {
public:
    Egl() {
        m_library = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
        if (m_library == nullptr) {
            throw GLError("There is no OpenGL on this machine: libEGL.so.1 cannot be loaded.");
        }
        const auto resolve = [this]<class Function>(Function& out, const char* name) {
            out = reinterpret_cast<Function>(dlsym(m_library, name));
            if (out == nullptr) {
                throw GLError("The EGL library of this machine has no " + std::string(name) + ".");
            }
        };
        resolve(getProcAddress, "eglGetProcAddress");
        resolve(getDisplay, "eglGetDisplay");
        resolve(initialize, "eglInitialize");
        resolve(queryString, "eglQueryString");
        resolve(bindApi, "eglBindAPI");
        resolve(chooseConfig, "eglChooseConfig");
        resolve(createContext, "eglCreateContext");
        resolve(destroyContext, "eglDestroyContext");
        resolve(makeCurrent, "eglMakeCurrent");
        const char* extensions = queryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
        m_extensions = extensions != nullptr ? extensions : "";
    }

    [[nodiscard]] bool has(const char* extension) const { return hasExtensionWord(m_extensions, extension); }

    template <class Function>
    [[nodiscard]] Function extension(const char* name) const {
        return reinterpret_cast<Function>(getProcAddress(name));
    }

    decltype(&::eglGetProcAddress) getProcAddress = nullptr;
    decltype(&::eglGetDisplay) getDisplay = nullptr;
    decltype(&::eglInitialize) initialize = nullptr;
    decltype(&::eglQueryString) queryString = nullptr;
    decltype(&::eglBindAPI) bindApi = nullptr;
    decltype(&::eglChooseConfig) chooseConfig = nullptr;
    decltype(&::eglCreateContext) createContext = nullptr;
    decltype(&::eglDestroyContext) destroyContext = nullptr;
    decltype(&::eglMakeCurrent) makeCurrent = nullptr;

private:
    void* m_library = nullptr;
    std::string m_extensions;
};

class EglContext final : public GLContext {
public:
    /// Null where the display offers no OpenGL context without a surface.
    static std::unique_ptr<EglContext> create(const Egl& egl, EGLDisplay display) {
        EGLint major = 0;
        EGLint minor = 0;
        if (display == EGL_NO_DISPLAY || egl.initialize(display, &major, &minor) == EGL_FALSE) {
            return nullptr;
        }
        std::unique_ptr<EglContext> made(new EglContext(egl, display));
        const char* extensions = egl.queryString(display, EGL_EXTENSIONS);
        if (extensions == nullptr || !hasExtensionWord(extensions, "EGL_KHR_surfaceless_context") ||
            egl.bindApi(EGL_OPENGL_API) == EGL_FALSE) {
            return nullptr;
        }
        const EGLint wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        if (egl.chooseConfig(display, wanted, &config, 1, &count) == EGL_FALSE || count < 1) {
            return nullptr;
        }
        // Without attributes drivers give the newest context that still has the old functions.
        made->m_context = egl.createContext(display, config, EGL_NO_CONTEXT, nullptr);
        return made->m_context != EGL_NO_CONTEXT ? std::move(made) : nullptr;
    }

    ~EglContext() override {
        if (m_context != EGL_NO_CONTEXT) {
            release();
            m_egl.destroyContext(m_display, m_context);
        }
        // The display stays initialised: it is the same object for every context of the process.
    }

    void makeCurrent() override {
        m_egl.bindApi(EGL_OPENGL_API);
        if (m_egl.makeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_context) == EGL_FALSE) {
            throw GLError("The OpenGL context cannot be made current on this thread.");
        }
    }

    void release() noexcept override { m_egl.makeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT); }

    [[nodiscard]] GLProc procAddress(const char* name) const override {
        return reinterpret_cast<GLProc>(m_egl.getProcAddress(name));
    }

private:
    EglContext(const Egl& egl, EGLDisplay display) : m_egl(egl), m_display(display) {}

    const Egl& m_egl;
    EGLDisplay m_display;
    EGLContext m_context = EGL_NO_CONTEXT;
};

/// Displays to try, graphics processors first and the software renderer last.
std::vector<EGLDisplay> displays(const Egl& egl) {
    std::vector<EGLDisplay> found;
    const auto getPlatformDisplay = egl.extension<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    if (getPlatformDisplay != nullptr && egl.has("EGL_EXT_device_enumeration") && egl.has("EGL_EXT_platform_device")) {
        const auto queryDevices = egl.extension<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
        const auto queryDevice = egl.extension<PFNEGLQUERYDEVICESTRINGEXTPROC>("eglQueryDeviceStringEXT");
        std::array<EGLDeviceEXT, 16> devices{};
        EGLint count = 0;
        if (queryDevices != nullptr && queryDevice != nullptr &&
            queryDevices(static_cast<EGLint>(devices.size()), devices.data(), &count) == EGL_TRUE) {
            for (EGLint i = 0; i < count; ++i) {
                EGLDeviceEXT device = devices[static_cast<std::size_t>(i)];
                const char* extensions = queryDevice(device, EGL_EXTENSIONS);
                if (extensions == nullptr || !hasExtensionWord(extensions, "EGL_MESA_device_software")) {
                    found.push_back(getPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, device, nullptr));
                }
            }
        }
    }
    if (getPlatformDisplay != nullptr && egl.has("EGL_MESA_platform_surfaceless")) {
        found.push_back(getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr));
    }
    found.push_back(egl.getDisplay(EGL_DEFAULT_DISPLAY));
    return found;
}

}  // namespace

const char* const kGLRemedy = "Install a graphics driver, on Debian libegl1 and libgl1-mesa-dri for one.";

std::unique_ptr<GLContext> createGLContext() {
    static const Egl egl;
    for (const EGLDisplay display : displays(egl)) {
        if (std::unique_ptr<GLContext> context = EglContext::create(egl, display)) {
            return context;
        }
    }
    throw GLError("There is no OpenGL on this machine that renders without a window.");
}

}  // namespace lumiset::hostkit
