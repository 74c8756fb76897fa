#pragma once

#include "effects/effect.h"

namespace lumiset {

/// "Selective Focus": blurs the picture outside a four-cornered shape, or inside it.
class CSelectiveFocus final : public Effect {
public:
    CSelectiveFocus();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
