#pragma once

#include <mutex>

#include "effects/effect.h"
#include "effects/viewfinder/camera_font.h"

namespace lumiset {

/// "Viewfinder": the picture as in the finder of a video camera, with its marks.
class CViewfinder final : public Effect {
public:
    CViewfinder();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;

private:
    ~CViewfinder() override;

    /// A font of that size with a reference for the caller; null when there is none.
    CCameraFont* fontOf(const FontSize& size) noexcept;

    std::mutex m_lock;  // held to look at the font or to replace it, never while a font is made or drawn
    CCameraFont* m_font = nullptr;
};

}  // namespace lumiset
