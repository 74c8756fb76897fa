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
    const EffectCall call{effect, host};
    return render(std::span(&call, 1), source, destination, info) == 1;
}

std::size_t GPURenderer::render(std::span<const EffectCall> calls, const VideoFrameDesc& source,
                                const VideoFrameDesc& destination, const FrameRenderInfo& info) {
    if (!isFrame(source) || !isFrame(destination) || source.format != destination.format) {
        return 0;
    }
    const bool sameSize = source.width == destination.width && source.height == destination.height;
    const std::size_t most = sameSize ? calls.size() : 1;
    std::size_t able = 0;
    for (; able < most; ++able) {
        GLEffectHost host(calls[able].host, m_gl);
        if (!canRender(calls[able].effect, host)) {
            break;
        }
    }
    if (able == 0) {
        return 0;
    }
    try {
        HeldTexture first(m_gl, source);
        HeldTexture second(m_gl, destination);
        GPUTexture* from = &first.get();
        GPUTexture* to = &second.get();
        m_gl.upload(source, *from);
        if (source.width < destination.width || source.height < destination.height) {
            m_gl.upload(destination, *to);  // what lies outside the common rectangle stays
        }
        std::size_t done = 0;
        for (; done < able; ++done) {
            to->flipped = (destination.flipped != 0) != (destination.stride < 0) ? 1 : 0;
            GLEffectHost host(calls[done].host, m_gl);
            if (!calls[done].effect.ProcessFrameGPU(0, &host, &m_gl, from, nullptr, to, &info) ||
                !m_gl.checkErrors("rendering")) {
                break;
            }
            std::swap(from, to);
        }
        if (done == 0) {
            return 0;
        }
        m_gl.download(*from, destination);
        return m_gl.checkErrors("reading a frame") ? done : 0;
    } catch (const GLError& error) {
        m_gl.report(error.what());
        return 0;
    }
}

}  // namespace lumiset::hostkit
