#pragma once

#include <memory>

#include "host/arb_table.h"
#include "hostkit/gl/gl_error.h"

namespace lumiset::hostkit {

/// An OpenGL context without a window.
class GLContext {
public:
    GLContext() = default;
    GLContext(const GLContext&) = delete;
    GLContext& operator=(const GLContext&) = delete;
    virtual ~GLContext() = default;

    /// Makes it current on the calling thread. Throws `GLError`.
    virtual void makeCurrent() = 0;
    /// Leaves the calling thread without a context, so that another may take this one.
    virtual void release() noexcept = 0;
    /// Address of an OpenGL function, or null.
    [[nodiscard]] virtual GLProc procAddress(const char* name) const = 0;
};

/// A context of the compatibility profile, on a graphics processor where there is one, else on the software
/// renderer; not yet current. Windows ends it with the thread that made it. Throws `GLError`.
[[nodiscard]] std::unique_ptr<GLContext> createGLContext();

/// What people do on this system where `createGLContext` throws, as a sentence.
extern const char* const kGLRemedy;

}  // namespace lumiset::hostkit
