#include <algorithm>
#include <cstdint>
#include <limits>

#include "bindings/python/kit.h"

namespace lumiset::bindings {
namespace {

hostkit::SampleType samplesOf(const py::array& array) {
    const py::dtype type = array.dtype();
    const char order = type.byteorder();
    const bool isNative = order == '=' || order == '|';
    if (isNative && type.kind() == 'u' && type.itemsize() == 1) {
        return hostkit::SampleType::kUint8;
    }
    if (isNative && type.kind() == 'u' && type.itemsize() == 2) {
        return hostkit::SampleType::kUint16;
    }
    if (isNative && type.kind() == 'f' && type.itemsize() == 4) {
        return hostkit::SampleType::kFloat;
    }
    throw py::type_error("A picture is an array of uint8, uint16 or float32, not of " +
                         py::str(py::handle(type)).cast<std::string>() + '.');
}

std::string shapeText(const py::array& array) {
    return py::str(array.attr("shape")).cast<std::string>();
}

}  // namespace

std::string orderFor(const std::string& order, py::ssize_t channels) {
    std::string usual = channels == 3 ? "RGB" : "RGBA";
    if (order.empty()) {
        return usual;
    }
    const bool hasAlpha = hostkit::channelPlaces(order)[3] >= 0;
    if (channels == 3 && hasAlpha) {
        std::string colors = order;
        colors.erase(std::remove_if(colors.begin(), colors.end(), [](char c) { return c == 'A' || c == 'a'; }),
                     colors.end());
        return colors;
    }
    return channels == 4 && !hasAlpha ? order + 'A' : order;
}

hostkit::PictureView viewOf(const py::array& array, const std::string& order) {
    if (array.ndim() != 3 || (array.shape(2) != 3 && array.shape(2) != 4)) {
        throw py::value_error("A picture is an array of shape (height, width, 3 or 4), not " + shapeText(array) + '.');
    }
    const py::ssize_t height = array.shape(0);
    const py::ssize_t width = array.shape(1);
    if (height < 1 || width < 1 || std::max(height, width) > std::numeric_limits<std::int32_t>::max()) {
        throw py::value_error("A picture has a width and a height from 1 on, not shape " + shapeText(array) + '.');
    }
    const std::array<int, 4> places = hostkit::channelPlaces(order);
    if (static_cast<py::ssize_t>(order.size()) != array.shape(2)) {
        throw py::value_error("The order \"" + order + "\" is not for an array of shape " + shapeText(array) + '.');
    }
    hostkit::PictureView view;
    view.data = const_cast<void*>(array.data());  // only read where the array cannot be written to
    view.width = static_cast<std::int32_t>(width);
    view.height = static_cast<std::int32_t>(height);
    view.samples = samplesOf(array);
    view.rowBytes = array.strides(0);
    view.pixelBytes = array.strides(1);
    for (std::size_t i = 0; i < 4; ++i) {
        view.channelBytes[i] = std::max(places[i], 0) * array.strides(2);
    }
    view.hasAlpha = places[3] >= 0;
    return view;
}

}  // namespace lumiset::bindings
