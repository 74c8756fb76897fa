#pragma once

#include <cstdint>

#include "host/gpu_host.h"
#include "host/reference_count.h"
#include "hostkit/gl/gl_api.h"

namespace lumiset::hostkit {

/// A texture, RGBA with 8-bit or float samples, and the framebuffer that draws to it. Its context must be current
/// when it is made and when it goes. Owned by the `GLHost`; its reference count frees nothing.
class GLTexture final : public Counted<IHostTexture> {
public:
    /// Throws `GLError`, for instance for a size that the driver does not support.
    GLTexture(const GLApi& gl, std::int32_t width, std::int32_t height, bool isFloat);
    ~GLTexture();
    GLTexture(const GLTexture&) = delete;
    GLTexture& operator=(const GLTexture&) = delete;

    [[nodiscard]] bool fits(std::int32_t width, std::int32_t height, bool isFloat) const {
        return width == m_width && height == m_height && isFloat == m_isFloat;
    }
    [[nodiscard]] std::int64_t bytes() const { return std::int64_t{m_width} * m_height * (m_isFloat ? 16 : 4); }
    [[nodiscard]] GLuint name() const { return m_name; }
    [[nodiscard]] GLuint framebuffer() const { return m_framebuffer; }

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;
    void LUMISET_CALL Reserved3() noexcept override {}
    void LUMISET_CALL Reserved4() noexcept override {}
    void LUMISET_CALL Reserved5() noexcept override {}
    void LUMISET_CALL Reserved6() noexcept override {}
    void LUMISET_CALL Reserved7() noexcept override {}
    void LUMISET_CALL Reserved8() noexcept override {}
    void LUMISET_CALL Reserved9() noexcept override {}
    void LUMISET_CALL Reserved10() noexcept override {}
    bool LUMISET_CALL IsValid() noexcept override { return m_name != 0; }

private:
    const GLApi& m_gl;
    std::int32_t m_width;
    std::int32_t m_height;
    bool m_isFloat;
    GLuint m_name = 0;
    GLuint m_framebuffer = 0;
};

}  // namespace lumiset::hostkit
