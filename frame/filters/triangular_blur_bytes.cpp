// The 8-bit blur. Rows go through both passes four (colour) or sixteen (mask) at a time, so that the whole
// intermediate picture never exists: the vertical pass, vectorised along the row with its sums in two arrays,
// leaves the rows interleaved, sixteen samples for each x, and the horizontal pass walks x with one sum a lane.

#include <type_traits>

#include "frame/filters/blur_rows.h"
#include "frame/filters/byte_blur_scratch.h"
#include "frame/filters/triangular_blur.h"
#include "frame/filters/triangular_kernel.h"
#include "frame/scratch_block.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/filters/triangular_blur_bytes.cpp"
#include "hwy/foreach_target.h"

#include "frame/filters/byte_blur_columns-inl.h"
#include "frame/filters/byte_blur_rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

/// The vertical pass of a group of rows.
template <bool kEven, class Rounding>
void blurColumns(const TriangularBlurJob& job, std::int32_t y, const TriangularKernel& kernel, const Rounding& rounding,
                 const ByteBlurScratch& scratch) {
    const InnerRows rows(job);
    const std::size_t samples = samplesOfRow(job);
    auto* out = reinterpret_cast<std::uint32_t*>(scratch.interleaved);
    if (job.channels == 4) {
        fourRows<kEven, true>(rows, y, samples, kernel, rounding, scratch, out);
        return;
    }
    std::uint32_t* group[4];
    for (std::int32_t g = 0; g < 4; ++g) {
        group[g] = scratch.packed + static_cast<std::ptrdiff_t>(g) * scratch.packedStride;
        fourRows<kEven, false>(rows, y + 4 * g, samples, kernel, rounding, scratch, group[g]);
    }
    const Words d;
    for (std::size_t i = 0; i < samples; i += lanes()) {
        hn::StoreInterleaved4(hn::Load(d, group[0] + i), hn::Load(d, group[1] + i), hn::Load(d, group[2] + i),
                              hn::Load(d, group[3] + i), d, out + 4 * i);
    }
}

/// The horizontal pass of a group of rows, of which those from `end` on are not there.
template <bool kEven, class Rounding>
void blurRows(const TriangularBlurJob& job, std::int32_t y, std::int32_t end, const TriangularKernel& kernel,
              const Rounding& rounding, const ByteBlurScratch& scratch) {
    const InnerRows rows(job);
    RowTargets targets;
    for (std::int32_t r = 0; r < kInterleave / job.channels; ++r) {
        targets.src[r] = rows.source(y + r);
        targets.dst[r] = y + r < end ? rows.target(y + r) : scratch.spareRow;
    }
    spreadEdges(scratch.interleaved, job.width, kernel);
    if (job.channels == 4) {
        walkColor<kEven>(scratch.interleaved, job.width, kernel, rounding, PixelStore(job), targets);
    } else {
        walkMask<kEven>(scratch.interleaved, job.width, kernel, rounding, targets);
    }
}

/// Calls `work(bool constant for an even size, rounding)`.
template <class Work>
void withKernel(const TriangularKernel& kernel, const std::optional<float>& factor, const Work& work) {
    const auto withRounding = [&](const auto& rounding) {
        kernel.even ? work(std::true_type(), rounding) : work(std::false_type(), rounding);
    };
    factor ? withRounding(FactorRounding(kernel.divisor, *factor)) : withRounding(WholeRounding(kernel.divisor));
}

}  // namespace

/// Both passes of a band, whose sums begin anew unless it goes on from the one above.
void blurByteBand(const TriangularBlurJob& job, const BlurBand& band, bool goesOn, const ByteBlurScratch& scratch) {
    const TriangularKernel down(job.sizeY);
    const TriangularKernel along(job.sizeX);
    withKernel(down, scratch.factorY, [&](auto evenDown, const auto& roundingDown) {
        if (!goesOn) {
            startColumns(InnerRows(job), band.first, samplesOfRow(job), down, roundingDown.bias, scratch);
        }
        withKernel(along, scratch.factorX, [&](auto evenAlong, const auto& roundingAlong) {
            for (std::int32_t y = band.first; y < band.end; y += kInterleave / job.channels) {
                blurColumns<decltype(evenDown)::value>(job, y, down, roundingDown, scratch);
                blurRows<decltype(evenAlong)::value>(job, y, band.end, along, roundingAlong, scratch);
            }
        });
    });
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(blurByteBand);

bool triangularBlurBytes(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept {
    constexpr std::int64_t kLargestVector = 64;  // samples, with room for whatever a last vector may touch
    const TriangularKernel down(job.sizeY);
    const TriangularKernel along(job.sizeX);
    // Sums of whole numbers come out the same wherever they began.
    const BandRuns runs(allocator, {job.width, InnerRows(job).count()}, kInterleave / job.channels);
    const std::int64_t tasks = runs.tasks();
    const std::int64_t samples = wholeVectors(std::int64_t{job.width} * job.channels + kLargestVector);
    const std::int64_t before = along.half + 1;
    const std::int64_t interleaved = wholeVectors((2 * before + job.width + 2 * kLargestVector) * kInterleave);
    const std::int64_t packed = job.channels == 1 ? samples : 0;
    ScratchBlock block(allocator);
    block.add<std::int32_t>(tasks * samples);
    block.add<std::int32_t>(tasks * samples);
    block.add<std::uint32_t>(tasks * 4 * packed);
    block.add<std::uint8_t>(tasks * interleaved);
    block.add<std::uint8_t>(tasks * samples);
    if (!block.allocate()) {
        return false;
    }
    ByteBlurScratch first{};
    first.factorX = roundingFactor(along.divisor);
    first.factorY = roundingFactor(down.divisor);
    first.slopes = block.take<std::int32_t>(tasks * samples);
    first.sums = block.take<std::int32_t>(tasks * samples);
    first.packed = block.take<std::uint32_t>(tasks * 4 * packed);
    first.packedStride = static_cast<std::int32_t>(packed);
    first.interleaved = block.take<std::uint8_t>(tasks * interleaved) + (before + 3) / 4 * 4 * kInterleave;
    first.spareRow = block.take<std::uint8_t>(tasks * samples);
    runs.run([&](const Bands& bands, std::int32_t band, std::int64_t task, bool goesOn) {
        ByteBlurScratch scratch = first;
        scratch.slopes += task * samples;
        scratch.sums += task * samples;
        scratch.packed += task * 4 * packed;
        scratch.interleaved += task * interleaved;
        scratch.spareRow += task * samples;
        HWY_DYNAMIC_DISPATCH(blurByteBand)(job, {bands, band}, goesOn, scratch);
    });
    fillRingRows<std::uint8_t>(job);
    return true;
}

}  // namespace lumiset
#endif
