#include "effects/viewfinder/artwork.h"

#include <cmath>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <span>

#include "platform/resource.h"

#define STBI_NO_STDIO
#define STBI_NO_HDR
#include <stb_image.h>

namespace lumiset {
namespace {

struct FreeMemory {
    void operator()(std::uint8_t* block) const { std::free(block); }
};
using Pixels = std::unique_ptr<std::uint8_t[], FreeMemory>;

/// The brightness of a picture, which counts as its coverage; null unless it decodes to the size of its cells.
Pixels decode(const ArtworkCells& cells) {
    const std::span<const std::uint8_t> file = platform::findResource(cells.resource);
    int width = 0;
    int height = 0;
    int channels = 0;
    Pixels pixels(
        stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &width, &height, &channels, STBI_grey));
    const bool fits = width == cells.width * static_cast<std::int32_t>(cells.shapes.size()) && height == cells.height;
    return fits ? std::move(pixels) : Pixels();
}

/// A picture of one cell, from its strokes.
Pixels draw(const ArtworkCells& cells) {
    const auto width = static_cast<std::size_t>(cells.width);
    const auto height = static_cast<std::size_t>(cells.height);
    Pixels pixels(static_cast<std::uint8_t*>(std::malloc(width * height)));
    for (std::size_t i = 0; pixels != nullptr && i < width * height; ++i) {
        const std::size_t row = i / width;
        const float coverage = strokeCoverage(cells.shapes[0], static_cast<float>(i % width), static_cast<float>(row));
        pixels[i] = static_cast<std::uint8_t>(std::lround(coverage * 255.0F));
    }
    return pixels;
}

}  // namespace

const std::uint8_t* artworkCoverage(Artwork artwork) noexcept {
    static std::mutex mutex;
    static std::array<Pixels, kArtworkCount> pictures;
    const std::scoped_lock lock(mutex);
    Pixels& picture = pictures[static_cast<std::size_t>(artwork)];
    if (picture == nullptr) {
        const ArtworkCells& cells = artworkCells(artwork);
        picture = cells.resource != 0 ? decode(cells) : draw(cells);
    }
    return picture.get();
}

}  // namespace lumiset
