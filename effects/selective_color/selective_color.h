#pragma once

#include "effects/effect.h"

namespace lumiset {

/// "Selective Color": keeps up to two chosen colours of the picture and drains the rest.
class CSelectColor final : public Effect {
public:
    CSelectColor();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
