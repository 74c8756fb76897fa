#include "frame/operations/filter_frames.h"

#include <cstring>
#include <functional>
#include <limits>

namespace lumiset {
namespace {

const std::uint8_t* endOf(const Frame& frame, ImgSize size) {
    return frame.PixelAddress(0, size.height - 1, 0) + static_cast<std::ptrdiff_t>(size.width) * frame.BytesPerPixel();
}

}  // namespace

bool shareMemory(const Frame& a, const Frame& b, ImgSize size) {
    const std::less<const std::uint8_t*> before;
    return before(a.Data(), endOf(b, size)) && before(b.Data(), endOf(a, size));
}

void copyPixels(const Frame& src, Frame& dst, ImgSize size) {
    const std::size_t bytes = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(src.BytesPerPixel());
    const bool inOrder = shareMemory(src, dst, size);
    inBands(inOrder ? nullptr : dst.Resources(), size, [&](std::int32_t first, std::int32_t rows) {
        for (std::int32_t y = first; y < first + rows; ++y) {
            std::memmove(dst.PixelAddress(0, y, 0), src.PixelAddress(0, y, 0), bytes);
        }
        return true;
    });
}

bool StableSource::prepare(const Frame& src, const Frame& dst, ImgSize size) {
    m_data = src.Data();
    m_stride = src.Stride();
    if (!shareMemory(src, dst, size)) {
        return true;
    }
    const std::int64_t row = std::int64_t{size.width} * src.BytesPerPixel();
    const std::int64_t bytes = row * size.height;
    if (bytes > std::numeric_limits<std::int32_t>::max() ||
        !m_allocator.AllocBytes(&m_copy, static_cast<std::uint32_t>(bytes))) {
        return false;
    }
    auto* copy = static_cast<std::uint8_t*>(m_copy);
    inBands(&m_allocator, size, [&](std::int32_t first, std::int32_t rows) {
        for (std::int32_t y = first; y < first + rows; ++y) {
            std::memcpy(copy + row * y, src.PixelAddress(0, y, 0), static_cast<std::size_t>(row));
        }
        return true;
    });
    m_data = copy;
    m_stride = static_cast<std::int32_t>(row);
    return true;
}

}  // namespace lumiset
