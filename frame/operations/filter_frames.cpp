#include "frame/operations/filter_frames.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

namespace lumiset {
namespace {

const std::uint8_t* endOf(const Frame& frame, ImgSize size) {
    return frame.PixelAddress(0, size.height - 1, 0) + static_cast<std::ptrdiff_t>(size.width) * frame.BytesPerPixel();
}

}  // namespace

ImgSize commonSize(const Frame& a, const Frame& b) {
    if (a.Data() == nullptr || b.Data() == nullptr) {
        return {0, 0};
    }
    const ImgSize size{std::min(a.Width(), b.Width()), std::min(a.Height(), b.Height())};
    return size.width < 1 || size.height < 1 ? ImgSize{0, 0} : size;
}

void copyPixels(const Frame& src, Frame& dst, ImgSize size) {
    const std::size_t bytes = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(src.BytesPerPixel());
    for (std::int32_t y = 0; y < size.height; ++y) {
        std::memmove(dst.PixelAddress(0, y, 0), src.PixelAddress(0, y, 0), bytes);
    }
}

bool StableSource::prepare(const Frame& src, const Frame& dst, ImgSize size) {
    m_data = src.Data();
    m_stride = src.Stride();
    const std::less<const std::uint8_t*> before;
    if (!before(src.Data(), endOf(dst, size)) || !before(dst.Data(), endOf(src, size))) {
        return true;
    }
    const std::int64_t row = std::int64_t{size.width} * src.BytesPerPixel();
    const std::int64_t bytes = row * size.height;
    if (bytes > std::numeric_limits<std::int32_t>::max() ||
        !m_allocator.AllocBytes(&m_copy, static_cast<std::uint32_t>(bytes))) {
        return false;
    }
    auto* copy = static_cast<std::uint8_t*>(m_copy);
    for (std::int32_t y = 0; y < size.height; ++y) {
        std::memcpy(copy + row * y, src.PixelAddress(0, y, 0), static_cast<std::size_t>(row));
    }
    m_data = copy;
    m_stride = static_cast<std::int32_t>(row);
    return true;
}

}  // namespace lumiset
