#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>

#include "hostkit/gl/gl_error.h"
#include "hostkit/renderer.h"

namespace lumiset::hostkit {

/// Renders frames in OpenGL for hosts whose frames come on any thread. It has one context, so one thread at a time
/// renders with it; what it does not render is left to the processor.
class GPUFrames {
public:
    /// Who wants to know. Each sentence and each effect is told once; on the thread that renders. Both may be empty.
    struct Listener {
        std::function<void(const std::string& sentence)> driver;      ///< what OpenGL complains of
        std::function<void(const std::string& effect)> leftToOthers;  ///< the effect does not render here
    };

    /// Makes a context without a window. Throws `GLError` where there is no OpenGL that effects can use.
    explicit GPUFrames(Listener listener);
    ~GPUFrames();
    GPUFrames(const GPUFrames&) = delete;
    GPUFrames& operator=(const GPUFrames&) = delete;

    /// Gives the renderer its first choice. `renderer` must not outlive this object.
    void serve(Renderer& renderer);

    /// Renders through effects in turn, as a `RunRenderer`, on any thread, which waits while another one renders: the
    /// frame stays on the graphics card between them. Throws nothing but std::bad_alloc and `GLError`.
    [[nodiscard]] std::size_t render(std::span<const EffectCall> calls, const VideoFrameDesc& source,
                                     const VideoFrameDesc& destination, const FrameRenderInfo& info);

    /// Waits for the frame under way, a few seconds at most, for a program that is to end: in the middle of a frame
    /// that would look like a crash of the driver's. Frames that come later are left to the processor.
    void stop();

private:
    struct Inside;
    std::unique_ptr<Inside> m_inside;
};

}  // namespace lumiset::hostkit
