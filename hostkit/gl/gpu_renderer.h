#pragma once

#include <map>
#include <span>
#include <utility>

#include "host/video_effect.h"
#include "hostkit/com_ptr.h"
#include "hostkit/gl/gl_host.h"
#include "hostkit/renderer.h"

namespace lumiset::hostkit {

/// A host object with OpenGL: asks another one for everything but that. Lives on the caller's stack, longer than
/// the call; its reference count frees nothing.
class GLEffectHost final : public IEffectHost {
public:
    GLEffectHost(IEffectHost& inner, IHostGL& gl) : m_inner(inner), m_gl(gl) {}

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        return iid == IHostGL::kId ? m_gl.QueryInterface(iid, out) : m_inner.QueryInterface(iid, out);
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return m_inner.AddRef(); }
    std::uint32_t LUMISET_CALL Release() noexcept override { return m_inner.Release(); }
    void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t type) noexcept override {
        m_inner.GetParamValue(index, out, type);
    }
    void LUMISET_CALL Reserved4() noexcept override {}
    void LUMISET_CALL Reserved5() noexcept override {}
    void LUMISET_CALL Reserved6() noexcept override {}
    void LUMISET_CALL Reserved7() noexcept override {}
    void LUMISET_CALL GetHostName(const char** out) noexcept override { m_inner.GetHostName(out); }

private:
    IEffectHost& m_inner;
    IHostGL& m_gl;
};

/// Renders frames in memory through effects' OpenGL renderers. Used on the thread that has its `GLHost`.
class GPURenderer {
public:
    explicit GPURenderer(GLHost& gl) : m_gl(gl) {}

    /// Like `IVideoEffect::ProcessFrame`. False when the effect did not render: then the destination is as it was,
    /// and the frame is to be rendered by `ProcessFrame`. Frames that are no host's frames are refused too.
    [[nodiscard]] bool render(IVideoGPUEffect& effect, IEffectHost& host, const VideoFrameDesc& source,
                              const VideoFrameDesc& destination, const FrameRenderInfo& info);

    /// The same through effects in turn, as a `RunRenderer`: the frame stays in textures between them.
    [[nodiscard]] std::size_t render(std::span<const EffectCall> calls, const VideoFrameDesc& source,
                                     const VideoFrameDesc& destination, const FrameRenderInfo& info);

private:
    [[nodiscard]] bool canRender(IVideoGPUEffect& effect, IEffectHost& host);

    GLHost& m_gl;
    struct Known {
        ComPtr<IVideoGPUEffect> effect;  ///< held, so that no other effect gets its address
        bool renders;                    ///< what `InitGPU` answered
    };
    std::map<IVideoGPUEffect*, Known> m_effects;
};

}  // namespace lumiset::hostkit
