#include "effects/param_reader.h"

#include <algorithm>
#include <cmath>

namespace lumiset {
namespace {

float unitOr(float value, float fallback) {
    return std::isnan(value) ? fallback : std::clamp(value, 0.0F, 1.0F);
}

}  // namespace

ParamValue ParamReader::read(std::uint32_t index) const noexcept {
    const ParamRow& row = m_info.params[index];
    ParamValue value = row.defaultValue;
    if (m_host != nullptr) {
        m_host->GetParamValue(index, &value, row.type);
    }
    return value;
}

float ParamReader::slider(std::uint32_t index) const noexcept {
    return unitOr(read(index).slider, m_info.params[index].defaultValue.slider);
}

ParamValue::Point ParamReader::point(std::uint32_t index) const noexcept {
    const ParamValue::Point value = read(index).point;
    const ParamValue::Point fallback = m_info.params[index].defaultValue.point;
    return {unitOr(value.x, fallback.x), unitOr(value.y, fallback.y)};
}

std::uint32_t ParamReader::color(std::uint32_t index) const noexcept {
    return read(index).words[0] & 0x00FFFFFFU;
}

std::uint32_t ParamReader::choice(std::uint32_t index) const noexcept {
    const std::uint32_t item = read(index).words[0];
    return item < m_info.params[index].items.size() ? item : 0U;
}

bool ParamReader::boolean(std::uint32_t index) const noexcept {
    return (read(index).words[0] & 0xFFU) != 0;
}

}  // namespace lumiset
