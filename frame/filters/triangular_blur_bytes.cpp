// The 8-bit blur. Rows go through both passes four (colour) or sixteen (mask) at a time, so that the whole
// intermediate picture never exists: the vertical pass, vectorised along the row with its sums in two arrays,
// leaves the rows interleaved, sixteen samples for each x, and the horizontal pass walks x with one sum a lane.

#include <cstring>

#include "frame/filters/blur_rows.h"
#include "frame/filters/scratch_block.h"
#include "frame/filters/triangular_blur.h"
#include "frame/filters/triangular_kernel.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/filters/triangular_blur_bytes.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

#ifndef LUMISET_TRIANGULAR_BLUR_BYTES
#define LUMISET_TRIANGULAR_BLUR_BYTES
namespace lumiset {

/// Sums that are kept between blocks of rows, and the rows of one block.
struct ByteBlurScratch {
    std::int32_t* slopes;       ///< S of each sample of a row
    std::int32_t* sums;         ///< T of each sample of a row
    std::uint32_t* packed;      ///< masks: four groups of four rows, a sample's four in one word
    std::uint8_t* interleaved;  ///< sixteen samples for each x, from `before` columns left of the picture
    std::uint8_t* spareRow;     ///< takes rows beyond the picture
    std::int32_t packedStride;  ///< words
};

constexpr std::int32_t kInterleave = 16;

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Sums = hn::CappedTag<std::int32_t, 16>;
using Words = hn::RebindToUnsigned<Sums>;
using Floats = hn::RebindToFloat<Sums>;
using SumBytes = hn::Rebind<std::uint8_t, Sums>;  ///< as many bytes as there are sums
using WordBytes = hn::Repartition<std::uint8_t, Sums>;
using Block = hn::CappedTag<std::uint8_t, 16>;
using VSums = hn::Vec<Sums>;
using VWords = hn::Vec<Words>;

HWY_INLINE std::size_t lanes() {
    return hn::Lanes(Sums());
}

/// Sum to sample by a single-precision factor; the bits above the low eight are not clear.
struct FactorRounding {
    FactorRounding(std::int32_t divisor, float usedFactor) : bias(0), factor(usedFactor) { (void)divisor; }
    HWY_INLINE VWords operator()(VSums sum) const {
        const Floats d;
        const auto scaled = hn::Mul(hn::ConvertTo(d, sum), hn::Set(d, factor));
        return hn::BitCast(Words(), hn::Add(scaled, hn::Set(d, 8388608.0F)));
    }
    std::int32_t bias;  ///< is added to every sum beforehand
    float factor;
};

/// The same for any size.
struct WholeRounding {
    explicit WholeRounding(std::int32_t divisor) : bias(divisor / 2), division(divisor) {}
    HWY_INLINE VWords operator()(VSums sum) const {
        const Words d;
        const hn::Repartition<std::uint64_t, Words> d64;
        const auto all = hn::BitCast(d, sum);
        const auto factor = hn::Set(d, division.factor);
        const auto even = hn::ShiftRight<32>(hn::MulEven(all, factor));
        const auto odd = hn::MulEven(hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(d64, all))), factor);
        return hn::ShiftRightSame(hn::OddEven(hn::BitCast(d, odd), hn::BitCast(d, even)), division.shift);
    }
    std::int32_t bias;
    WholeDivision division;
};

/// The low bytes of four vectors in one word a lane, the first lowest.
HWY_INLINE VWords pack(VWords a, VWords b, VWords c, VWords e) {
    const auto low = hn::Or(hn::And(a, hn::Set(Words(), 0xFFU)), hn::ShiftLeft<8>(b));
    return hn::Or(low, hn::Or(hn::ShiftLeft<16>(c), hn::ShiftLeft<24>(e)));
}

