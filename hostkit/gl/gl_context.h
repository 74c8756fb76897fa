#pragma once

#include <memory>
#include <stdexcept>

#include "host/arb_table.h"

namespace lumiset::hostkit {

/// OpenGL cannot be used here; the text is a whole sentence.
class GLError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

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

}  // namespace lumiset::hostkit
