#include "hostkit/gl/gpu_frames.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <utility>

#include "hostkit/gl/gpu_renderer.h"

namespace lumiset::hostkit {

struct GPUFrames::Inside {
    explicit Inside(Listener wanted) : listener(std::move(wanted)) {}

    void hear(const std::string& sentence) {
        if (heard.insert(sentence).second && listener.driver) {
            listener.driver(sentence);
        }
    }

    Listener listener;
    std::set<std::string> heard;
    std::set<std::string> left;
    std::atomic<bool> stopped{false};
    std::timed_mutex frame;  ///< held while one renders
    GLHost gl{[this](const std::string& sentence) { hear(sentence); }};
    GPURenderer renderer{gl};
};

GPUFrames::GPUFrames(Listener listener) : m_inside(std::make_unique<Inside>(std::move(listener))) {
    m_inside->gl.leaveThread();
}

GPUFrames::~GPUFrames() = default;

void GPUFrames::serve(Renderer& renderer) {
    renderer.setFirstChoice([this](std::span<const EffectCall> calls, const VideoFrameDesc& source,
                                   const VideoFrameDesc& destination,
                                   const FrameRenderInfo& info) { return render(calls, source, destination, info); });
}

std::size_t GPUFrames::render(std::span<const EffectCall> calls, const VideoFrameDesc& source,
                              const VideoFrameDesc& destination, const FrameRenderInfo& info) {
    const std::lock_guard<std::timed_mutex> frame(m_inside->frame);
    if (m_inside->stopped) {
        return 0;
    }
    // Left behind again each time: a thread that ended with the context would keep it, and what is in it, for ever.
    m_inside->gl.takeThread();
    const std::size_t done = m_inside->renderer.render(calls, source, destination, info);
    m_inside->gl.leaveThread();
    if (done < calls.size()) {
        const char* const name = calls[done].effect.GetEffectName();
        if (m_inside->left.insert(name).second && m_inside->listener.leftToOthers) {
            m_inside->listener.leftToOthers(name);
        }
    }
    return done;
}

void GPUFrames::stop() {
    m_inside->stopped = true;
    if (m_inside->frame.try_lock_for(std::chrono::seconds(5))) {
        m_inside->frame.unlock();
    }
}

}  // namespace lumiset::hostkit
