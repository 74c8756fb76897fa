#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/gpu_host.h"
#include "host/reference_count.h"
#include "hostkit/gl/gl_api.h"
#include "hostkit/gl/gl_context.h"
#include "hostkit/gl/gl_program.h"
#include "hostkit/gl/gl_texture.h"

namespace lumiset::hostkit {

/// A real OpenGL host: a context, and the two objects that effects render through. Programs are kept by their texts
/// and textures by their sizes from frame to frame. Everything is used on one thread, the one that made it until
/// `leaveThread`, then the one that calls `takeThread`.
class GLHost final : public Counted<IHostGL, GPUResources> {
public:
    using Report = std::function<void(const std::string&)>;

    /// Makes the context and makes it current. `report` hears of OpenGL errors and of shaders that do not compile,
    /// each time in whole sentences. Throws `GLError` where there is no OpenGL that effects can use.
    explicit GLHost(Report report);
    ~GLHost();
    GLHost(const GLHost&) = delete;
    GLHost& operator=(const GLHost&) = delete;

    void leaveThread() noexcept { m_context->release(); }
    /// Throws `GLError`.
    void takeThread() { m_context->makeCurrent(); }

    /// What the driver says of itself.
    struct Info {
        std::string vendor;
        std::string renderer;
        std::string version;
        std::string shadingLanguage;
        std::int32_t largestTexture;  ///< longest side in pixels
    };
    [[nodiscard]] Info info() const;
    /// The extension entry points with their capability flags.
    [[nodiscard]] const ARBTable& extensions() const { return m_table; }

    /// A texture for a frame of that size and format, its contents undefined. Give it back by `ReleaseTexture`.
    /// Throws `GLError`.
    [[nodiscard]] GPUTexture makeTexture(std::int32_t width, std::int32_t height, std::int32_t format);
    /// Writes a frame's stored rows to a texture of its size and depth; the channel and row orders go along.
    void upload(const VideoFrameDesc& frame, GPUTexture& texture);
    /// Reads a texture of the frame's size, depth, channel and row order.
    void download(const GPUTexture& texture, const VideoFrameDesc& frame);
    /// Returns when everything that was drawn is done.
    void finish() { m_gl.Finish(); }
    void report(const std::string& message) { m_report(message); }
    /// Reports OpenGL errors since the last call; `doing` is what was done meanwhile. True without any.
    bool checkErrors(const char* doing);

    /// Textures and programs that were created and not given back.
    [[nodiscard]] int liveObjects() const { return m_liveObjects; }

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;

    const ARBTable* LUMISET_CALL GetARBTable() noexcept override { return &m_table; }
    void LUMISET_CALL GetIntegerv(std::uint32_t name, std::int32_t* values, std::uint32_t count) noexcept override;
    void LUMISET_CALL GetFloatv(std::uint32_t name, float* values, std::uint32_t count) noexcept override;
    void LUMISET_CALL Enable(std::uint32_t capability) noexcept override { m_gl.Enable(capability); }
    void LUMISET_CALL Disable(std::uint32_t capability) noexcept override { m_gl.Disable(capability); }
    void LUMISET_CALL BlendColor(float r, float g, float b, float a) noexcept override { m_gl.BlendColor(r, g, b, a); }
    void LUMISET_CALL BlendEquationSeparate(std::uint32_t color, std::uint32_t alpha) noexcept override {
        m_gl.BlendEquationSeparate(color, alpha);
    }
    void LUMISET_CALL BlendFuncSeparate(std::uint32_t srcColor, std::uint32_t dstColor, std::uint32_t srcAlpha,
                                        std::uint32_t dstAlpha) noexcept override {
        m_gl.BlendFuncSeparate(srcColor, dstColor, srcAlpha, dstAlpha);
    }
    void LUMISET_CALL SetTargetState(std::uint32_t /*value*/) noexcept override {}

    bool LUMISET_CALL CreateTexture(IHostGL* gl, GPUTexture* texture, std::uint32_t reserved0, std::int32_t width,
                                    std::int32_t height, std::int32_t format, std::uint32_t a, std::uint32_t b,
                                    std::uint32_t reserved1) noexcept override;
    bool LUMISET_CALL CreateProgram(IHostGL* gl, IHostProgram** program, const char* vertexText,
                                    const char* fragmentText, const char* geometryText, std::uint32_t vertexStoredSize,
                                    std::uint32_t fragmentStoredSize, std::uint32_t geometryStoredSize,
                                    std::uint32_t vertexPlainSize, std::uint32_t fragmentPlainSize,
                                    std::uint32_t geometryPlainSize, std::uint32_t vertexKey, std::uint32_t vertexKind,
                                    std::uint32_t fragmentKey, std::uint32_t fragmentKind, std::uint32_t geometryKey,
                                    std::uint32_t geometryKind) noexcept override;
    void LUMISET_CALL ReleaseTexture(GPUTexture* texture) noexcept override;
    void LUMISET_CALL ReleaseProgram(IHostProgram* program) noexcept override;
    bool LUMISET_CALL SetRenderTarget(IHostGL* gl, const GPUTexture* texture, std::uint32_t samples, std::uint32_t a,
                                      std::uint32_t b) noexcept override;

private:
    [[nodiscard]] std::string text(GLenum name) const;

    Report m_report;
    std::unique_ptr<GLContext> m_context;
    GLApi m_gl;
    ARBTable m_table{};
    std::vector<std::unique_ptr<GLTexture>> m_used;
    std::vector<std::unique_ptr<GLTexture>> m_free;  ///< the longest unused first
    std::map<std::pair<std::string, std::string>, std::unique_ptr<GLProgram>> m_programs;
    int m_liveObjects = 0;
};

}  // namespace lumiset::hostkit
