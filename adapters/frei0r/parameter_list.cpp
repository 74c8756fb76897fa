#include "adapters/frei0r/parameter_list.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

namespace lumiset::frei0r {
namespace {

using hostkit::EffectDescription;
using hostkit::formatNumber;
using hostkit::ParameterDescription;

struct PixelAspect {
    const char* name;
    double width;
    double height;
};

/// Video of 720 columns is told with either of two ratios, by whether all of them or 704 are the picture's width.
constexpr auto kPixelAspects = std::to_array<PixelAspect>({
    {"Square (1:1)", 1, 1},
    {"NTSC 4:3 (8:9)", 8, 9},
    {"NTSC 4:3 of 704 (10:11)", 10, 11},
    {"PAL 4:3 (16:15)", 16, 15},
    {"PAL 4:3 of 704 (12:11)", 12, 11},
    {"NTSC 16:9 (32:27)", 32, 27},
    {"NTSC 16:9 of 704 (40:33)", 40, 33},
    {"PAL 16:9 (64:45)", 64, 45},
    {"PAL 16:9 of 704 (16:11)", 16, 11},
    {"HDV (4:3)", 4, 3},
    {"DVCPRO HD (3:2)", 3, 2},
    {"Anamorphic (2:1)", 2, 1},
});

struct Fields {
    const char* name;
    hostkit::FieldOrder order;
};

constexpr auto kFields = std::to_array<Fields>({
    {"Progressive", hostkit::FieldOrder::kProgressive},
    {"Top First", hostkit::FieldOrder::kTopFirst},
    {"Bottom First", hostkit::FieldOrder::kBottomFirst},
});

/// Rows of a multiple of 16 pixels are the longest that hosts are known to fill up to.
constexpr std::size_t kPaddings = 16;

std::vector<std::string> paddingNames() {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kPaddings; ++i) {
        names.push_back(std::to_string(i));
    }
    return names;
}

template <class Table>
std::vector<std::string> namesOf(const Table& table) {
    std::vector<std::string> names;
    std::transform(table.begin(), table.end(), std::back_inserter(names), [](const auto& row) { return row.name; });
    return names;
}

std::string listed(const std::vector<std::string>& items) {
    std::string text;
    for (std::size_t i = 0; i < items.size(); ++i) {
        text += (i > 0 ? ", " : "") + formatNumber(numberOfItem(i, items.size()), 3) + " " + items[i];
    }
    return text;
}

Frei0rParamType typeOf(ParamType type) {
    switch (type) {
        case kParamColor:
            return kFrei0rColor;
        case kParamBoolean:
            return kFrei0rBool;
        default:
            return kFrei0rDouble;
    }
}

Parameter describe(const EffectDescription& effect, std::size_t source, Role role) {
    const ParameterDescription& description = effect.parameters[source];
    Parameter parameter;
    parameter.name = effect.plainName(description);
    parameter.type = typeOf(description.type);
    parameter.explanation = description.tip;
    parameter.role = role;
    parameter.source = source;
    parameter.items = description.items;
    if (role == Role::kPointX) {
        parameter.name += " X";
        parameter.explanation += " (0 left edge, 1 right edge)";
    } else if (role == Role::kPointY) {
        parameter.name += " Y";
        parameter.explanation += " (0 top edge, 1 bottom edge)";
    } else if (description.type == kParamChoice) {
        parameter.explanation += ": " + listed(parameter.items);
    } else if (description.type == kParamSlider) {
        parameter.explanation += " (0 to 1 means " + hostkit::describeRange(description) + ")";
    }
    parameter.defaultValue = fromModule(parameter, description, description.defaultValue);
    return parameter;
}

Parameter choice(const char* name, Role role, std::vector<std::string> items, const std::string& explanation) {
    Parameter parameter;
    parameter.name = name;
    parameter.explanation = explanation + ": " + listed(items);
    parameter.role = role;
    parameter.items = std::move(items);
    return parameter;
}

std::uint32_t eightBits(float channel) {
    return static_cast<std::uint32_t>(std::lround(channel * 255.0F));
}

template <class Number>
Number limited(Number number, Number otherwise) {
    return std::isnan(number) ? otherwise : std::clamp(number, Number{0}, Number{1});
}

}  // namespace

std::uint32_t colorWord(const Frei0rColor& color) {
    return eightBits(color.red) | eightBits(color.green) << 8U | eightBits(color.blue) << 16U;
}

std::string pluginName(std::string_view effectName) {
    return "lumiset_" + hostkit::identifierOf(effectName);
}

