// The 8-bit blur. Rows go through both passes four (colour) or sixteen (mask) at a time, so that the whole
// intermediate picture never exists: the vertical pass, vectorised along the row with its sums in two arrays,
// leaves the rows interleaved, sixteen samples for each x, and the horizontal pass walks x with one sum a lane.

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

template <bool kEvenX, bool kEvenY, class RoundingX, class RoundingY>
void blurPlane(const TriangularBlurJob& job, const RoundingX& roundingX, const RoundingY& roundingY,
               const ByteBlurScratch& scratch, std::int32_t firstRow, std::int32_t rowCount) {
    const TriangularKernel kernelX(job.sizeX);
    const TriangularKernel kernelY(job.sizeY);
    const InnerRows rows(job);
    const bool color = job.channels == 4;
    const PixelStore store(job);
    const std::size_t samples = static_cast<std::size_t>(job.width) * static_cast<std::size_t>(job.channels);
    const std::int32_t blockRows = kInterleave / job.channels;
    if (firstRow == 0) {
        startColumns(rows, samples, kernelY, roundingY.bias, scratch);
    } else {
        startColumnsAt(rows, firstRow, samples, kernelY, roundingY.bias, scratch);
    }
    const std::int32_t end = firstRow + rowCount;
    for (std::int32_t y = firstRow; y < end; y += blockRows) {
        RowTargets targets;
        for (std::int32_t r = 0; r < blockRows; ++r) {
            targets.src[r] = rows.source(y + r);
            targets.dst[r] = y + r < end ? rows.target(y + r) : scratch.spareRow;
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

void blurBytes(const TriangularBlurJob& job, const ByteBlurScratch& scratch, std::int32_t firstRow,
               std::int32_t rowCount) {
    const std::int32_t divisorX = TriangularKernel(job.sizeX).divisor;
    const std::int32_t divisorY = TriangularKernel(job.sizeY).divisor;
    const auto factorX = roundingFactor(divisorX);
    const auto factorY = roundingFactor(divisorY);
    const auto withParity = [&](const auto& roundingX, const auto& roundingY) {
        const bool evenX = job.sizeX % 2 == 0;
        const bool evenY = job.sizeY % 2 == 0;
        if (evenX) {
            evenY ? blurPlane<true, true>(job, roundingX, roundingY, scratch, firstRow, rowCount)
                  : blurPlane<true, false>(job, roundingX, roundingY, scratch, firstRow, rowCount);
        } else {
            evenY ? blurPlane<false, true>(job, roundingX, roundingY, scratch, firstRow, rowCount)
                  : blurPlane<false, false>(job, roundingX, roundingY, scratch, firstRow, rowCount);
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
    const std::int64_t samples = wholeVectors(std::int64_t{job.width} * job.channels + kLargestVector);
    const std::int64_t before = TriangularKernel(job.sizeX).half + 1;
    const std::int64_t interleaved = wholeVectors((2 * before + job.width + 2 * kLargestVector) * kInterleave);
    const std::int64_t packed = job.channels == 1 ? samples : 0;
    const Bands bands = blurBands(job, kSumsOfBytes, allocator);
    ScratchBlock block(allocator);
    block.add<std::int32_t>(bands.count() * 2 * samples);
    block.add<std::uint32_t>(bands.count() * 4 * packed);
    block.add<std::uint8_t>(bands.count() * interleaved);
    block.add<std::uint8_t>(bands.count() * samples);
    if (!block.allocate()) {
        return false;
    }
    auto* sums = block.take<std::int32_t>(bands.count() * 2 * samples);
    auto* packedRows = block.take<std::uint32_t>(bands.count() * 4 * packed);
    auto* columns = block.take<std::uint8_t>(bands.count() * interleaved);
    auto* spareRows = block.take<std::uint8_t>(bands.count() * samples);
    runTasks(&allocator, bands.count(), [&](std::int32_t band) {
        ByteBlurScratch scratch{};
        scratch.slopes = sums + 2 * band * samples;
        scratch.sums = scratch.slopes + samples;
        scratch.packed = packedRows + 4 * band * packed;
        scratch.interleaved = columns + band * interleaved + (before + 3) / 4 * 4 * kInterleave;
        scratch.spareRow = spareRows + band * samples;
        scratch.packedStride = static_cast<std::int32_t>(packed);
        HWY_DYNAMIC_DISPATCH(blurBytes)(job, scratch, bands.first(band), bands.rowsOf(band));
    });
    fillRingRows<std::uint8_t>(job);
    return true;
}

}  // namespace lumiset
#endif
