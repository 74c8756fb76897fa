// The float blur, in double sums: single-precision ones leave ghosts of bright pixels behind. A colour row is
// blurred as it is, four samples for each x; mask rows four at a time, interleaved the same way. Samples that are
// not finite count as 0, or one of them would spoil the rest of its row. Sums of floats tell where they began, so the
// bands in which they begin anew are the same on any number of threads. Where these are more than the bands, the
// columns of a band are shared as well: then the whole picture is blurred down before its rows are blurred along.

#include <cstring>
#include <limits>

#include "frame/filters/blur_rows.h"
#include "frame/filters/triangular_blur.h"
#include "frame/filters/triangular_kernel.h"
#include "frame/scratch_block.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/filters/triangular_blur_floats.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

#ifndef LUMISET_TRIANGULAR_BLUR_FLOATS
#define LUMISET_TRIANGULAR_BLUR_FLOATS
namespace lumiset {

struct FloatBlurScratch {
    double* slopes;      ///< S of each sample of a row
    double* sums;        ///< T of each sample of a row
    float* rows;         ///< four rows after the vertical pass (masks)
    float* interleaved;  ///< four samples for each x, with columns left of the picture before them
    float* results;      ///< as `interleaved`, after the horizontal pass (masks)
    std::int64_t rowStride;
};

/// Columns of samples.
struct BlurStrip {
    std::size_t first;
    std::size_t samples;
};

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Singles = hn::Rebind<float, Doubles>;
using FourDoubles = hn::CappedTag<double, 4>;  ///< four lanes where the vectors hold them, else two
using FourSingles = hn::Rebind<float, FourDoubles>;

/// The samples of some vectors of columns of a row.
template <std::size_t kVectors>
struct WholeVectors {
    static constexpr std::size_t kCount = kVectors;
    HWY_INLINE hn::Vec<Singles> load(const float* row, std::size_t v) const {
        return hn::LoadU(Singles(), row + v * hn::Lanes(Singles()));
    }
    HWY_INLINE void store(hn::Vec<Singles> first, float* row) const { hn::StoreU(first, Singles(), row); }
};
/// The last samples of a row, fewer than a vector's.
struct FewSamples {
    static constexpr std::size_t kCount = 1;
    static constexpr std::size_t kMost = HWY_MAX_BYTES / sizeof(double);
    HWY_INLINE hn::Vec<Singles> load(const float* row, std::size_t) const {
        HWY_ALIGN float few[kMost] = {};
        std::memcpy(few, row, count * sizeof(float));
        return hn::Load(Singles(), few);
    }
    HWY_INLINE void store(hn::Vec<Singles> all, float* row) const {
        HWY_ALIGN float few[kMost];
        hn::Store(all, Singles(), few);
        std::memcpy(row, few, count * sizeof(float));
    }
    std::size_t count;
};

/// Runs `work(i, part)` over a row of samples, `part` being those from the i-th on: of `kVectors` vectors, at the end
/// of one.
template <std::size_t kVectors, class Work>
HWY_INLINE void alongRow(std::size_t samples, const Work& work) {
    const std::size_t lanes = hn::Lanes(Singles());
    std::size_t i = 0;
    for (; i + kVectors * lanes <= samples; i += kVectors * lanes) {
        work(i, WholeVectors<kVectors>());
    }
    for (; i < samples; i += lanes) {
        work(i, FewSamples{std::min(lanes, samples - i)});
    }
}

const float* sourceRow(const InnerRows& rows, std::int32_t y) {
    return reinterpret_cast<const float*>(rows.source(y));
}

/// Sums of some vectors of columns.
template <std::size_t kVectors>
struct ColumnSums {
    hn::Vec<Doubles> slope[kVectors];
    hn::Vec<Doubles> sum[kVectors];
};

HWY_INLINE bool isFinite(hn::Vec<Doubles> v) {
    const Doubles d;
    return hn::AllTrue(d, hn::Le(hn::Abs(v), hn::Set(d, std::numeric_limits<double>::max())));
}
template <std::size_t kVectors>
HWY_INLINE bool isFinite(const ColumnSums<kVectors>& sums) {
    auto all = hn::Add(sums.slope[0], sums.sum[0]);
    for (std::size_t v = 1; v < kVectors; ++v) {
        all = hn::Add(all, hn::Add(sums.slope[v], sums.sum[v]));
    }
    return isFinite(all);
}

/// `add(sample)`, which adds up and subtracts samples, without those that are not finite. They show in what comes out,
/// since no double is too small for a sum of floats: so each is looked at only then.
template <class Samples, class Add>
HWY_INLINE auto addFinite(const Samples& samples, const Add& add) {
    const auto all =
        add([&](const float* row, std::size_t v) HWY_ATTR { return hn::PromoteTo(Doubles(), samples.load(row, v)); });
    if (HWY_LIKELY(isFinite(all))) {
        return all;
    }
    return add([&](const float* row, std::size_t v) HWY_ATTR {
        const Singles d;
        const auto value = samples.load(row, v);
        const auto finite = hn::Le(hn::Abs(value), hn::Set(d, std::numeric_limits<float>::max()));
        return hn::PromoteTo(Doubles(), hn::IfThenElseZero(finite, value));
    });
}

/// Sums of columns of row `y`, from all rows that it is made of: a row's weight is the number of times that it is in a
/// running sum from the anchor outwards.
template <std::size_t kVectors, class Sample>
HWY_INLINE ColumnSums<kVectors> sumsOfRow(const InnerRows& rows, std::int32_t y, std::size_t i,
                                          const TriangularKernel& kernel, const Sample& sample) {
    ColumnSums<kVectors> result;
    hn::Vec<Doubles> ahead[kVectors];
    hn::Vec<Doubles> behind[kVectors];
    for (std::size_t v = 0; v < kVectors; ++v) {
        ahead[v] = behind[v] = result.sum[v] = hn::Zero(Doubles());
    }
    const auto addRow = [&](std::int32_t rowY, auto& running) HWY_ATTR {
        const float* row = sourceRow(rows, rowY) + i;
        for (std::size_t v = 0; v < kVectors; ++v) {
            running[v] = hn::Add(running[v], sample(row, v));
            result.sum[v] = hn::Add(result.sum[v], running[v]);
        }
    };
    for (std::int32_t t = 0; t < kernel.half; ++t) {
        addRow(y + t, ahead);
    }
    const std::int32_t weightsBehind = kernel.half - (kernel.even ? 0 : 1);
    for (std::int32_t t = 1; t <= weightsBehind; ++t) {
        addRow(y - t, behind);
    }
    const float* last = sourceRow(rows, y - weightsBehind - 1) + i;
    const float* before = sourceRow(rows, y - 1) + i;
    for (std::size_t v = 0; v < kVectors; ++v) {
        behind[v] = hn::Add(behind[v], sample(last, v));
        behind[v] = kernel.even ? hn::Sub(behind[v], sample(before, v)) : behind[v];
        result.slope[v] = hn::Sub(ahead[v], behind[v]);
    }
    return result;
}

void startColumns(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                  const FloatBlurScratch& scratch) {
    const Doubles d;
    // A line of memory of each row at a time: these rows are many, and far from each other.
    alongRow<4>(samples, [&](std::size_t i, const auto& part) HWY_ATTR {
        constexpr std::size_t kVectors = std::decay_t<decltype(part)>::kCount;
        const auto sums = addFinite(
            part, [&](const auto& sample) HWY_ATTR { return sumsOfRow<kVectors>(rows, y, i, kernel, sample); });
        for (std::size_t v = 0; v < kVectors; ++v) {
            hn::Store(sums.slope[v], d, scratch.slopes + i + v * hn::Lanes(d));
            hn::Store(sums.sum[v], d, scratch.sums + i + v * hn::Lanes(d));
        }
    });
}

/// Row `y`, and the sums moved on to the next.
template <bool kEven>
void blurredRow(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                const FloatBlurScratch& scratch, float* out) {
    const float* ahead = sourceRow(rows, y + kernel.half);
    const float* here = sourceRow(rows, y);
    const float* before = sourceRow(rows, y - 1);
    const float* behind = sourceRow(rows, y - (kEven ? 1 : 0) - kernel.half);
    const Doubles d;
    const auto factor = hn::Set(d, 1.0 / kernel.divisor);
    alongRow<1>(samples, [&](std::size_t i, const auto& part) HWY_ATTR {
        const auto change = addFinite(part, [&](const auto& sample) HWY_ATTR {
            const auto middle = sample(here + i, 0);
            return hn::Sub(hn::Add(sample(ahead + i, 0), sample(behind + i, 0)),
                           hn::Add(middle, kEven ? sample(before + i, 0) : middle));
        });
        const auto sum = hn::Load(d, scratch.sums + i);
        part.store(hn::DemoteTo(Singles(), hn::Mul(sum, factor)), out + i);
        const auto slope = hn::Add(hn::Load(d, scratch.slopes + i), change);
        hn::Store(slope, d, scratch.slopes + i);
        hn::Store(hn::Add(sum, slope), d, scratch.sums + i);
    });
}

void rowDown(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
             const FloatBlurScratch& scratch, float* out) {
    kernel.even ? blurredRow<true>(rows, y, samples, kernel, scratch, out)
                : blurredRow<false>(rows, y, samples, kernel, scratch, out);
}

/// Columns beyond the inner ones take the nearest inner one.
void spreadEdges(float* columns, std::int32_t width, std::int32_t reach) {
    const std::int32_t ring = edgeRing(width);
    for (std::int32_t x = -reach; x < ring; ++x) {
        std::memcpy(columns + 4 * x, columns + 4 * ring, 4 * sizeof(float));
    }
    for (std::int32_t x = width - ring; x < width + reach; ++x) {
        std::memcpy(columns + 4 * x, columns + 4 * (width - 1 - ring), 4 * sizeof(float));
    }
}

/// The horizontal pass over `width` columns of four samples.
void walkColumns(const float* columns, std::int32_t width, const TriangularKernel& kernel, float* out) {
    const FourDoubles d;
    const FourSingles single;
    const std::ptrdiff_t reach = std::ptrdiff_t{4} * kernel.half;
    const std::ptrdiff_t back = kernel.even ? 4 : 0;
    const auto factor = hn::Set(d, 1.0 / kernel.divisor);
    const auto load = [&](const float* from) HWY_ATTR { return hn::PromoteTo(d, hn::LoadU(single, from)); };
    for (std::size_t lane = 0; lane < 4; lane += hn::Lanes(d)) {
        const float* at = columns + lane;
        const auto edge = load(at);
        auto slope = hn::Zero(d);
        auto sum = hn::Zero(d);
        for (std::int32_t t = 0; t < kernel.half; ++t) {
            slope = hn::Add(slope, load(at + 4 * t));
            sum = hn::Add(sum, slope);
        }
        sum = hn::Add(sum, hn::Mul(edge, hn::Set(d, kernel.weightBefore())));
        slope = hn::Sub(slope, hn::Mul(edge, hn::Set(d, kernel.half)));
        float* to = out + lane;
        for (std::int32_t x = 0; x < width; ++x, at += 4, to += 4) {
            hn::StoreU(hn::DemoteTo(single, hn::Mul(sum, factor)), single, to);
            const auto change =
                hn::Sub(hn::Add(load(at + reach), load(at - back - reach)), hn::Add(load(at), load(at - back)));
            slope = hn::Add(slope, change);
            sum = hn::Add(sum, slope);
        }
    }
}

/// Puts the kept samples of a finished colour row in their place, and all in their order.
void finishColorRow(const TriangularBlurJob& job, const float* src, float* pixels) {
    const std::size_t samples = samplesOfRow(job);
    if (job.keptSample >= 0) {
        for (std::size_t i = static_cast<std::size_t>(job.keptSample); i < samples; i += 4) {
            pixels[i] = src[i];
        }
    }
    if (job.reverseSamples) {
        const hn::CappedTag<float, 4> d;
        for (std::size_t i = 0; i < samples; i += 4) {
            hn::StoreU(hn::Reverse(d, hn::LoadU(d, pixels + i)), d, pixels + i);
        }
    }
}

void interleaveRows(const float* rows, std::int64_t stride, std::size_t width, float* out) {
    const hn::ScalableTag<float> d;
    for (std::size_t x = 0; x < width; x += hn::Lanes(d)) {
        const float* from = rows + x;
        hn::StoreInterleaved4(hn::Load(d, from), hn::Load(d, from + stride), hn::Load(d, from + 2 * stride),
                              hn::Load(d, from + 3 * stride), d, out + 4 * x);
    }
}

void separateRows(const float* interleaved, std::size_t width, float* const (&rows)[4], std::int32_t count) {
    for (std::int32_t r = 0; r < count; ++r) {
        for (std::size_t x = 0; x < width; ++x) {
            rows[r][x] = interleaved[4 * x + static_cast<std::size_t>(r)];
        }
    }
}

/// Calls `work(y, out)` for the rows of a group, which go along side by side, and brings them together.
template <class Work>
void makeGroup(const TriangularBlurJob& job, std::int32_t y, std::int32_t end, const FloatBlurScratch& scratch,
               const Work& work) {
    if (job.channels == 4) {
        work(y, scratch.interleaved);
        return;
    }
    for (std::int32_t r = 0; r < std::min(4, end - y); ++r) {
        work(y + r, scratch.rows + r * scratch.rowStride);
    }
    interleaveRows(scratch.rows, scratch.rowStride, samplesOfRow(job), scratch.interleaved);
}

/// The horizontal pass of a group of rows.
void groupAlong(const TriangularBlurJob& job, std::int32_t y, std::int32_t end, const TriangularKernel& kernel,
                const FloatBlurScratch& scratch) {
    const InnerRows rows(job);
    const auto target = [&](std::int32_t r) { return reinterpret_cast<float*>(rows.target(y + r)); };
    spreadEdges(scratch.interleaved, job.width, kernel.half + 1);
    if (job.channels == 4) {
        walkColumns(scratch.interleaved, job.width, kernel, target(0));
        finishColorRow(job, sourceRow(rows, y), target(0));
        return;
    }
    walkColumns(scratch.interleaved, job.width, kernel, scratch.results);
    float* const targets[4] = {target(0), target(1), target(2), target(3)};
    separateRows(scratch.results, samplesOfRow(job), targets, std::min(4, end - y));
}

constexpr std::int32_t rowsOfGroup(const TriangularBlurJob& job) {
    return job.channels == 4 ? 1 : 4;
}

}  // namespace