std::vector<Parameter> parameterList(const EffectDescription& effect) {
    std::vector<Parameter> list;
    Parameter preset;
    preset.name = "Preset";
    preset.type = kFrei0rString;
    preset.role = Role::kPreset;
    preset.explanation =
        "Name of a preset, or a preset file. Parameters that differ from their default count more. There is ";
    for (const hostkit::PresetDescription& each : effect.presets) {
        preset.explanation += (&each == effect.presets.data() ? "" : ", ") + each.uniqueName;
    }
    list.push_back(std::move(preset));
    for (std::size_t i = 0; i < effect.parameters.size(); ++i) {
        if (effect.parameters[i].type == kParamPoint) {
            list.push_back(describe(effect, i, Role::kPointX));
            list.push_back(describe(effect, i, Role::kPointY));
        } else {
            list.push_back(describe(effect, i, Role::kWhole));
        }
    }
    list.push_back(choice("Pixel Aspect", Role::kPixelAspect, namesOf(kPixelAspects),
                          "Width of a pixel in relation to its height"));
    list.push_back(choice("Fields", Role::kFields, namesOf(kFields),
                          "Fields of an interlaced picture, the second half of a 25th of a second later"));
    list.push_back(choice("Padding", Role::kPadding, paddingNames(),
                          "Columns at the right edge that only fill rows up and are no part of the picture"));
    return list;
}

Value madeSafe(const Parameter& parameter, Value value) {
    const Value& otherwise = parameter.defaultValue;
    value.number = limited(value.number, otherwise.number);
    value.color.red = limited(value.color.red, otherwise.color.red);
    value.color.green = limited(value.color.green, otherwise.color.green);
    value.color.blue = limited(value.color.blue, otherwise.color.blue);
    return value;
}

bool isDefault(const Parameter& parameter, const Value& value) {
    constexpr double kShown = 0.00005;
    const Value& usual = parameter.defaultValue;
    switch (parameter.type) {
        case kFrei0rColor:
            return colorWord(value.color) == colorWord(usual.color);
        case kFrei0rString:
            return value.text == usual.text;
        case kFrei0rBool:
            return (value.number >= 0.5) == (usual.number >= 0.5);
        default:
            break;
    }
    if (!parameter.items.empty()) {
        return itemAt(value.number, parameter.items.size()) == itemAt(usual.number, parameter.items.size());
    }
    return std::abs(value.number - usual.number) < kShown;
}

Value fromModule(const Parameter& parameter, const ParameterDescription& source, const ParamValue& value) {
    Value out;
    switch (source.type) {
        case kParamPoint:
            out.number = static_cast<double>(parameter.role == Role::kPointY ? value.point.y : value.point.x);
            break;
        case kParamChoice:
            out.number = numberOfItem(value.choice, source.items.size());
            break;
        case kParamColor: {
            const auto channel = [&](std::uint32_t shift) {
                return static_cast<float>(value.color >> shift & 0xFFU) / 255.0F;
            };
            out.color = {channel(0), channel(8), channel(16)};
            break;
        }
        case kParamBoolean:
            out.number = value.boolean != 0 ? 1.0 : 0.0;
            break;
        default:
            out.number = static_cast<double>(value.slider);
            break;
    }
    return out;
}

void toModule(const Parameter& parameter, const ParameterDescription& source, const Value& value, ParamValue& out) {
    switch (source.type) {
        case kParamPoint:
            (parameter.role == Role::kPointY ? out.point.y : out.point.x) = static_cast<float>(value.number);
            break;
        case kParamChoice:
            out.choice = static_cast<std::uint32_t>(itemAt(value.number, source.items.size()));
            break;
        case kParamColor:
            out.color = colorWord(value.color);
            break;
        case kParamBoolean:
            out.boolean = value.number >= 0.5 ? 1 : 0;
            break;
        default:
            out.slider = static_cast<float>(value.number);
            break;
    }
}

std::size_t itemAt(double number, std::size_t itemCount) {
    return itemCount < 2 ? 0 : static_cast<std::size_t>(std::lround(number * static_cast<double>(itemCount - 1)));
}

double numberOfItem(std::size_t item, std::size_t itemCount) {
    return itemCount < 2 || item >= itemCount ? 0.0 : static_cast<double>(item) / static_cast<double>(itemCount - 1);
}

double pixelAspectOf(double number) {
    const PixelAspect& aspect = kPixelAspects[itemAt(number, kPixelAspects.size())];
    return aspect.width / aspect.height;
}

hostkit::FieldOrder fieldOrderOf(double number) {
    return kFields[itemAt(number, kFields.size())].order;
}

double numberOfPixelAspect(double aspect) {
    const auto distance = [aspect](const PixelAspect& each) { return std::abs(each.width / each.height - aspect); };
    const auto nearest =
        std::min_element(kPixelAspects.begin(), kPixelAspects.end(),
                         [&](const PixelAspect& a, const PixelAspect& b) { return distance(a) < distance(b); });
    return numberOfItem(static_cast<std::size_t>(nearest - kPixelAspects.begin()), kPixelAspects.size());
}

std::uint32_t paddingOf(double number) {
    return static_cast<std::uint32_t>(itemAt(number, kPaddings));
}

double numberOfPadding(std::uint32_t columns) {
    return numberOfItem(columns, kPaddings);
}

double numberOfFieldOrder(hostkit::FieldOrder order) {
    const auto found =
        std::find_if(kFields.begin(), kFields.end(), [order](const Fields& each) { return each.order == order; });
    return numberOfItem(static_cast<std::size_t>(found - kFields.begin()), kFields.size());
}

}  // namespace lumiset::frei0r
