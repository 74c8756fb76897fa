#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <memory>
#include <optional>
#include <string>

#include "hostkit/effect_catalogue.h"
#include "hostkit/look.h"
#include "hostkit/module.h"
#include "hostkit/picture.h"
#include "hostkit/thread_pool.h"

// What the parts of the Python module share.

namespace lumiset::bindings {

namespace py = pybind11;

/// The loaded effects. Made with the first call that needs them and kept until the process ends, so that nothing which
/// Python still holds at its end outlives them.
struct Kit {
    hostkit::Module module;
    hostkit::EffectCatalogue catalogue{module.effectLibrary()};
    hostkit::ComPtr<IHostAllocator> allocator;
    hostkit::ComPtr<hostkit::ThreadPool> threads;
};
/// Throws `hostkit::ModuleError`.
Kit& kit();
/// Gives a process that was forked threads of its own: its parent's are not in it.
void renewThreads();

/// A value as a person would write it, for `parseValue`: numbers, texts, switches, pairs for points, triples of 0 to
/// 255 for colours. Throws `py::type_error` for anything else.
[[nodiscard]] std::string valueText(const hostkit::ParameterDescription& parameter, py::handle value);
/// The value as Python has it: what `valueText` takes.
[[nodiscard]] py::object pythonValue(const hostkit::ParameterDescription& parameter, const ParamValue& value);
/// A parameter's name as a keyword: "Vertical Blank" is `vertical_blank`. No two of an effect are the same.
[[nodiscard]] std::string keywordOf(const hostkit::EffectDescription& effect,
                                    const hostkit::ParameterDescription& parameter);
/// The parameter that a keyword or a name means. Throws `hostkit::ParameterError`.
[[nodiscard]] const hostkit::ParameterDescription& parameterCalled(const hostkit::EffectDescription& effect,
                                                                   const std::string& name);
/// Sets what a dictionary of names or keywords says; a value that is a dictionary itself has keys by their times.
void setValues(const hostkit::EffectDescription& effect, hostkit::LookEffect& wanted, const py::dict& values);

/// The view of an array of shape (height, width, 3 or 4), uint8, uint16 or float32, in any strides. An empty `order` is
/// RGB or RGBA. Throws `py::type_error` and `py::value_error` with whole sentences.
[[nodiscard]] hostkit::PictureView viewOf(const py::array& array, const std::string& order);
/// `order` for an array of that many channels: with or without its "A".
[[nodiscard]] std::string orderFor(const std::string& order, py::ssize_t channels);

void addDescriptions(py::module_& module);
void addLooks(py::module_& module);
void addRenderer(py::module_& module);
void addSheets(py::module_& module);

/// What a Python `Look` holds; steps of it refer to it.
struct LookObject {
    hostkit::MaskedLook masked;
};

}  // namespace lumiset::bindings
