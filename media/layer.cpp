#include "media/layer.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#ifndef __clang_analyzer__  // it takes paths that the decoder rules out itself for leaks
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#endif
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STB_IMAGE_RESIZE_STATIC
#include <stb_image.h>
#include <stb_image_resize.h>

namespace lumiset::media {

std::array<float, 4> Layer::sampleAt(float x, float y) const {
    std::array<float, 4> sum{};
    if (!(x > -0.5F && y > -0.5F && x < static_cast<float>(width) + 0.5F && y < static_cast<float>(height) + 0.5F)) {
        return sum;
    }
    const float left = std::floor(x - 0.5F);
    const float top = std::floor(y - 0.5F);
    for (int i = 0; i < 4; i++) {
        const int column = static_cast<int>(left) + i % 2;
        const int row = static_cast<int>(top) + i / 2;
        if (column < 0 || row < 0 || column >= width || row >= height) {
            continue;
        }
        const float across = i % 2 == 0 ? left + 1.5F - x : x - 0.5F - left;
        const float down = i / 2 == 0 ? top + 1.5F - y : y - 0.5F - top;
        const std::uint8_t* from = pixel(column, row);
        const float alpha = static_cast<float>(from[3]) / 255 * across * down;
        for (std::size_t c = 0; c < 3; c++) {
            sum[c] += static_cast<float>(from[c]) / 255 * alpha;
        }
        sum[3] += alpha;
    }
    return sum;
}

Layer storedLayer(EmbeddedFile file) {
    const std::span<const std::uint8_t> bytes = embeddedFile(file);
    Layer layer;
    int channels = 0;
    stbi_uc* samples = ::stbi_load_from_memory(bytes.data(), static_cast<int>(bytes.size()), &layer.width,
                                               &layer.height, &channels, 4);
    if (samples == nullptr) {
        throw std::bad_alloc();  // the pictures are ours, so nothing else can be wrong
    }
    const std::unique_ptr<stbi_uc, void (*)(void*)> owner(samples, ::stbi_image_free);
    layer.samples.assign(samples,
                         samples + 4 * static_cast<std::size_t>(layer.width) * static_cast<std::size_t>(layer.height));
    return layer;
}

Layer scaled(const Layer& layer, float width, float height) {
    Layer result{
        std::max(static_cast<int>(std::lround(width)), 1), std::max(static_cast<int>(std::lround(height)), 1), {}};
    result.samples.resize(4 * static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height));
    if (::stbir_resize_uint8_generic(layer.samples.data(), layer.width, layer.height, 0, result.samples.data(),
                                     result.width, result.height, 0, 4, 3, 0, STBIR_EDGE_CLAMP, STBIR_FILTER_DEFAULT,
                                     STBIR_COLORSPACE_LINEAR, nullptr) == 0) {
        throw std::bad_alloc();
    }
    return result;
}

Layer mirrored(Layer layer) {
    for (int y = 0; y < layer.height; y++) {
        for (int left = 0, right = layer.width - 1; left < right; left++, right--) {
            std::uint8_t* row =
                layer.samples.data() + 4 * static_cast<std::size_t>(y) * static_cast<std::size_t>(layer.width);
            std::swap_ranges(row + 4 * left, row + 4 * left + 4, row + 4 * right);
        }
    }
    return layer;
}

}  // namespace lumiset::media
