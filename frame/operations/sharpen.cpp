// The frame goes through the kernel in bands of rows: each is copied beside a border of one repeated pixel, which also
// lets a frame be sharpened in place, and sharpened while it is in the cache.

#include "frame/primitives/sharpen.h"

#include <algorithm>
#include <cstring>

#include "frame/operations/filter.h"
#include "frame/operations/filter_frames.h"
#include "frame/primitives/copy.h"
#include "frame/scratch_block.h"

namespace lumiset {
namespace {

constexpr std::int32_t kBandRows = 8;

/// Rows of a copy with its neighbours, and the rows beside a part of the frame that one thread works on.
constexpr std::int32_t kCopiedRows = kBandRows + 2;
constexpr std::int32_t kScratchRows = kCopiedRows + 2;

Bands partsOf(const MemoryAllocator& memory, ImgSize size) {
    constexpr std::int32_t kLeastRows = 8 * kBandRows;
    return bandsForThreads(&memory, size, kLeastRows, kBandRows);
}

std::int64_t rowBytesOf(ImgSize size, std::int32_t bytesPerPixel) {
    return (std::int64_t{size.width} + 2) * bytesPerPixel;
}

/// Copies row `y` of the common rectangle, or the nearest one of it, between its repeated end pixels.
void copyWithEnds(const Frame& src, ImgSize size, std::int32_t y, std::uint8_t* out) {
    const auto pixel = static_cast<std::size_t>(src.BytesPerPixel());
    const std::size_t row = static_cast<std::size_t>(size.width) * pixel;
    std::memcpy(out + pixel, src.PixelAddress(0, std::clamp(y, 0, size.height - 1), 0), row);
    std::memcpy(out, out + pixel, pixel);
    std::memcpy(out + pixel + row, out + row, pixel);
}

/// One band from its bordered copy.
template <class T, class Sharpen, class CopyAlpha>
void sharpenBand(const Frame& bordered, Frame& dst, std::int32_t y, ImgSize size, std::int32_t alpha,
                 const Sharpen& sharpen, const CopyAlpha& copyAlpha) {
    const T* from = bordered.row<const T>(1) + 4;
    T* to = dst.row<T>(y);
    const std::int32_t first = alpha == 0 ? 1 : 0;
    copyAlpha(from + alpha, bordered.Stride(), to + alpha, dst.Stride(), size);
    sharpen(from + first, bordered.Stride(), to + first, dst.Stride(), size);
}

}  // namespace

std::int64_t FrameSharpenScratch(ImgSize size, std::int32_t bytesPerPixel, const MemoryAllocator& allocator) {
    return partsOf(allocator, size).count() * kScratchRows * rowBytesOf(size, bytesPerPixel);
}

bool FrameSharpen(const Frame& src, Frame& dst, MemoryAllocator* allocator) noexcept {
    if (!isColor(dst) || !sameFormat(src, dst)) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    const std::int32_t alpha = AlphaIndex(dst.Format());
    const std::int64_t rowBytes = rowBytesOf(size, src.BytesPerPixel());
    MemoryAllocator heap;
    MemoryAllocator& memory = allocator != nullptr ? *allocator : heap;
    const Bands parts = partsOf(memory, size);
    ScratchBlock block(memory);
    block.add<std::uint8_t>(FrameSharpenScratch(size, src.BytesPerPixel(), memory));
    if (!block.allocate()) {
        return false;
    }
    auto* scratch = block.take<std::uint8_t>(parts.count() * kScratchRows * rowBytes);
    // In place a part's neighbours are sharpened meanwhile: the rows beside it are kept first.
    for (std::int32_t part = 0; part < parts.count(); ++part) {
        std::uint8_t* beside = scratch + (std::int64_t{part} * kScratchRows + kCopiedRows) * rowBytes;
        copyWithEnds(src, size, parts.first(part) - 1, beside);
        copyWithEnds(src, size, parts.first(part) + parts.rowsOf(part), beside + rowBytes);
    }
    runTasks(&memory, parts.count(), [&](std::int32_t part) {
        std::uint8_t* copies = scratch + std::int64_t{part} * kScratchRows * rowBytes;
        const std::uint8_t* beside = copies + kCopiedRows * rowBytes;
        Frame bordered;
        bordered.Wrap(copies, size.width + 2, kCopiedRows, static_cast<std::int32_t>(rowBytes), src.BytesPerPixel(),
                      src.Format(), false);
        const std::int32_t first = parts.first(part);
        const std::int32_t end = first + parts.rowsOf(part);
        for (std::int32_t y = first; y < end; y += kBandRows) {
            const std::int32_t rows = std::min(kBandRows, end - y);
            for (std::int32_t i = 0; i < rows + 2; ++i) {
                std::uint8_t* out = bordered.PixelAddress(0, i, 0);
                const std::int32_t from = y - 1 + i;
                if (i < 2 && y > first) {
                    // In place these are sharpened already where they came from.
                    std::memcpy(out, bordered.PixelAddress(0, kBandRows + i, 0), static_cast<std::size_t>(rowBytes));
                } else if (from < first || from == end) {
                    std::memcpy(out, from < first ? beside : beside + rowBytes, static_cast<std::size_t>(rowBytes));
                } else {
                    copyWithEnds(src, size, from, out);
                }
            }
            const ImgSize band{size.width, rows};
            if (isFloat(src)) {
                sharpenBand<float>(bordered, dst, y, band, alpha, ImgSharpenFA4, ImgCopyChannelFC4);
            } else {
                sharpenBand<std::uint8_t>(bordered, dst, y, band, alpha, ImgSharpen8A4, ImgCopyChannel8C4);
            }
        }
    });
    return true;
}

}  // namespace lumiset
