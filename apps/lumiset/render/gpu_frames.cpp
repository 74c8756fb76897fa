#include "apps/lumiset/render/gpu_frames.h"

#include <fmt/format.h>

#include <chrono>

#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/gpu_refusal.h"

namespace lumiset::app {

std::unique_ptr<GPUFrames> GPUFrames::open(IEffectLibrary& library) {
    try {
        return std::unique_ptr<GPUFrames>(new GPUFrames(library));
    } catch (const hostkit::GLError& error) {
        tell(fmt::format("lumiset: {} The processor renders instead.\n", error.what()));
        return nullptr;
    }
}

GPUFrames::GPUFrames(IEffectLibrary& library)
    : m_library(library), m_gl([this](const std::string& message) { say(message); }) {
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
    const std::lock_guard<std::timed_mutex> frame(m_frame);
    // Left behind again each time: a thread that ended with the context would keep it, and what is in it, for ever.
    m_gl.takeThread();
    const bool rendered = m_renderer.render(effect, host, source, destination, info);
    m_gl.leaveThread();
    if (rendered) {
        return true;
    }
    say(refusalInOpenGL(m_library, effect.GetEffectName()) + " The processor renders instead.");
    return false;
}

void GPUFrames::stop() {
    // Kept: whoever wants to begin another frame waits for the end of the program.
    static_cast<void>(m_frame.try_lock_for(std::chrono::seconds(5)));
}

void GPUFrames::say(const std::string& sentence) {
    if (m_said.insert(sentence).second) {
        tell("lumiset: " + sentence + '\n');
    }
}

}  // namespace lumiset::app
