#include "adapters/openfx/instance.h"

#include <algorithm>
#include <cmath>

#include "adapters/openfx/abi/names.h"
#include "hostkit/preset_file.h"
#include "hostkit/report.h"

namespace lumiset::openfx {
namespace {

using hostkit::ParameterDescription;
using hostkit::ParameterStore;

float share(double value, float otherwise) {
    return std::isfinite(value) ? static_cast<float>(std::clamp(value, 0.0, 1.0)) : otherwise;
}

std::uint32_t eightBits(double channel, std::uint32_t otherwise) {
    return std::isfinite(channel) ? static_cast<std::uint32_t>(std::lround(std::clamp(channel, 0.0, 1.0) * 255.0))
                                  : otherwise;
}

/// A position of the picture, where y goes up, as shares from its top left corner, and back.
PointD toShares(const PointD& position, const RectD& region) {
    return {(position.x - region.x1) / (region.x2 - region.x1), (region.y2 - position.y) / (region.y2 - region.y1)};
}

PointD toPosition(const PointD& shares, const RectD& region) {
    return {region.x1 + shares.x * (region.x2 - region.x1), region.y2 - shares.y * (region.y2 - region.y1)};
}

}  // namespace

Instance::Instance(std::shared_ptr<const HostInfo> host, const Bundle& bundle, const Effect& effect,
                   EffectHandle handle)
    : m_host(std::move(host)),
      m_bundle(bundle),
      m_effect(effect),
      m_handle(handle),
      m_properties(m_host->properties(nullptr)),
      m_sourceProperties(m_host->properties(nullptr)),
      m_outputProperties(m_host->properties(nullptr)) {
    Props own = nullptr;
    Props ofSource = nullptr;
    Props ofOutput = nullptr;
    const ImageEffectSuite& suite = *m_host->effect;
    if (suite.getPropertySet(handle, &own) != kOk || suite.getParamSet(handle, &m_set) != kOk ||
        suite.clipGetHandle(handle, value::kClipSource, &m_source, &ofSource) != kOk ||
        suite.clipGetHandle(handle, value::kClipOutput, &m_output, &ofOutput) != kOk) {
        throw HostError("The host does not give the effect \"" + effect.description.name +
                        "\" what it was described with.");
    }
    m_properties = m_host->properties(own);
    m_sourceProperties = m_host->properties(ofSource);
    m_outputProperties = m_host->properties(ofOutput);
    for (const Parameter& parameter : effect.parameters) {
        ParamHandle param = nullptr;
        Props properties = nullptr;
        if (parameter.role == Role::kGroup ||
            m_host->parameter->getHandle(m_set, parameter.name.c_str(), &param, &properties) != kOk) {
            param = nullptr;
            properties = nullptr;
        }
        m_params.push_back(param);
        const bool isPoint =
            parameter.role == Role::kEffect && effect.description.parameters[parameter.source].type == kParamPoint;
        m_isPosition.push_back(isPoint &&
                               m_host->properties(properties).getString(prop::kDoubleType) == value::kDoublePosition);
    }
}

double Instance::frameRate() const {
    constexpr double kUsual = 25.0;
    for (const Properties& properties : {m_outputProperties, m_sourceProperties, m_properties}) {
        if (const double rate = properties.getDouble(prop::kFrameRate, 0.0); rate > 0.0) {
            return rate;
        }
    }
    return kUsual;
}

RectD Instance::pictureRegion(double time) const {
    RectD region{};
    if (m_host->effect->clipGetRegionOfDefinition(m_source, time, &region) == kOk && region.x2 > region.x1 &&
        region.y2 > region.y1) {
        return region;
    }
    const PointD size = m_properties.getPointD(prop::kProjectSize).value_or(PointD{});
    const PointD offset = m_properties.getPointD(prop::kProjectOffset).value_or(PointD{});
    return size.x > 0.0 && size.y > 0.0 ? RectD{offset.x, offset.y, offset.x + size.x, offset.y + size.y}
                                        : RectD{0.0, 0.0, 1.0, 1.0};
}

int Instance::choiceAt(Role role, double time) const {
    const std::size_t place = placeOf(m_effect.parameters, role);
    const auto count = static_cast<int>(m_effect.parameters[place].items.size());
    int item = 0;
    const bool known =
        m_params[place] != nullptr && m_host->parameter->getValueAtTime(m_params[place], time, &item) == kOk;
    return known && item >= 0 && item < count ? item : 0;
}

std::string Instance::textAt(Role role, double time) const {
    char* text = nullptr;
    const ParamHandle param = paramOf(role);
    const bool known = param != nullptr && m_host->parameter->getValueAtTime(param, time, &text) == kOk;
    return known && text != nullptr ? text : "";
}

FieldSetting Instance::fieldSetting(double time) const {
    return static_cast<FieldSetting>(choiceAt(Role::kFields, time));
}

std::optional<ParamValue> Instance::effectValueAt(std::size_t place, double time, const RectD& region) const {
    const ParameterDescription& source = m_effect.description.parameters[m_effect.parameters[place].source];
    const ParamHandle param = m_params[place];
    const auto get = [&](auto*... out) {
        return param != nullptr && m_host->parameter->getValueAtTime(param, time, out...) == kOk;
    };
    const ParamValue& usual = source.defaultValue;
    ParamValue value = usual;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    int number = 0;
    switch (source.type) {
        case kParamPoint: {
            if (!get(&x, &y)) {
                return std::nullopt;
            }
            const PointD shares = m_isPosition[place] ? toShares({x, y}, region) : PointD{x, y};
            value.point = {share(shares.x, usual.point.x), share(shares.y, usual.point.y)};
            return value;
        }
        case kParamColor:
            if (!get(&x, &y, &z)) {
                return std::nullopt;
            }
            value.color = eightBits(x, usual.color & 0xFFU) | eightBits(y, usual.color >> 8U & 0xFFU) << 8U |
                          eightBits(z, usual.color >> 16U & 0xFFU) << 16U;
            return value;
        case kParamChoice: {
            if (!get(&number)) {
                return std::nullopt;
            }
            const auto last = static_cast<int>(source.items.size()) - 1;
            value.choice = static_cast<std::uint32_t>(std::clamp(number, 0, last));
            return value;
        }
        case kParamBoolean:
            if (!get(&number)) {
                return std::nullopt;
            }
            value.boolean = number != 0 ? 1 : 0;
            return value;
        default:
            if (!get(&x)) {
                return std::nullopt;
            }
            value.slider = sliderValue(source, x);
            return value;
    }
}

void Instance::setEffectValue(std::size_t place, const ParamValue& value, const RectD& region) const {
    const ParameterDescription& source = m_effect.description.parameters[m_effect.parameters[place].source];
    const ParameterSuite& suite = *m_host->parameter;
    const ParamHandle param = m_params[place];
    switch (source.type) {
        case kParamPoint: {
            const PointD shares{static_cast<double>(value.point.x), static_cast<double>(value.point.y)};
            const PointD point = m_isPosition[place] ? toPosition(shares, region) : shares;
            suite.setValue(param, point.x, point.y);
            break;
        }
        case kParamColor: {
            const auto channel = [&](std::uint32_t shift) { return (value.color >> shift & 0xFFU) / 255.0; };
            suite.setValue(param, channel(0), channel(8), channel(16));
            break;
        }
        case kParamChoice:
            suite.setValue(param, static_cast<int>(value.choice));
            break;
        case kParamBoolean:
            suite.setValue(param, value.boolean != 0 ? 1 : 0);
            break;
        default:
            suite.setValue(param, panelNumber(source, value.slider));
            break;
    }
}

bool Instance::hasPreset(double time) const {
    return choiceAt(Role::kPreset, time) > 0 || (m_host->tellsNoChanges() && !textAt(Role::kPresetFile, time).empty());
}

ParameterStore Instance::valuesUnder(double time) const {
    ParameterStore values(m_effect.description);
    if (const int preset = choiceAt(Role::kPreset, time); preset > 0) {
        values.apply(m_effect.description.presets[static_cast<std::size_t>(preset) - 1]);
        return values;
    }
    const std::string file = m_host->tellsNoChanges() ? textAt(Role::kPresetFile, time) : "";
    if (!file.empty()) {
        try {
            hostkit::loadPresetFile(m_bundle.effectLibrary(), file, values);
        } catch (const hostkit::PresetFileError& error) {
            hostkit::report(error.what());
        }
    }
    return values;
}

// The preset's choice falls back to its first item once the preset's values are set. Where a host tells of no change it
// stays, and the preset takes effect here: it lies under what was changed by hand.
ParameterStore Instance::valuesAt(double time) const {
    ParameterStore values = valuesUnder(time);
    const bool presetIsUnder = hasPreset(time);
    const RectD region = pictureRegion(time);
    for (std::size_t place = 0; place < m_params.size(); ++place) {
        if (m_effect.parameters[place].role != Role::kEffect) {
            continue;
        }
        const ParameterDescription& source = m_effect.description.parameters[m_effect.parameters[place].source];
        const std::optional<ParamValue> value = effectValueAt(place, time, region);
        if (value && !(presetIsUnder && isDefault(source, *value))) {
            values.set(source, *value);
        }
    }
    return values;
}

void Instance::beginEdit(const std::string& undoLabel) const {
    if (m_host->parameter->editBegin != nullptr) {
        m_host->parameter->editBegin(m_set, undoLabel.c_str());
    }
}

void Instance::endEdit() const {
    if (m_host->parameter->editEnd != nullptr) {
        m_host->parameter->editEnd(m_set);
    }
}

void Instance::setValues(const ParameterStore& values, double time, const std::string& undoLabel) const {
    const RectD region = pictureRegion(time);
    const ParameterSuite& suite = *m_host->parameter;
    beginEdit(undoLabel);
    for (std::size_t place = 0; place < m_params.size(); ++place) {
        if (m_effect.parameters[place].role != Role::kEffect || m_params[place] == nullptr) {
            continue;
        }
        unsigned keys = 0;
        if (suite.getNumKeys != nullptr && suite.deleteAllKeys != nullptr &&
            suite.getNumKeys(m_params[place], &keys) == kOk && keys > 0) {
            suite.deleteAllKeys(m_params[place]);
        }
        const ParameterDescription& source = m_effect.description.parameters[m_effect.parameters[place].source];
        setEffectValue(place, values.valueAt(source, 0.0), region);
    }
    endEdit();
}

void Instance::setChoice(Role role, int item) const {
    if (const ParamHandle param = paramOf(role)) {
        m_host->parameter->setValue(param, item);
    }
}

ParamValue::Point Instance::pointAt(std::size_t place, double time) const {
    const ParameterDescription& source = m_effect.description.parameters[m_effect.parameters[place].source];
    return effectValueAt(place, time, pictureRegion(time)).value_or(source.defaultValue).point;
}

void Instance::setPoint(std::size_t place, double time, ParamValue::Point point) const {
    if (m_params[place] != nullptr) {
        ParamValue value{};
        value.point = {share(static_cast<double>(point.x), 0.5F), share(static_cast<double>(point.y), 0.5F)};
        setEffectValue(place, value, pictureRegion(time));
    }
}

}  // namespace lumiset::openfx
