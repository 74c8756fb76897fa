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

/// The vertical pass of a strip.
template <bool kEven, class Rounding>
void blurColumns(const TriangularBlurJob& job, const TriangularKernel& kernel, const Rounding& rounding,
                 const ByteBlurScratch& all, const BlurPath& path, const BlurStrip& strip) {
    const InnerRows rows(job, strip.first);
    ByteBlurScratch scratch = all;
    scratch.slopes += strip.first;
    scratch.sums += strip.first;
    if (strip.firstRow == 0) {
        startColumns(rows, strip.samples, kernel, rounding.bias, scratch);
    }
    const bool color = job.channels == 4;
    const std::int32_t groupRows = kInterleave / job.channels;
    for (std::int32_t y = strip.firstRow; y < strip.endRow; y += groupRows) {
        auto* out = reinterpret_cast<std::uint32_t*>(all.group(path.groupOf(y)));
        if (color) {
            fourRows<kEven, true>(rows, y, strip.samples, kernel, rounding, scratch, out + strip.first);
            continue;
        }
        std::uint32_t* group[4];
        for (std::int32_t g = 0; g < 4; ++g) {
            group[g] = scratch.packed + static_cast<std::ptrdiff_t>(g) * scratch.packedStride + strip.first;
            fourRows<kEven, false>(rows, y + 4 * g, strip.samples, kernel, rounding, scratch, group[g]);
        }
        const Words d;
        for (std::size_t i = 0; i < strip.samples; i += lanes()) {
            hn::StoreInterleaved4(hn::Load(d, group[0] + i), hn::Load(d, group[1] + i), hn::Load(d, group[2] + i),
                                  hn::Load(d, group[3] + i), d, out + 4 * (strip.first + i));
        }
    }
}

/// The horizontal pass of some rows.
template <bool kEven, class Rounding>
void blurRows(const TriangularBlurJob& job, const TriangularKernel& kernel, const Rounding& rounding,
              const ByteBlurScratch& scratch, const BlurPath& path, const BlurredRows& part) {
    const InnerRows rows(job);
    const PixelStore store(job);
    const std::int32_t groupRows = kInterleave / job.channels;
    for (std::int32_t y = part.first; y < part.end; y += groupRows) {
        RowTargets targets;
        for (std::int32_t r = 0; r < groupRows; ++r) {
            targets.src[r] = rows.source(y + r);
            targets.dst[r] = y + r < part.end ? rows.target(y + r) : scratch.spareRow;
        }
        std::uint8_t* columns = scratch.group(path.groupOf(y));
        spreadEdges(columns, job.width, kernel);
        if (job.channels == 4) {
            walkColor<kEven>(columns, job.width, kernel, rounding, store, targets);
        } else {
            walkMask<kEven>(columns, job.width, kernel, rounding, targets);
        }
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

void blurByteColumns(const TriangularBlurJob& job, const ByteBlurScratch& scratch, const BlurPath& path,
                     const BlurStrip& strip) {
    const TriangularKernel kernel(job.sizeY);
    withKernel(kernel, scratch.factorY, [&](auto even, const auto& rounding) {
        blurColumns<decltype(even)::value>(job, kernel, rounding, scratch, path, strip);
    });
}
void blurByteRows(const TriangularBlurJob& job, const ByteBlurScratch& scratch, const BlurPath& path,
                  const BlurredRows& part) {
    const TriangularKernel kernel(job.sizeX);
    withKernel(kernel, scratch.factorX, [&](auto even, const auto& rounding) {
        blurRows<decltype(even)::value>(job, kernel, rounding, scratch, path, part);
    });
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(blurByteColumns);
HWY_EXPORT(blurByteRows);

bool triangularBlurBytes(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept {
    constexpr BlurParts kParts{8, 1, 1536};      // narrower strips leave too little of a row to fetch ahead
    constexpr std::int64_t kLargestVector = 64;  // samples, with room for whatever a last vector may touch
    const std::int64_t samples = wholeVectors(std::int64_t{job.width} * job.channels + kLargestVector);
    const std::int64_t before = TriangularKernel(job.sizeX).half + 1;
    const std::int64_t interleaved = wholeVectors((2 * before + job.width + 2 * kLargestVector) * kInterleave);
    const std::int64_t packed = job.channels == 1 ? samples : 0;
    const BlurPath path(job, kInterleave / job.channels, kParts, allocator);
    ScratchBlock block(allocator);
    block.add<std::int32_t>(samples);
    block.add<std::int32_t>(samples);
    block.add<std::uint32_t>(4 * packed);
    block.add<std::uint8_t>(path.groups() * interleaved);
    block.add<std::uint8_t>(samples);
    if (!block.allocate()) {
        return false;
    }
    ByteBlurScratch scratch{};
    scratch.factorX = roundingFactor(TriangularKernel(job.sizeX).divisor);
    scratch.factorY = roundingFactor(TriangularKernel(job.sizeY).divisor);
    scratch.slopes = block.take<std::int32_t>(samples);
    scratch.sums = block.take<std::int32_t>(samples);
    scratch.packed = block.take<std::uint32_t>(4 * packed);
    scratch.packedStride = static_cast<std::int32_t>(packed);
    scratch.interleaved = block.take<std::uint8_t>(path.groups() * interleaved) + (before + 3) / 4 * 4 * kInterleave;
    scratch.interleavedStride = interleaved;
    scratch.spareRow = block.take<std::uint8_t>(samples);
    path.run(
        [&](const BlurStrip& strip) {
            HWY_DYNAMIC_DISPATCH(blurByteColumns)
            (job, scratch, path, strip);
        },
        [&](const BlurredRows& part) {
            HWY_DYNAMIC_DISPATCH(blurByteRows)
            (job, scratch, path, part);
        });
    fillRingRows<std::uint8_t>(job);
    return true;
}

}  // namespace lumiset
#endif
