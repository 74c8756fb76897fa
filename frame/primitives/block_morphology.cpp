// Rows go through in blocks of four. For each block the tables of block maxima, each in a ring of rows, are brought
// up to its last source row; a block doubles from two of the half size. Then each rectangle of the mask takes four
// vector loads. A tile is finished early once it has reached the largest value in its sight, as most tiles of a
// picture do after a few rectangles.

#include "frame/primitives/block_morphology.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "frame/bands.h"
#include "frame/scratch_block.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/block_morphology.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

#ifndef LUMISET_BLOCK_MORPHOLOGY
#define LUMISET_BLOCK_MORPHOLOGY
namespace lumiset {

constexpr std::int32_t kMostLevels = 31;
constexpr std::int32_t kBlockRows = 4;
constexpr std::int32_t kTermsAtOnce = 2;
constexpr std::int32_t kTile = 1024;      ///< samples of a row that are worked on together; whole vectors
constexpr std::int32_t kVectorRoom = 64;  ///< samples, at least a vector's

/// Maxima over blocks of one size, from each sample to the right and down, for the rows in its ring.
struct BlockTable {
    std::uint8_t* data;
    std::int32_t rows;  ///< in the ring; 0: the table is not needed
};

struct BlockPlan {
    const BlockRectangle* rectangles;
    std::int32_t count;
    std::int32_t left;  ///< reach of the whole mask, in samples
    std::int32_t right;
    std::int32_t up;  ///< in rows
    std::int32_t down;
    std::int32_t heightLevels;  ///< tables of heights 2^0 .. 2^(heightLevels - 1)
    std::int32_t widthLevels[kMostLevels];
    BlockTable tables[kMostLevels][kMostLevels];  ///< [height][width]
    std::int64_t stride;                          ///< bytes of a table row
    std::int32_t margin;                          ///< samples before column 0 of a strip; whole vectors
    std::int32_t strip;                           ///< samples
    std::int32_t strips;
    Bands bands;
    std::uint8_t* best;      ///< rows of `kTile` samples
    std::int64_t partBytes;  ///< from one part's tables and best rows to the next one's

    /// A part is a strip of a band.
    [[nodiscard]] std::int32_t parts() const { return bands.count() * strips; }
};

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

template <class T, bool kMinimum>
class MorphologyStrip {
public:
    MorphologyStrip(const BlockMorphologyJob& job, const BlockPlan& plan, std::int32_t part, std::int32_t scratch)
        : m_job(job),
          m_plan(plan),
          m_scratch(static_cast<std::ptrdiff_t>(plan.partBytes * scratch)),
          m_first(part % plan.strips * plan.strip),
          m_samples(std::min(plan.strip, job.width * job.channels - m_first)),
          m_firstRow(plan.bands.first(part / plan.strips)),
          m_endRow(m_firstRow + plan.bands.rowsOf(part / plan.strips)),
          m_nextRow(m_firstRow - plan.up) {}

    void run() {
        for (std::int32_t y = m_firstRow; y < m_endRow; y += kBlockRows) {
            while (m_nextRow <= y + kBlockRows - 1 + m_plan.down) {
                addRow(m_nextRow++);
            }
            for (std::int32_t x = 0; x < m_samples; x += kTile) {
                tile(x, y);
            }
        }
    }

private:
    using D = hn::ScalableTag<T>;
    using V = hn::Vec<D>;

    static HWY_INLINE V better(V a, V b) { return kMinimum ? hn::Min(a, b) : hn::Max(a, b); }
    static HWY_INLINE std::ptrdiff_t lanes() { return static_cast<std::ptrdiff_t>(hn::Lanes(D())); }

    /// Row `y` of a table, at column 0 of the strip.
    HWY_INLINE T* tableRow(const BlockTable& table, std::int32_t y) const {
        return reinterpret_cast<T*>(table.data + m_scratch + m_plan.stride * ((y + m_plan.up) % table.rows)) +
               m_plan.margin;
    }

