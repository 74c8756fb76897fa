// draw_artwork FOLDER: draws the viewfinder's pictures from their strokes, as grey PNG files of sixteen levels named
// by the number of their resource. Run it after a change of viewfinder_strokes.h and commit what it writes.

#include <zlib.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "effects/viewfinder/strokes.h"

namespace lumiset {
namespace {

using Bytes = std::vector<std::uint8_t>;

void appendNumber(Bytes& out, std::size_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void appendChunk(Bytes& out, std::string_view type, const Bytes& data) {
    appendNumber(out, data.size());
    const std::size_t start = out.size();
    out.insert(out.end(), type.begin(), type.end());
    out.insert(out.end(), data.begin(), data.end());
    appendNumber(out, crc32(0, out.data() + start, static_cast<uInt>(out.size() - start)));
}

/// Rows of four-bit levels, each as its difference from the row above.
Bytes filteredRows(std::span<const StrokeShape> cells, std::size_t cellWidth, std::size_t height) {
    const std::size_t width = cells.size() * cellWidth;
    Bytes above(width / 2);
    Bytes row(width / 2);
    Bytes rows;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const float coverage =
                strokeCoverage(cells[x / cellWidth], static_cast<float>(x % cellWidth), static_cast<float>(y));
            const auto level = static_cast<std::uint8_t>(std::lround(coverage * 15.0F));
            row[x / 2] = static_cast<std::uint8_t>(x % 2 == 0 ? level << 4 : row[x / 2] | level);
        }
        constexpr std::uint8_t kFilterUp = 2;
        rows.push_back(kFilterUp);
        for (std::size_t i = 0; i < row.size(); ++i) {
            rows.push_back(static_cast<std::uint8_t>(row[i] - above[i]));
        }
        above = row;
    }
    return rows;
}

bool writePng(const std::string& path, std::span<const StrokeShape> cells, std::size_t cellWidth, std::size_t height) {
    Bytes header;
    appendNumber(header, cells.size() * cellWidth);
    appendNumber(header, height);
    header.insert(header.end(), {4, 0, 0, 0, 0});  // four bits of grey, not interlaced

    const Bytes rows = filteredRows(cells, cellWidth, height);
    uLongf size = compressBound(static_cast<uLong>(rows.size()));
    Bytes packed(size);
    if (compress2(packed.data(), &size, rows.data(), static_cast<uLong>(rows.size()), Z_BEST_COMPRESSION) != Z_OK) {
        return false;
    }
    packed.resize(size);

    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    appendChunk(file, "IHDR", header);
    appendChunk(file, "IDAT", packed);
    appendChunk(file, "IEND", {});
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    return out.good();
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
