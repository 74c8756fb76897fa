#include "hostkit/gl/gpu_frames.h"

#include <chrono>
#include <utility>

namespace lumiset::hostkit {

GPUFrames::GPUFrames(Listener listener)
    : m_listener(std::move(listener)), m_gl([this](const std::string& sentence) { hear(sentence); }) {
    m_gl.leaveThread();
}

void GPUFrames::serve(Renderer& renderer) {
    renderer.setFirstChoice([this](std::span<const EffectCall> calls, const VideoFrameDesc& source,
                                   const VideoFrameDesc& destination,
                                   const FrameRenderInfo& info) { return render(calls, source, destination, info); });
}

std::size_t GPUFrames::render(std::span<const EffectCall> calls, const VideoFrameDesc& source,
                              const VideoFrameDesc& destination, const FrameRenderInfo& info) {
    const std::lock_guard<std::timed_mutex> frame(m_frame);
    // Left behind again each time: a thread that ended with the context would keep it, and what is in it, for ever.
    m_gl.takeThread();
    const std::size_t done = m_renderer.render(calls, source, destination, info);
    m_gl.leaveThread();
    if (done < calls.size()) {
        const char* const name = calls[done].effect.GetEffectName();
        if (m_left.insert(name).second && m_listener.leftToOthers) {
            m_listener.leftToOthers(name);
        }
    }
    return done;
}

void GPUFrames::stop() {
    // Kept: whoever wants to begin another frame waits for the end of the program.
    static_cast<void>(m_frame.try_lock_for(std::chrono::seconds(5)));
}

void GPUFrames::hear(const std::string& sentence) {
    if (m_heard.insert(sentence).second && m_listener.driver) {
        m_listener.driver(sentence);
    }
}

}  // namespace lumiset::hostkit