/// Loads a vector's worth of samples, or fewer at the end of a row.
HWY_INLINE VSums loadSums(const std::uint8_t* from) {
    return hn::PromoteTo(Sums(), hn::LoadU(SumBytes(), from));
}
HWY_INLINE VSums loadFewSums(const std::uint8_t* from, std::size_t count) {
    HWY_ALIGN std::uint8_t few[16] = {};
    std::memcpy(few, from, count);
    return loadSums(few);
}

/// Runs `work(i, load)` over a row of samples, `load` reading a vector of sums.
template <class Work>
HWY_INLINE void alongRow(std::size_t samples, const Work& work) {
    std::size_t i = 0;
    for (; i + lanes() <= samples; i += lanes()) {
        work(i, [](const std::uint8_t* from) HWY_ATTR { return loadSums(from); });
    }
    if (i < samples) {
        work(i, [=](const std::uint8_t* from) HWY_ATTR { return loadFewSums(from, samples - i); });
    }
}

/// Sums of the first row.
void startColumns(const InnerRows& rows, std::size_t samples, const TriangularKernel& kernel, std::int32_t bias,
                  const ByteBlurScratch& scratch) {
    const Sums d;
    const std::size_t stored = hwy::RoundUpTo(samples, 2 * lanes()) * sizeof(std::int32_t);
    std::memset(scratch.slopes, 0, stored);
    std::memset(scratch.sums, 0, stored);
    for (std::int32_t t = 0; t < kernel.half; ++t) {
        const std::uint8_t* row = rows.source(t);
        alongRow(samples, [&](std::size_t i, const auto& load) HWY_ATTR {
            const auto all = hn::Add(hn::Load(d, scratch.slopes + i), load(row + i));
            hn::Store(all, d, scratch.slopes + i);
            hn::Store(hn::Add(hn::Load(d, scratch.sums + i), all), d, scratch.sums + i);
        });
    }
    const std::uint8_t* first = rows.source(0);
    alongRow(samples, [&](std::size_t i, const auto& load) HWY_ATTR {
        const auto edge = load(first + i);
        const auto before = hn::Mul(edge, hn::Set(d, kernel.weightBefore()));
        const auto sum = hn::Add(hn::Load(d, scratch.sums + i), hn::Add(before, hn::Set(d, bias)));
        hn::Store(sum, d, scratch.sums + i);
        const auto slope = hn::Load(d, scratch.slopes + i);
        hn::Store(hn::Sub(slope, hn::Mul(edge, hn::Set(d, kernel.half))), d, scratch.slopes + i);
    });
}

/// Transposes the 4 x 4 bytes of each block of sixteen; reversed, the second index runs backwards.
HWY_INLINE hn::Vec<WordBytes> transposeBlocks(VWords words, bool reversed) {
    HWY_ALIGN static constexpr std::uint8_t kOrder[2][16] = {{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15},
                                                             {12, 8, 4, 0, 13, 9, 5, 1, 14, 10, 6, 2, 15, 11, 7, 3}};
    const WordBytes d;
    return hn::TableLookupBytes(hn::BitCast(d, words), hn::LoadDup128(d, kOrder[reversed ? 1 : 0]));
}

/// Differences of samples, which fit 16 bits: twice as many a vector.
using Changes = hn::Repartition<std::int16_t, Sums>;

HWY_INLINE hn::Vec<Changes> loadChanges(const std::uint8_t* from) {
    return hn::PromoteTo(Changes(), hn::LoadU(hn::Rebind<std::uint8_t, Changes>(), from));
}

/// The sums of a vector of columns on their way down four rows.
struct ColumnSums {
    HWY_INLINE ColumnSums(const ByteBlurScratch& scratch, std::size_t i)
        : slope(hn::Load(Sums(), scratch.slopes + i)), sum(hn::Load(Sums(), scratch.sums + i)) {}

