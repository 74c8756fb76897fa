#include <algorithm>
#include <cmath>
#include <mutex>

#include "bindings/python/kit.h"

namespace lumiset::bindings {
namespace {

/// Looks in turn made ready. Threads that use one renderer at once wait for each other.
class PythonRenderer {
public:
    PythonRenderer(const std::vector<std::shared_ptr<LookObject>>& looks, double clipSeconds) {
        std::vector<hostkit::MaskedLook> masked;
        masked.reserve(looks.size());
        for (const std::shared_ptr<LookObject>& each : looks) {
            masked.push_back(each->masked);
        }
        if (!std::isfinite(clipSeconds) || clipSeconds < 0.0) {
            throw py::value_error("The length of a clip is a number of seconds from 0 on.");
        }
        if (!(clipSeconds > 0.0) &&
            std::any_of(masked.begin(), masked.end(), [](const auto& each) { return hasKeysInParts(each.look); })) {
            throw py::value_error("Keys in parts of the clip need its length, clip_seconds.");
        }
        m_chain = hostkit::buildChain(kit().module.effectLibrary(), kit().catalogue, masked, clipSeconds);
    }

    py::array render(const py::array& source, const std::optional<py::array>& out, double time,
                     const std::string& order, double pixelAspect) {
        if (!std::isfinite(time) || time < 0.0) {
            throw py::value_error("A time is a number of seconds from 0 on.");
        }
        if (!std::isfinite(pixelAspect) || pixelAspect < 0.0) {
            throw py::value_error("The shape of a pixel is its width divided by its height.");
        }
        const py::ssize_t channels = source.ndim() == 3 ? source.shape(2) : 4;
        const hostkit::PictureView from = viewOf(source, order.empty() ? orderFor(order, channels) : order);
        py::array result = out ? *out
                               : py::array(source.dtype(), py::array::ShapeContainer{source.shape(0), source.shape(1),
                                                                                     source.shape(2)});
        if (!result.writeable()) {
            throw py::value_error("The array for the result cannot be written to.");
        }
        const hostkit::PictureView to = viewOf(result, orderFor(order, result.ndim() == 3 ? result.shape(2) : 4));
        const hostkit::FrameContext context{time, 0.0, pixelAspect};
        hostkit::ThreadPool* const threads = kit().threads.get();
        {
            const py::gil_scoped_release release;
            const std::scoped_lock lock(m_mutex);
            if (m_renderer == nullptr || m_threads != threads) {
                m_renderer = std::make_unique<hostkit::PictureRenderer>(m_chain, kit().allocator.get(), threads);
                m_threads = threads;
            }
            const hostkit::ThreadPool::Turn turn(*threads);
            m_renderer->render(from, to, context);
        }
        return result;
    }

private:
    std::mutex m_mutex;
    std::vector<hostkit::EffectStage> m_chain;
    hostkit::ThreadPool* m_threads = nullptr;
    std::unique_ptr<hostkit::PictureRenderer> m_renderer;
};

}  // namespace

void addRenderer(py::module_& module) {
    py::class_<PythonRenderer>(module, "_Renderer")
        .def(py::init<const std::vector<std::shared_ptr<LookObject>>&, double>())
        .def("render", &PythonRenderer::render);
    module.def("needs_no_copy", [](const py::array& array, const std::string& order) {
        const hostkit::PictureView view = viewOf(array, orderFor(order, array.ndim() == 3 ? array.shape(2) : 4));
        const std::optional<VideoFrameDesc> frame = view.frame();
        return frame && frame->data == array.data();
    });
}

}  // namespace lumiset::bindings
