// Sums of columns move down the picture by one row in and one row out; a window's sum then moves along a row by one
// column in and one column out. Sixteen rows of bytes, four of floats, are interleaved for that second step, so
// that it has a row in each lane.

#include "frame/primitives/box.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "frame/bands.h"
#include "frame/primitives/check.h"
#include "frame/primitives/whole_division.h"
#include "frame/scratch_block.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/box.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

#ifndef LUMISET_BOX
#define LUMISET_BOX
namespace lumiset {

/// `Sum` is u32 for bytes, double for floats.
template <class T, class Sum>
struct BoxJob {
    Plane<const T> src;  ///< upper left pixel of the first window
    Plane<T> dst;
    ImgSize size;
    ImgSize mask;
    Sum* columns;      ///< sums of the columns of one row of windows
    Sum* rows;         ///< four times those
    Sum* interleaved;  ///< those of all rows of a block, a column's side by side
    std::int64_t stride;
    std::int32_t columnCount;
};
using ByteBox = BoxJob<std::uint8_t, std::uint32_t>;
using FloatBox = BoxJob<float, double>;

constexpr std::int32_t kGroupRows = 4;  ///< that one interleaving store takes

/// Rows of a block.
template <class T>
constexpr std::int32_t kBoxRows = sizeof(T) == 1 ? 16 : 4;

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

HWY_INLINE std::uint32_t sample(std::uint8_t value) {
    return value;
}
HWY_INLINE double sample(float value) {
    constexpr float kMost = std::numeric_limits<float>::max();
    return value >= -kMost && value <= kMost ? static_cast<double>(value) : 0.0;
}

/// Plain loops over a row vectorise as they are.
template <class T, class Sum>
void startColumns(const BoxJob<T, Sum>& job) {
    const std::int32_t count = job.columnCount;
    Sum* HWY_RESTRICT columns = job.columns;
    std::fill_n(columns, count, Sum{0});
    for (std::int32_t y = 0; y < job.mask.height; ++y) {
        const T* HWY_RESTRICT row = job.src.row(y);
        for (std::int32_t x = 0; x < count; ++x) {
            columns[x] += sample(row[x]);
        }
    }
}

/// Stores the sums of `count` columns from `first` on of windows of row `y`, and moves them on to the next row.
template <class T, class Sum>
void columnsOfRow(const BoxJob<T, Sum>& job, std::int32_t y, std::int32_t first, std::int32_t count,
                  Sum* HWY_RESTRICT out) {
    Sum* HWY_RESTRICT columns = job.columns + first;
    const T* HWY_RESTRICT gone = job.src.row(y) + first;
    std::copy(columns, columns + count, out);
    if (y + 1 == job.size.height) {
        return;
    }
    const T* HWY_RESTRICT come = job.src.row(y + job.mask.height) + first;
    for (std::int32_t x = 0; x < count; ++x) {
        columns[x] = columns[x] + sample(come[x]) - sample(gone[x]);
    }
}

/// Four rows of column sums to four neighbouring places out of `kRows` of each column.
template <std::int32_t kRows, class Sum>
void interleave(const Sum* rows, std::int64_t stride, std::int32_t count, Sum* out) {
    const hn::ScalableTag<Sum> d;
    const auto lanes = static_cast<std::int32_t>(hn::Lanes(d));
    HWY_ALIGN Sum tile[kGroupRows * HWY_MAX_BYTES / sizeof(Sum)];
    for (std::int32_t x = 0; x < count; x += lanes) {
        hn::StoreInterleaved4(hn::Load(d, rows + x), hn::Load(d, rows + x + stride), hn::Load(d, rows + x + 2 * stride),
                              hn::Load(d, rows + x + 3 * stride), d, kRows == kGroupRows ? out + kRows * x : tile);
        if constexpr (kRows != kGroupRows) {
            for (std::int32_t i = 0; i < lanes; ++i) {
                std::memcpy(out + kRows * (x + i), tile + kGroupRows * i, kGroupRows * sizeof(Sum));
            }
        }
    }
}

/// Window sums of one lane for each row.
template <class D, std::int32_t kRows>
struct Walk {
    using V = hn::Vec<D>;
    HWY_INLINE Walk(const hn::TFromD<D>* interleaved, std::int32_t width)
        : at(interleaved), reach(std::ptrdiff_t{kRows} * width) {
        sum = hn::Zero(D());
        for (std::int32_t x = 0; x < width; ++x) {
            sum = hn::Add(sum, hn::Load(D(), at + kRows * x));
        }
    }
    HWY_INLINE V next() {
        const V result = sum;
        sum = hn::Add(sum, hn::Sub(hn::Load(D(), at + reach), hn::Load(D(), at)));
        at += kRows;
        return result;
    }
    const hn::TFromD<D>* at;
    std::ptrdiff_t reach;
    V sum;
};

using Words = hn::CappedTag<std::uint32_t, 16>;

/// Sum to mean, in the low byte; the other bits are not clear.
struct ByFactor {
    explicit ByFactor(float usedFactor) : factor(usedFactor) {}
    HWY_INLINE hn::Vec<Words> operator()(hn::Vec<Words> sum) const {
        const hn::RebindToFloat<Words> d;
        const auto real = hn::ConvertTo(d, hn::BitCast(hn::RebindToSigned<Words>(), sum));
        return hn::BitCast(Words(), hn::Add(hn::Mul(real, hn::Set(d, factor)), hn::Set(d, 8388608.0F)));
    }
    float factor;
};
struct ByWholeNumbers {
    explicit ByWholeNumbers(std::int32_t area) : division(area), half(static_cast<std::uint32_t>(area / 2)) {}
    HWY_INLINE hn::Vec<Words> operator()(hn::Vec<Words> sum) const {
        const Words d;
        const hn::Repartition<std::uint64_t, Words> d64;
        const auto all = hn::Add(sum, hn::Set(d, half));
        const auto factor = hn::Set(d, division.factor);
        const auto even = hn::ShiftRight<32>(hn::MulEven(all, factor));
        const auto odd = hn::MulEven(hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(d64, all))), factor);
        return hn::ShiftRightSame(hn::OddEven(hn::BitCast(d, odd), hn::BitCast(d, even)), division.shift);
    }
    WholeDivision division;
    std::uint32_t half;
};

