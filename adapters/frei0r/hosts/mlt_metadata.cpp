#include "adapters/frei0r/hosts/mlt_metadata.h"

#include "adapters/frei0r/hosts/settings.h"

namespace lumiset::frei0r {
namespace {

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        out += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return out + '"';
}

std::string scalar(const Parameter& parameter) {
    const std::string text = valueText(parameter, parameter.defaultValue);
    return parameter.type == kFrei0rColor || parameter.type == kFrei0rString ? quoted(text) : text;
}

/// What depends on the parameter's kind, a line each.
std::string kindLines(const Parameter& parameter) {
    switch (parameter.type) {
        case kFrei0rBool:
            return "    type: boolean\n    minimum: 0\n    maximum: 1\n    widget: checkbox\n";
        case kFrei0rColor:
            return "    type: color\n    widget: color\n";
        case kFrei0rString:
            return "    type: string\n    widget: text\n";
        default:
            break;
    }
    std::string lines = "    type: float\n    minimum: 0\n    maximum: 1\n";
    lines += parameter.items.empty() ? "    widget: slider\n" : "    widget: dropdown\n    values:\n";
    for (std::size_t i = 0; i < parameter.items.size(); ++i) {
        lines += "      - " + valueText(parameter, {numberOfItem(i, parameter.items.size()), {}, {}}) + '\n';
    }
    return lines;
}

}  // namespace

std::string mltMetadata(const hostkit::EffectDescription& effect) {
    std::string yaml = "schema_version: 7.0\ntype: filter\nidentifier: frei0r." + pluginName(effect.name) +
                       "\ntitle: " + quoted(shownName(effect)) +
                       "\nversion: " LUMISET_VERSION
                       "\ncreator: Lumiset\nlicense: MIT\nlanguage: en\ntags:\n  - Video\ndescription: " +
                       quoted(shownDescription(effect)) + "\nparameters:\n";
    const std::vector<Parameter> parameters = parameterList(effect);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter& parameter = parameters[i];
        yaml += "  - identifier: " + std::to_string(i) + "\n    title: " + quoted(parameter.name) +
                "\n    description: " + quoted(parameter.explanation) + "\n    default: " + scalar(parameter) +
                "\n    mutable: yes\n    animation: yes\n" + kindLines(parameter);
    }
    return yaml;
}

std::string mltMetadataFile(const hostkit::EffectDescription& effect) {
    return "filter_frei0r." + pluginName(effect.name) + ".yml";
}

}  // namespace lumiset::frei0r
