// The horizontal pass of the 8-bit blur, which walks x with one sum a lane, a row each, and stores the finished rows.
// Compiled once per instruction set; include like row_loops-inl.h.

#if defined(LUMISET_BYTE_BLUR_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_BYTE_BLUR_ROWS_INL_H
#undef LUMISET_BYTE_BLUR_ROWS_INL_H
#else
#define LUMISET_BYTE_BLUR_ROWS_INL_H
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/filters/blur_rows.h"
#include "frame/filters/byte_blur_scratch.h"
#include "frame/filters/byte_blur_sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

/// One sum a lane walking along x.
template <bool kEven, class Rounding>
struct Walk {
    /// `at` is column 0 of these lanes.
    HWY_INLINE Walk(const std::uint8_t* column, const TriangularKernel& kernel, const Rounding& usedRounding)
        : at(column), reach(kernel.half * kInterleave), rounding(usedRounding) {
        const Sums d;
        slope = hn::Zero(d);
        sum = hn::Set(d, rounding.bias);
        for (std::int32_t t = 0; t < kernel.half; ++t) {
            slope = hn::Add(slope, loadSums(at + t * kInterleave));
            sum = hn::Add(sum, slope);
        }
        const auto edge = loadSums(at);
        sum = hn::Add(sum, hn::Mul(edge, hn::Set(d, kernel.weightBefore())));
        slope = hn::Sub(slope, hn::Mul(edge, hn::Set(d, kernel.half)));
    }
    HWY_INLINE VWords next() {
        const auto result = rounding(sum);
        const auto middle = loadSums(at);
        const auto behind = loadSums(at - reach - (kEven ? kInterleave : 0));
        const auto change = hn::Sub(hn::Add(loadSums(at + reach), behind),
                                    hn::Add(middle, kEven ? loadSums(at - kInterleave) : middle));
        slope = hn::Add(slope, change);
        sum = hn::Add(sum, slope);
        at += kInterleave;
        return result;
    }
    /// Four columns, one word a lane.
    HWY_INLINE VWords nextFour() {
        const auto a = next();
        const auto b = next();
        const auto c = next();
        const auto e = next();
        return pack(a, b, c, e);
    }

    const std::uint8_t* at;
    std::ptrdiff_t reach;
    Rounding rounding;
    VSums slope;
    VSums sum;
};

/// Stores four pixels, or fewer at the end of a row, with the kept sample taken from the source.
struct PixelStore {
    explicit PixelStore(const TriangularBlurJob& job) : reversed(job.reverseSamples), keeps(job.keptSample >= 0) {
        for (int i = 0; i < 16; ++i) {
            order[i] = static_cast<std::uint8_t>(reversed ? i / 4 * 4 + 3 - i % 4 : i);
            kept[i] = order[i] % 4 == job.keptSample ? 0xFF : 0;
        }
    }
    HWY_INLINE void operator()(hn::Vec<Block> pixels, const std::uint8_t* src, std::uint8_t* dst,
                               std::size_t bytes) const {
        const Block d;
        if (HWY_LIKELY(bytes == 16)) {
            hn::StoreU(keeps ? withKept(pixels, hn::LoadU(d, src)) : pixels, d, dst);
            return;
        }
        HWY_ALIGN std::uint8_t few[16] = {};
        std::memcpy(few, src, bytes);
        hn::Store(keeps ? withKept(pixels, hn::Load(d, few)) : pixels, d, few);
        std::memcpy(dst, few, bytes);
    }

    bool reversed;
    bool keeps;

private:
    HWY_INLINE hn::Vec<Block> withKept(hn::Vec<Block> pixels, hn::Vec<Block> source) const {
        const Block d;
        const auto own = hn::TableLookupBytes(source, hn::Load(d, order));
        const auto mask = hn::Load(d, kept);
        return hn::Or(hn::And(mask, own), hn::AndNot(mask, pixels));
    }

    HWY_ALIGN std::uint8_t order[16];
    HWY_ALIGN std::uint8_t kept[16];
};

/// Hands each block of sixteen bytes of a vector to `store(index, block)`.
template <class D, class Store>
HWY_INLINE void eachBlock(D d, hn::Vec<D> v, std::size_t first, const Store& store) {
    if constexpr (hn::MaxLanes(D()) == 16) {
        store(first, v);
    } else {
        const hn::Half<D> half;
        eachBlock(half, hn::LowerHalf(half, v), first, store);
        eachBlock(half, hn::UpperHalf(half, v), first + hn::Lanes(half) / 16, store);
    }
    (void)d;
}

/// Columns beyond the inner ones take the nearest inner one.
inline void spreadEdges(std::uint8_t* columns, std::int32_t width, const TriangularKernel& kernel) {
    const std::int32_t ring = edgeRing(width);
    const Block d;
    const auto left = hn::Load(d, columns + ring * kInterleave);
    for (std::int32_t x = -kernel.half - 1; x < ring; ++x) {
        hn::Store(left, d, columns + x * kInterleave);
    }
    const auto right = hn::Load(d, columns + (width - 1 - ring) * kInterleave);
    for (std::int32_t x = width - ring; x < width + kernel.half + kInterleave; ++x) {
        hn::Store(right, d, columns + x * kInterleave);
    }
}

struct RowTargets {
    const std::uint8_t* src[kInterleave];
    std::uint8_t* dst[kInterleave];
};

template <bool kEven, class Rounding>
HWY_NOINLINE void walkColor(const std::uint8_t* columns, std::int32_t width, const TriangularKernel& kernel,
                            const Rounding& rounding, const PixelStore& store, const RowTargets& rows) {
    for (std::size_t lane = 0; lane < kInterleave; lane += lanes()) {
        Walk<kEven, Rounding> walk(columns + lane, kernel, rounding);
        for (std::int32_t x = 0; x < width; x += 4) {
            const auto pixels = transposeBlocks(walk.nextFour(), store.reversed);
            const std::size_t bytes = 4 * static_cast<std::size_t>(std::min(4, width - x));
            eachBlock(WordBytes(), pixels, lane / 4, [&](std::size_t row, hn::Vec<Block> block) HWY_ATTR {
                store(block, rows.src[row] + 4 * x, rows.dst[row] + 4 * x, bytes);
            });
        }
    }
}

template <bool kEven, class Rounding>
void walkMask(const std::uint8_t* columns, std::int32_t width, const TriangularKernel& kernel, const Rounding& rounding,
              const RowTargets& rows) {
    HWY_ALIGN std::uint32_t tile[4 * 16];
    for (std::size_t lane = 0; lane < kInterleave; lane += lanes()) {
        Walk<kEven, Rounding> walk(columns + lane, kernel, rounding);
        for (std::int32_t x = 0; x < width; x += 16) {
            const auto a = walk.nextFour();
            const auto b = walk.nextFour();
            const auto c = walk.nextFour();
            const auto e = walk.nextFour();
            hn::StoreInterleaved4(a, b, c, e, Words(), tile);
            const std::size_t bytes = static_cast<std::size_t>(std::min(16, width - x));
            for (std::size_t row = 0; row < lanes(); ++row) {
                std::uint8_t* out = rows.dst[lane + row] + x;
                if (HWY_LIKELY(bytes == 16)) {
                    std::memcpy(out, tile + 4 * row, 16);
                } else {
                    std::memcpy(out, tile + 4 * row, bytes);
                }
            }
        }
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
