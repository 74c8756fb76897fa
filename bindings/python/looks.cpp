#include "bindings/python/kit.h"
#include "hostkit/look_files.h"
#include "hostkit/look_json.h"
#include "hostkit/preset_file.h"

namespace lumiset::bindings {
namespace {

using SharedLook = std::shared_ptr<LookObject>;

/// One effect of a look; the look stays as long as it.
struct Step {
    SharedLook look;
    std::size_t index;

    [[nodiscard]] hostkit::LookEffect& get() const {
        if (index >= look->masked.look.effects.size()) {
            throw py::index_error("The look has this effect no more.");
        }
        return look->masked.look.effects[index];
    }
    [[nodiscard]] const hostkit::EffectDescription& description() const { return kit().catalogue.effect(get().effect); }
};

double percentOf(double percent) {
    if (!(percent >= 0.0 && percent <= 100.0)) {
        throw py::value_error("A strength is a number from 0 to 100.");
    }
    return percent;
}

SharedLook shared(hostkit::Look look) {
    return std::make_shared<LookObject>(LookObject{{std::move(look), nullptr}});
}

Step add(const SharedLook& self, const std::string& effect, const std::optional<std::string>& preset,
         const std::optional<std::filesystem::path>& presetFile, const std::optional<py::dict>& values,
         const py::kwargs& keywords) {
    const hostkit::EffectDescription& description = kit().catalogue.effect(effect);
    hostkit::LookEffect added{description.name};
    if (preset) {
        added.preset = description.preset(*preset).uniqueName;
    }
    if (presetFile) {
        hostkit::loadPresetFile(kit().module.effectLibrary(), description, presetFile->string(), added);
    }
    if (values) {
        setValues(description, added, *values);
    }
    setValues(description, added, keywords);
    self->masked.look.effects.push_back(std::move(added));
    return {self, self->masked.look.effects.size() - 1};
}

/// From an array of any numbers, whole ones counting as parts of the most that they can be.
std::shared_ptr<const hostkit::Mask> maskOf(const py::object& object) {
    if (object.is_none()) {
        return nullptr;
    }
    const py::module_ numpy = py::module_::import("numpy");
    const auto given = numpy.attr("asarray")(object).cast<py::array>();
    if (given.ndim() != 2 || given.size() < 1 || given.shape(0) > 1 << 20 || given.shape(1) > 1 << 20) {
        throw py::value_error("A mask is an array of shape (height, width).");
    }
    const char kind = given.dtype().kind();
    const float most = kind == 'u' || kind == 'i' ? numpy.attr("iinfo")(given.dtype()).attr("max").cast<float>() : 1.0F;
    const auto array = py::array_t<float, py::array::c_style | py::array::forcecast>(given);
    auto mask = std::make_shared<hostkit::Mask>(
        hostkit::Mask{static_cast<int>(array.shape(1)), static_cast<int>(array.shape(0)), {}});
    for (py::ssize_t i = 0; i < array.size(); ++i) {
        mask->values.push_back(array.data()[i] / most);
    }
    return mask;
}

/// What is set of a step, by the parameters' names: a value, or keys by their times.
py::dict valuesOf(const Step& step) {
    py::dict values;
    const hostkit::EffectDescription& description = step.description();
    for (const hostkit::LookParameter& each : step.get().parameters) {
        const hostkit::ParameterDescription& parameter = *description.parameterAt(each.index);
        py::object value = pythonValue(parameter, each.value);
        if (!each.keys.empty()) {
            py::dict keys;
            for (const hostkit::LookParameter::Key& key : each.keys) {
                const py::object time = key.time.isPart ? py::object(py::str(py::str("{:g}%").format(key.time.at)))
                                                        : py::object(py::float_(key.time.at));
                keys[time] = pythonValue(parameter, key.value);
            }
            value = std::move(keys);
        }
        values[py::str(description.shortestName(parameter))] = value;
    }
    return values;
}

std::string described(const SharedLook& self) {
    std::string text = "<lumiset.Look " + py::repr(py::str(self->masked.look.name)).cast<std::string>() + ':';
    for (const hostkit::LookEffect& each : self->masked.look.effects) {
        text += ' ' + each.effect + (each.preset.empty() ? "" : " (" + each.preset + ')') + ',';
    }
    text.back() = '>';
    return text;
}

/// A text of a look, checked as files are.
template <std::string hostkit::Look::*kMember>
void setText(LookObject& self, const std::string& text) {
    hostkit::Look changed = self.masked.look;
    changed.*kMember = text;
    hostkit::checkLookTexts(changed);
    self.masked.look = std::move(changed);
}

template <std::string hostkit::Look::*kMember>
std::string textOf(const LookObject& self) {
    return self.masked.look.*kMember;
}

}  // namespace

void addLooks(py::module_& module) {
    py::class_<Step>(module, "Step", "One effect of a look, with what it is set to.")
        .def_property_readonly("effect", [](const Step& self) { return self.get().effect; })
        .def_property_readonly(
            "preset",
            [](const Step& self) {
                return self.get().preset.empty() ? std::optional<std::string>() : self.get().preset;
            },
            "The preset that it starts from, or None.")
        .def_property(
            "strength", [](const Step& self) { return self.get().strength; },
            [](const Step& self, double percent) { self.get().strength = percentOf(percent); },
            "How much of it shows, in percent from 0 to 100.")
        .def_property(
            "off", [](const Step& self) { return self.get().off; },
            [](const Step& self, bool off) { self.get().off = off; }, "Whether it is left out, but kept in the look.")
        .def_property_readonly("values", &valuesOf, "What is set on top of that, by the parameters' names.")
        .def(
            "set",
            [](const Step& self, const py::kwargs& values) { setValues(self.description(), self.get(), values); },
            "Sets parameters by keywords.")
        .def(
            "__setitem__",
            [](const Step& self, const std::string& name, const py::object& value) {
                py::dict values;
                values[py::str(name)] = value;
                setValues(self.description(), self.get(), values);
            },
            "Sets the parameter of that name, as in step[\"Inner Tint/Color\"] = \"#FFD040\".")
        .def("__repr__", [](const Step& self) { return "<lumiset.Step " + self.get().effect + '>'; });

    py::class_<LookObject, SharedLook>(module, "Look", "Effects in turn with everything that they are set to.")
        .def(py::init([](const std::string& name) {
                 hostkit::Look look;
                 look.name = name;
                 hostkit::checkLookTexts(look);
                 return shared(std::move(look));
             }),
             py::arg("name") = "Look", "An empty one, which leaves pictures as they are.")
        .def_static(
            "open", [](const std::string& name) { return shared(hostkit::findLook(kit().catalogue, name).look); },
            py::arg("name_or_file"))
        .def_static(
            "from_json",
            [](const std::string& text) { return shared(hostkit::lookFromJson(kit().catalogue, text, "Look")); },
            py::arg("text"), "The look that a text tells, as files have it.")
        .def(
            "to_json", [](const LookObject& self) { return hostkit::lookToJson(kit().catalogue, self.masked.look); },
            "The look as files have it. A mask is not in it.")
        .def(
            "save",
            [](const LookObject& self, const std::filesystem::path& file) {
                hostkit::saveLook(kit().catalogue, self.masked.look, file);
            },
            py::arg("file"), "Writes it to a file; one that is there is replaced, whole or not at all.")
        .def("add", &add, py::arg("effect"), py::arg("preset") = py::none(), py::arg("preset_file") = py::none(),
             py::arg("values") = py::none(),
             "Adds an effect behind those that there are, and returns it as a Step. It starts from its defaults, a "
             "preset "
             "or a preset file; `values`, a dictionary, sets parameters by their names, and keywords by theirs.")
        .def(
            "render",
            [](const py::object& self, const py::object& array, double time, const py::kwargs& options) {
                return py::module_::import("lumiset").attr("render")(array, self, py::arg("time") = time, **options);
            },
            py::arg("array"), py::arg("time") = 0.0,
            "The picture through this look; further options are those of lumiset.render.")
        .def_property("name", &textOf<&hostkit::Look::name>, &setText<&hostkit::Look::name>)
        .def_property("about", &textOf<&hostkit::Look::about>, &setText<&hostkit::Look::about>)
        .def_property("author", &textOf<&hostkit::Look::author>, &setText<&hostkit::Look::author>)
        .def_property(
            "strength", [](const LookObject& self) { return self.masked.look.strength; },
            [](LookObject& self, double percent) { self.masked.look.strength = percentOf(percent); },
            "How much of it shows, in percent from 0 to 100.")
        .def_property(
            "mask", [](const LookObject& self) { return self.masked.mask != nullptr; },
            [](LookObject& self, const py::object& mask) { self.masked.mask = maskOf(mask); },
            "Whether it has a mask. Set to an array of shape (height, width), white where the look shows (1.0, or "
            "the most that whole numbers hold), or to None; it is stretched over each picture.")
        .def_property_readonly(
            "effects",
            [](const SharedLook& self) {
                std::vector<Step> steps;
                for (std::size_t i = 0; i < self->masked.look.effects.size(); ++i) {
                    steps.push_back({self, i});
                }
                return steps;
            },
            "Its effects in turn, as Steps.")
        .def("__len__", [](const LookObject& self) { return self.masked.look.effects.size(); })
        .def("__repr__", &described);

    module.def(
        "looks",
        [] {
            std::vector<std::string> names;
            std::vector<std::string> faults;
            for (const hostkit::KnownLook& each : hostkit::knownLooks(kit().catalogue, faults)) {
                names.push_back(each.look.name);
            }
            return names;
        },
        "Names of the looks, ours and then the user's own.");
}

}  // namespace lumiset::bindings
