#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/gpu_host.h"
#include "host/reference_count.h"
#include "hostkit/gl/gl_api.h"

namespace lumiset::hostkit {

/// A linked program. Its context must be current when it is made, used and destroyed. Owned by the `GLHost`; its
/// reference count frees nothing.
class GLProgram final : public Counted<IHostProgram> {
public:
    /// Throws `GLError` with the compiler's or linker's log.
    GLProgram(const GLApi& gl, std::string_view vertexText, std::string_view fragmentText);
    ~GLProgram();
    GLProgram(const GLProgram&) = delete;
    GLProgram& operator=(const GLProgram&) = delete;

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;
    void LUMISET_CALL Use() noexcept override { m_gl.UseProgram(m_name); }
    bool LUMISET_CALL SetInt(const char* name, std::int32_t value) noexcept override;
    bool LUMISET_CALL SetFloat(const char* name, float x) noexcept override;
    bool LUMISET_CALL SetFloat2(const char* name, float x, float y) noexcept override;
    bool LUMISET_CALL SetFloat3(const char* name, float x, float y, float z) noexcept override;
    bool LUMISET_CALL SetFloat4(const char* name, float x, float y, float z, float w) noexcept override;
    bool LUMISET_CALL SetTexture(const char* name, IHostTexture* texture) noexcept override;
    std::uint32_t LUMISET_CALL GetUniforms(UniformRecord* records) noexcept override;
    bool LUMISET_CALL IsValid() noexcept override { return m_name != 0; }

private:
    struct Uniform {
        std::string name;
        GLint location;
        GLenum unit;  ///< the texture unit of a sampler
    };

    [[nodiscard]] const Uniform* find(const char* name) const noexcept;
    template <class Set>
    bool set(const char* name, Set&& setAt) noexcept;

    const GLApi& m_gl;
    GLuint m_name = 0;
    std::vector<Uniform> m_uniforms;
};

}  // namespace lumiset::hostkit
