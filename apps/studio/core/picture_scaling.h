#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/host_interfaces.h"
#include "media/media.h"

namespace lumiset::studio {

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size&) const = default;
};

/// A picture as windows paint it: rows without gaps from the top, B, G, R, A in bytes, colours multiplied with alpha.
struct DisplayPicture {
    Size size;
    bool opaque = true;
    std::vector<std::uint8_t> bytes;

    [[nodiscard]] const std::uint8_t* pixel(int x, int y) const {
        return bytes.data() +
               4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(x));
    }
};

/// The picture at another size, each pixel the mean of the area that it covers, colours weighed by alpha; where it gets
/// larger, pixels keep their sharp edges. Floats are dithered to bytes, in a pattern that does not move.
[[nodiscard]] DisplayPicture displayOf(const media::Picture& picture, Size size, IHostParallel* threads);

/// The same for effects to work on: of the picture's depth, alpha straight. Times and fields go along.
void reduce(const media::Picture& picture, Size size, media::Picture& reduced, IHostParallel* threads);

/// One field of a picture at the picture's size: its lines as they are, and the mean of both neighbours between them.
void fieldOf(const media::Picture& picture, bool top, media::Picture& field);

/// The size of a picture whose pixels are shown as squares, at most as large as `room`, or as it is without one.
[[nodiscard]] Size shownSize(const media::VideoFormat& format, Size room = {});

}  // namespace lumiset::studio