    template <class Rounding>
    HWY_INLINE VWords next(const Rounding& rounding, VSums change) {
        const auto result = rounding(sum);
        slope = hn::Add(slope, change);
        sum = hn::Add(sum, slope);
        return result;
    }
    template <bool kColor>
    HWY_INLINE void finish(const ByteBlurScratch& scratch, std::size_t i, std::uint32_t* out) const {
        hn::Store(slope, Sums(), scratch.slopes + i);
        hn::Store(sum, Sums(), scratch.sums + i);
        auto words = pack(results[0], results[1], results[2], results[3]);
        if constexpr (kColor) {
            words = hn::BitCast(Words(), transposeBlocks(words, false));
        }
        hn::Store(words, Words(), out + i);
    }

    VSums slope;
    VSums sum;
    VWords results[4];
};

/// Four rows from `y` on, a sample's four in one word; of colours a pixel's four in one word.
template <bool kEven, bool kColor, class Rounding>
HWY_NOINLINE void fourRows(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                           const Rounding& rounding, const ByteBlurScratch& scratch, std::uint32_t* out) {
    const std::uint8_t* ahead[4];
    const std::uint8_t* here[4];
    const std::uint8_t* before[4];
    const std::uint8_t* behind[4];
    for (std::int32_t r = 0; r < 4; ++r) {
        ahead[r] = rows.source(y + r + kernel.half);
        here[r] = rows.source(y + r);
        before[r] = rows.source(y + r - 1);
        behind[r] = rows.source(y + r - (kEven ? 1 : 0) - kernel.half);
    }
    const auto vectorPair = [&](std::size_t i, const auto& load) HWY_ATTR {
        ColumnSums low(scratch, i);
        ColumnSums high(scratch, i + lanes());
        for (int r = 0; r < 4; ++r) {
            const auto middle = load(here[r] + i);
            const auto change = hn::Sub(hn::Add(load(ahead[r] + i), load(behind[r] + i)),
                                        hn::Add(middle, kEven ? load(before[r] + i) : middle));
            const hn::Half<Changes> half;
            low.results[r] = low.next(rounding, hn::PromoteTo(Sums(), hn::LowerHalf(half, change)));
            high.results[r] = high.next(rounding, hn::PromoteTo(Sums(), hn::UpperHalf(half, change)));
        }
        low.template finish<kColor>(scratch, i, out);
        high.template finish<kColor>(scratch, i + lanes(), out);
    };
    std::size_t i = 0;
    for (; i + 2 * lanes() <= samples; i += 2 * lanes()) {
        vectorPair(i, [](const std::uint8_t* from) HWY_ATTR { return loadChanges(from); });
    }
    if (i < samples) {
        vectorPair(i, [=](const std::uint8_t* from) HWY_ATTR {
            HWY_ALIGN std::uint8_t few[32] = {};
            std::memcpy(few, from, samples - i);
            return loadChanges(few);
        });
    }
}

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
void spreadEdges(std::uint8_t* columns, std::int32_t width, const TriangularKernel& kernel) {
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

template <bool kEvenX, bool kEvenY, class RoundingX, class RoundingY>
void blurPlane(const TriangularBlurJob& job, const RoundingX& roundingX, const RoundingY& roundingY,
               const ByteBlurScratch& scratch) {
    const TriangularKernel kernelX(job.sizeX);
    const TriangularKernel kernelY(job.sizeY);
    const InnerRows rows(job);
    const bool color = job.channels == 4;
    const PixelStore store(job);
    const std::size_t samples = static_cast<std::size_t>(job.width) * static_cast<std::size_t>(job.channels);
    const std::int32_t blockRows = kInterleave / job.channels;
    startColumns(rows, samples, kernelY, roundingY.bias, scratch);
    for (std::int32_t y = 0; y < rows.count(); y += blockRows) {
        RowTargets targets;
        for (std::int32_t r = 0; r < blockRows; ++r) {
            targets.src[r] = rows.source(y + r);
            targets.dst[r] = y + r < rows.count() ? rows.target(y + r) : scratch.spareRow;
        }
        if (color) {
            fourRows<kEvenY, true>(rows, y, samples, kernelY, roundingY, scratch,
                                   reinterpret_cast<std::uint32_t*>(scratch.interleaved));
            spreadEdges(scratch.interleaved, job.width, kernelX);
            walkColor<kEvenX>(scratch.interleaved, job.width, kernelX, roundingX, store, targets);
        } else {
            std::uint32_t* group[4];
            for (std::int32_t g = 0; g < 4; ++g) {
                group[g] = scratch.packed + static_cast<std::ptrdiff_t>(g) * scratch.packedStride;
                fourRows<kEvenY, false>(rows, y + 4 * g, samples, kernelY, roundingY, scratch, group[g]);
            }
            const Words d;
            for (std::size_t i = 0; i < samples; i += lanes()) {
                hn::StoreInterleaved4(hn::Load(d, group[0] + i), hn::Load(d, group[1] + i), hn::Load(d, group[2] + i),
                                      hn::Load(d, group[3] + i), d,
                                      reinterpret_cast<std::uint32_t*>(scratch.interleaved) + 4 * i);
            }
            spreadEdges(scratch.interleaved, job.width, kernelX);
            walkMask<kEvenX>(scratch.interleaved, job.width, kernelX, roundingX, targets);
        }
    }
}

}  // namespace

