#pragma once

#include <functional>
#include <mutex>
#include <set>
#include <span>
#include <string>

#include "hostkit/gl/gpu_renderer.h"
#include "hostkit/renderer.h"

namespace lumiset::hostkit {

/// Renders frames in OpenGL for hosts whose frames come on any thread. It has one context, so one thread at a time
/// renders with it; what it does not render is left to the processor.
class GPUFrames {
public:
    /// Who wants to know. Each sentence and each effect is told once; on the thread that renders.
    struct Listener {
        std::function<void(const std::string& sentence)> driver;      ///< what OpenGL complains of
        std::function<void(const std::string& effect)> leftToOthers;  ///< the effect does not render here
    };

    /// Throws `GLError` where there is no OpenGL that effects can use.
    explicit GPUFrames(Listener listener);

    /// Gives the renderer its first choice. `renderer` must not outlive this object.
    void serve(Renderer& renderer);

    /// Like `GPURenderer::render`, on any thread.
    [[nodiscard]] std::size_t render(std::span<const EffectCall> calls, const VideoFrameDesc& source,
                                     const VideoFrameDesc& destination, const FrameRenderInfo& info);

    /// Waits for the frame under way, a few seconds at most, and lets no other begin, for a program that is to end: in
    /// the middle of a frame that would look like a crash of the driver's.
    void stop();

private:
    void hear(const std::string& sentence);

    Listener m_listener;
    std::set<std::string> m_heard;
    std::set<std::string> m_left;
    std::timed_mutex m_frame;  ///< held while one renders
    GLHost m_gl;
    GPURenderer m_renderer{m_gl};
};

}  // namespace lumiset::hostkit
