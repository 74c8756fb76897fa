#pragma once

#include "gpu/gpu_frame.h"

namespace lumiset {

/// The first base of "Alpha Processor", which older hosts expect before the effect's interfaces: it offers the last
/// step of a render in OpenGL.
class CBaseEffectHelper {
public:
    /// Presents the finished picture in the destination.
    virtual bool FinishFrame(GPUFrame& frame, GPUTexture& result) noexcept { return frame.finish(result); }

protected:
    ~CBaseEffectHelper() = default;
};

}  // namespace lumiset
