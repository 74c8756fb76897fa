#include "bindings/python/kit.h"
#include "hostkit/dynamic_library.h"
#include "hostkit/host_allocator.h"
#include "hostkit/preset_file.h"

namespace lumiset::bindings {
namespace {

/// In the build folder the package lies two folders below the module's, installed three below lib; elsewhere `Module`
/// finds one by itself.
std::filesystem::path modulePath() {
    for (const char* home : {"../..", "../../.."}) {
        try {
            return hostkit::findModule((hostkit::codeDirectory() / home).lexically_normal());
        } catch (const hostkit::ModuleError&) {
            continue;
        }
    }
    return {};
}

/// Errors of the kit are `Error` in Python, and what else people catch for such a thing.
template <class Exception>
void addError(py::module_& module, const py::object& error, const char* name, PyObject* builtin, const char* about) {
    const auto& made = py::register_exception<Exception>(
        module, name, py::make_tuple(error, py::reinterpret_borrow<py::object>(builtin)));
    made.doc() = about;
}

}  // namespace

Kit& kit() {
    // Never deleted: see the declaration.
    static Kit* const made = new Kit{.module = hostkit::Module(modulePath()),
                                     .allocator = hostkit::PoolAllocator::create(),
                                     .threads = hostkit::ThreadPool::create(hostkit::wantedThreads())};
    return *made;
}

void renewThreads() {
    // The old ones stay behind: their locks may be held by threads that are not in this process.
    Kit& mine = kit();
    new (&mine.allocator) hostkit::ComPtr<IHostAllocator>(hostkit::PoolAllocator::create());
    new (&mine.threads) hostkit::ComPtr<hostkit::ThreadPool>(hostkit::ThreadPool::create(hostkit::wantedThreads()));
}

}  // namespace lumiset::bindings

PYBIND11_MODULE(_lumiset, module) {
    namespace py = pybind11;
    using namespace lumiset::bindings;
    using namespace lumiset;
    module.doc() = "The host kit as the package lumiset uses it.";
    module.attr("__version__") = LUMISET_VERSION;

    const py::object error = py::reinterpret_steal<py::object>(PyErr_NewExceptionWithDoc(
        "lumiset.Error", "What the effects cannot do; its text is a sentence.", nullptr, nullptr));
    module.attr("Error") = error;
    addError<hostkit::ParameterError>(module, error, "ParameterError", PyExc_ValueError,
                                      "There is no such effect, preset, parameter or value.");
    addError<hostkit::LookError>(module, error, "LookError", PyExc_ValueError,
                                 "A look cannot be read, used or written.");
    addError<hostkit::PresetFileError>(module, error, "PresetFileError", PyExc_ValueError,
                                       "A preset file cannot be read or is for another effect.");
    addError<hostkit::RenderError>(module, error, "RenderError", PyExc_RuntimeError,
                                   "An effect refused to render a picture.");
    addError<hostkit::ModuleError>(module, error, "ModuleError", PyExc_OSError, "The effects cannot be loaded.");

    module.def(
        "module_path", [] { return kit().module.path().string(); }, "The file that the effects are loaded from.");
    module.def("renew_threads", &renewThreads);
    addDescriptions(module);
    addLooks(module);
    addRenderer(module);
    addSheets(module);
}
