#pragma once

#include "effects/effect.h"
#include "gpu/base_effect_helper.h"

namespace lumiset {

/// "Alpha Processor": grows, shrinks, softens and inverts the alpha channel.
class CAlphaProcessor final : public CBaseEffectHelper, public Effect {
public:
    CAlphaProcessor();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
