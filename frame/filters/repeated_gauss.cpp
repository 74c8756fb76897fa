// Hundreds of passes of a small filter, where plain repetition would move the whole plane through memory each time.
//
// Passes alternate between two planes and run as a wavefront over rows of blocks: pass k of a row of blocks is due
// once pass k - 1 has done the next row, so several passes follow each other down the picture within a cache, each
// one row of blocks behind the one before. Nothing is computed twice, since what a pass overwrites (the result of
// the pass before the last) has been read by then.
//
// With threads, parts of the picture go through a group of passes side by side, each a row of blocks shorter at its
// seams with every pass, and then the seams are filled in. Several planes of one size go through together.
//
// A block is left out where neither it nor a neighbour changed in the pass before: the same samples give the same
// result, and both planes hold it already. Flat areas of a mask drop out after the first pass, and most of a plane of
// bytes once its slopes are so gentle that rounding undoes the filter. To ask that of so small blocks costs next to
// nothing, since a bit for each answers for 64 of them at once.

#include "frame/filters/repeated_gauss.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstring>
#include <optional>

#include "frame/bands.h"
#include "frame/primitives/check.h"
#include "frame/scratch_block.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/filters/repeated_gauss.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

#ifndef LUMISET_REPEATED_GAUSS
#define LUMISET_REPEATED_GAUSS
namespace lumiset {

/// A vector of bytes: the smaller the blocks, the more of them drop out.
constexpr std::int32_t kBlockColumns = 64;
/// Fewer rows let more passes follow each other within a cache; more lose less at the blocks' edges.
constexpr std::int32_t kBlockRowsOfBytes = 16;
constexpr std::int32_t kBlockRowsOfFloats = 8;

/// The blocks that the last two passes over each row of them changed: a bit for a block, with a row above and one below
/// that never change. No row is more than a pass ahead of its neighbours.
class BlockHistory {
public:
    BlockHistory(std::int32_t width, std::int32_t height, std::int32_t usedBlockRows)
        : blockRows(usedBlockRows),
          rows((height - 2 + blockRows - 1) / blockRows),
          words((width - 2 + kWordColumns - 1) / kWordColumns),
          m_inLastWord(~std::uint64_t{0} >> ((std::int64_t{words} * kWordColumns - (width - 2)) / kBlockColumns)) {}

    [[nodiscard]] std::int64_t size() const { return 2 * (std::int64_t{rows} + 2) * words; }
    /// Every block counts as changed before the first pass.
    void start(std::uint64_t* bits) {
        m_bits = bits;
        std::fill_n(m_bits, size(), 0);
        std::fill_n(&changed(0, 0, 0), std::int64_t{rows} * words, ~std::uint64_t{0});
    }
    /// What a pass changes in 64 blocks of a row; it writes this once it has filtered those that are due.
    [[nodiscard]] std::uint64_t& changed(std::int32_t row, std::int32_t word, std::int32_t pass) const {
        return m_bits[((pass % 2) * (std::ptrdiff_t{rows} + 2) + row + 1) * words + word];
    }
    /// The blocks of 64 that a pass may change.
    [[nodiscard]] std::uint64_t due(std::int32_t row, std::int32_t word, std::int32_t pass) const {
        const auto nearRow = [&](std::int32_t at) {
            return changed(row - 1, at, pass - 1) | changed(row, at, pass - 1) | changed(row + 1, at, pass - 1);
        };
        const std::uint64_t here = nearRow(word);
        const std::uint64_t before = word > 0 ? nearRow(word - 1) >> 63U : 0;
        const std::uint64_t behind = word + 1 < words ? nearRow(word + 1) << 63U : 0;
        const std::uint64_t all = here | here << 1U | here >> 1U | before | behind;
        return word + 1 < words ? all : all & m_inLastWord;
    }

    const std::int32_t blockRows;
    const std::int32_t rows;
    const std::int32_t words;

private:
    static constexpr std::int32_t kWordColumns = 64 * kBlockColumns;

