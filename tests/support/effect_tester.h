#pragma once

// The module's effects through its exports.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "host/effect_library.h"
#include "tests/support/host.h"
#include "tests/support/picture.h"

namespace lumiset::test {

struct ReleaseInterface {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using Held = std::unique_ptr<Interface, ReleaseInterface>;

/// One effect, of the module or another.
class EffectTester {
public:
    explicit EffectTester(Held<IVideoGPUEffect> effect) : m_effect(std::move(effect)) {}
    explicit EffectTester(std::uint32_t index) {
        const Held<IEffectLibrary> library(GetEffectsLibrary());
        m_effect.reset(library->CreateEffect(index));
    }

    [[nodiscard]] bool exists() const { return m_effect != nullptr; }
    [[nodiscard]] IVideoGPUEffect& effect() const { return *m_effect; }

    [[nodiscard]] std::uint32_t paramCount() const {
        ParamInfo info{};
        std::uint32_t count = 0;
        while (m_effect->GetParamInfo(count, &info)) {
            ++count;
        }
        return count;
    }
    [[nodiscard]] std::uint32_t presetCount() const {
        std::uint32_t count = 0;
        while (m_effect->GetPresetName(count) != nullptr) {
            ++count;
        }
        return count;
    }
    [[nodiscard]] std::uint32_t slotCount() const {
        ParamValue value{};
        std::uint32_t count = 0;
        while (m_effect->GetPresetValue(0, count, &value)) {
            ++count;
        }
        return count;
    }

    /// A host that holds the values of a preset.
    [[nodiscard]] ValueHost presetHost(std::uint32_t preset) const {
        ValueHost host;
        const std::uint32_t params = paramCount();
        const bool slotsAreIndices = slotCount() == params;
        std::uint32_t slot = 0;
        for (std::uint32_t index = 0; index < params; ++index) {
            ParamInfo info{};
            m_effect->GetParamInfo(index, &info);
            if (info.type != kParamGroup) {
                m_effect->GetPresetValue(preset, slotsAreIndices ? index : slot++, &host.values[index]);
            }
        }
        return host;
    }
    [[nodiscard]] ValueHost presetHost(std::string_view name) const {
        for (std::uint32_t preset = 0; m_effect->GetPresetName(preset) != nullptr; ++preset) {
            if (name == m_effect->GetPresetName(preset)) {
                return presetHost(preset);
            }
        }
        ADD_FAILURE() << "no preset named " << name;
        return {};
    }

    [[nodiscard]] bool render(ValueHost& host, Picture& source, Picture& destination,
                              const FrameRenderInfo* info = nullptr) const {
        const VideoFrameDesc from = source.desc();
        const VideoFrameDesc to = destination.desc();
        return m_effect->ProcessFrame(&host, &from, nullptr, &to, info);
    }

private:
    Held<IVideoGPUEffect> m_effect;
};

/// How many effects the module has: they are numbered without gaps.
inline std::uint32_t effectCount() {
    std::uint32_t count = 0;
    while (EffectTester(count).exists()) {
        ++count;
    }
    return count;
}

/// A whole frame at a time; set the flags and fields that a test needs.
inline FrameRenderInfo frameInfo(double timeSeconds = 0.0) {
    FrameRenderInfo info{};
    info.timeSeconds = timeSeconds;
    info.field = FrameRenderInfo::kWholeFrame;
    return info;
}

}  // namespace lumiset::test
