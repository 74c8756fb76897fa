// The float blur, in double sums: single-precision ones leave ghosts of bright pixels behind. A colour row is
// blurred as it is, four samples for each x; mask rows four at a time, interleaved the same way. Samples that are
// not finite count as 0, or one of them would spoil the rest of its row.

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

/// Rows after which the sums start anew, so that errors do not add up; so many that it costs little.
inline std::int32_t rowsOfFloatSums(const TriangularBlurJob& job) {
    return bandsOf({job.width, InnerRows(job).count()}, 8 * TriangularKernel(job.sizeY).half, 16).rows;
}

struct FloatBlurScratch {
    double* slopes;      ///< S of each sample of a row
    double* sums;        ///< T of each sample of a row
    float* rows;         ///< four rows after the vertical pass (masks)
    float* interleaved;  ///< of each group four samples for each x, with columns left of the picture before them
    float* results;      ///< of each task, as `interleaved`, after the horizontal pass
    std::int64_t rowStride;
    std::int64_t interleavedStride;

    [[nodiscard]] float* group(std::int32_t index) const { return interleaved + index * interleavedStride; }
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

template <class D>
HWY_INLINE hn::Vec<D> loadFinite(D d, const float* from) {
    const hn::Rebind<float, D> single;
    const auto value = hn::LoadU(single, from);
    const auto finite = hn::Le(hn::Abs(value), hn::Set(single, std::numeric_limits<float>::max()));
    return hn::PromoteTo(d, hn::IfThenElseZero(finite, value));
}

/// Runs `work(i, load)` over a row of samples, `load` reading a vector of doubles.
template <class Work>
HWY_INLINE void alongRow(std::size_t samples, const Work& work) {
    const Doubles d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= samples; i += hn::Lanes(d)) {
        work(i, [](const float* from) HWY_ATTR { return loadFinite(Doubles(), from); });
    }
    if (i < samples) {
        work(i, [=](const float* from) HWY_ATTR {
            HWY_ALIGN float few[HWY_MAX_BYTES / sizeof(double)] = {};
            std::memcpy(few, from, (samples - i) * sizeof(float));
            return loadFinite(Doubles(), few);
        });
    }
}

const float* sourceRow(const InnerRows& rows, std::int32_t y) {
    return reinterpret_cast<const float*>(rows.source(y));
}

/// Sums of the first row.
void startColumns(const InnerRows& rows, std::size_t samples, const TriangularKernel& kernel,
                  const FloatBlurScratch& scratch) {
    const Doubles d;
    const std::size_t stored = hwy::RoundUpTo(samples, hn::Lanes(d)) * sizeof(double);
    std::memset(scratch.slopes, 0, stored);
    std::memset(scratch.sums, 0, stored);
    for (std::int32_t t = 0; t < kernel.half; ++t) {
        const float* row = sourceRow(rows, t);
        alongRow(samples, [&](std::size_t i, const auto& load) HWY_ATTR {
            const auto all = hn::Add(hn::Load(d, scratch.slopes + i), load(row + i));
            hn::Store(all, d, scratch.slopes + i);
            hn::Store(hn::Add(hn::Load(d, scratch.sums + i), all), d, scratch.sums + i);
        });
    }
    const float* first = sourceRow(rows, 0);
    alongRow(samples, [&](std::size_t i, const auto& load) HWY_ATTR {
        const auto edge = load(first + i);
        const auto before = hn::Mul(edge, hn::Set(d, kernel.weightBefore()));
        hn::Store(hn::Add(hn::Load(d, scratch.sums + i), before), d, scratch.sums + i);
        const auto slope = hn::Load(d, scratch.slopes + i);
        hn::Store(hn::Sub(slope, hn::Mul(edge, hn::Set(d, kernel.half))), d, scratch.slopes + i);
    });
}

/// Sums of row `y`, from all rows that it is made of.
void startColumnsAt(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                    const FloatBlurScratch& scratch) {
    const Doubles d;
    const std::int32_t skip = kernel.even ? 1 : 0;
    alongRow(samples, [&](std::size_t i, const auto& load) HWY_ATTR {
        auto slope = hn::Zero(d);
        auto sum = hn::Zero(d);
        for (std::int32_t t = 1 - kernel.half - skip; t < kernel.half; ++t) {
            const auto v = load(sourceRow(rows, y + t) + i);
            sum = hn::Add(sum, hn::Mul(v, hn::Set(d, t >= 0 ? kernel.half - t : kernel.half + t + skip)));
            slope = t >= 0 ? hn::Add(slope, v) : t < -skip ? hn::Sub(slope, v) : slope;
        }
        hn::Store(hn::Sub(slope, load(sourceRow(rows, y - kernel.half - skip) + i)), d, scratch.slopes + i);
        hn::Store(sum, d, scratch.sums + i);
    });
}

