#pragma once

#include <cstdint>

#include "gpu/arb_helper.h"
#include "gpu/gl_core.h"
#include "gpu/gl_guard.h"
#include "gpu/shader_program.h"

namespace lumiset {

/// A rectangle of the render target as fractions of its sides, rows counted as they are stored.
struct QuadRect {
    double left = 0.0;
    double top = 0.0;
    double right = 1.0;
    double bottom = 1.0;
};

/// True for the formats with the channels in the other order, which shaders see as G, R, A, B.
[[nodiscard]] bool NeedsChannelSwap(const GPUTexture& texture) noexcept;
/// The format of the same depth in the plain order.
[[nodiscard]] std::int32_t PlainFormat(std::int32_t format) noexcept;

/// Draws passes in the host's context: it lends textures and programs from the host for the length of one call,
/// between `Bind` with the host's objects and `Bind(nullptr, nullptr)`. Every pass is one quad.
class GPUHelper : public ARBHelper, public GLGuard {
public:
    GPUHelper() = default;
    GPUHelper(const GPUHelper&) = delete;
    GPUHelper& operator=(const GPUHelper&) = delete;

    /// Begins a call (takes the host's entry points, remembers its blend state) or, with null, ends it.
    void Bind(GPUResources* resources, IHostGL* gl) noexcept;
    [[nodiscard]] IHostGL* GetGL() const noexcept { return m_gl; }

    void EnableCap(std::uint32_t capability) noexcept { m_gl->Enable(capability); }
    void DisableCap(std::uint32_t capability) noexcept { m_gl->Disable(capability); }
    /// Depth test that every quad passes, no alpha test, blending, lighting or fixed-function texturing.
    void ResetRenderState() noexcept;
    /// A world of `width` by `height` units around the origin, whatever the picture's size.
    void SetViewProjection(double width, double height) noexcept;
    /// Both of these; the start of every render.
    void BeginRender(double width, double height) noexcept;

    /// Directs drawing to a texture, or for null to the host's framebuffer.
    bool SetRenderTarget(const GPUTexture* texture, bool multisample, std::uint32_t a, std::uint32_t b) noexcept;
    /// Choose the target first: the program is told its size.
    bool UseProgram(ShaderProgram& program) noexcept;
    void Clear(float r, float g, float b, float a) noexcept;
    /// Draws `texture` over `rect` of the target (null: all of it), upside down with `flipY`.
    bool DrawQuad(const GPUTexture& texture, bool flipY, const QuadRect* rect) noexcept;
    /// The same with two textures.
    bool DrawQuad2(const GPUTexture& texture0, const GPUTexture& texture1, bool flipY, const QuadRect* rect) noexcept;
    /// Gives the current program its textures; null ones are left out.
    void ApplyStages(const GPUTexture* texture0, const GPUTexture* texture1, const GPUTexture* texture2) noexcept;
    /// The rectangle in the world's units.
    [[nodiscard]] QuadRect MapRect(bool flipY, const QuadRect* rect) const noexcept;
    /// A filter of `sizeB` taps by `programB` into `temporary`, then one of `sizeA` taps by `programA` into
    /// `destination`. The programs take the size as `blurSize`, half of it, and `isOdd`.
    bool SeparableBlur(std::int32_t sizeA, std::int32_t sizeB, const GPUTexture& source, const GPUTexture& temporary,
                       const GPUTexture& destination, ShaderProgram& programA, ShaderProgram& programB) noexcept;

    bool CreateTexture(GPUTexture& texture, std::int32_t width, std::int32_t height, std::int32_t format,
                       std::uint32_t a, std::uint32_t b) noexcept;
    void ReleaseTexture(GPUTexture& texture) noexcept;
    bool CreateProgram(const ProgramText& vertexText, const ProgramText& fragmentText, ShaderProgram& program) noexcept;
    void ReleaseProgram(ShaderProgram& program) noexcept;

    /// True when every pair of two null-terminated lists compiles and links.
    bool CheckPrograms(IHostGL* gl, const ProgramText* const* vertexTexts,
                       const ProgramText* const* fragmentTexts) noexcept;
    /// The same as a record for the host.
    void LoadPrograms(GPUProgramSet& result, IHostGL* gl, const ProgramText* const* vertexTexts,
                      const ProgramText* const* fragmentTexts) noexcept;

    /// Tells the host that the render is about to finish. The host is told 0 whatever `value` is.
    void NotifyTarget(std::uint32_t value) noexcept;
    /// The last step of a render.
    bool FinishFrame(const GPUTexture& source, const GPUTexture& destination) noexcept;
    /// Writes the finished picture to the host's texture in its channel and row order.
    bool CopyToTarget(const GPUTexture& source, const GPUTexture& destination) noexcept;
    /// Creates the program of `CopyToTarget` beforehand, so that a frame that cannot finish is not begun:
    /// passes may use the destination as their scratch. Given back by `CopyToTarget`, at the latest by `Bind`.
    bool PrepareCopy() noexcept;

protected:
    ~GPUHelper() = default;

    /// Resolves the drawing functions; nothing may be drawn without them.
    [[nodiscard]] bool loadCore() noexcept { return m_core.load(); }
    void markProjectionSet() noexcept { m_projectionSet = true; }

private:
    template <class TexCoord>
    bool drawStrip(bool flipY, const QuadRect* rect, TexCoord&& texCoord) noexcept;

    GLCore m_core;
    bool m_multisampleTarget = false;
    bool m_projectionSet = false;
    IHostGL* m_gl = nullptr;
    GPUResources* m_resources = nullptr;
    double m_halfWidth = 0.0;
    double m_halfHeight = 0.0;
    double m_drawDepth = 0.0;
    std::int32_t m_targetWidth = 0;
    std::int32_t m_targetHeight = 0;
    ShaderProgram* m_currentProgram = nullptr;
    ShaderProgram m_copyProgram{false};
    std::int32_t m_liveTextures = 0;
    std::int32_t m_livePrograms = 0;
};

}  // namespace lumiset
