#include "frame/frame.h"

namespace lumiset {

void Frame::Reset() noexcept {
    if (m_owned && m_data != nullptr) {
        if (m_allocator != nullptr) {
            m_allocator->FreeImage(m_data);
        } else {
            MemoryAllocator().FreeImage(m_data);
        }
    }
    m_data = nullptr;
    m_width = 0;
    m_height = 0;
    m_stride = 0;
    m_rowElements = 0;
    m_bytesPerPixel = 0;
    m_owned = false;
    m_flipped = false;
    m_format = 0;
    m_allocator = nullptr;
}

bool Frame::Wrap(void* data, std::int32_t width, std::int32_t height, std::int32_t stride, std::int32_t bytesPerPixel,
                 std::int32_t format, bool flipped) noexcept {
    Reset();
    m_data = static_cast<std::uint8_t*>(data);
    if (stride < 0) {
        if (m_data != nullptr) {
            m_data += static_cast<std::ptrdiff_t>(stride) * (height - 1);
        }
        stride = static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(stride));
        flipped = !flipped;
    }
    m_width = width;
    m_height = height;
    m_stride = stride;
    m_bytesPerPixel = bytesPerPixel;
    m_rowElements = bytesPerPixel != 0 ? stride / bytesPerPixel : 0;
    m_flipped = flipped;
    m_format = format;
    return true;
}

bool Frame::WrapDesc(const VideoFrameDesc* desc) noexcept {
    Reset();
    if (desc == nullptr) {
        return false;
    }
    return Wrap(desc->data, desc->width, desc->height, desc->stride, desc->bytesPerPixel,
                static_cast<std::int32_t>(desc->format), desc->flipped != 0);
}

bool Frame::WrapBitmap(const BitmapInfoHeader& header, void* pixels) noexcept {
    const bool negative = header.height < 0;
    const auto magnitude = static_cast<std::uint32_t>(header.height);
    const auto height = static_cast<std::int32_t>(negative ? 0U - magnitude : magnitude);
    const std::int32_t bytesPerPixel = header.bitCount / 8;
    return Wrap(pixels, header.width, height, header.width * bytesPerPixel, bytesPerPixel, kFormatBgra8, negative);
}

bool Frame::WrapSubRect(const Frame& source, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                        bool flipped) noexcept {
    return Wrap(source.PixelAddress(x, y, 0), width, height, source.m_stride, source.m_bytesPerPixel, source.m_format,
                flipped);
}

bool Frame::Allocate(std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel, MemoryAllocator* allocator,
                     std::int32_t format, bool flipped) noexcept {
    Reset();
    m_owned = true;
    m_width = width;
    m_height = height;
    m_bytesPerPixel = bytesPerPixel;
    m_allocator = allocator;
    void* block = nullptr;
    bool done = false;
    if (allocator != nullptr) {
        done = allocator->AllocImage(&block, width, height, bytesPerPixel, &m_stride);
    } else {
        MemoryAllocator heap;
        done = heap.AllocImage(&block, width, height, bytesPerPixel, &m_stride);
    }
    m_data = done ? static_cast<std::uint8_t*>(block) : nullptr;
    m_rowElements = bytesPerPixel > 0 ? m_stride / bytesPerPixel : 0;
    m_format = bytesPerPixel == 1 ? static_cast<std::int32_t>(kFormatMask8) : format;
    m_flipped = flipped;
    return m_data != nullptr;
}

void Frame::ToDesc(VideoFrameDesc* out) const noexcept {
    *out = VideoFrameDesc{m_data,
                          m_width,
                          m_height,
                          m_stride,
                          m_bytesPerPixel,
                          {0, 0},
                          static_cast<std::uint32_t>(m_format),
                          static_cast<std::uint8_t>(m_flipped ? 1 : 0)};
}

}  // namespace lumiset
