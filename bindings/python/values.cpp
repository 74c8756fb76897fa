#include <array>
#include <charconv>
#include <cstdio>

#include "bindings/python/kit.h"
#include "hostkit/look_json.h"
#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

namespace lumiset::bindings {
namespace {

/// By as few digits as tell it, whatever the locale.
std::string numberText(double number) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

bool isBool(py::handle value) {
    return py::isinstance<py::bool_>(value) || std::string(Py_TYPE(value.ptr())->tp_name) == "numpy.bool_";
}

/// Numbers of NumPy among them; texts are none, though they can be read as one.
bool isNumber(py::handle value) {
    return PyNumber_Check(value.ptr()) != 0 && !py::isinstance<py::str>(value);
}

std::string colorText(const py::sequence& channels) {
    std::array<char, 8> text{};
    std::array<long, 3> levels{};
    for (std::size_t i = 0; i < 3; ++i) {
        levels[i] = channels[i].cast<long>();
        if (levels[i] < 0 || levels[i] > 255) {
            throw py::value_error("A colour's red, green and blue are whole numbers from 0 to 255.");
        }
    }
    std::snprintf(text.data(), text.size(), "#%02lX%02lX%02lX", levels[0], levels[1], levels[2]);
    return text.data();
}

hostkit::LookTime timeOf(py::handle value) {
    hostkit::LookTime time;
    if (py::isinstance<py::str>(value)) {
        if (!hostkit::parseLookTime(value.cast<std::string>(), time)) {
            throw py::value_error(
                '"' + value.cast<std::string>() +
                "\" is no time: say it in seconds, as h:m:s, or as a part of the clip, such as \"50%\".");
        }
        return time;
    }
    time.at = value.cast<double>();
    return time;
}

double shown(float number) {
    // As few digits as tell the float: 0.1 and not 0.10000000149.
    std::array<char, 32> buffer{};
    const char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    double value = 0.0;
    std::from_chars(buffer.data(), end, value);
    return value;
}

}  // namespace

std::string valueText(const hostkit::ParameterDescription& parameter, py::handle value) {
    if (py::isinstance<py::str>(value)) {
        return value.cast<std::string>();
    }
    if (isBool(value)) {
        return value.cast<bool>() ? "on" : "off";
    }
    if (isNumber(value) && !py::isinstance<py::array>(value)) {
        return numberText(py::float_(py::reinterpret_borrow<py::object>(value)).cast<double>());
    }
    if (py::isinstance<py::sequence>(value) || py::isinstance<py::array>(value)) {
        const auto parts = py::reinterpret_borrow<py::sequence>(value);
        if (parameter.type == kParamPoint && parts.size() == 2) {
            return numberText(parts[0].cast<double>()) + ',' + numberText(parts[1].cast<double>());
        }
        if (parameter.type == kParamColor && parts.size() == 3) {
            return colorText(parts);
        }
    }
    throw py::type_error('"' + parameter.label + "\" takes " + hostkit::describeRange(parameter) + ", not " +
                         py::repr(value).cast<std::string>() + '.');
}

py::object pythonValue(const hostkit::ParameterDescription& parameter, const ParamValue& value) {
    switch (parameter.type) {
        case kParamPoint:
            return py::make_tuple(shown(100.0F * value.point.x), shown(100.0F * value.point.y));
        case kParamBoolean:
            return py::bool_(value.boolean != 0);
        case kParamSlider: {
            const float number = parameter.minimum + value.slider * (parameter.maximum - parameter.minimum);
            return py::float_(shown(number));
        }
        default:
            return py::str(hostkit::formatValue(parameter, value));
    }
}

std::string keywordOf(const hostkit::EffectDescription& effect, const hostkit::ParameterDescription& parameter) {
    std::string keyword;
    for (const char each : hostkit::identifierOf(effect.plainName(parameter))) {
        if (each != '_' || (!keyword.empty() && keyword.back() != '_')) {
            keyword += each;
        }
    }
    return keyword;
}

const hostkit::ParameterDescription& parameterCalled(const hostkit::EffectDescription& effect,
                                                     const std::string& name) {
    for (const hostkit::ParameterDescription& each : effect.parameters) {
        if (keywordOf(effect, each) == name) {
            return each;
        }
    }
    std::string spaced = name;
    for (char& each : spaced) {
        each = each == '_' ? ' ' : each;
    }
    return effect.parameter(spaced);
}

void setValues(const hostkit::EffectDescription& effect, hostkit::LookEffect& wanted, const py::dict& values) {
    for (const auto& [name, value] : values) {
        const hostkit::ParameterDescription& parameter = parameterCalled(effect, py::str(name).cast<std::string>());
        const std::string index = '#' + std::to_string(parameter.index);
        if (!py::isinstance<py::dict>(value)) {
            wanted.set(effect, index, valueText(parameter, value));
            continue;
        }
        const auto keys = py::reinterpret_borrow<py::dict>(value);
        if (keys.empty()) {
            throw py::value_error('"' + parameter.label + "\" has a dictionary of keys without any.");
        }
        wanted.of(parameter).keys.clear();
        for (const auto& [time, key] : keys) {
            wanted.addKey(effect, index, timeOf(time), valueText(parameter, key));
        }
    }
}

}  // namespace lumiset::bindings
