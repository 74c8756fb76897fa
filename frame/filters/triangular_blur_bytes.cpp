// The 8-bit blur. Rows go through both passes four (colour) or sixteen (mask) at a time, so that the whole
// intermediate picture never exists: the vertical pass, vectorised along the row with its sums in two arrays,
// leaves the rows interleaved, sixteen samples for each x, and the horizontal pass walks x with one sum a lane.

#include "frame/filters/blur_rows.h"
#include "frame/filters/byte_blur_scratch.h"
#include "frame/filters/scratch_block.h"
#include "frame/filters/triangular_blur.h"
#include "frame/filters/triangular_kernel.h"

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