    /// Source row `y`, beyond the picture the nearest one, and the rows of all tables that end with it.
    void addRow(std::int32_t y) {
        const auto* from = reinterpret_cast<const T*>(m_job.src + static_cast<std::ptrdiff_t>(m_job.srcStride) *
                                                                      std::clamp(y, 0, m_job.height - 1));
        fillFirst(from, tableRow(m_plan.tables[0][0], y));
        const D d;
        const std::ptrdiff_t end = m_samples + m_plan.right;
        for (std::int32_t h = 0; h < m_plan.heightLevels; ++h) {
            const std::int32_t top = y - (1 << h) + 1;
            if (top < m_firstRow - m_plan.up) {
                break;
            }
            const BlockTable* tables = m_plan.tables[h];
            if (h > 0) {
                const BlockTable& half = m_plan.tables[h - 1][0];
                const T* upper = tableRow(half, top);
                const T* lower = tableRow(half, top + (1 << (h - 1)));
                T* out = tableRow(tables[0], top);
                for (std::ptrdiff_t x = -m_plan.margin; x < end; x += lanes()) {
                    hn::Store(better(hn::Load(d, upper + x), hn::Load(d, lower + x)), d, out + x);
                }
            }
            for (std::int32_t w = 1; w < m_plan.widthLevels[h]; ++w) {
                const T* narrow = tableRow(tables[w - 1], top);
                const T* beside = narrow + (std::ptrdiff_t{m_job.channels} << (w - 1));
                T* out = tableRow(tables[w], top);
                for (std::ptrdiff_t x = -m_plan.margin; x < end; x += lanes()) {
                    hn::Store(better(hn::Load(d, narrow + x), hn::LoadU(d, beside + x)), d, out + x);
                }
            }
        }
    }

    /// A row of the strip with what lies left and right of it, the edge pixels repeated.
    void fillFirst(const T* from, T* out) const {
        const std::int32_t channels = m_job.channels;
        const std::int32_t all = m_job.width * channels;
        const std::int32_t begin = std::max(-m_plan.margin, -m_first);
        const std::int32_t end = std::min(m_samples + m_plan.right, all - m_first);
        std::memcpy(out + begin, from + m_first + begin, static_cast<std::size_t>(end - begin) * sizeof(T));
        repeatPixel(out - m_plan.margin, begin + m_plan.margin, out + begin);
        repeatPixel(out + end, m_samples + m_plan.right - end, out + end - channels);
    }

    /// Whole pixels; margins are, since a vector holds whole pixels.
    void repeatPixel(T* out, std::int32_t samples, const T* pixel) const {
        if (m_job.channels == 1) {
            std::fill_n(out, samples, *pixel);
            return;
        }
        T four[4];
        std::memcpy(four, pixel, sizeof four);
        for (std::int32_t x = 0; x < samples; x += 4) {
            std::memcpy(out + x, four, sizeof four);
        }
    }

    T* bestRow(std::int32_t row) const { return reinterpret_cast<T*>(m_plan.best + m_scratch) + row * kTile; }

    void tile(std::int32_t first, std::int32_t y) const {
        const D d;
        const std::int32_t samples = std::min(kTile, m_samples - first);
        for (std::int32_t term = 0; term < m_plan.count; term += kTermsAtOnce) {
            for (std::int32_t r = 0; r < kBlockRows; ++r) {
                if (term == 0) {
                    join<true>(term, first, y + r, samples, bestRow(r));
                } else {
                    join<false>(term, first, y + r, samples, bestRow(r));
                }
            }
            if (m_job.firstHasEveryRow && term % 8 == 0 && term + 8 < m_plan.count && reachedBest(first, y, samples)) {
                break;
            }
        }
        for (std::int32_t r = 0; r < std::min(kBlockRows, m_endRow - y); ++r) {
            const T* from = bestRow(r);
            T* out = reinterpret_cast<T*>(m_job.dst + static_cast<std::ptrdiff_t>(m_job.dstStride) * (y + r)) +
                     m_first + first;
            std::ptrdiff_t x = 0;
            for (; x + lanes() <= samples; x += lanes()) {
                hn::StoreU(hn::Load(d, from + x), d, out + x);
            }
            std::copy(from + x, from + samples, out + x);
        }
    }

    /// The four blocks of each of some rectangles, taken into the best values of a row of the tile.
    template <bool kFirst>
    void join(std::int32_t term, std::int32_t first, std::int32_t y, std::int32_t samples, T* best) const {
        const D d;
        const T* HWY_RESTRICT from[4 * kTermsAtOnce];
        for (std::int32_t t = 0; t < kTermsAtOnce; ++t) {
            const BlockRectangle& rectangle = m_plan.rectangles[std::min(term + t, m_plan.count - 1)];
            const BlockTable& table = m_plan.tables[rectangle.blockHeightLog][rectangle.blockWidthLog];
            const T* upper = tableRow(table, y - rectangle.up) + first;
            const T* lower = tableRow(table, y + rectangle.down + 1 - (1 << rectangle.blockHeightLog)) + first;
            const std::ptrdiff_t left = -rectangle.left * m_job.channels;
            const std::ptrdiff_t right = (rectangle.right + 1 - (1 << rectangle.blockWidthLog)) * m_job.channels;
            from[4 * t] = upper + left;
            from[4 * t + 1] = upper + right;
            from[4 * t + 2] = lower + left;
            from[4 * t + 3] = lower + right;
        }
        for (std::ptrdiff_t x = 0; x < samples; x += lanes()) {
            const auto a = better(hn::LoadU(d, from[0] + x), hn::LoadU(d, from[1] + x));
            const auto b = better(hn::LoadU(d, from[2] + x), hn::LoadU(d, from[3] + x));
            auto v = better(a, b);
            if constexpr (kTermsAtOnce == 2) {
                const auto c = better(hn::LoadU(d, from[4] + x), hn::LoadU(d, from[5] + x));
                const auto e = better(hn::LoadU(d, from[6] + x), hn::LoadU(d, from[7] + x));
                v = better(v, better(c, e));
            }
            if constexpr (!kFirst) {
                v = better(v, hn::Load(d, best + x));
            }
            hn::Store(v, d, best + x);
        }
    }

