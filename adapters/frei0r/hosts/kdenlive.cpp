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

/// A slider with the steps of the effect's own panel. Kdenlive multiplies values but does not shift them, so a range
/// that begins elsewhere is shown from 0 and explained. Answers the explanation.
std::string describeSlider(TiXmlElement& element, double minimum, double maximum, bool wholeNumbers) {
    const double range = maximum - minimum;
    const double shown = wholeNumbers ? std::floor(range) : range;
    element.SetAttribute("type", "animated");
    element.SetAttribute("min", "0");
    element.SetAttribute("max", formatNumber(shown, kDecimals).c_str());
    element.SetAttribute("factor", formatNumber(range, kDecimals).c_str());
    element.SetAttribute("decimals", wholeNumbers ? "0" : "2");
    return minimum == 0.0 ? ""
                          : "0 to " + formatNumber(shown, kDecimals) + " means " + formatNumber(minimum, kDecimals) +
                                " to " + formatNumber(maximum, kDecimals);
}

void describe(TiXmlElement& parent, const hostkit::EffectDescription& effect, const Parameter& parameter,
              std::size_t index, const std::string* value) {
    TiXmlElement& element = add(parent, "parameter");
    // By its number, the name that MLT knows every parameter by.
    element.SetAttribute("name", std::to_string(index).c_str());
    std::string comment = parameter.explanation;
    if (!parameter.items.empty()) {
        describeList(element, parameter);
        comment = comment.substr(0, comment.rfind(": 0 "));
    } else if (parameter.type == kFrei0rColor) {
        element.SetAttribute("type", "color");
    } else if (parameter.type == kFrei0rBool) {
        element.SetAttribute("type", "bool");
    } else {
        const ParameterDescription& source = effect.parameters[parameter.source];
        const bool point = parameter.role != Role::kWhole;
        const std::string shift = point ? describeSlider(element, 0.0, 100.0, false)
                                        : describeSlider(element, static_cast<double>(source.minimum),
                                                         static_cast<double>(source.maximum), source.wholeNumbers);
        if (point) {
            element.SetAttribute("suffix", "%");
        }
        comment = source.tip + (shift.empty() ? "" : " (" + shift + ")");
    }
    element.SetAttribute("default", valueText(parameter, parameter.defaultValue).c_str());
    if (value != nullptr) {
        element.SetAttribute("value", value->c_str());
    }
    add(element, "name", parameter.name);
    add(element, "comment", comment);
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
        // Sliders do not show what the text parameter's preset sets; presets are templates here.
        if (parameters[i].role != Role::kPreset) {
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
