#pragma once

#include "effects/effect.h"

namespace lumiset {

/// "Two Tones": the picture's brightness drawn from one colour to another, as a print in two inks shows it.
class CTwoTones final : public Effect {
public:
    CTwoTones();

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

}  // namespace lumiset