    /// True when every value of the tile is the best of all that any of its masks holds.
    bool reachedBest(std::int32_t first, std::int32_t y, std::int32_t samples) const {
        const D d;
        const BlockRectangle& tallest = m_plan.rectangles[0];
        const BlockTable& table = m_plan.tables[tallest.blockHeightLog][0];
        const T candidate = bestRow(0)[0];
        const auto wanted = hn::Set(d, candidate);
        for (std::int32_t r = 0; r < kBlockRows; ++r) {
            for (std::ptrdiff_t x = 0; x + lanes() <= samples; x += lanes()) {
                if (!hn::AllTrue(d, hn::Eq(hn::Load(d, bestRow(r) + x), wanted))) {
                    return false;
                }
            }
            for (std::ptrdiff_t x = samples / lanes() * lanes(); x < samples; ++x) {
                if (bestRow(r)[x] != candidate) {
                    return false;
                }
            }
        }
        auto limit = wanted;
        for (std::int32_t r = 0; r < kBlockRows; ++r) {
            const T* upper = tableRow(table, y + r - tallest.up) + first;
            const T* lower = tableRow(table, y + r + tallest.down + 1 - (1 << tallest.blockHeightLog)) + first;
            std::ptrdiff_t x = -((m_plan.left + lanes() - 1) / lanes() * lanes());
            for (; x + lanes() <= samples + m_plan.right; x += lanes()) {
                limit = better(limit, better(hn::Load(d, upper + x), hn::Load(d, lower + x)));
            }
            for (; x < samples + m_plan.right; ++x) {
                const T value = kMinimum ? std::min(upper[x], lower[x]) : std::max(upper[x], lower[x]);
                limit = better(limit, hn::Set(d, value));
            }
        }
        return hn::AllTrue(d, hn::Eq(limit, wanted));
    }

    const BlockMorphologyJob& m_job;
    const BlockPlan& m_plan;
    std::ptrdiff_t m_scratch;  ///< of the part's own tables
    std::int32_t m_first;
    std::int32_t m_samples;
    std::int32_t m_firstRow;
    std::int32_t m_endRow;
    std::int32_t m_nextRow;
};

}  // namespace

