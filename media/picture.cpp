#include "media/media.h"

namespace lumiset::media {
namespace {

template <class Sample>
bool isOpaque(const Picture& picture, Sample full) {
    for (int y = 0; y < picture.height; y++) {
        const Sample* row = samples<Sample>(picture, y);
        int transparent = 0;
        for (int x = 0; x < picture.width; x++) {
            transparent |= static_cast<int>(!(row[4 * x + 3] >= full));
        }
        if (transparent != 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

void Picture::allocate(int newWidth, int newHeight, Depth newDepth) {
    width = newWidth;
    height = newHeight;
    depth = newDepth;
    stride = (newWidth * bytesPerPixel() + 63) / 64 * 64;
    data.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(newHeight));
}

bool isOpaque(const Picture& picture) {
    return picture.depth == Depth::kFloat ? isOpaque(picture, 1.0F) : isOpaque(picture, std::uint8_t{255});
}

bool Sink::prepare(const Picture&, ReadyPicture&) {
    return false;
}

void Sink::write(const ReadyPicture&) {
    throw MediaError("This picture was not prepared here.");
}

}  // namespace lumiset::media
