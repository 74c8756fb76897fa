#pragma once

#include "effects/effect.h"

namespace lumiset {

/// Turns the clip into a moving, softened backdrop: see the source.
class CBackgroundGenerator final : public Effect {
public:
    CBackgroundGenerator();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
