// Hundreds of passes of a small filter, where plain repetition would move the whole plane through memory each time.
//
// Passes alternate between two planes and run as a wavefront over rows of blocks: pass k of a row of blocks is due
// once pass k - 1 has done the next row, so several passes follow each other down the picture within a cache, each
// one row of blocks behind the one before. Nothing is computed twice, since what a pass overwrites (the result of
// the pass before the last) has been read by then.
//
// A block is left out where neither it nor a neighbour changed in the pass before: the same samples give the same
// result, and both planes hold it already. Flat areas of a mask drop out after the first pass, and most of
// a plane of bytes once its slopes are so gentle that rounding undoes the filter.

#include "frame/filters/repeated_gauss.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "frame/filters/scratch_block.h"
#include "frame/primitives/check.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/filters/repeated_gauss.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

#ifndef LUMISET_REPEATED_GAUSS
#define LUMISET_REPEATED_GAUSS
namespace lumiset {

constexpr std::int32_t kBlockColumns = 128;
/// Fewer rows let more passes follow each other within a cache; more lose less at the blocks' edges.
constexpr std::int32_t kBlockRowsOfBytes = 16;
constexpr std::int32_t kBlockRowsOfFloats = 8;

/// For each block, with a ring of blocks around that never change, the last pass that changed it.
class BlockHistory {
public:
    BlockHistory(std::int32_t width, std::int32_t height, std::int32_t usedBlockRows)
        : blockRows(usedBlockRows),
          columns((width - 2 + kBlockColumns - 1) / kBlockColumns),
          rows((height - 2 + blockRows - 1) / blockRows) {}

    [[nodiscard]] std::int64_t size() const { return (std::int64_t{columns} + 2) * (std::int64_t{rows} + 2); }
    /// Every block counts as changed before the first pass.
    void start(std::int32_t* lastChanges) {
        m_last = lastChanges;
        std::fill_n(m_last, size(), -1);
        for (std::int32_t row = 0; row < rows; ++row) {
            std::fill_n(&at(row, 0), columns, 0);
        }
    }
    [[nodiscard]] std::int32_t& at(std::int32_t row, std::int32_t column) const {
        return m_last[(std::ptrdiff_t{row} + 1) * (columns + 2) + column + 1];
    }
    [[nodiscard]] bool mayChange(std::int32_t row, std::int32_t column, std::int32_t pass) const {
        std::int32_t latest = -1;
        for (std::int32_t y = row - 1; y <= row + 1; ++y) {
            const std::int32_t* left = &at(y, column) - 1;
            latest = std::max({latest, left[0], left[1], left[2]});
        }
        return latest >= pass - 1;
    }

    const std::int32_t blockRows;
    const std::int32_t columns;
    const std::int32_t rows;

private:
    std::int32_t* m_last = nullptr;
};

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// Bytes are filtered in 16 bits.
template <std::size_t kMaxLanes>
struct Bytes {
    using Sample = std::uint8_t;
    using D = hn::CappedTag<std::uint16_t, kMaxLanes>;
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
    for (std::int32_t column = 0; column < history.columns; ++column) {
        if (history.mayChange(row, column, pass)) {
            any = true;
            const std::int32_t left = 1 + column * kBlockColumns;
            const std::int32_t right = std::min(left + kBlockColumns, job.width - 1);
            if (filterBlock<Kind>(src, dst, left, right, y, rows)) {
                history.at(row, column) = pass;
            }
        }
    }
    return any;
}

template <class Kind>
void repeat(const RepeatedGaussJob& job, std::uint8_t* other, const BlockHistory& history) {
    using T = typename Kind::Sample;
    constexpr std::int64_t kCacheBytes = 512 * 1024;  // both planes' part of a core's own cache
    const Plane<T> planes[2] = {{reinterpret_cast<T*>(job.plane), job.stride},
                                {reinterpret_cast<T*>(other), job.stride}};
    const auto atOnce = static_cast<std::int32_t>(
        std::clamp<std::int64_t>(kCacheBytes / (std::int64_t{2} * job.stride * history.blockRows), 1, 16));
    for (std::int32_t done = 0; done < job.passes;) {
        const std::int32_t count = std::min(atOnce, job.passes - done);
        bool any = false;
        for (std::int32_t step = 0; step < history.rows + count - 1; ++step) {
            for (std::int32_t i = std::max(0, step - history.rows + 1); i < std::min(count, step + 1); ++i) {
                const std::int32_t pass = done + i + 1;
                const Plane<T> src = planes[(pass + 1) % 2];
                any = filterBlockRow<Kind>(job, src, planes[pass % 2], history, step - i, pass) || any;
            }
        }
        if (!any) {
            return;  // both planes hold what no pass changes any more
        }
        done += count;
    }
}

template <template <std::size_t> class Kind>
void repeatInVectors(const RepeatedGaussJob& job, std::uint8_t* other, const BlockHistory& history) {
    using Whole = Kind<HWY_MAX_BYTES>;
    if (static_cast<std::size_t>(job.width) >= hn::Lanes(typename Whole::D()) + 2) {
        repeat<Whole>(job, other, history);
    } else {
        repeat<Kind<1>>(job, other, history);
    }
}

}  // namespace

void repeatGauss(const RepeatedGaussJob& job, std::uint8_t* other, const BlockHistory& history) {
    job.isFloat ? repeatInVectors<Floats>(job, other, history) : repeatInVectors<Bytes>(job, other, history);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(repeatGauss);

bool repeatedGauss(const RepeatedGaussJob& job, MemoryAllocator& allocator) noexcept {
    if (job.width < 3 || job.height < 3 || job.passes < 1) {
        return true;
    }
    BlockHistory history(job.width, job.height, job.isFloat ? kBlockRowsOfFloats : kBlockRowsOfBytes);
    const std::int64_t planeBytes =
        std::int64_t{job.stride} * (job.height - 1) + std::int64_t{job.width} * (job.isFloat ? 4 : 1);
    ScratchBlock block(allocator);
    block.add<std::uint8_t>(planeBytes);
    block.add<std::int32_t>(history.size());
    if (!block.allocate()) {
        return false;
    }
    auto* other = block.take<std::uint8_t>(planeBytes);
    history.start(block.take<std::int32_t>(history.size()));
    std::memcpy(other, job.plane, static_cast<std::size_t>(planeBytes));
    HWY_DYNAMIC_DISPATCH(repeatGauss)(job, other, history);
    if (job.passes % 2 != 0) {
        std::memcpy(job.plane, other, static_cast<std::size_t>(planeBytes));
    }
    return true;
}

}  // namespace lumiset
#endif
