#include "bindings/python/kit.h"
#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

namespace lumiset::bindings {
namespace {

/// Descriptions live as long as the process, so Python holds no more than where they are.
struct EffectRef {
    const hostkit::EffectDescription* effect;
};
struct ParameterRef {
    const hostkit::EffectDescription* effect;
    const hostkit::ParameterDescription* parameter;
};

py::object optionalNumber(const ParameterRef& ref, float number) {
    return ref.parameter->type == kParamSlider ? py::object(py::float_(static_cast<double>(number)))
                                               : py::object(py::none());
}

}  // namespace

void addDescriptions(py::module_& module) {
    py::class_<ParameterRef>(module, "Parameter", "One control of an effect, as its panel shows it.")
        .def_property_readonly(
            "name", [](const ParameterRef& self) { return self.effect->shortestName(*self.parameter); },
            "By which it is set, in any case of letters.")
        .def_property_readonly(
            "keyword", [](const ParameterRef& self) { return keywordOf(*self.effect, *self.parameter); },
            "The same as a keyword of a call.")
        .def_property_readonly("label", [](const ParameterRef& self) { return self.parameter->label; })
        .def_property_readonly(
            "group", [](const ParameterRef& self) { return self.parameter->group; },
            "The boxes around it on a panel, parted by slashes; or empty.")
        .def_property_readonly(
            "tip", [](const ParameterRef& self) { return self.parameter->tip; }, "What it does.")
        .def_property_readonly(
            "type", [](const ParameterRef& self) { return hostkit::typeName(self.parameter->type); },
            "slider, color, point, choice or boolean.")
        .def_property_readonly(
            "minimum", [](const ParameterRef& self) { return optionalNumber(self, self.parameter->minimum); },
            "Of sliders; else None.")
        .def_property_readonly(
            "maximum", [](const ParameterRef& self) { return optionalNumber(self, self.parameter->maximum); },
            "Of sliders; else None.")
        .def_property_readonly("whole_numbers", [](const ParameterRef& self) { return self.parameter->wholeNumbers; })
        .def_property_readonly(
            "items", [](const ParameterRef& self) { return self.parameter->items; }, "Of choices.")
        .def_property_readonly(
            "default",
            [](const ParameterRef& self) { return pythonValue(*self.parameter, self.parameter->defaultValue); })
        .def_property_readonly(
            "range", [](const ParameterRef& self) { return hostkit::describeRange(*self.parameter); },
            "What it takes, in a few words.")
        .def("__repr__", [](const ParameterRef& self) {
            return "<lumiset.Parameter " + py::repr(py::str(self.parameter->label)).cast<std::string>() + ": " +
                   hostkit::describeRange(*self.parameter) + '>';
        });

    py::class_<EffectRef>(module, "Effect", "What an effect is called, and what there is to set.")
        .def_property_readonly("name", [](const EffectRef& self) { return self.effect->name; })
        .def_property_readonly(
            "function", [](const EffectRef& self) { return hostkit::identifierOf(self.effect->name); },
            "Name of its function in this package.")
        .def_property_readonly(
            "depends_on_time", [](const EffectRef& self) { return self.effect->dependsOnTime(); },
            "Whether the picture moves with time by itself.")
        .def_property_readonly("parameters",
                               [](const EffectRef& self) {
                                   std::vector<ParameterRef> parameters;
                                   for (const hostkit::ParameterDescription& each : self.effect->parameters) {
                                       parameters.push_back({self.effect, &each});
                                   }
                                   return parameters;
                               })
        .def_property_readonly(
            "presets",
            [](const EffectRef& self) {
                std::vector<std::string> names;
                for (const hostkit::PresetDescription& each : self.effect->presets) {
                    names.push_back(each.uniqueName);
                }
                return names;
            },
            "Names of its presets.")
        .def(
            "parameter",
            [](const EffectRef& self, const std::string& name) {
                return ParameterRef{self.effect, &parameterCalled(*self.effect, name)};
            },
            py::arg("name"), "The parameter of that name or keyword.")
        .def("__repr__", [](const EffectRef& self) {
            return "<lumiset.Effect " + py::repr(py::str(self.effect->name)).cast<std::string>() + ": " +
                   std::to_string(self.effect->parameters.size()) + " parameters, " +
                   std::to_string(self.effect->presets.size()) + " presets>";
        });

    module.def(
        "effects",
        [] {
            std::vector<EffectRef> effects;
            for (const hostkit::EffectDescription& each : kit().catalogue.effects()) {
                effects.push_back({&each});
            }
            return effects;
        },
        "All effects.");
    module.def(
        "effect", [](const std::string& name) { return EffectRef{&kit().catalogue.effect(name)}; }, py::arg("name"),
        "The effect of that name, in any case of letters.");
}

}  // namespace lumiset::bindings
