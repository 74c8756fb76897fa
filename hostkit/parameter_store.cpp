#include "hostkit/parameter_store.h"

#include <algorithm>
#include <cmath>

#include "hostkit/parameter_text.h"

namespace lumiset::hostkit {
namespace {

float mix(float a, float b, double position) {
    return static_cast<float>(static_cast<double>(a) + (static_cast<double>(b) - static_cast<double>(a)) * position);
}

std::uint32_t mixColors(std::uint32_t a, std::uint32_t b, double position) {
    std::uint32_t mixed = 0;
    for (const std::uint32_t shift : {0U, 8U, 16U}) {
        const float channel =
            mix(static_cast<float>(a >> shift & 0xFFU), static_cast<float>(b >> shift & 0xFFU), position);
        mixed |= static_cast<std::uint32_t>(std::lround(channel)) << shift;
    }
    return mixed;
}

ParamValue between(ParamType type, const ParamValue& a, const ParamValue& b, double position) {
    ParamValue value = a;
    if (type == kParamSlider) {
        value.slider = mix(a.slider, b.slider, position);
    } else if (type == kParamPoint) {
        value.point = {mix(a.point.x, b.point.x, position), mix(a.point.y, b.point.y, position)};
    } else if (type == kParamColor) {
        value.color = mixColors(a.color, b.color, position);
    }
    return value;
}

}  // namespace

ParameterStore::ParameterStore(const EffectDescription& effect) : m_effect(&effect) {
    for (const ParameterDescription& parameter : effect.parameters) {
        m_tracks.push_back({parameter.defaultValue, {}});
    }
}

std::size_t ParameterStore::trackIndex(const ParameterDescription& parameter) const {
    return static_cast<std::size_t>(&parameter - m_effect->parameters.data());
}

void ParameterStore::apply(const PresetDescription& preset) {
    for (std::size_t i = 0; i < m_tracks.size() && i < preset.values.size(); ++i) {
        if (preset.values[i]) {
            m_tracks[i] = {*preset.values[i], {}};
        }
    }
}

void ParameterStore::set(std::string_view name, std::string_view value) {
    const ParameterDescription& parameter = m_effect->parameter(name);
    set(parameter, parseValue(parameter, value));
}

void ParameterStore::set(const ParameterDescription& parameter, const ParamValue& value) {
    m_tracks[trackIndex(parameter)] = {value, {}};
}

void ParameterStore::addKey(std::string_view name, double timeSeconds, std::string_view value) {
    const ParameterDescription& parameter = m_effect->parameter(name);
    addKey(parameter, timeSeconds, parseValue(parameter, value));
}

void ParameterStore::addKey(const ParameterDescription& parameter, double timeSeconds, const ParamValue& value) {
    if (!std::isfinite(timeSeconds) || timeSeconds < 0.0) {
        throw ParameterError("A keyframe of " + parameter.label + " needs a time of 0 seconds or later.");
    }
    const Key key{timeSeconds, value};
    std::vector<Key>& keys = m_tracks[trackIndex(parameter)].keys;
    const auto place = std::lower_bound(keys.begin(), keys.end(), timeSeconds,
                                        [](const Key& each, double time) { return each.timeSeconds < time; });
    if (place != keys.end() && !(timeSeconds < place->timeSeconds)) {
        *place = key;
    } else {
        keys.insert(place, key);
    }
}

bool ParameterStore::hasKeys(const ParameterDescription& parameter) const {
    return !m_tracks[trackIndex(parameter)].keys.empty();
}

ParamValue ParameterStore::valueAt(const ParameterDescription& parameter, double timeSeconds) const {
    const auto& [constant, keys] = m_tracks[trackIndex(parameter)];
    if (keys.empty()) {
        return constant;
    }
    const auto next = std::upper_bound(keys.begin(), keys.end(), timeSeconds,
                                       [](double time, const Key& each) { return time < each.timeSeconds; });
    if (next == keys.begin()) {
        return keys.front().value;
    }
    const Key& last = *(next - 1);
    if (next == keys.end()) {
        return last.value;
    }
    const double position = (timeSeconds - last.timeSeconds) / (next->timeSeconds - last.timeSeconds);
    return between(parameter.type, last.value, next->value, position);
}

Result RenderHost::QueryInterface(const Guid& iid, void** out) noexcept {
    if (out == nullptr) {
        return kResultFail;
    }
    *out = nullptr;
    if (iid == IUnknown::kId) {
        AddRef();
        *out = static_cast<IEffectHost*>(this);
        return kResultOk;
    }
    IUnknown* const offered = iid == IHostParallel::kId ? static_cast<IUnknown*>(m_threads) : m_allocator;
    return offered != nullptr ? offered->QueryInterface(iid, out) : kResultNoInterface;
}

void RenderHost::GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t type) noexcept {
    const ParameterDescription* parameter = m_parameters.effect().parameterAt(index);
    if (out != nullptr && parameter != nullptr && parameter->type == type) {
        *out = m_parameters.valueAt(*parameter, m_timeSeconds);
    }
}

void RenderHost::GetHostName(const char** out) noexcept {
    if (out != nullptr) {
        *out = "Lumiset Host";
    }
}

}  // namespace lumiset::hostkit
