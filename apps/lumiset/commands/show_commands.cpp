#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "apps/lumiset/commands/commands.h"
#include "hostkit/parameter_text.h"

namespace lumiset::app {
namespace {

using hostkit::EffectDescription;
using hostkit::ParameterDescription;
using hostkit::PresetDescription;
using Json = nlohmann::ordered_json;

constexpr std::size_t kLineWidth = 100;

std::string rangeText(const ParameterDescription& parameter) {
    switch (parameter.type) {
        case kParamPoint:
            return "x,y in percent";
        case kParamChoice:
            return "list";
        case kParamColor:
            return "#RRGGBB";
        default:
            return hostkit::describeRange(parameter);
    }
}

/// Items parted by commas, in lines of limited width behind an indent.
std::string wrapped(const std::vector<std::string>& items, std::size_t indent) {
    const std::string margin(indent, ' ');
    std::string text = margin;
    std::size_t column = indent;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string item = items[i] + (i + 1 < items.size() ? "," : "");
        if (column > indent && column + 1 + item.size() > kLineWidth) {
            text += '\n' + margin;
            column = indent;
        } else if (column > indent) {
            text += ' ';
            ++column;
        }
        text += item;
        column += item.size();
    }
    return text + '\n';
}

std::string parametersText(const EffectDescription& effect) {
    std::size_t labelWidth = 5;
    std::size_t defaultWidth = 7;
    std::size_t rangeWidth = 5;
    for (const ParameterDescription& each : effect.parameters) {
        labelWidth = std::max(labelWidth, each.label.size());
        defaultWidth = std::max(defaultWidth, hostkit::formatValue(each, each.defaultValue).size());
        rangeWidth = std::max(rangeWidth, rangeText(each).size());
    }
    std::string text =
        fmt::format("  {:>4}  {:<{}}  {:<{}}  range\n", "", "label", labelWidth, "default", defaultWidth);
    std::string group;
    for (const ParameterDescription& each : effect.parameters) {
        if (each.group != group) {
            group = each.group;
            text += group.empty() ? "\n" : fmt::format("\n  [{}]\n", group);
        }
        std::string line = fmt::format("  {:>4}  {:<{}}  {:<{}}  {:<{}}  {}", fmt::format("#{}", each.index),
                                       each.label, labelWidth, hostkit::formatValue(each, each.defaultValue),
                                       defaultWidth, rangeText(each), rangeWidth, each.tip);
        text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
        if (each.type == kParamChoice) {
            std::vector<std::string> items;
            for (std::size_t i = 0; i < each.items.size(); ++i) {
                items.push_back(fmt::format("{} {}", i, each.items[i]));
            }
            text += wrapped(items, labelWidth + 10);
        }
    }
    return text;
}

std::string presetText(const EffectDescription& effect, const PresetDescription& preset) {
    std::vector<std::string> values;
    for (std::size_t i = 0; i < preset.values.size(); ++i) {
        const ParameterDescription& parameter = effect.parameters[i];
        if (preset.values[i]) {
            values.push_back(fmt::format("{}={}", effect.shortestName(parameter),
                                         hostkit::formatValue(parameter, *preset.values[i])));
        }
    }
    return fmt::format("  {}\n{}", preset.uniqueName, values.empty() ? "" : wrapped(values, 6));
}

/// To four decimals: the digits that a float in 0..1 carries in a range of hundreds.
double rounded(double number) {
    return std::round(number * 1e4) / 1e4;
}

Json valueJson(const ParameterDescription& parameter, const ParamValue& value) {
    switch (parameter.type) {
        case kParamPoint:
            return Json::array({rounded(100.0 * static_cast<double>(value.point.x)),
                                rounded(100.0 * static_cast<double>(value.point.y))});
        case kParamSlider: {
            const auto minimum = static_cast<double>(parameter.minimum);
            return rounded(minimum +
                           static_cast<double>(value.slider) * (static_cast<double>(parameter.maximum) - minimum));
        }
        case kParamBoolean:
            return value.boolean != 0;
        default:
            return hostkit::formatValue(parameter, value);
    }
}

Json parameterJson(const EffectDescription& effect, const ParameterDescription& parameter) {
    Json json{{"index", parameter.index},
              {"name", effect.shortestName(parameter)},
              {"label", parameter.label},
              {"group", parameter.group},
              {"type", hostkit::typeName(parameter.type)}};
    if (parameter.type == kParamSlider) {
        json["minimum"] = rounded(static_cast<double>(parameter.minimum));
        json["maximum"] = rounded(static_cast<double>(parameter.maximum));
        json["wholeNumbers"] = parameter.wholeNumbers;
    } else if (parameter.type == kParamChoice) {
        json["items"] = parameter.items;
    }
    json["default"] = valueJson(parameter, parameter.defaultValue);
    json["tip"] = parameter.tip;
    return json;
}

Json effectJson(const EffectDescription& effect) {
    return {{"name", effect.name},
            {"index", effect.index},
            {"flags", effect.flags},
            {"dependsOnTime", effect.dependsOnTime()}};
}

std::string printed(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

/// The effects, a line each.
std::string listText(const hostkit::EffectCatalogue& catalogue) {
    std::size_t width = 0;
    for (const EffectDescription& effect : catalogue.effects()) {
        width = std::max(width, effect.name.size());
    }
    std::string text;
    for (const EffectDescription& effect : catalogue.effects()) {
        const auto plural = [](std::size_t count) { return count == 1 ? "" : "s"; };
        const std::string parameters =
            fmt::format("{:2} parameter{},", effect.parameters.size(), plural(effect.parameters.size()));
        text += fmt::format("{:<{}}  {:<14}  {:2} preset{}{}\n", effect.name, width, parameters, effect.presets.size(),
                            plural(effect.presets.size()), effect.dependsOnTime() ? ", moves with time" : "");
    }
    return text;
}

/// The effects as an array.
std::string listJson(const hostkit::EffectCatalogue& catalogue) {
    Json json = Json::array();
    for (const EffectDescription& effect : catalogue.effects()) {
        Json entry = effectJson(effect);
        entry["parameters"] = effect.parameters.size();
        entry["presets"] = effect.presets.size();
        json.push_back(std::move(entry));
    }
    return printed(json);
}

/// One effect's parameters and presets in tables.
std::string showText(const EffectDescription& effect) {
    std::string text = fmt::format("{}{}\n\nParameters\n{}", effect.name,
                                   effect.dependsOnTime() ? " (moves with time)" : "", parametersText(effect));
    const bool shared = std::any_of(effect.parameters.begin(), effect.parameters.end(),
                                    [&](const auto& each) { return effect.shortestName(each) != each.label; });
    if (shared) {
        text += "\nLabels that occur twice are told apart as \"Group/Label\" or by their number, \"#3\".\n";
    }
    if (!effect.presets.empty()) {
        text += "\nPresets\n";
        for (const PresetDescription& preset : effect.presets) {
            text += presetText(effect, preset);
        }
    }
    return text;
}

/// One effect's parameters and presets; numbers are those that the panel shows.
std::string showJson(const EffectDescription& effect) {
    Json json = effectJson(effect);
    json["parameters"] = Json::array();
    for (const ParameterDescription& parameter : effect.parameters) {
        json["parameters"].push_back(parameterJson(effect, parameter));
    }
    json["presets"] = Json::array();
    for (const PresetDescription& preset : effect.presets) {
        Json values = Json::object();
        for (std::size_t i = 0; i < preset.values.size(); ++i) {
            if (preset.values[i]) {
                values[effect.shortestName(effect.parameters[i])] = valueJson(effect.parameters[i], *preset.values[i]);
            }
        }
        json["presets"].push_back(
            {{"name", preset.name}, {"uniqueName", preset.uniqueName}, {"values", std::move(values)}});
    }
    return printed(json);
}

}  // namespace

void addListCommand(CLI::App& app, Program& program) {
    CLI::App& command = addCommand(app, "list", "Lists the effects");
    const auto json = std::make_shared<bool>(false);
    command.add_flag("--json", *json, "as JSON");
    program.onChosen(command, [json, &program] {
        printText(*json ? listJson(program.catalogue()) : listText(program.catalogue()));
        return kDone;
    });
}

void addShowCommand(CLI::App& app, Program& program) {
    struct Request {
        std::string effect;
        bool json = false;
    };
    CLI::App& command = addCommand(app, "show", "Shows an effect's parameters and presets");
    const auto request = std::make_shared<Request>();
    command.add_option("EFFECT", request->effect, "name of the effect")->required();
    command.add_flag("--json", request->json, "as JSON");
    program.onChosen(command, [request, &program] {
        const hostkit::EffectDescription& effect = program.catalogue().effect(request->effect);
        printText(request->json ? showJson(effect) : showText(effect));
        return kDone;
    });
}

}  // namespace lumiset::app
