#pragma once

// What the 8-bit and the float blur share: the picture without its outer ring, its rows and their bands, and the rows
// of the ring.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/bands.h"
#include "frame/filters/triangular_blur.h"
#include "frame/filters/triangular_kernel.h"

namespace lumiset {

/// Pixels at each edge of `size` pixels that take the value just inside them.
constexpr std::int32_t edgeRing(std::int32_t size) {
    return std::min(2, (size - 1) / 2);
}

/// The rows inside the ring, counted from 0; beyond them the nearest one. Sources begin `skippedBytes` later.
class InnerRows {
public:
    explicit InnerRows(const TriangularBlurJob& job, std::size_t skippedBytes = 0)
        : m_job(job), m_ring(edgeRing(job.height)), m_count(job.height - 2 * m_ring), m_skippedBytes(skippedBytes) {}

    [[nodiscard]] std::int32_t count() const { return m_count; }
    /// Row of the picture.
    [[nodiscard]] std::int32_t pictureRow(std::int32_t y) const { return m_ring + std::clamp(y, 0, m_count - 1); }
    [[nodiscard]] const std::uint8_t* source(std::int32_t y) const {
        return m_job.src + static_cast<std::ptrdiff_t>(m_job.srcStride) * pictureRow(y) + m_skippedBytes;
    }
    [[nodiscard]] std::uint8_t* target(std::int32_t y) const {
        return m_job.dst + static_cast<std::ptrdiff_t>(m_job.dstStride) * pictureRow(y);
    }

private:
    const TriangularBlurJob& m_job;
    std::int32_t m_ring;
    std::int32_t m_count;
    std::size_t m_skippedBytes;
};

inline std::size_t samplesOfRow(const TriangularBlurJob& job) {
    return static_cast<std::size_t>(job.width) * static_cast<std::size_t>(job.channels);
}

/// Rounds a count up so that what follows begins with a whole vector.
constexpr std::int64_t wholeVectors(std::int64_t count) {
    return (count + 63) / 64 * 64;
}

/// Rows whose sums are the same task's, counted like `InnerRows`. At the first, the sums are made from as many rows as
/// the kernel has.
struct BlurBand {
    BlurBand(const Bands& bands, std::int32_t band)
        : first(bands.first(band)), end(bands.first(band) + bands.rowsOf(band)) {}

    std::int32_t first;
    std::int32_t end;
};

/// Fills the rows of the ring from the finished rows inside it; a kept sample is their own.
template <class Sample>
void fillRingRows(const TriangularBlurJob& job) {
    const std::size_t samples = samplesOfRow(job);
    const std::int32_t ring = edgeRing(job.height);
    const auto fill = [&](std::int32_t y, std::int32_t from) {
        auto* out = reinterpret_cast<Sample*>(job.dst + static_cast<std::ptrdiff_t>(job.dstStride) * y);
        std::memcpy(out, job.dst + static_cast<std::ptrdiff_t>(job.dstStride) * from, samples * sizeof(Sample));
        if (job.keptSample >= 0 && job.channels == 4) {
            const auto* in = reinterpret_cast<const Sample*>(job.src + static_cast<std::ptrdiff_t>(job.srcStride) * y);
            const auto kept = static_cast<std::size_t>(job.keptSample);
            const std::size_t to = job.reverseSamples ? 3 - kept : kept;
            for (std::size_t x = 0; x < samples; x += 4) {
                out[x + to] = in[x + kept];
            }
        }
    };
    for (std::int32_t y = 0; y < ring; ++y) {
        fill(y, ring);
        fill(job.height - 1 - y, job.height - 1 - ring);
    }
}

}  // namespace lumiset
