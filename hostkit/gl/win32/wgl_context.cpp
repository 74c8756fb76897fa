// A context through WGL. Windows gives contexts to windows alone, so it has one that is never shown.

#include <windows.h>

#include <cstdint>
#include <string>

#include "hostkit/gl/gl_context.h"

namespace lumiset::hostkit {
namespace {

[[noreturn]] void fail(const char* what) {
    const DWORD code = GetLastError();
    throw GLError("There is no OpenGL on this machine: " + std::string(what) + " failed with Windows error " +
                  std::to_string(code) + ".");
}

ATOM windowClass() {
    static const ATOM registered = [] {
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.style = CS_OWNDC;  // the pixel format stays with the one device context
        description.lpfnWndProc = DefWindowProcW;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = L"LumisetOpenGL";
        const ATOM made = RegisterClassExW(&description);
        if (made == 0) {
            fail("registering a window class");
        }
        return made;
    }();
    return registered;
}

/// The window ends with the thread that made it, and only that thread can close it before.
class WglContext final : public GLContext {
public:
    WglContext() {
        m_window = CreateWindowExW(0, reinterpret_cast<LPCWSTR>(std::uintptr_t{windowClass()}), L"",
                                   WS_POPUP | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, 0, 0, 1, 1, nullptr, nullptr,
                                   GetModuleHandleW(nullptr), nullptr);
        if (m_window == nullptr) {
            fail("making a window");
        }
        try {
            makeContext();
        } catch (...) {
            DestroyWindow(m_window);
            throw;
        }
    }

    ~WglContext() override {
        if (wglGetCurrentContext() == m_context) {
            release();
        }
        wglDeleteContext(m_context);
        DestroyWindow(m_window);
    }

    void makeCurrent() override {
        if (wglMakeCurrent(m_device, m_context) == FALSE) {
            throw GLError("The OpenGL context cannot be made current on this thread.");
        }
    }

    void release() noexcept override { wglMakeCurrent(nullptr, nullptr); }

    [[nodiscard]] GLProc procAddress(const char* name) const override {
        // What OpenGL 1.1 has comes from the library itself. For the rest drivers answer -1 to 3 as well as null
        // where they have no such function.
        const PROC found = wglGetProcAddress(name);
        const auto value = reinterpret_cast<std::intptr_t>(found);
        if (value < -1 || value > 3) {
            return asGLProc(found);
        }
        return asGLProc(GetProcAddress(GetModuleHandleW(L"opengl32.dll"), name));
    }

private:
    static GLProc asGLProc(FARPROC function) { return reinterpret_cast<GLProc>(reinterpret_cast<void*>(function)); }

    void makeContext() {
        m_device = GetDC(m_window);
        PIXELFORMATDESCRIPTOR wanted{};
        wanted.nSize = sizeof wanted;
        wanted.nVersion = 1;
        wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
        wanted.iPixelType = PFD_TYPE_RGBA;
        wanted.cColorBits = 24;
        const int format = ChoosePixelFormat(m_device, &wanted);
        if (format == 0 || SetPixelFormat(m_device, format, &wanted) == FALSE) {
            fail("choosing a pixel format");
        }
        // This call, unlike the one with attributes, gives the newest context that still has the old functions.
        m_context = wglCreateContext(m_device);
        if (m_context == nullptr) {
            fail("creating a context");
        }
    }

    HWND m_window = nullptr;
    HDC m_device = nullptr;
    HGLRC m_context = nullptr;
};

}  // namespace

const char* const kGLRemedy =
    "Install the driver that the graphics card's maker offers: that of Windows itself may lack OpenGL.";

std::unique_ptr<GLContext> createGLContext() {
    return std::make_unique<WglContext>();
}

}  // namespace lumiset::hostkit
