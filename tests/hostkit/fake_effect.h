#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "host/video_effect.h"

namespace lumiset::test {

/// An effect as a module could hand it out, on the test's stack. Its labels are chosen to collide.
class FakeEffect final : public IVideoGPUEffect, public IParamToolTip {
public:
    /// Presets number their values by parameter index, else by the parameters that have a value.
    bool slotsAreIndices = false;
    std::function<bool(IEffectHost*, const VideoFrameDesc&, const VideoFrameDesc&, const FrameRenderInfo&)> render;

    FakeEffect() {
        group("Image", false);
        parameter("Tint", kParamColor).color = 0x80FF00;
        slider("Tint", -100.0F, 100.0F).slider = 0.5F;
        parameter("B/W", kParamBoolean);
        group("Image", true);
        slider("Hour", 0.0F, 23.49F);
        m_params.back().slider.showDecimals = 0;
        parameter("Mode", kParamChoice);
        m_params.back().itemCount = 3;
        copyText(m_params.back().items[0], "Normal");
        copyText(m_params.back().items[1], "Screen");
        copyText(m_params.back().items[2], "Color Dodge");
        parameter("Center", kParamPoint).point = {0.5F, 0.25F};
        group("Overlay", false);
        slider("Size", 0.0F, 10.0F);
        group("Another label than the box had", true);
        slider("Size", 0.0F, 100.0F);
    }

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        *out = iid == IParamToolTip::kId ? static_cast<IParamToolTip*>(this) : nullptr;
        return *out != nullptr ? (AddRef(), kResultOk) : kResultNoInterface;
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return ++references; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return --references; }
    const char* LUMISET_CALL GetEffectName() noexcept override { return "Fake"; }
    std::uint32_t LUMISET_CALL GetEffectFlags() noexcept override { return 0x4000; }
    bool LUMISET_CALL GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept override {
        return index < m_params.size() ? (*out = m_params[index], true) : false;
    }
    bool LUMISET_CALL ProcessFrame(IEffectHost* host, const VideoFrameDesc* source, void*,
                                   const VideoFrameDesc* destination, const FrameRenderInfo* info) noexcept override {
        return render && render(host, *source, *destination, *info);
    }
    const char* LUMISET_CALL GetPresetName(std::uint32_t preset) noexcept override {
        return preset == 0 ? "First Light" : preset < 3 ? "Last Light" : nullptr;
    }
    /// Preset p gives the parameter with index i the word 100 p + i.
    bool LUMISET_CALL GetPresetValue(std::uint32_t preset, std::uint32_t slot, ParamValue* out) noexcept override {
        std::vector<std::uint32_t> indices;
        for (std::uint32_t i = 0; i < m_params.size(); ++i) {
            if (slotsAreIndices || m_params[i].type != kParamGroup) {
                indices.push_back(i);
            }
        }
        return preset < 3 && slot < indices.size() ? (out->words[0] = 100 * preset + indices[slot], true) : false;
    }
    const char* LUMISET_CALL GetParamToolTip(std::uint32_t index) noexcept override {
        return index == 5 ? "Sets the hour" : "";
    }
    bool LUMISET_CALL InitGPU(IEffectHost*, GPUResources*, GPUProgramSet*, std::uint32_t) noexcept override {
        ++asked;
        return false;
    }
    bool LUMISET_CALL ProcessFrameGPU(std::uint32_t, IEffectHost*, GPUResources*, const GPUFrameDesc*, void*,
                                      GPUFrameDesc*, const FrameRenderInfo*) noexcept override {
        return false;
    }
    bool LUMISET_CALL LoadGPUPrograms(IEffectHost*, GPUProgramSet*, std::uint32_t) noexcept override { return false; }
    bool LUMISET_CALL RenderFrameGPU(IEffectHost*, const GPUFrameDesc*, void*, GPUFrameDesc*,
                                     const FrameRenderInfo*) noexcept override {
        return false;
    }

    std::uint32_t references = 1;
    int asked = 0;  ///< whether it renders in OpenGL

private:
    template <std::size_t kSize>
    static void copyText(char (&out)[kSize], const std::string& text) {
        text.copy(out, kSize - 1);  // The record is zeroed.
    }
    ParamValue& parameter(const char* label, ParamType type) {
        ParamInfo info{};
        info.type = type;
        copyText(info.label, label);
        m_params.push_back(info);
        return m_params.back().defaultValue;
    }
    ParamValue& slider(const char* label, float minimum, float maximum) {
        ParamValue& value = parameter(label, kParamSlider);
        m_params.back().minimum = minimum;
        m_params.back().slider = {maximum, 1};
        return value;
    }
    void group(const char* label, bool end) {
        parameter(label, kParamGroup);
        m_params.back().groupEnd = end ? 1 : 0;
    }

    std::vector<ParamInfo> m_params;
};

}  // namespace lumiset::test