/// Row `y`, and the sums moved on to the next.
void blurredRow(const InnerRows& rows, std::int32_t y, std::size_t samples, const TriangularKernel& kernel,
                const FloatBlurScratch& scratch, float* out) {
    const float* ahead = sourceRow(rows, y + kernel.half);
    const float* here = sourceRow(rows, y);
    const float* before = sourceRow(rows, y - (kernel.even ? 1 : 0));
    const float* behind = sourceRow(rows, y - (kernel.even ? 1 : 0) - kernel.half);
    const Doubles d;
    const auto factor = hn::Set(d, 1.0 / kernel.divisor);
    alongRow(samples, [&](std::size_t i, const auto& load) HWY_ATTR {
        const auto sum = hn::Load(d, scratch.sums + i);
        hn::Store(hn::DemoteTo(Singles(), hn::Mul(sum, factor)), Singles(), out + i);
        const auto change =
            hn::Sub(hn::Add(load(ahead + i), load(behind + i)), hn::Add(load(here + i), load(before + i)));
        const auto slope = hn::Add(hn::Load(d, scratch.slopes + i), change);
        hn::Store(slope, d, scratch.slopes + i);
        hn::Store(hn::Add(sum, slope), d, scratch.sums + i);
    });
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

/// Puts a finished colour row in its place.
void finishColorRow(const TriangularBlurJob& job, float* pixels, const float* src, float* dst) {
    const std::size_t samples = 4 * static_cast<std::size_t>(job.width);
    if (job.keptSample >= 0) {
        for (std::size_t i = static_cast<std::size_t>(job.keptSample); i < samples; i += 4) {
            pixels[i] = src[i];
        }
    }
    if (!job.reverseSamples) {
        std::memcpy(dst, pixels, samples * sizeof(float));
        return;
    }
    const hn::CappedTag<float, 4> d;
    for (std::size_t i = 0; i < samples; i += 4) {
        hn::StoreU(hn::Reverse(d, hn::LoadU(d, pixels + i)), d, dst + i);
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

}  // namespace

void blurFloatColumns(const TriangularBlurJob& job, const FloatBlurScratch& all, const BlurPath& path,
                      const BlurStrip& strip) {
    const TriangularKernel kernel(job.sizeY);
    const InnerRows rows(job, strip.first * sizeof(float));
    FloatBlurScratch scratch = all;
    scratch.slopes += strip.first;
    scratch.sums += strip.first;
    scratch.rows += strip.first;
    const std::int32_t startRows = rowsOfFloatSums(job);
    const std::int32_t groupRows = job.channels == 4 ? 1 : 4;
    for (std::int32_t y = strip.firstRow; y < strip.endRow; y += groupRows) {
        if (y == 0) {
            startColumns(rows, strip.samples, kernel, scratch);
        } else if (y % startRows == 0) {
            startColumnsAt(rows, y, strip.samples, kernel, scratch);
        }
        float* out = all.group(path.groupOf(y));
        if (groupRows == 1) {
            blurredRow(rows, y, strip.samples, kernel, scratch, out + strip.first);
            continue;
        }
        for (std::int32_t r = 0; r < 4; ++r) {
            blurredRow(rows, y + r, strip.samples, kernel, scratch, scratch.rows + r * scratch.rowStride);
        }
        interleaveRows(scratch.rows, scratch.rowStride, strip.samples, out + 4 * strip.first);
    }
}

void blurFloatRows(const TriangularBlurJob& job, const FloatBlurScratch& scratch, const BlurPath& path,
                   const BlurredRows& part) {
    const TriangularKernel kernel(job.sizeX);
    const InnerRows rows(job);
    const auto target = [&](std::int32_t y) { return reinterpret_cast<float*>(rows.target(y)); };
    float* results = scratch.results + part.task * scratch.interleavedStride;
    const std::int32_t groupRows = job.channels == 4 ? 1 : 4;
    for (std::int32_t y = part.first; y < part.end; y += groupRows) {
        float* columns = scratch.group(path.groupOf(y));
        spreadEdges(columns, job.width, kernel.half + 1);
        walkColumns(columns, job.width, kernel, results);
        if (groupRows == 1) {
            finishColorRow(job, results, sourceRow(rows, y), target(y));
        } else {
            float* const targets[4] = {target(y), target(y + 1), target(y + 2), target(y + 3)};
            separateRows(results, static_cast<std::size_t>(job.width), targets, std::min(4, part.end - y));
        }
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(blurFloatColumns);
HWY_EXPORT(blurFloatRows);

bool triangularBlurFloats(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept {
    constexpr BlurParts kParts{16, 4, 768};      // narrower strips leave too little of a row to fetch ahead
    constexpr std::int64_t kLargestVector = 16;  // samples
    const std::int64_t samples = wholeVectors(std::int64_t{job.width} * job.channels + kLargestVector);
    const std::int64_t before = (TriangularKernel(job.sizeX).half + 4) / 4 * 4;
    const std::int64_t interleaved = wholeVectors(4 * (2 * before + job.width + kLargestVector));
    const std::int64_t rows = job.channels == 1 ? 4 * samples : 0;
    const BlurPath path(job, job.channels == 4 ? 1 : 4, kParts, allocator);
    ScratchBlock block(allocator);
    block.add<double>(samples);
    block.add<double>(samples);
    block.add<float>(rows);
    block.add<float>(path.groups() * interleaved);
    block.add<float>(path.tasks() * interleaved);
    if (!block.allocate()) {
        return false;
    }
    FloatBlurScratch scratch{};
    scratch.slopes = block.take<double>(samples);
    scratch.sums = block.take<double>(samples);
    scratch.rows = block.take<float>(rows);
    scratch.rowStride = samples;
    scratch.interleaved = block.take<float>(path.groups() * interleaved) + 4 * before;
    scratch.results = block.take<float>(path.tasks() * interleaved);
    scratch.interleavedStride = interleaved;
    path.run(
        [&](const BlurStrip& strip) {
            HWY_DYNAMIC_DISPATCH(blurFloatColumns)
            (job, scratch, path, strip);
        },
        [&](const BlurredRows& part) {
            HWY_DYNAMIC_DISPATCH(blurFloatRows)
            (job, scratch, path, part);
        });
    fillRingRows<float>(job);
    return true;
}

}  // namespace lumiset
#endif
