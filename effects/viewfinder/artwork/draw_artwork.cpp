// draw_artwork FOLDER: draws the viewfinder's pictures from their strokes, as PNG files named by the number of their
// resource: white on black in red, green, blue and an opaque alpha. Run it after a change of strokes.h and commit what
// it writes.

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include "effects/viewfinder/strokes.h"

namespace lumiset {
namespace {

/// Sixteen levels: the pictures are scaled down where they are used, and keep small.
std::uint8_t levelOf(float coverage) {
    return static_cast<std::uint8_t>(std::lround(coverage * 15.0F) * 17);
}

bool writePng(const std::string& path, std::span<const StrokeShape> cells, std::size_t cellWidth, std::size_t height) {
    const std::size_t width = cells.size() * cellWidth;
    std::vector<std::uint8_t> pixels(4 * width * height, 255);
    for (std::size_t i = 0; i < width * height; ++i) {
        const std::size_t x = i % width;
        const std::uint8_t level = levelOf(
            strokeCoverage(cells[x / cellWidth], static_cast<float>(x % cellWidth), static_cast<float>(i / width)));
        std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(4 * i), 3, level);
    }
    png_image picture{};
    picture.version = PNG_IMAGE_VERSION;
    picture.width = static_cast<png_uint_32>(width);
    picture.height = static_cast<png_uint_32>(height);
    picture.format = PNG_FORMAT_RGBA;
    return png_image_write_to_file(&picture, path.c_str(), 0, pixels.data(), 0, nullptr) != 0;
}

}  // namespace
}  // namespace lumiset

int main(int argc, char** argv) {
    using namespace lumiset;
    const std::string folder = argc == 2 ? argv[1] : ".";
    const bool done = writePng(folder + "/501.png", kDigitShapes, 600, 1120) &&
                      writePng(folder + "/601.png", kSeparatorShapes, 600, 1120) &&
                      writePng(folder + "/701.png", kRecordShapes, 1302, 736) &&
                      writePng(folder + "/801.png", kBatteryShapes, 2156, 874);
    if (!done) {
        std::fprintf(stderr, "%s: the pictures cannot be written there\n", folder.c_str());
    }
    return done ? 0 : 1;
}
