#pragma once

#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "host/effect_library.h"
#include "hostkit/gl/gpu_renderer.h"
#include "hostkit/renderer.h"

namespace lumiset::app {

/// The OpenGL renderer of a `render` command. It has one context, so one thread at a time renders with it.
class GPUFrames {
public:
    /// Null, and a sentence on standard error, where there is no OpenGL that effects can use.
    [[nodiscard]] static std::unique_ptr<GPUFrames> open(IEffectLibrary& library);

    /// Gives the renderer its first choice; a frame that OpenGL does not render is left to the processor, which
    /// standard error is told once for each effect. `renderer` must not outlive this object.
    void serve(hostkit::Renderer& renderer);

    /// Waits for the frame under way, a few seconds at most, and lets no other begin, for a program that is to end: in
    /// the middle of a frame that would look like a crash of the driver's.
    void stop();

private:
    explicit GPUFrames(IEffectLibrary& library);
    bool render(IVideoGPUEffect& effect, IEffectHost& host, const VideoFrameDesc& source,
                const VideoFrameDesc& destination, const FrameRenderInfo& info);
    void say(const std::string& sentence);

    IEffectLibrary& m_library;
    std::set<std::string> m_said;
    std::timed_mutex m_frame;  ///< held while one renders
    hostkit::GLHost m_gl;
    hostkit::GPURenderer m_renderer{m_gl};
};

}  // namespace lumiset::app
