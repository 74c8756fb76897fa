#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "hostkit/renderer.h"

namespace lumiset::hostkit {

/// How a picture's samples are stored: 0 to 255, 0 to 65535, or floats of 0.0 to 1.0.
enum class SampleType { kUint8, kUint16, kFloat };

/// Bytes of one sample.
[[nodiscard]] std::size_t sampleBytes(SampleType type);

/// A picture in anybody's memory, with its channels in any order and rows, pixels and channels any distance apart.
struct PictureView {
    void* data = nullptr;  ///< the pixel at the top left; need not be aligned
    std::int32_t width = 0;
    std::int32_t height = 0;
    SampleType samples = SampleType::kUint8;
    std::ptrdiff_t rowBytes = 0;    ///< from a pixel to the one below it; may be negative
    std::ptrdiff_t pixelBytes = 0;  ///< from a pixel to the one on its right; may be negative
    /// From a pixel to its blue, green, red and alpha sample.
    std::array<std::ptrdiff_t, 4> channelBytes{};
    bool hasAlpha = true;  ///< without it the picture is opaque, and takes what is drawn into it over black

    /// The record for this picture where the module can work in it as it lies: four interleaved samples in the order
    /// B, G, R, A or A, R, G, B, 8-bit or float, the latter aligned.
    [[nodiscard]] std::optional<VideoFrameDesc> frame() const;
};

/// A picture of interleaved channels, `order` being "RGBA", "BGRA", "ARGB", "ABGR", "RGB" or "BGR" in any case of
/// letters. Without `rowBytes` its rows follow each other. Throws std::invalid_argument, with a whole sentence, for
/// another order, sizes below 1, and rows that overlap.
[[nodiscard]] PictureView interleavedPicture(void* data, std::int32_t width, std::int32_t height, SampleType samples,
                                             std::string_view order, std::ptrdiff_t rowBytes = 0);

/// Where each letter of "BGRA" stands in `order`, as `interleavedPicture` takes it; alpha at -1 where it has none.
/// Throws std::invalid_argument.
[[nodiscard]] std::array<int, 4> channelPlaces(std::string_view order);

/// Renders pictures in anybody's memory. Where their layout allows effects work in them as they lie; else they are
/// converted on the way in and out: 8-bit where both pictures are, else float. A renderer keeps its buffers from
/// picture to picture and is used by one thread at a time; renderers on one chain may work at the same time.
class PictureRenderer {
public:
    /// As `Renderer`: `chain` must outlive it; `allocator` and `threads` may be null and are held. `threads` helps with
    /// conversions too.
    explicit PictureRenderer(const std::vector<EffectStage>& chain, IHostAllocator* allocator = nullptr,
                             IHostParallel* threads = nullptr);
    ~PictureRenderer();
    PictureRenderer(const PictureRenderer&) = delete;
    PictureRenderer& operator=(const PictureRenderer&) = delete;

    /// Renders `source`, which is only read, to `destination`, of the same size; they may be the same picture or
    /// overlap. Throws std::invalid_argument for sizes below 1 or that differ, `RenderError`, std::bad_alloc; the
    /// destination's contents are then undefined.
    void render(const PictureView& source, const PictureView& destination, const FrameContext& context);

private:
    struct Inside;
    std::unique_ptr<Inside> m_inside;
};

}  // namespace lumiset::hostkit
