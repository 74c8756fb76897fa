#pragma once

#include <cstdint>

#include "host/host_interfaces.h"
#include "host/records.h"

namespace lumiset {

class GPUResources;
struct GPUProgramSet;

/// One effect. It holds no picture state: every frame is a pure function of its source, the parameter values
/// and the `FrameRenderInfo`, so frames may be rendered in any order and from several threads at once.
class IVideoEffect : public IUnknown {
public:
    static constexpr Guid kId{0x0BCF7FCD, 0x6BE5, 0x4A40, {0x9A, 0x49, 0xA6, 0x8D, 0x6B, 0xF6, 0x60, 0x26}};

    /// The name shown to the user; a constant text.
    virtual const char* LUMISET_CALL GetEffectName() noexcept = 0;
    /// Behaviour bits for the host. Bit 0x4000: the picture depends on the render time.
    virtual std::uint32_t LUMISET_CALL GetEffectFlags() noexcept = 0;
    /// Fills all of `out`. False for a null `out` or an index past the last parameter.
    virtual bool LUMISET_CALL GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept = 0;
    /// Renders one frame on the processor into `destination`. Both frames must have one of the four colour
    /// formats, the same one, with positive sizes and strides that hold a row; float rows start at a multiple
    /// of four bytes. The picture is rendered into the rectangle that both frames have in common, at the
    /// first stored pixel; pixels outside it stay untouched. The source is never written. A null `info` is
    /// a whole frame at time 0 with square pixels. On false the destination is as it was.
    virtual bool LUMISET_CALL ProcessFrame(IEffectHost* host, const VideoFrameDesc* source, void* unused,
                                           const VideoFrameDesc* destination, const FrameRenderInfo* info) noexcept = 0;
    /// Name of a preset, a constant text, or null past the last one.
    virtual const char* LUMISET_CALL GetPresetName(std::uint32_t preset) noexcept = 0;
    /// Value `slot` of a preset. Slots number the preset's values; where an effect has as many slots as
    /// parameters they are parameter indices, else they count the parameters that carry a value. False for
    /// a null `out` or an index out of range.
    virtual bool LUMISET_CALL GetPresetValue(std::uint32_t preset, std::uint32_t slot, ParamValue* out) noexcept = 0;

protected:
    ~IVideoEffect() = default;
};

/// The OpenGL side of an effect. All calls need the host's context current on the calling thread.
class IVideoGPUEffect : public IVideoEffect {
public:
    static constexpr Guid kId{0x418A60D9, 0xFCA6, 0x434F, {0x9F, 0xE8, 0xEB, 0x6B, 0xC1, 0x1C, 0x5C, 0x13}};

    /// Compile-tests the effect's main program. True when the effect can render in this context.
    virtual bool LUMISET_CALL InitGPU(IEffectHost* host, GPUResources* resources, GPUProgramSet* status,
                                      std::uint32_t reserved) noexcept = 0;
    /// Renders one frame from texture to texture. On false the host renders by `ProcessFrame`.
    virtual bool LUMISET_CALL ProcessFrameGPU(std::uint32_t reserved, IEffectHost* host, GPUResources* resources,
                                              const GPUFrameDesc* source, void* extra, GPUFrameDesc* destination,
                                              const FrameRenderInfo* info) noexcept = 0;
    /// The effect's own part of `InitGPU`; hosts do not call it.
    virtual bool LUMISET_CALL LoadGPUPrograms(IEffectHost* host, GPUProgramSet* status,
                                              std::uint32_t reserved) noexcept = 0;
    /// The effect's own part of `ProcessFrameGPU`; hosts do not call it.
    virtual bool LUMISET_CALL RenderFrameGPU(IEffectHost* host, const GPUFrameDesc* source, void* extra,
                                             GPUFrameDesc* destination, const FrameRenderInfo* info) noexcept = 0;

protected:
    ~IVideoGPUEffect() = default;
};

/// Texts for the panel's controls, asked of an effect by `QueryInterface`.
class IParamToolTip : public IUnknown {
public:
    static constexpr Guid kId{0xC40A4523, 0xECE1, 0x493B, {0xA7, 0x3D, 0xEC, 0xF1, 0x15, 0x38, 0xF6, 0x00}};

    /// A constant text, empty for a group marker, or null past the last parameter.
    virtual const char* LUMISET_CALL GetParamToolTip(std::uint32_t index) noexcept = 0;

protected:
    ~IParamToolTip() = default;
};

}  // namespace lumiset
