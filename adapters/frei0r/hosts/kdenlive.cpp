#include "adapters/frei0r/hosts/kdenlive.h"

#include <tinyxml.h>

#include <cmath>

#include "hostkit/parameter_text.h"

namespace lumiset::frei0r {
namespace {

using hostkit::formatNumber;
using hostkit::ParameterDescription;

constexpr int kDecimals = 4;

TiXmlElement& add(TiXmlElement& parent, const char* tag, const std::string& text = {}) {
    auto* element = new TiXmlElement(tag);
    parent.LinkEndChild(element);
    if (!text.empty()) {
        element->LinkEndChild(new TiXmlText(text.c_str()));
    }
    return *element;
}

void describeList(TiXmlElement& element, const Parameter& parameter) {
    std::string numbers;
    std::string names;
    for (std::size_t i = 0; i < parameter.items.size(); ++i) {
        if (i > 0) {
            numbers += ';';
            names += ',';
        }
        numbers += valueText(parameter, {numberOfItem(i, parameter.items.size()), {}, {}});
        names += parameter.items[i];
    }
    element.SetAttribute("type", "list");
    element.SetAttribute("paramlist", numbers.c_str());
    add(element, "paramlistdisplay", names);
}

/// What a panel shows for 0 and for 1.
struct Range {
    double minimum = 0.0;
    double maximum = 100.0;
    bool wholeNumbers = false;
};

/// A slider with the steps of the effect's own panel. Kdenlive multiplies values but does not shift them, so a range
/// that begins elsewhere is shown from 0. Answers what to say of that behind the name, where it can always be seen.
std::string describeSlider(TiXmlElement& element, const Range& range) {
    const double factor = range.maximum - range.minimum;
    element.SetAttribute("type", "animated");
    element.SetAttribute("min", "0");
    element.SetAttribute("max", formatNumber(range.wholeNumbers ? std::floor(factor) : factor, kDecimals).c_str());
    element.SetAttribute("factor", formatNumber(factor, kDecimals).c_str());
    element.SetAttribute("decimals", range.wholeNumbers ? "0" : "2");
    if (range.minimum == 0.0) {
        return "";
    }
    return range.minimum < 0.0 ? " (" + formatNumber(-range.minimum, kDecimals) + " is 0)"
                               : " (0 is " + formatNumber(range.minimum, kDecimals) + ")";
}

void describe(TiXmlElement& parent, const hostkit::EffectDescription& effect, const Parameter& parameter,
              std::size_t index, const std::string* value) {
    TiXmlElement& element = add(parent, "parameter");
    // By its number, the name that MLT knows every parameter by.
    element.SetAttribute("name", std::to_string(index).c_str());
    const ParameterDescription* source = parameter.belongsToEffect() ? &effect.parameters[parameter.source] : nullptr;
    std::string name = parameter.name;
    if (!parameter.items.empty()) {
        describeList(element, parameter);
    } else if (parameter.type == kFrei0rColor) {
        element.SetAttribute("type", "color");
    } else if (parameter.type == kFrei0rBool) {
        element.SetAttribute("type", "bool");
    } else if (source->type == kParamPoint) {
        name += describeSlider(element, {});
        element.SetAttribute("suffix", "%");
    } else {
        name += describeSlider(element, {static_cast<double>(source->minimum), static_cast<double>(source->maximum),
                                         source->wholeNumbers});
    }
    element.SetAttribute("default", valueText(parameter, parameter.defaultValue).c_str());
    if (value != nullptr) {
        element.SetAttribute("value", value->c_str());
    }
    add(element, "name", name);
    // Not what a frei0r number means: here a person sees the effect's own.
    add(element, "comment",
        source != nullptr ? source->tip : parameter.explanation.substr(0, parameter.explanation.rfind(": 0 ")));
}

/// The effect's element, with its parameters at the values of `settings` where there are any.
std::string document(const hostkit::EffectDescription& effect, const std::string& id, const std::string& name,
                     const Settings* settings) {
    TiXmlDocument document;
    document.LinkEndChild(new TiXmlDeclaration("1.0", "UTF-8", ""));
    if (settings == nullptr) {
        auto* type = new TiXmlUnknown;
        type->SetValue("!DOCTYPE kpartgui");  // For its translators.
        document.LinkEndChild(type);
    }
    auto* element = new TiXmlElement("effect");
    document.LinkEndChild(element);
    element->SetAttribute("LC_NUMERIC", "C");
    element->SetAttribute("tag", ("frei0r." + pluginName(effect.name)).c_str());
    element->SetAttribute("id", id.c_str());
    if (settings != nullptr) {
        element->SetAttribute("type", "customVideo");
    }
    add(*element, "name", name);
    add(*element, "description", shownDescription(effect));
    add(*element, "author", "Lumiset");
    const std::vector<Parameter> parameters = parameterList(effect);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        // Sliders do not show what the text parameter's preset sets; presets are templates here. Rows are whole.
        if (parameters[i].role != Role::kPreset && parameters[i].role != Role::kPadding) {
            const std::string value = settings != nullptr ? settings->text(i) : "";
            describe(*element, effect, parameters[i], i, settings != nullptr ? &value : nullptr);
        }
    }
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}

}  // namespace

std::string kdenliveEffect(const hostkit::EffectDescription& effect) {
    return document(effect, "frei0r." + pluginName(effect.name), shownName(effect), nullptr);
}

std::string kdenliveTemplate(const Settings& settings, const std::string& id, const std::string& name) {
    return document(*settings.effect, id, name, &settings);
}

}  // namespace lumiset::frei0r
