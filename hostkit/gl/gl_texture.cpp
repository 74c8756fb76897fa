#include "hostkit/gl/gl_texture.h"

#include <string>

namespace lumiset::hostkit {

GLTexture::GLTexture(const GLApi& gl, std::int32_t width, std::int32_t height, bool isFloat)
    : m_gl(gl), m_width(width), m_height(height), m_isFloat(isFloat) {
    GLint largest = 0;
    m_gl.GetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    const std::string size = std::to_string(width) + " by " + std::to_string(height);
    if (width < 1 || height < 1 || width > largest || height > largest) {
        throw GLError("The OpenGL driver has no textures of " + size + " pixels; its largest side is " +
                      std::to_string(largest) + ".");
    }
    m_gl.GenTextures(1, &m_name);
    m_gl.BindTexture(GL_TEXTURE_2D, m_name);
    // Passes read whole texels; nearest filtering gives them exactly.
    m_gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    m_gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    m_gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    m_gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    m_gl.TexImage2D(GL_TEXTURE_2D, 0, isFloat ? GL_RGBA32F : GL_RGBA8, width, height, 0, GL_BGRA,
                    isFloat ? GL_FLOAT : GL_UNSIGNED_BYTE, nullptr);
    m_gl.GenFramebuffers(1, &m_framebuffer);
    m_gl.BindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    m_gl.FramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_name, 0);
    const GLenum status = m_gl.CheckFramebufferStatus(GL_FRAMEBUFFER);
    m_gl.BindFramebuffer(GL_FRAMEBUFFER, 0);
    if (status != GL_FRAMEBUFFER_COMPLETE) {
        m_gl.DeleteFramebuffers(1, &m_framebuffer);
        m_gl.DeleteTextures(1, &m_name);
        throw GLError("The OpenGL driver cannot draw to a " + std::string(isFloat ? "float" : "8-bit") +
                      " texture of " + size + " pixels.");
    }
}

GLTexture::~GLTexture() {
    m_gl.DeleteFramebuffers(1, &m_framebuffer);
    m_gl.DeleteTextures(1, &m_name);
}

Result GLTexture::QueryInterface(const Guid& iid, void** out) noexcept {
    if (iid != IUnknown::kId) {
        *out = nullptr;
        return kResultNoInterface;
    }
    AddRef();
    *out = this;
    return kResultOk;
}

}  // namespace lumiset::hostkit
