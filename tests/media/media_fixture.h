#pragma once

// Small pictures and files for the tests of reading and writing media.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "media/media.h"
#include "tests/support/difference.h"

namespace lumiset::media {

/// A folder of its own for each test, removed with all that is in it.
class MediaTest : public testing::Test {
protected:
    MediaTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "lumiset-media-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_folder = pattern;
    }
    ~MediaTest() override { std::filesystem::remove_all(m_folder); }

    std::string path(const std::string& name) const { return (m_folder / name).string(); }

    /// Names in the folder, hidden ones too.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::filesystem::path m_folder;
};

inline double sampleOf(const Picture& picture, int x, int y, int channel) {
    const std::uint8_t* row = picture.row(y);
    return picture.depth == Depth::kFloat
               ? static_cast<double>(reinterpret_cast<const float*>(row)[4 * x + channel]) * 255
               : static_cast<double>(row[4 * x + channel]);
}

inline void setPixel(Picture& picture, int x, int y, double b, double g, double r, double a = 255) {
    const double values[4] = {b, g, r, a};
    for (int c = 0; c < 4; c++) {
        if (picture.depth == Depth::kFloat) {
            reinterpret_cast<float*>(picture.row(y))[4 * x + c] = static_cast<float>(values[c] / 255);
        } else {
            picture.row(y)[4 * x + c] = static_cast<std::uint8_t>(std::lround(values[c]));
        }
    }
}

inline Picture flatPicture(int width, int height, double b, double g, double r, double a = 255,
                           Depth depth = Depth::kEightBit) {
    Picture picture;
    picture.allocate(width, height, depth);
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) {
            setPixel(picture, x, y, b, g, r, a);
        }
    }
    return picture;
}

/// Patches of strong colours, 8 x 8 pixels each, so that their middles survive halved chroma; float pictures have
/// levels between those of 8 bits. With `alpha`, the right half fades out.
inline Picture colorPatches(int width, int height, bool alpha, Depth depth = Depth::kEightBit) {
    Picture picture;
    picture.allocate(width, height, depth);
    const double step = depth == Depth::kFloat ? 0.37 : 0;
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) {
            const int patch = x / 8 + 3 * (y / 8);
            const double a = alpha && x >= width / 2 ? 255 - 2 * std::floor(x / 8.0) * 8 : 255;
            setPixel(picture, x, y, patch % 4 * 80 + step, (patch / 2) % 4 * 84 + step, (patch * 3) % 5 * 60 + step,
                     std::max(0.0, a));
        }
    }
    return picture;
}

inline VideoFormat formatOf(const Picture& picture, bool alpha) {
    VideoFormat format;
    format.width = picture.width;
    format.height = picture.height;
    format.color.alpha = alpha ? AlphaKind::kStraight : AlphaKind::kNone;
    format.bitDepth = picture.depth == Depth::kFloat ? 16 : 8;
    return format;
}

inline void writePictures(const std::string& path, const VideoFormat& format, std::vector<Picture> pictures,
                          const SinkOptions& options = {}) {
    const auto sink = openSink(path, format, options);
    std::int64_t next = 0;
    for (Picture& picture : pictures) {
        picture.pts = next++;
        sink->write(picture);
    }
    sink->finish();
}

inline std::vector<Picture> readAll(Source& source) {
    std::vector<Picture> pictures(1);
    while (source.read(pictures.back())) {
        pictures.emplace_back();
    }
    pictures.pop_back();
    return pictures;
}

inline std::vector<Picture> readAll(const std::string& path, const SourceOptions& options = {}) {
    return readAll(*openSource(path, options));
}

/// Largest difference of a sample, in 255ths; of pixels whose neighbours within `border` are of the same patch.
inline double worstDifference(const Picture& a, const Picture& b, int border = 0, int channels = 4) {
    EXPECT_EQ(a.width, b.width);
    EXPECT_EQ(a.height, b.height);
    if (a.width != b.width || a.height != b.height) {
        return HUGE_VAL;
    }
    const auto isInside = [border](int x) { return x % 8 >= border && x % 8 < 8 - border; };
    const auto samplesOf = [&](const Picture& picture) {
        return [&](int x, int y, int c) { return isInside(x) && isInside(y) ? sampleOf(picture, x, y, c) : 0; };
    };
    return test::differenceOf(a.width, a.height, channels, samplesOf(a), samplesOf(b)).largest;
}

}  // namespace lumiset::media
