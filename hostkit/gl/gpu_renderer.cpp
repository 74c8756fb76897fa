#include "hostkit/gl/gpu_renderer.h"

#include "host/frame_record.h"

namespace lumiset::hostkit {
namespace {

bool isFrame(const VideoFrameDesc& frame) {
    return isSound(&frame) && isHostFormat(frame.format);
}

/// A texture for the length of a frame.
class HeldTexture {
public:
    HeldTexture(GLHost& gl, const VideoFrameDesc& frame)
        : m_gl(gl), m_texture(gl.makeTexture(frame.width, frame.height, static_cast<std::int32_t>(frame.format))) {}
    ~HeldTexture() { m_gl.ReleaseTexture(&m_texture); }
    HeldTexture(const HeldTexture&) = delete;
    HeldTexture& operator=(const HeldTexture&) = delete;
    [[nodiscard]] GPUTexture& get() { return m_texture; }

private:
    GLHost& m_gl;
    GPUTexture m_texture;
};

}  // namespace

bool GPURenderer::canRender(IVideoGPUEffect& effect, IEffectHost& host) {
    const auto known = m_effects.find(&effect);
    if (known != m_effects.end()) {
        return known->second.renders;
    }
    // Those that nobody else has any more are given up, as hosts make new ones whenever something is applied.
    std::erase_if(m_effects, [](const auto& each) {
        each.first->AddRef();
        return each.first->Release() == 1;
    });
    effect.AddRef();
    auto held = ComPtr<IVideoGPUEffect>::adopt(&effect);
    GPUProgramSet status{};
    const bool renders = effect.InitGPU(&host, &m_gl, &status, 0);
    m_effects.emplace(&effect, Known{std::move(held), renders});
    return renders;
}

bool GPURenderer::render(IVideoGPUEffect& effect, IEffectHost& host, const VideoFrameDesc& source,
                         const VideoFrameDesc& destination, const FrameRenderInfo& info) {
    GLEffectHost glHost(host, m_gl);
    if (!isFrame(source) || !isFrame(destination) || source.format != destination.format ||
        !canRender(effect, glHost)) {
        return false;
    }
    try {
        HeldTexture from(m_gl, source);
        HeldTexture to(m_gl, destination);
        m_gl.upload(source, from.get());
        if (source.width < destination.width || source.height < destination.height) {
            m_gl.upload(destination, to.get());  // what lies outside the common rectangle stays
        }
        to.get().flipped = (destination.flipped != 0) != (destination.stride < 0) ? 1 : 0;
        if (!effect.ProcessFrameGPU(0, &glHost, &m_gl, &from.get(), nullptr, &to.get(), &info)) {
            return false;
        }
        if (!m_gl.checkErrors("rendering")) {
            return false;
        }
        m_gl.download(to.get(), destination);
        return m_gl.checkErrors("reading a frame");
    } catch (const GLError& error) {
        m_gl.report(error.what());
        return false;
    }
}

}  // namespace lumiset::hostkit