/// Both passes of a band.
void blurFloatBand(const TriangularBlurJob& job, const BlurBand& band, const FloatBlurScratch& scratch) {
    const TriangularKernel down(job.sizeY);
    const TriangularKernel along(job.sizeX);
    const InnerRows rows(job);
    startColumns(rows, band.first, samplesOfRow(job), down, scratch);
    for (std::int32_t y = band.first; y < band.end; y += rowsOfGroup(job)) {
        makeGroup(job, y, band.end, scratch,
                  [&](std::int32_t row, float* out) { rowDown(rows, row, samplesOfRow(job), down, scratch, out); });
        groupAlong(job, y, band.end, along, scratch);
    }
}

/// The vertical pass of some columns of a band, into the destination.
void blurFloatStrip(const TriangularBlurJob& job, const BlurBand& band, const BlurStrip& strip,
                    const FloatBlurScratch& all) {
    const TriangularKernel kernel(job.sizeY);
    const InnerRows rows(job, strip.first * sizeof(float));
    FloatBlurScratch scratch = all;
    scratch.slopes += strip.first;
    scratch.sums += strip.first;
    startColumns(rows, band.first, strip.samples, kernel, scratch);
    for (std::int32_t y = band.first; y < band.end; ++y) {
        rowDown(rows, y, strip.samples, kernel, scratch, reinterpret_cast<float*>(rows.target(y)) + strip.first);
    }
}