    std::uint64_t* m_bits = nullptr;
    std::uint64_t m_inLastWord;
};

/// Passes that follow each other down a part of the picture.
struct PassGroup {
    std::int32_t done;   ///< passes before it
    std::int32_t count;  ///< of its own
};

/// Rows of blocks of a part. At a side where another part follows it ends a row earlier with every pass: what it needs
/// of that part's passes is not there yet.
struct BlockRows {
    std::int32_t first;
    std::int32_t end;
};

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// Bytes are filtered in 16 bits, one by one where a row is shorter than a vector.
struct Byte {
    using Sample = std::uint8_t;
    using D = hn::CappedTag<std::uint16_t, 1>;
    using V = hn::Vec<D>;
    static HWY_INLINE V load(const Sample* from) {
        return hn::PromoteTo(D(), hn::LoadU(hn::Rebind<std::uint8_t, D>(), from));
    }
    static HWY_INLINE V mean(V sum) { return hn::ShiftRight<4>(hn::Add(sum, hn::Set(D(), 8))); }
    static HWY_INLINE void store(V mean, Sample* to) {
        const hn::Rebind<std::uint8_t, D> d8;
        hn::StoreU(hn::DemoteTo(d8, hn::BitCast(hn::RebindToSigned<D>(), mean)), d8, to);
    }
};

/// The far tails of floats end at a billionth: smaller ones would keep blocks at work, and become denormal.
template <std::size_t kMaxLanes>
struct Floats {
    using Sample = float;
    using D = hn::CappedTag<float, kMaxLanes>;
    using V = hn::Vec<D>;
    static HWY_INLINE V load(const Sample* from) { return hn::LoadU(D(), from); }
    static HWY_INLINE V mean(V sum) {
        const V value = hn::Mul(sum, hn::Set(D(), 1.0F / 16.0F));
        return hn::IfThenElseZero(hn::Ge(hn::Abs(value), hn::Set(D(), 1e-9F)), value);
    }
    static HWY_INLINE void store(V mean, Sample* to) { hn::StoreU(mean, D(), to); }
};

/// Whole vectors of bytes, as samples at even places in 16 bits each and those at odd places likewise.
struct Bytes {
    using Sample = std::uint8_t;
    using D = hn::ScalableTag<Sample>;
    using D16 = hn::Repartition<std::uint16_t, D>;
    using V16 = hn::Vec<D16>;