void morphologyPart(const BlockMorphologyJob& job, const BlockPlan& plan, std::int32_t part, std::int32_t scratch) {
    if (job.isFloat) {
        job.minimum ? MorphologyStrip<float, true>(job, plan, part, scratch).run()
                    : MorphologyStrip<float, false>(job, plan, part, scratch).run();
    } else {
        job.minimum ? MorphologyStrip<std::uint8_t, true>(job, plan, part, scratch).run()
                    : MorphologyStrip<std::uint8_t, false>(job, plan, part, scratch).run();
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

/// Which tables the rectangles need, and how many rows of each.
void planTables(BlockPlan& plan) {
    for (std::int32_t i = 0; i < plan.count; ++i) {
        const BlockRectangle& rectangle = plan.rectangles[i];
        plan.heightLevels = std::max(plan.heightLevels, rectangle.blockHeightLog + 1);
        std::int32_t& widths = plan.widthLevels[rectangle.blockHeightLog];
        widths = std::max(widths, rectangle.blockWidthLog + 1);
    }
    for (std::int32_t h = 0; h < plan.heightLevels; ++h) {
        // A row is kept until the highest rectangle of its table is past it, and until the next table has used it.
        const std::int32_t newest = kBlockRows - 1 + plan.down + 1 - (1 << h);
        std::int32_t keep = (1 << h) + 1;
        std::int32_t keepWide = 1;
        for (std::int32_t i = 0; i < plan.count; ++i) {
            const BlockRectangle& rectangle = plan.rectangles[i];
            if (rectangle.blockHeightLog == h) {
                keepWide = std::max(keepWide, newest + rectangle.up + 1);
            }
        }
        // The tallest rectangle's narrow table also tells what a tile can reach.
        plan.tables[h][0].rows = std::max(keep, keepWide);
        for (std::int32_t w = 1; w < plan.widthLevels[h]; ++w) {
            plan.tables[h][w].rows = keepWide;
        }
    }
}

/// Strips bound the scratch memory; they are wide enough, and bands high enough, that what overlaps does not matter.
void planParts(BlockPlan& plan, const BlockMorphologyJob& job, const MemoryAllocator& allocator) {
    const std::int64_t sampleBytes = job.isFloat ? 4 : 1;
    const std::int64_t samples = std::int64_t{job.width} * job.channels;
    plan.margin = (plan.left + kVectorRoom - 1) / kVectorRoom * kVectorRoom;
    std::int64_t strip = std::max<std::int64_t>(2048, 2 * std::int64_t{plan.margin});
    plan.bands = bandsForThreads(&allocator, {job.width, job.height}, 4 * (plan.up + plan.down + 1), kBlockRows);
    const bool isShared = bandsForThreads(&allocator, {job.width, job.height}).count() > 1;
    if (isShared) {
        const std::int64_t strips = samples / std::max<std::int64_t>(768, 6 * std::int64_t{plan.margin});
        strip = samples / std::max<std::int64_t>(strips / 2 * 2, 1);
    }
    plan.strip = static_cast<std::int32_t>((std::min(samples, strip) + kVectorRoom - 1) / kVectorRoom * kVectorRoom);
    plan.strips = static_cast<std::int32_t>((samples + plan.strip - 1) / plan.strip);
    // A doubled width reads up to its own block's width past the end.
    std::int64_t widest = 0;
    for (std::int32_t h = 0; h < plan.heightLevels; ++h) {
        widest = std::max<std::int64_t>(widest, std::int64_t{job.channels} << std::max(0, plan.widthLevels[h] - 1));
    }
    plan.stride = (plan.margin + plan.strip + plan.right + widest + 2 * kVectorRoom) * sampleBytes;
    plan.stride = (plan.stride + 63) / 64 * 64;
}

}  // namespace

HWY_EXPORT(morphologyPart);

bool blockMorphology(const BlockMorphologyJob& job, MemoryAllocator& allocator) noexcept {
    const std::int64_t sampleBytes = job.isFloat ? 4 : 1;
    ScratchBlock planBlock(allocator);
    planBlock.add<BlockPlan>(1);
    if (!planBlock.allocate()) {
        return false;
    }
    auto& plan = *new (planBlock.take<BlockPlan>(1)) BlockPlan{};
    plan.rectangles = job.rectangles;
    plan.count = job.count;
    for (std::int32_t i = 0; i < job.count; ++i) {
        const BlockRectangle& rectangle = job.rectangles[i];
        plan.left = std::max(plan.left, rectangle.left * job.channels);
        plan.right = std::max(plan.right, rectangle.right * job.channels);
        plan.up = std::max(plan.up, rectangle.up);
        plan.down = std::max(plan.down, rectangle.down);
    }
    planTables(plan);
    planParts(plan, job, allocator);
    const auto eachTable = [&](const auto& work) {
        for (std::int32_t h = 0; h < plan.heightLevels; ++h) {
            for (std::int32_t w = 0; w < std::max(1, plan.widthLevels[h]); ++w) {
                work(plan.tables[h][w]);
            }
        }
    };
    plan.partBytes = kBlockRows * kTile * sampleBytes;
    eachTable([&](const BlockTable& table) { plan.partBytes += table.rows * plan.stride; });
    // Parts that are done one after the other share their scratch memory.
    const std::int32_t scratches = allocator.Threads() != nullptr ? plan.parts() : 1;
    ScratchBlock block(allocator);
    block.add<std::uint8_t>(plan.partBytes * scratches);
    if (!block.allocate()) {
        return false;
    }
    plan.best = block.take<std::uint8_t>(plan.partBytes * scratches);
    std::uint8_t* next = plan.best + kBlockRows * kTile * sampleBytes;
    eachTable([&](BlockTable& table) {
        table.data = next;
        next += table.rows * plan.stride;
    });
    runTasks(&allocator, plan.parts(), [&](std::int32_t part) {
        HWY_DYNAMIC_DISPATCH(morphologyPart)(job, plan, part, scratches > 1 ? part : 0);
    });
    return true;
}

}  // namespace lumiset
#endif