/// The horizontal pass of rows that are in the destination.
void blurFloatRows(const TriangularBlurJob& job, const BlurBand& band, const FloatBlurScratch& scratch) {
    const TriangularKernel kernel(job.sizeX);
    const InnerRows rows(job);
    for (std::int32_t y = band.first; y < band.end; y += rowsOfGroup(job)) {
        makeGroup(job, y, band.end, scratch, [&](std::int32_t row, float* out) {
            std::memcpy(out, rows.target(row), samplesOfRow(job) * sizeof(float));
        });
        groupAlong(job, y, band.end, kernel, scratch);
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(blurFloatBand);
HWY_EXPORT(blurFloatStrip);
HWY_EXPORT(blurFloatRows);

bool triangularBlurFloats(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept {
    constexpr std::int64_t kLargestVector = 16;  // samples
    constexpr std::int32_t kBandReach = 4;       // so few bands that making their first sums takes little of the time
    constexpr std::size_t kStripSamples = 768;   // whole vectors, so that strips share none
    const ImgSize size{job.width, InnerRows(job).count()};
    const Bands bands = bandsOf(size, kBandReach * TriangularKernel(job.sizeY).half, 4);
    const Bands manyBands = bandsOf(size, 1, 4);
    const bool inStrips =
        static_cast<std::uint32_t>(bands.count()) < allocator.ThreadCount() && bands.count() < manyBands.count();
    const Bands& rowBands = inStrips ? manyBands : bands;
    const bool atOnce = allocator.ThreadCount() > 1;
    const std::int64_t tasks = atOnce ? rowBands.count() : 1;
    const std::int64_t samples = wholeVectors(std::int64_t{job.width} * job.channels + kLargestVector);
    const std::int64_t before = (TriangularKernel(job.sizeX).half + 4) / 4 * 4;
    const std::int64_t interleaved = wholeVectors(4 * (2 * before + job.width + kLargestVector));
    const std::int64_t rows = job.channels == 1 ? 4 * samples : 0;
    const std::int64_t results = job.channels == 1 ? interleaved : 0;
    ScratchBlock block(allocator);
    block.add<double>(tasks * samples);
    block.add<double>(tasks * samples);
    block.add<float>(tasks * rows);
    block.add<float>(tasks * interleaved);
    block.add<float>(tasks * results);
    if (!block.allocate()) {
        return false;
    }
    FloatBlurScratch first{};
    first.slopes = block.take<double>(tasks * samples);
    first.sums = block.take<double>(tasks * samples);
    first.rows = block.take<float>(tasks * rows);
    first.rowStride = samples;
    first.interleaved = block.take<float>(tasks * interleaved) + 4 * before;
    first.results = block.take<float>(tasks * results);
    const auto scratchOf = [&](std::int64_t task) {
        FloatBlurScratch scratch = first;
        scratch.slopes += task * samples;
        scratch.sums += task * samples;
        scratch.rows += task * rows;
        scratch.interleaved += task * interleaved;
        scratch.results += task * results;
        return scratch;
    };
    if (inStrips) {
        const std::size_t rowSamples = samplesOfRow(job);
        const auto strips = static_cast<std::int32_t>((rowSamples + kStripSamples - 1) / kStripSamples);
        runTasks(&allocator, bands.count() * strips, [&](std::int32_t i) {
            const std::int32_t band = i / strips;
            const std::size_t column = static_cast<std::size_t>(i % strips) * kStripSamples;
            HWY_DYNAMIC_DISPATCH(blurFloatStrip)
            (job, {bands, band}, {column, std::min(kStripSamples, rowSamples - column)}, scratchOf(band));
        });
    }
    runTasks(&allocator, rowBands.count(), [&](std::int32_t band) {
        const FloatBlurScratch scratch = scratchOf(atOnce ? band : 0);
        if (inStrips) {
            HWY_DYNAMIC_DISPATCH(blurFloatRows)(job, {rowBands, band}, scratch);
        } else {
            HWY_DYNAMIC_DISPATCH(blurFloatBand)(job, {rowBands, band}, scratch);
        }
    });
    fillRingRows<float>(job);
    return true;
}

}  // namespace lumiset
#endif
