#pragma once

#include "effects/effect.h"

namespace lumiset {

/// "Selective Tint": tints the inside and the outside of a four-cornered shape in two colours.
class CMaskedGradientTint final : public Effect {
public:
    CMaskedGradientTint();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
