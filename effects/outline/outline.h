#pragma once

#include "effects/effect.h"

namespace lumiset {

/// "Outline": a coloured band around whatever is opaque in the source.
class COutline final : public Effect {
public:
    COutline();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