/// The low bytes of the next four means, the first lowest, in one word a lane.
template <class Rounding>
HWY_INLINE hn::Vec<Words> nextFour(Walk<Words, kBoxRows<std::uint8_t>>& walk, const Rounding& rounding) {
    const auto a = hn::And(rounding(walk.next()), hn::Set(Words(), 0xFFU));
    const auto b = hn::ShiftLeft<8>(rounding(walk.next()));
    const auto c = hn::ShiftLeft<16>(rounding(walk.next()));
    const auto e = hn::ShiftLeft<24>(rounding(walk.next()));
    return hn::Or(hn::Or(a, b), hn::Or(c, e));
}

template <class Rounding>
void walkBytes(const ByteBox& job, const Rounding& rounding, std::uint8_t* const* out) {
    const Words d;
    const auto lanes = static_cast<std::int32_t>(hn::Lanes(d));
    HWY_ALIGN std::uint32_t tile[4 * 16];
    for (std::int32_t lane = 0; lane < kBoxRows<std::uint8_t>; lane += lanes) {
        Walk<Words, kBoxRows<std::uint8_t>> walk(job.interleaved + lane, job.mask.width);
        for (std::int32_t x = 0; x < job.size.width; x += 16) {
            const auto a = nextFour(walk, rounding);
            const auto b = nextFour(walk, rounding);
            const auto c = nextFour(walk, rounding);
            const auto e = nextFour(walk, rounding);
            hn::StoreInterleaved4(a, b, c, e, d, tile);
            const auto bytes = static_cast<std::size_t>(std::min(16, job.size.width - x));
            for (std::int32_t r = 0; r < lanes; ++r) {
                if (HWY_LIKELY(bytes == 16)) {
                    std::memcpy(out[lane + r] + x, tile + 4 * r, 16);
                } else {
                    std::memcpy(out[lane + r] + x, tile + 4 * r, bytes);
                }
            }
        }
    }
}

/// The column sums of a block of rows, interleaved; past the last row they stand still. So many columns at a time that
/// what is interleaved stays in the nearest cache until all its rows are in.
template <class T, class Sum>
void sumBlock(const BoxJob<T, Sum>& job, std::int32_t y) {
    constexpr std::int32_t kColumns = 256;
    for (std::int32_t x = 0; x < job.columnCount; x += kColumns) {
        const std::int32_t count = std::min(kColumns, job.columnCount - x);
        for (std::int32_t first = 0; first < kBoxRows<T>; first += kGroupRows) {
            for (std::int32_t r = 0; r < kGroupRows; ++r) {
                columnsOfRow(job, std::min(y + first + r, job.size.height - 1), x, count, job.rows + r * job.stride);
            }
            interleave<kBoxRows<T>>(job.rows, job.stride, count, job.interleaved + kBoxRows<T> * x + first);
        }
    }
}

}  // namespace

