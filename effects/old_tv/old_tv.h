#pragma once

#include "effects/effect.h"

namespace lumiset {

/// "Old TV": the picture of a worn-out television set.
class COldTV final : public Effect {
public:
    COldTV();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
