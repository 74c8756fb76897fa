#include "adapters/openfx/identity.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "hostkit/parameter_text.h"

namespace lumiset::openfx {
namespace {

struct Setting {
    const char* effect;
    const char* parameter;
    const char* value;
};

/// An effect changes nothing when all of its settings here are as they stand here, whatever the others are. The other
/// effects round some pixel by a level, or mix a colour into one that is half transparent, at any setting.
constexpr auto kSettings = std::to_array<Setting>({
    {"Selective Focus", "Blur", "0"},
    {"Selective Focus", "Test Mask", "off"},
    {"Selective Tint", "Inner Tint/Blend", "0"},
    {"Selective Tint", "Outer Tint/Blend", "0"},
    {"Selective Tint", "Test Mask", "off"},
    {"Selective Color", "Strength", "0"},
    {"Selective Color", "Show Masks", "off"},
    {"Alpha Processor", "Grow", "0"},
    {"Alpha Processor", "Blur", "0"},
    {"Alpha Processor", "Invert", "off"},
    {"Alpha Processor", "Premultiply", "off"},
    {"Alpha Processor", "Test Mask", "off"},
});

bool holds(const hostkit::ParameterStore& values, const Setting& setting) {
    const hostkit::ParameterDescription& parameter = values.effect().parameter(setting.parameter);
    const ParamValue value = values.valueAt(parameter, 0.0);
    const ParamValue wanted = hostkit::parseValue(parameter, setting.value);
    return parameter.type == kParamBoolean ? (value.boolean != 0) == (wanted.boolean != 0)
                                           : value.words[0] == wanted.words[0];
}

}  // namespace

bool changesNothing(const hostkit::ParameterStore& values) {
    const auto isOurs = [&](const Setting& each) { return values.effect().name == each.effect; };
    return std::any_of(kSettings.begin(), kSettings.end(), isOurs) &&
           std::all_of(kSettings.begin(), kSettings.end(),
                       [&](const Setting& each) { return !isOurs(each) || holds(values, each); });
}

}  // namespace lumiset::openfx