void boxBytes(const ByteBox& job) {
    const std::int32_t area = job.mask.width * job.mask.height;
    const auto factor = roundingFactor(area);
    startColumns(job);
    for (std::int32_t y = 0; y < job.size.height; y += kBoxRows<std::uint8_t>) {
        sumBlock(job, y);
        // Rows past the region repeat its last one.
        std::uint8_t* out[kBoxRows<std::uint8_t>];
        for (std::int32_t r = 0; r < kBoxRows<std::uint8_t>; ++r) {
            out[r] = job.dst.row(std::min(y + r, job.size.height - 1));
        }
        if (factor) {
            walkBytes(job, ByFactor(*factor), out);
        } else {
            walkBytes(job, ByWholeNumbers(area), out);
        }
    }
}

void boxFloats(const FloatBox& job) {
    const hn::CappedTag<double, 4> d;
    const hn::Rebind<float, decltype(d)> single;
    const double factor = 1.0 / (static_cast<double>(job.mask.width) * job.mask.height);
    startColumns(job);
    for (std::int32_t y = 0; y < job.size.height; y += kGroupRows) {
        sumBlock(job, y);
        const std::int32_t rows = std::min(kGroupRows, job.size.height - y);
        for (std::int32_t lane = 0; lane < kGroupRows; lane += static_cast<std::int32_t>(hn::Lanes(d))) {
            Walk<decltype(d), kGroupRows> walk(job.interleaved + lane, job.mask.width);
            HWY_ALIGN float means[kGroupRows];
            for (std::int32_t x = 0; x < job.size.width; ++x) {
                hn::StoreU(hn::DemoteTo(single, hn::Mul(walk.next(), hn::Set(d, factor))), single, means);
                for (std::int32_t r = 0; r < static_cast<std::int32_t>(hn::Lanes(d)) && lane + r < rows; ++r) {
                    job.dst.row(y + lane + r)[x] = means[r];
                }
            }
        }
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(boxBytes);
HWY_EXPORT(boxFloats);

namespace {

void runBox(const ByteBox& job) {
    HWY_DYNAMIC_DISPATCH(boxBytes)(job);
}
void runBox(const FloatBox& job) {
    HWY_DYNAMIC_DISPATCH(boxFloats)(job);
}

/// Column sums start anew in every band. Those of bytes are exact, so that the cut does not show; those of floats are
/// cut whether there are threads or not.
template <class T>
Bands boxBands(const MemoryAllocator& memory, ImgSize size, ImgSize mask) {
    constexpr std::int32_t kMasks = sizeof(T) == 1 ? 2 : 8;  // rows of a band, so that the start does not weigh
    const auto leastRows =
        static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{kMasks} * mask.height, size.height));
    return sizeof(T) == 1 ? bandsForThreads(&memory, size, leastRows, kBoxRows<T>)
                          : bandsOf(size, leastRows, kBoxRows<T>);
}

/// Numbers and samples of scratch.
struct BoxScratch {
    std::int64_t stride;  ///< of a row of column sums
    std::int64_t sums;    ///< of a band
    std::int64_t copied;  ///< samples
};
template <class T>
BoxScratch boxScratch(ImgSize size, ImgSize mask, bool inPlace) {
    constexpr std::int64_t kVectorRoom = 16;
    const std::int64_t columns = std::int64_t{size.width} + mask.width - 1;
    const std::int64_t lines = std::int64_t{size.height} + mask.height - 1;
    const std::int64_t stride = (columns + 2 * kVectorRoom - 1) / kVectorRoom * kVectorRoom;
    return {stride, (1 + kGroupRows) * stride + kBoxRows<T> * (stride + kVectorRoom), inPlace ? columns * lines : 0};
}

template <class T, class Sum>
ImgStatus box(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, ImgSize size, ImgSize mask,
              std::int32_t anchorX, std::int32_t anchorY, bool inPlace, MemoryAllocator* allocator) {
    constexpr std::int32_t kPixelBytes = static_cast<std::int32_t>(sizeof(T));
    constexpr std::int64_t kLargestArea = 1 << 23;
    const ImgStatus status = checkPlanes(size, {{src, srcStep, kPixelBytes}, {dst, dstStep, kPixelBytes}});
    if (status != kImgOk) {
        return status;
    }
    if (mask.width < 1 || mask.height < 1 || anchorX < 0 || anchorX >= mask.width || anchorY < 0 ||
        anchorY >= mask.height || (kPixelBytes == 1 && std::int64_t{mask.width} * mask.height >= kLargestArea)) {
        return kImgBadMaskSize;
    }
    Plane<const T> from{src - static_cast<std::ptrdiff_t>(srcStep) * anchorY / kPixelBytes - anchorX, srcStep};
    const std::int32_t columns = size.width + mask.width - 1;
    MemoryAllocator heap;
    MemoryAllocator& memory = allocator != nullptr ? *allocator : heap;
    const BoxScratch scratch = boxScratch<T>(size, mask, inPlace);
    const Bands bands = boxBands<T>(memory, size, mask);
    ScratchBlock block(memory);
    block.add<Sum>(bands.count() * scratch.sums);
    block.add<T>(scratch.copied);
    if (!block.allocate()) {
        return kImgNoMemory;
    }
    auto* sums = block.take<Sum>(bands.count() * scratch.sums);
    if (inPlace) {
        T* copy = block.take<T>(scratch.copied);
        inBands(&memory, {columns, size.height + mask.height - 1}, [&](std::int32_t first, std::int32_t rows) {
            for (std::int32_t y = first; y < first + rows; ++y) {
                std::memcpy(copy + std::ptrdiff_t{columns} * y, from.row(y),
                            static_cast<std::size_t>(columns) * sizeof(T));
            }
            return true;
        });
        from = {copy, columns * kPixelBytes};
    }
    runTasks(&memory, bands.count(), [&](std::int32_t band) {
        const std::int32_t first = bands.first(band);
        Sum* own = sums + band * scratch.sums;
        runBox({{from.row(first), from.step},
                {Plane<T>{dst, dstStep}.row(first), dstStep},
                {size.width, bands.rowsOf(band)},
                mask,
                own,
                own + scratch.stride,
                own + (1 + kGroupRows) * scratch.stride,
                scratch.stride,
                columns});
    });
    return kImgOk;
}

}  // namespace

