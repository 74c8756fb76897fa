#include "media/media.h"

namespace lumiset::media {

void Picture::allocate(int newWidth, int newHeight, Depth newDepth) {
    width = newWidth;
    height = newHeight;
    depth = newDepth;
    stride = (newWidth * bytesPerPixel() + 63) / 64 * 64;
    data.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(newHeight));
}

}  // namespace lumiset::media