void blurBytes(const TriangularBlurJob& job, const ByteBlurScratch& scratch) {
    const std::int32_t divisorX = TriangularKernel(job.sizeX).divisor;
    const std::int32_t divisorY = TriangularKernel(job.sizeY).divisor;
    const auto factorX = roundingFactor(divisorX);
    const auto factorY = roundingFactor(divisorY);
    const auto withParity = [&](const auto& roundingX, const auto& roundingY) {
        const bool evenX = job.sizeX % 2 == 0;
        const bool evenY = job.sizeY % 2 == 0;
        if (evenX) {
            evenY ? blurPlane<true, true>(job, roundingX, roundingY, scratch)
                  : blurPlane<true, false>(job, roundingX, roundingY, scratch);
        } else {
            evenY ? blurPlane<false, true>(job, roundingX, roundingY, scratch)
                  : blurPlane<false, false>(job, roundingX, roundingY, scratch);
        }
    };
    if (factorX && factorY) {
        withParity(FactorRounding(divisorX, *factorX), FactorRounding(divisorY, *factorY));
    } else {
        withParity(WholeRounding(divisorX), WholeRounding(divisorY));
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(blurBytes);

bool triangularBlurBytes(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept {
    constexpr std::int64_t kLargestVector = 64;  // samples, with room for whatever a last vector may touch
    const std::int64_t samples = std::int64_t{job.width} * job.channels + kLargestVector;
    const std::int64_t before = TriangularKernel(job.sizeX).half + 1;
    const std::int64_t interleaved = (2 * before + job.width + 2 * kLargestVector) * kInterleave;
    const std::int64_t packed = job.channels == 1 ? (samples + 15) / 16 * 16 : 0;
    ScratchBlock block(allocator);
    block.add<std::int32_t>(samples);
    block.add<std::int32_t>(samples);
    block.add<std::uint32_t>(4 * packed);
    block.add<std::uint8_t>(interleaved);
    block.add<std::uint8_t>(samples);
    if (!block.allocate()) {
        return false;
    }
    ByteBlurScratch scratch{};
    scratch.slopes = block.take<std::int32_t>(samples);
    scratch.sums = block.take<std::int32_t>(samples);
    scratch.packed = block.take<std::uint32_t>(4 * packed);
    scratch.interleaved = block.take<std::uint8_t>(interleaved) + (before + 3) / 4 * 4 * kInterleave;
    scratch.spareRow = block.take<std::uint8_t>(samples);
    scratch.packedStride = static_cast<std::int32_t>(packed);
    HWY_DYNAMIC_DISPATCH(blurBytes)(job, scratch);
    fillRingRows<std::uint8_t>(job);
    return true;
}

}  // namespace lumiset
#endif
