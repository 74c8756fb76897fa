#pragma once

#include "effects/effect.h"

namespace lumiset {

/// "Progressive Stretch": fits a 4:3 picture to a wider frame; the middle keeps its proportions, the sides stretch.
class CProgressiveStretch final : public Effect {
public:
    CProgressiveStretch();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
