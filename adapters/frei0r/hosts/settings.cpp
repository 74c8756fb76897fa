#include "adapters/frei0r/hosts/settings.h"

#include <fmt/format.h>

#include <array>
#include <charconv>

#include "hostkit/parameter_text.h"

namespace lumiset::frei0r {
namespace {

/// The effect has it in single precision, so that precision's shortest text is enough.
std::string shortestText(double number) {
    std::array<char, 64> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), static_cast<float>(number),
                                            std::chars_format::fixed);
    return {buffer.data(), error == std::errc() ? end : buffer.data()};
}

}  // namespace

std::string Settings::text(std::size_t parameter) const {
    return valueText(parameters[parameter], values[parameter]);
}

bool Settings::differs(std::size_t parameter) const {
    return text(parameter) != valueText(parameters[parameter], parameters[parameter].defaultValue);
}

Settings settingsOf(const hostkit::ParameterStore& store) {
    Settings settings;
    settings.effect = &store.effect();
    settings.parameters = parameterList(store.effect());
    for (const Parameter& parameter : settings.parameters) {
        if (!parameter.belongsToEffect()) {
            settings.values.push_back(parameter.defaultValue);
            continue;
        }
        const hostkit::ParameterDescription& source = store.effect().parameters[parameter.source];
        settings.values.push_back(fromModule(parameter, source, store.valueAt(source, 0.0)));
    }
    return settings;
}

std::string valueText(const Parameter& parameter, const Value& value) {
    switch (parameter.type) {
        case kFrei0rBool:
            return value.number >= 0.5 ? "1" : "0";
        case kFrei0rColor: {
            const std::uint32_t word = colorWord(value.color);
            return fmt::format("#{:02x}{:02x}{:02x}", word & 0xFFU, word >> 8U & 0xFFU, word >> 16U);
        }
        case kFrei0rString:
            return value.text;
        default:
            // Of a list the nearest item counts; some hosts compare the text with that in their own list.
            return parameter.items.empty() ? shortestText(value.number) : hostkit::formatNumber(value.number, 4);
    }
}

std::string shownName(const hostkit::EffectDescription& effect) {
    return "Lumiset " + effect.name;
}

std::string shownDescription(const hostkit::EffectDescription& effect) {
    return effect.name + ", a video effect of Lumiset";
}

}  // namespace lumiset::frei0r
