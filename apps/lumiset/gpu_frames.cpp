#include "apps/lumiset/gpu_frames.h"

#include <fmt/format.h>

#include <cstdio>

namespace lumiset::app {

std::unique_ptr<GPUFrames> GPUFrames::open() {
    try {
        return std::unique_ptr<GPUFrames>(new GPUFrames);
    } catch (const hostkit::GLError& error) {
        fmt::print(stderr, "lumiset: {} The processor renders instead.\n", error.what());
        return nullptr;
    }
}

GPUFrames::GPUFrames() : m_gl([this](const std::string& message) { say(message); }) {
    m_gl.leaveThread();
}

void GPUFrames::serve(hostkit::Renderer& renderer) {
    renderer.setFirstChoice([this](IVideoGPUEffect& effect, IEffectHost& host, const VideoFrameDesc& source,
                                   const VideoFrameDesc& destination, const FrameRenderInfo& info) {
        return render(effect, host, source, destination, info);
    });
}

bool GPUFrames::render(IVideoGPUEffect& effect, IEffectHost& host, const VideoFrameDesc& source,
                       const VideoFrameDesc& destination, const FrameRenderInfo& info) {
    // Left behind again each time: a thread that ended with the context would keep it, and what is in it, for ever.
    m_gl.takeThread();
    const bool rendered = m_renderer.render(effect, host, source, destination, info);
    m_gl.leaveThread();
    if (rendered) {
        return true;
    }
    say(fmt::format("The effect \"{}\" does not render in OpenGL here; the processor renders its frames.",
                    effect.GetEffectName()));
    return false;
}

void GPUFrames::say(const std::string& sentence) {
    if (m_said.insert(sentence).second) {
        fmt::print(stderr, "lumiset: {}\n", sentence);
    }
}

}  // namespace lumiset::app
