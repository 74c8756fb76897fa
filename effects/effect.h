#pragma once

#include <cstdint>

#include "effects/effect_info.h"
#include "effects/param_reader.h"
#include "frame/frame.h"
#include "frame/memory_allocator.h"
#include "gpu/gpu_effect_helper.h"
#include "gpu/gpu_frame.h"
#include "host/pixel_aspect_scale.h"
#include "host/reference_count.h"

namespace lumiset {

/// What a renderer knows of the frame to render beside its pixels and parameters.
struct FrameFacts {
    const FrameRenderInfo* info;  ///< may be null
    double timeSeconds;           ///< finite, 0 or later
    bool fieldMode;               ///< the host renders by field, and this is one field
    bool isField;                 ///< not a whole frame, whatever the flags say
    std::int32_t width;           ///< the size that both frames have in common
    std::int32_t height;
};

/// The same for a processor renderer, which needs memory.
struct RenderContext : FrameFacts {
    MemoryAllocator& allocator;
};

/// An effect: its `EffectInfo` answers the host's questions, its `Render` and `RenderGPU` make the picture.
/// Lifetime, interfaces, checks and wrapping of a frame stand here once for all effects.
class Effect : public Counted<GPUEffectHelper, IParamToolTip> {
public:
    explicit Effect(const EffectInfo& info) : m_info(info) {}
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;

    const char* LUMISET_CALL GetEffectName() noexcept override;
    std::uint32_t LUMISET_CALL GetEffectFlags() noexcept override;
    bool LUMISET_CALL GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept override;
    bool LUMISET_CALL ProcessFrame(IEffectHost* host, const VideoFrameDesc* source, void* unused,
                                   const VideoFrameDesc* destination, const FrameRenderInfo* info) noexcept override;
    const char* LUMISET_CALL GetPresetName(std::uint32_t preset) noexcept override;
    bool LUMISET_CALL GetPresetValue(std::uint32_t preset, std::uint32_t slot, ParamValue* out) noexcept override;
    const char* LUMISET_CALL GetParamToolTip(std::uint32_t index) noexcept override;
    bool LUMISET_CALL LoadGPUPrograms(IEffectHost* host, GPUProgramSet* status,
                                      std::uint32_t reserved) noexcept override;
    bool LUMISET_CALL RenderFrameGPU(IEffectHost* host, const GPUFrameDesc* source, void* extra,
                                     GPUFrameDesc* destination, const FrameRenderInfo* info) noexcept override;

protected:
    virtual ~Effect() = default;

    /// Renders `source` into `destination`: two frames of one size and one colour format. False when the
    /// frame cannot be rendered; then nothing may have been written.
    virtual bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                        Frame& destination) noexcept = 0;

    /// Renders in OpenGL: `frame.create`, passes, `frame.finish`; the result is `frame.ok()`. An effect without
    /// such a renderer has no `EffectInfo::mainProgram`, and hosts are told so.
    virtual bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept = 0;

private:
    /// Renders with the rows in the order that the effect needs and leaves them in the destination's order.
    bool renderInRowOrder(const ParamReader& params, const RenderContext& context, const Frame& source,
                          Frame& destination) noexcept;

    void lastReleased() noexcept override { delete this; }

    const EffectInfo& m_info;
};

/// An effect without members: its tables, and its renderers as functions.
template <const EffectInfo& kInfo,
          bool (*kRender)(const ParamReader&, const RenderContext&, const Frame& source, Frame& destination) noexcept,
          bool (*kRenderGPU)(const ParamReader&, const FrameFacts&, GPUFrame&) noexcept>
class EffectOf final : public Effect {
public:
    EffectOf() : Effect(kInfo) {}

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override {
        return kRender(params, context, source, destination);
    }
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override {
        return kRenderGPU(params, facts, frame);
    }
};

/// The OpenGL renderer of an effect that has none.
inline bool renderNothingInGPU(const ParamReader&, const FrameFacts&, GPUFrame&) noexcept {
    return false;
}

}  // namespace lumiset
