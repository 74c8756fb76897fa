#pragma once

#include <cstdint>
#include <memory>

#include "host/gpu_host.h"

namespace lumiset {

/// One linked program, borrowed from the host for a frame. A regular program knows its active uniforms: setting
/// one that the linker removed is harmless and does not reach the host. Others set every name unchecked.
class ShaderProgram {
public:
    static constexpr std::uint32_t kStages = 8;

    explicit ShaderProgram(bool regular) noexcept : m_regular(regular) {}
    ShaderProgram() noexcept : ShaderProgram(true) {}
    ~ShaderProgram() { Detach(); }
    ShaderProgram(const ShaderProgram&) = delete;
    ShaderProgram& operator=(const ShaderProgram&) = delete;

    /// Takes over `program`, which `Detach` gives back to `resources`. Stays empty for an invalid program.
    void Attach(GPUResources* resources, IHostProgram* program) noexcept;
    void Detach() noexcept;

    [[nodiscard]] bool IsValid() const noexcept { return m_program != nullptr && m_program->IsValid(); }
    /// Valid, and a regular program's uniforms are known: there was memory to list them.
    [[nodiscard]] bool IsReady() const noexcept {
        return IsValid() && (!m_regular || (m_uniforms != nullptr && m_uniformSet != nullptr));
    }
    [[nodiscard]] bool IsRegular() const noexcept { return m_regular; }

    /// Makes it the program that draws, for a render target of that size, and forgets the stages and uniforms
    /// of the pass before.
    bool Begin(std::int32_t width, std::int32_t height) noexcept;

    bool SetInt(const char* name, std::int32_t value) noexcept;
    bool SetFloat(const char* name, float x) noexcept;
    bool SetFloat2(const char* name, float x, float y) noexcept;
    bool SetFloat3(const char* name, float x, float y, float z) noexcept;
    bool SetFloat4(const char* name, float x, float y, float z, float w) noexcept;
    bool SetTexture(const char* name, const GPUTexture& texture) noexcept;
    /// Sets everything that maps between the render target and the rectangle of `texture`'s picture, whose sides
    /// are fractions of the picture, under the names `Texture<stage>_texture` and `Texture<stage>.*`. A stage
    /// keeps the first texture that it is given in a pass. The result is false in every case.
    bool SetTextureStage(std::uint32_t stage, const GPUTexture& texture, float left, float top, float right,
                         float bottom) noexcept;

    /// True when the program has the uniform; notes it as set.
    bool HasUniform(const char* name) noexcept;

    /// Three checks, all on from the start. Without the third the stages of a pass are not set when it is drawn.
    void SetVerification(bool first, bool second, bool third) noexcept;
    void GetVerification(bool& first, bool& second, bool& third) const noexcept;

private:
    void listUniforms() noexcept;

    GPUResources* m_resources = nullptr;
    IHostProgram* m_program = nullptr;
    bool m_regular;
    bool m_verifyFlags[3] = {};  // each clear while its check is on
    std::int32_t m_rtWidth = 1;
    std::int32_t m_rtHeight = 1;
    std::uint32_t m_uniformCount = 0;
    std::unique_ptr<UniformRecord[]> m_uniforms;
    std::unique_ptr<bool[]> m_uniformSet;
    bool m_stageUsed[kStages] = {};
};

}  // namespace lumiset
