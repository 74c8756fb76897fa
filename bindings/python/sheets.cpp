#include <cstring>

#include "bindings/python/kit.h"
#include "media/sheet.h"

namespace lumiset::bindings {
namespace {

using ByteArray = py::array_t<std::uint8_t, py::array::c_style>;

/// Pictures of B, G, R, A on a sheet, and it as an array of R, G, B.
ByteArray drawSheet(const std::string& title, const std::string& note, const std::vector<std::string>& labels,
                    const std::vector<ByteArray>& pictures, int columns, int tileWidth) {
    media::Sheet::Plan plan;
    plan.title = title;
    plan.note = note;
    plan.labels = labels;
    plan.pictureWidth = static_cast<int>(pictures.at(0).shape(1));
    plan.pictureHeight = static_cast<int>(pictures.at(0).shape(0));
    plan.columns = columns;
    plan.tileWidth = tileWidth;
    media::Sheet sheet(plan);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        media::Picture picture;
        picture.allocate(plan.pictureWidth, plan.pictureHeight, media::Depth::kEightBit);
        const std::size_t rowBytes = 4 * static_cast<std::size_t>(plan.pictureWidth);
        for (int y = 0; y < plan.pictureHeight; ++y) {
            std::memcpy(picture.row(y), pictures[i].data() + static_cast<std::size_t>(y) * rowBytes, rowBytes);
        }
        sheet.place(i, picture);
    }
    const media::Picture& drawn = sheet.picture();
    ByteArray array({drawn.height, drawn.width, 3});
    std::uint8_t* to = array.mutable_data();
    for (int y = 0; y < drawn.height; ++y) {
        const std::uint8_t* from = drawn.row(y);
        for (int x = 0; x < drawn.width; ++x, from += 4, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
    }
    return array;
}

}  // namespace

void addSheets(py::module_& module) {
    module.def("draw_sheet", &drawSheet);
}

}  // namespace lumiset::bindings
