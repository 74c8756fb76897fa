#pragma once

// What the 8-bit and the float blur share: the picture without its outer ring, its rows, the scratch block, and
// the rows of the ring.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/filters/triangular_blur.h"

namespace lumiset {

/// Pixels at each edge of `size` pixels that take the value just inside them.
constexpr std::int32_t edgeRing(std::int32_t size) {
    return std::min(2, (size - 1) / 2);
}

/// The rows inside the ring, counted from 0; beyond them the nearest one.
class InnerRows {
public:
    explicit InnerRows(const TriangularBlurJob& job)
        : m_job(job), m_ring(edgeRing(job.height)), m_count(job.height - 2 * m_ring) {}

    [[nodiscard]] std::int32_t count() const { return m_count; }
    /// Row of the picture.
    [[nodiscard]] std::int32_t pictureRow(std::int32_t y) const { return m_ring + std::clamp(y, 0, m_count - 1); }
    [[nodiscard]] const std::uint8_t* source(std::int32_t y) const {
        return m_job.src + static_cast<std::ptrdiff_t>(m_job.srcStride) * pictureRow(y);
    }
    [[nodiscard]] std::uint8_t* target(std::int32_t y) const {
        return m_job.dst + static_cast<std::ptrdiff_t>(m_job.dstStride) * pictureRow(y);
    }

private:
    const TriangularBlurJob& m_job;
    std::int32_t m_ring;
    std::int32_t m_count;
};

/// Fills the rows of the ring from the finished rows inside it; a kept sample is their own.
template <class Sample>
void fillRingRows(const TriangularBlurJob& job) {
    const std::size_t samples = static_cast<std::size_t>(job.width) * static_cast<std::size_t>(job.channels);
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

/// A block of scratch memory, handed out in pieces that start at multiples of 64 bytes. Declare the pieces with
/// `add`, then `allocate`, then `take` them in the same order.
class ScratchBlock {
public:
    explicit ScratchBlock(MemoryAllocator& allocator) : m_allocator(allocator) {}
    ~ScratchBlock() { m_allocator.FreeBytes(m_block); }
    ScratchBlock(const ScratchBlock&) = delete;
    ScratchBlock& operator=(const ScratchBlock&) = delete;

    template <class T>
    void add(std::int64_t count) {
        m_size += roundUp(count * static_cast<std::int64_t>(sizeof(T)));
    }
    [[nodiscard]] bool allocate() {
        return m_size <= INT32_MAX - kAlignment &&
               m_allocator.AllocBytes(&m_block, static_cast<std::uint32_t>(m_size + kAlignment));
    }
    template <class T>
    [[nodiscard]] T* take(std::int64_t count) {
        const auto start = reinterpret_cast<std::uintptr_t>(m_block);
        const auto skip = (kAlignment - static_cast<std::int64_t>(start % kAlignment)) % kAlignment;
        auto* piece = reinterpret_cast<T*>(static_cast<std::uint8_t*>(m_block) + skip + m_taken);
        m_taken += roundUp(count * static_cast<std::int64_t>(sizeof(T)));
        return piece;
    }

private:
    static constexpr std::int64_t kAlignment = 64;
    static constexpr std::int64_t roundUp(std::int64_t bytes) {
        return (bytes + kAlignment - 1) / kAlignment * kAlignment;
    }

    MemoryAllocator& m_allocator;
    void* m_block = nullptr;
    std::int64_t m_size = 0;
    std::int64_t m_taken = 0;
};

}  // namespace lumiset
