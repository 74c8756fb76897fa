#pragma once

#include "effects/effect.h"

namespace lumiset {

/// "Color Fixer Pro": white balance by a sampled colour, saturation, and tone curves like those of film.
class CImprovedColorbalance final : public Effect {
public:
    CImprovedColorbalance();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
