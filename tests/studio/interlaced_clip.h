#pragma once

#include <algorithm>
#include <string>

#include "media/media.h"

namespace lumiset::studio {

/// A picture of 64 x 48 whose top field is of level 200 and whose bottom field is of level 50, as a film.
inline void writeInterlaced(const std::string& file, bool topFieldFirst) {
    media::Picture picture;
    picture.allocate(64, 48, media::Depth::kEightBit);
    picture.interlaced = true;
    picture.topFieldFirst = topFieldFirst;
    for (int y = 0; y < picture.height; ++y) {
        std::fill_n(picture.row(y), 4 * picture.width, static_cast<std::uint8_t>(y % 2 == 0 ? 200 : 50));
        for (int x = 0; x < picture.width; ++x) {
            picture.row(y)[4 * x + 3] = 255;
        }
    }
    media::VideoFormat format;
    format.width = picture.width;
    format.height = picture.height;
    format.interlaced = true;
    format.topFieldFirst = topFieldFirst;
    media::SinkOptions options;
    options.codec = "ffv1";
    const auto sink = media::openSink(file, format, options);
    sink->write(picture);
    sink->finish();
}

}  // namespace lumiset::studio
