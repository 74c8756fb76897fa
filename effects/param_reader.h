#pragma once

#include <cstdint>

#include "effects/effect_info.h"
#include "host/host_interfaces.h"

namespace lumiset {

/// Reads parameter values from the host and makes them safe: whatever a host answers, sliders and points lie
/// in 0..1 (not-a-number becomes the default) and choices name an item of their list.
class ParamReader {
public:
    /// With a null host every parameter has its default.
    ParamReader(const EffectInfo& info, IEffectHost* host) : m_info(info), m_host(host) {}

    [[nodiscard]] float slider(std::uint32_t index) const noexcept;
    [[nodiscard]] ParamValue::Point point(std::uint32_t index) const noexcept;
    /// 0x00BBGGRR; the host's highest byte is cut off.
    [[nodiscard]] std::uint32_t color(std::uint32_t index) const noexcept;
    [[nodiscard]] std::uint32_t choice(std::uint32_t index) const noexcept;
    [[nodiscard]] bool boolean(std::uint32_t index) const noexcept;

private:
    [[nodiscard]] ParamValue read(std::uint32_t index) const noexcept;

    const EffectInfo& m_info;
    IEffectHost* m_host;
};

}  // namespace lumiset