    /// Sums of each sample at an even place and the one behind it: one instruction of x86, which Highway has not.
    static HWY_INLINE V16 pairs(const Sample* from) {
        const auto samples = hn::LoadU(D(), from);
#if HWY_TARGET == HWY_AVX3
        return V16{_mm512_maddubs_epi16(samples.raw, hn::Set(D(), 1).raw)};
#elif HWY_TARGET == HWY_AVX2
        return V16{_mm256_maddubs_epi16(samples.raw, hn::Set(D(), 1).raw)};
#elif HWY_TARGET == HWY_SSE4
        return V16{_mm_maddubs_epi16(samples.raw, hn::Set(D(), 1).raw)};
#else
        const auto both = hn::BitCast(D16(), samples);
        return hn::Add(hn::And(both, hn::Set(D16(), 0xFF)), hn::ShiftRight<8>(both));
#endif
    }
};

/// One pass over `rows` rows of a vector's width. Returns the bits in which anything changed.
template <class Kind>
HWY_INLINE auto filterColumn(Plane<const typename Kind::Sample> src, Plane<typename Kind::Sample> dst, std::int32_t x,
                             std::int32_t y, std::int32_t rows) {
    using V = typename Kind::V;
    const hn::RebindToUnsigned<typename Kind::D> dBits;
    const auto along = [&](std::int32_t row, V& centre) HWY_ATTR {
        const auto* at = src.row(row) + x;
        centre = Kind::load(at);
        return hn::Add(hn::Add(Kind::load(at - 1), Kind::load(at + 1)), hn::Add(centre, centre));
    };
    V centre;
    V above = along(y - 1, centre);
    V here = along(y, centre);
    auto changed = hn::Zero(dBits);
    for (const std::int32_t end = y + rows; y < end; ++y) {
        V next;
        const V below = along(y + 1, next);
        const V mean = Kind::mean(hn::Add(hn::Add(above, below), hn::Add(here, here)));
        Kind::store(mean, dst.row(y) + x);
        changed = hn::Or(changed, hn::Xor(hn::BitCast(dBits, mean), hn::BitCast(dBits, centre)));
        above = here;
        here = below;
        centre = next;
    }
    return changed;
}

template <>
HWY_INLINE auto filterColumn<Bytes>(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, std::int32_t x,
                                    std::int32_t y, std::int32_t rows) {
    const Bytes::D d;
    const Bytes::D16 d16;
    const hn::RebindToSigned<Bytes::D16> dSigned;
    using V = Bytes::V16;
    struct Sums {
        V even;
        V odd;
    };
    const auto plus = [](Sums a, Sums b) HWY_ATTR { return Sums{hn::Add(a.even, b.even), hn::Add(a.odd, b.odd)}; };
    const auto along = [&](std::int32_t row) HWY_ATTR {
        const std::uint8_t* at = src.row(row) + x;
        const V both = Bytes::pairs(at);
        return Sums{hn::Add(Bytes::pairs(at - 1), both), hn::Add(both, Bytes::pairs(at + 1))};
    };
    // A sixteenth, rounded to nearest: (sum * 2^11 + 2^14) >> 15.
    const auto mean = [&](V sum) HWY_ATTR {
        return hn::BitCast(d16, hn::MulFixedPoint15(hn::BitCast(dSigned, sum), hn::Set(dSigned, 1 << 11)));
    };
    Sums here = along(y);
    Sums above = plus(along(y - 1), here);
    auto changed = hn::Zero(d);
    for (const std::int32_t end = y + rows; y < end; ++y) {
        const Sums next = along(y + 1);
        const Sums below = plus(here, next);
        const Sums sum = plus(above, below);
        const auto means = hn::BitCast(d, hn::Or(mean(sum.even), hn::ShiftLeft<8>(mean(sum.odd))));
        changed = hn::Or(changed, hn::Xor(means, hn::LoadU(d, src.row(y) + x)));
        hn::StoreU(means, d, dst.row(y) + x);
        above = below;
        here = next;
    }
    return changed;
}

/// One pass over columns `left` to `right` of a block. The last vector may begin in the block before: there it stores
/// what that block's own pass stores. True if anything changed.
template <class Kind>
bool filterBlock(Plane<const typename Kind::Sample> src, Plane<typename Kind::Sample> dst, std::int32_t left,
                 std::int32_t right, std::int32_t y, std::int32_t rows) {
    const hn::RebindToUnsigned<typename Kind::D> dBits;
    const auto lanes = static_cast<std::int32_t>(hn::Lanes(dBits));
    auto changed = hn::Zero(dBits);
    for (std::int32_t x = left; x < right; x += lanes) {
        changed = hn::Or(changed, filterColumn<Kind>(src, dst, std::min(x, right - lanes), y, rows));
    }
    return !hn::AllTrue(dBits, hn::Eq(changed, hn::Zero(dBits)));
}

/// One pass over a row of blocks. True unless all of them were left out.
template <class Kind>
bool filterBlockRow(const RepeatedGaussJob& job, Plane<const typename Kind::Sample> src,
                    Plane<typename Kind::Sample> dst, const BlockHistory& history, std::int32_t row,
                    std::int32_t pass) {
    bool any = false;
    const std::int32_t y = 1 + row * history.blockRows;
    const std::int32_t rows = std::min(history.blockRows, job.height - 1 - y);
    for (std::int32_t word = 0; word < history.words; ++word) {
        std::uint64_t changed = 0;
        for (std::uint64_t due = history.due(row, word, pass); due != 0; due &= due - 1) {
            any = true;
            const std::int32_t left = 1 + (64 * word + std::countr_zero(due)) * kBlockColumns;
            const std::int32_t right = std::min(left + kBlockColumns, job.width - 1);
            if (filterBlock<Kind>(src, dst, left, right, y, rows)) {
                changed |= due & (~due + 1);
            }
        }
        history.changed(row, word, pass) = changed;
    }
    return any;
}

template <class Kind>
bool filterRow(const RepeatedGaussJob& job, std::uint8_t* other, const BlockHistory& history, std::int32_t row,
               std::int32_t pass) {
    using T = typename Kind::Sample;
    const Plane<T> planes[2] = {{reinterpret_cast<T*>(job.plane), job.stride},
                                {reinterpret_cast<T*>(other), job.stride}};
    const Plane<T> src = planes[(pass + 1) % 2];
    return filterBlockRow<Kind>(job, src, planes[pass % 2], history, row, pass);
}

/// A group's passes over a part, as far as they can be done without its neighbours.
template <class Kind>
bool filterPart(const RepeatedGaussJob& job, std::uint8_t* other, const BlockHistory& history, const PassGroup& group,
                const BlockRows& part) {
    bool any = false;
    for (std::int32_t step = part.first; step < part.end + group.count - 1; ++step) {
        for (std::int32_t i = 0; i < group.count; ++i) {
            const std::int32_t row = step - i;
            const std::int32_t first = part.first == 0 ? 0 : part.first + i;
            const std::int32_t end = part.end == history.rows ? part.end : part.end - i;
            if (row >= first && row < end) {
                any = filterRow<Kind>(job, other, history, row, group.done + i + 1) || any;
            }
        }
    }
    return any;
}

/// What two parts have left out at the row between them.
template <class Kind>
bool filterSeam(const RepeatedGaussJob& job, std::uint8_t* other, const BlockHistory& history, const PassGroup& group,
                std::int32_t seam) {
    bool any = false;
    for (std::int32_t i = 1; i < group.count; ++i) {
        for (std::int32_t row = seam - i; row < seam + i; ++row) {
            any = filterRow<Kind>(job, other, history, row, group.done + i + 1) || any;
        }
    }
    return any;
}

/// Vectors, or single samples where a row is shorter than one.
template <class Whole, class Single, class Work>
bool withVectors(const RepeatedGaussJob& job, const Work& work) {
    return static_cast<std::size_t>(job.width) >= hn::Lanes(typename Whole::D()) + 2 ? work(Whole()) : work(Single());
}
template <class Work>
bool withKind(const RepeatedGaussJob& job, const Work& work) {
    return job.isFloat ? withVectors<Floats<HWY_MAX_BYTES>, Floats<1>>(job, work) : withVectors<Bytes, Byte>(job, work);
}

}  // namespace

