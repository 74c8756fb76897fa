#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/embedded_files.h"

namespace lumiset::media {

/// A painted picture, straight R, G, B, A, 8 bits each.
struct Layer {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> samples;

    const std::uint8_t* pixel(int x, int y) const {
        return samples.data() +
               4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    }
    /// The sample between pixels, premultiplied; nothing outside.
    std::array<float, 4> sampleAt(float x, float y) const;
};

/// One of the painted layers as it is stored.
[[nodiscard]] Layer storedLayer(EmbeddedFile file);

/// The layer at another size: larger by Catmull-Rom, smaller by Mitchell's filter, colours weighed by alpha.
[[nodiscard]] Layer scaled(const Layer& layer, float width, float height);

/// Left and right exchanged.
[[nodiscard]] Layer mirrored(Layer layer);

}  // namespace lumiset::media
