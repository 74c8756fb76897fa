#pragma once

// What the 8-bit and the float blur share: the picture without its outer ring, its rows, the way through them, and the
// rows of the ring.

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

/// Rounds a count up so that what follows begins with a whole vector.
constexpr std::int64_t wholeVectors(std::int64_t count) {
    return (count + 63) / 64 * 64;
}

/// Part of the vertical pass: columns of samples, and rows.
struct BlurStrip {
    std::size_t first;
    std::size_t samples;
    std::int32_t firstRow;
    std::int32_t endRow;
};

/// Part of the horizontal pass.
struct BlurredRows {
    std::int32_t first;
    std::int32_t end;
    std::int32_t task;  ///< parts that are done at the same time have different ones
};

/// How a picture is cut for threads. Rows are kept until the parts of the block below them are done, in memory that
/// should fit a core's own cache: other programs may leave little of a shared one.
struct BlurParts {
    std::int32_t tasks;        ///< of the horizontal pass at the same time
    std::int32_t taskGroups;   ///< groups of rows of each
    std::size_t stripSamples;  ///< of the vertical pass: whole vectors, so that strips share none
};

/// The way of a blur through the picture: down the columns into groups of rows in scratch memory, and along these
/// rows. Without threads a group goes through both passes while it is in the cache. With threads the columns are cut
/// into strips, since a strip's sums go on from row to row: the strips of a block of rows are done at the same time as
/// the rows of the block above it.
class BlurPath {
public:
    /// `groupRows` rows go through both passes side by side.
    BlurPath(const TriangularBlurJob& job, std::int32_t groupRows, const BlurParts& parts,
             const MemoryAllocator& allocator)
        : m_rows(InnerRows(job).count()),
          m_samples(static_cast<std::size_t>(job.width) * static_cast<std::size_t>(job.channels)),
          m_groupRows(groupRows),
          m_parts(parts),
          m_threads(bandsForThreads(&allocator, {job.width, job.height}).count() > 1 ? &allocator : nullptr) {}

    /// Parts of the horizontal pass at the same time.
    [[nodiscard]] std::int32_t tasks() const { return m_threads != nullptr ? m_parts.tasks : 1; }
    /// Groups of rows that are in memory: those of two blocks.
    [[nodiscard]] std::int32_t groups() const {
        return m_threads != nullptr ? 2 * m_parts.tasks * m_parts.taskGroups : 1;
    }
    /// Place in memory of the group that begins with row `y`.
    [[nodiscard]] std::int32_t groupOf(std::int32_t y) const { return y / m_groupRows % groups(); }

    /// Calls `down(BlurStrip)` and `along(BlurredRows)` for all of the picture.
    template <class Down, class Along>
    void run(const Down& down, const Along& along) const {
        if (m_threads == nullptr) {
            for (std::int32_t y = 0; y < m_rows; y += m_groupRows) {
                const std::int32_t end = std::min(y + m_groupRows, m_rows);
                down(BlurStrip{0, m_samples, y, end});
                along(BlurredRows{y, end, 0});
            }
            return;
        }
        const std::int32_t taskRows = m_parts.taskGroups * m_groupRows;
        const std::int32_t blockRows = m_parts.tasks * taskRows;
        const std::size_t stripSamples = m_parts.stripSamples;
        const auto strips = static_cast<std::int32_t>((m_samples + stripSamples - 1) / stripSamples);
        for (std::int32_t y = 0; y < m_rows + blockRows; y += blockRows) {
            const std::int32_t end = std::min(y + blockRows, m_rows);
            const std::int32_t stripsHere = y < m_rows ? strips : 0;
            const std::int32_t above = y - blockRows;
            const std::int32_t rowsAbove = above < 0 ? 0 : std::min(blockRows, m_rows - above);
            runTasks(m_threads, stripsHere + (rowsAbove + taskRows - 1) / taskRows, [&](std::int32_t i) {
                if (i < stripsHere) {
                    const std::size_t first = static_cast<std::size_t>(i) * stripSamples;
                    down(BlurStrip{first, std::min(stripSamples, m_samples - first), y, end});
                } else {
                    const std::int32_t task = i - stripsHere;
                    const std::int32_t from = above + task * taskRows;
                    along(BlurredRows{from, std::min(from + taskRows, above + rowsAbove), task});
                }
            });
        }
    }

private:
    std::int32_t m_rows;
    std::size_t m_samples;
    std::int32_t m_groupRows;
    BlurParts m_parts;
    const MemoryAllocator* m_threads;
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

}  // namespace lumiset