bool gaussPart(const RepeatedGaussJob& job, std::uint8_t* other, const BlockHistory& history, const PassGroup& group,
               const BlockRows& part) {
    return withKind(job, [&](auto kind) { return filterPart<decltype(kind)>(job, other, history, group, part); });
}
bool gaussSeam(const RepeatedGaussJob& job, std::uint8_t* other, const BlockHistory& history, const PassGroup& group,
               std::int32_t seam) {
    return withKind(job, [&](auto kind) { return filterSeam<decltype(kind)>(job, other, history, group, seam); });
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(gaussPart);
HWY_EXPORT(gaussSeam);

namespace {

/// One plane on its way through the passes.
struct GaussWork {
    explicit GaussWork(const RepeatedGaussJob& usedJob, MemoryAllocator& allocator)
        : job(usedJob),
          history(job.width, job.height, job.isFloat ? kBlockRowsOfFloats : kBlockRowsOfBytes),
          block(allocator) {}

    [[nodiscard]] bool start() {
        const std::int64_t planeBytes =
            std::int64_t{job.stride} * (job.height - 1) + std::int64_t{job.width} * (job.isFloat ? 4 : 1);
        block.add<std::uint8_t>(planeBytes);
        block.add<std::uint64_t>(history.size());
        if (!block.allocate()) {
            return false;
        }
        other = block.take<std::uint8_t>(planeBytes);
        history.start(block.take<std::uint64_t>(history.size()));
        std::memcpy(other, job.plane, static_cast<std::size_t>(planeBytes));
        bytes = planeBytes;
        return true;
    }

    RepeatedGaussJob job;
    BlockHistory history;
    ScratchBlock block;
    std::uint8_t* other = nullptr;
    std::int64_t bytes = 0;
};

/// Passes of a plane of such a size that run at once.
std::int32_t passesAtOnce(const GaussWork& work) {
    constexpr std::int64_t kCacheBytes = 512 * 1024;  // both planes' part of a core's own cache
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(kCacheBytes / (std::int64_t{2} * work.job.stride * work.history.blockRows), 1, 16));
}

/// All passes over planes of one size, side by side.
void runPasses(std::span<GaussWork* const> works, MemoryAllocator& allocator) {
    const GaussWork& first = *works.front();
    const std::int32_t atOnce = passesAtOnce(first);
    const bool isLarge = std::int64_t{first.job.width} * first.job.height >= 2 * kBandPixels;
    const MemoryAllocator* const threads = isLarge && allocator.Threads() != nullptr ? &allocator : nullptr;
    const std::int32_t partRows = threads != nullptr ? 2 * atOnce : first.history.rows;
    const std::int32_t parts = std::max(first.history.rows / partRows, 1);
    const auto planes = static_cast<std::int32_t>(works.size());
    const auto partOf = [&](std::int32_t part) {
        return BlockRows{part * partRows, part + 1 == parts ? first.history.rows : (part + 1) * partRows};
    };
    for (std::int32_t done = 0; done < first.job.passes;) {
        const PassGroup group{done, std::min(atOnce, first.job.passes - done)};
        std::atomic<bool> any = false;
        const auto note = [&](bool changed) {
            if (changed) {
                any.store(true, std::memory_order_relaxed);
            }
        };
        runTasks(threads, planes * parts, [&](std::int32_t i) {
            const GaussWork& work = *works[static_cast<std::size_t>(i % planes)];
            note(HWY_DYNAMIC_DISPATCH(gaussPart)(work.job, work.other, work.history, group, partOf(i / planes)));
        });
        runTasks(threads, planes * (parts - 1), [&](std::int32_t i) {
            const GaussWork& work = *works[static_cast<std::size_t>(i % planes)];
            note(HWY_DYNAMIC_DISPATCH(gaussSeam)(work.job, work.other, work.history, group, partOf(i / planes).end));
        });
        if (!any.load(std::memory_order_relaxed)) {
            return;  // both planes hold what no pass changes any more
        }
        done += group.count;
    }
}

}  // namespace

void repeatedGauss(std::span<RepeatedGaussJob> jobs, MemoryAllocator& allocator) noexcept {
    std::optional<GaussWork> works[kMostGaussJobs];
    GaussWork* started[kMostGaussJobs] = {};
    std::size_t count = 0;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        RepeatedGaussJob& job = jobs[i];
        job.filtered = job.width < 3 || job.height < 3 || job.passes < 1;
        if (!job.filtered) {
            GaussWork& work = works[i].emplace(job, allocator);
            job.filtered = work.start();
            if (job.filtered) {
                started[count++] = &work;
            }
        }
    }
    if (count == 0) {
        return;
    }
    runPasses(std::span(started).first(count), allocator);
    for (GaussWork* work : std::span(started).first(count)) {
        if (work->job.passes % 2 != 0) {
            std::memcpy(work->job.plane, work->other, static_cast<std::size_t>(work->bytes));
        }
    }
}

}  // namespace lumiset
#endif