ImgStatus ImgBox8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                    ImgSize size, ImgSize mask, std::int32_t anchorX, std::int32_t anchorY) noexcept {
    return box<std::uint8_t, std::uint32_t>(src, srcStep, dst, dstStep, size, mask, anchorX, anchorY, false, nullptr);
}
ImgStatus ImgBoxFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                    ImgSize mask, std::int32_t anchorX, std::int32_t anchorY) noexcept {
    return box<float, double>(src, srcStep, dst, dstStep, size, mask, anchorX, anchorY, false, nullptr);
}
ImgStatus ImgBoxInPlace8C1(std::uint8_t* plane, std::int32_t step, ImgSize size, ImgSize mask, std::int32_t anchorX,
                           std::int32_t anchorY, MemoryAllocator* allocator) noexcept {
    return box<std::uint8_t, std::uint32_t>(plane, step, plane, step, size, mask, anchorX, anchorY, true, allocator);
}
ImgStatus ImgBoxInPlaceFC1(float* plane, std::int32_t step, ImgSize size, ImgSize mask, std::int32_t anchorX,
                           std::int32_t anchorY, MemoryAllocator* allocator) noexcept {
    return box<float, double>(plane, step, plane, step, size, mask, anchorX, anchorY, true, allocator);
}

std::int64_t boxInPlaceScratch(ImgSize size, ImgSize mask, bool isFloat, const MemoryAllocator& allocator) {
    const auto bytes = [&](std::int64_t sumBytes, std::int64_t sampleBytes, const BoxScratch& scratch,
                           const Bands& bands) {
        return bands.count() * scratch.sums * sumBytes + scratch.copied * sampleBytes;
    };
    return isFloat ? bytes(sizeof(double), sizeof(float), boxScratch<float>(size, mask, true),
                           boxBands<float>(allocator, size, mask))
                   : bytes(sizeof(std::uint32_t), 1, boxScratch<std::uint8_t>(size, mask, true),
                           boxBands<std::uint8_t>(allocator, size, mask));
}

}  // namespace lumiset
#endif
