// The float blur, in double sums: single-precision ones leave ghosts of bright pixels behind. A colour row is
// blurred as it is, four samples for each x; mask rows four at a time, interleaved the same way. Samples that are
// not finite count as 0, or one of them would spoil the rest of its row. Sums of floats tell where they began, so the
// bands in which they begin anew are the same on any number of threads. Where these are more than the bands, the
// columns of a band are shared as well: then the whole picture is blurred down before its rows are blurred along.

#include <algorithm>
#include <cstring>

#include "frame/filters/blur_rows.h"
#include "frame/filters/float_blur_scratch.h"
#include "frame/filters/triangular_blur.h"
#include "frame/filters/triangular_kernel.h"
#include "frame/scratch_block.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/filters/triangular_blur_floats.cpp"
#include "hwy/foreach_target.h"

#include "frame/filters/float_blur_columns-inl.h"
#include "frame/filters/float_blur_rows-inl.h"

#ifndef LUMISET_TRIANGULAR_BLUR_FLOATS
#define LUMISET_TRIANGULAR_BLUR_FLOATS
namespace lumiset {

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
    constexpr std::int32_t kMostBands = 64;      // each has its own memory
    const ImgSize size{job.width, InnerRows(job).count()};
    const std::int32_t leastRows = (size.height + kMostBands - 1) / kMostBands;
    const Bands bands = bandsOf(size, std::max(kBandReach * TriangularKernel(job.sizeY).half, leastRows), 4);
    const Bands manyBands = bandsOf(size, leastRows, 4);
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
