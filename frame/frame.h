#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/memory_allocator.h"
#include "host/pixel_format.h"
#include "host/records.h"

namespace lumiset {

/// Header of a device-independent bitmap, as Windows lays it out.
struct BitmapInfoHeader {
    std::uint32_t size;
    std::int32_t width;
    std::int32_t height;  ///< positive: bottom-up
    std::uint16_t planes;
    std::uint16_t bitCount;
    std::uint32_t compression;
    std::uint32_t sizeImage;
    std::int32_t xPelsPerMeter;
    std::int32_t yPelsPerMeter;
    std::uint32_t colorsUsed;
    std::uint32_t colorsImportant;
};
static_assert(sizeof(BitmapInfoHeader) == 40);

/// A handle on an image in memory: a view of somebody else's pixels, or the owner of a block from a
/// `MemoryAllocator`. Rows are always walked forward from `data`; `flipped` tells that the first row is the
/// picture's bottom. One thread at a time.
class Frame {
public:
    Frame() = default;
    ~Frame() { Reset(); }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    /// Frees owned memory and empties the frame.
    void Reset() noexcept;

    /// Becomes a view. A negative stride is turned: `data` moves to the last stored row, `flipped` inverts.
    bool Wrap(void* data, std::int32_t width, std::int32_t height, std::int32_t stride, std::int32_t bytesPerPixel,
              std::int32_t format, bool flipped) noexcept;
    /// Becomes a view of a host's record; false for null.
    [[nodiscard]] bool WrapDesc(const VideoFrameDesc* desc) noexcept;
    /// Becomes a view of a bitmap's pixels, format 0; `flipped` is the sign bit of the header's height.
    bool WrapBitmap(const BitmapInfoHeader& header, void* pixels) noexcept;
    /// Becomes a view of a rectangle of `source`, which must hold it.
    bool WrapSubRect(const Frame& source, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                     bool flipped) noexcept;
    /// Owns a new block with undefined contents. One byte a pixel is always format 6. With a null allocator
    /// the block comes from the module's heap. False when there is no memory: the sizes are set, `Data` null.
    [[nodiscard]] bool Allocate(std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel,
                                MemoryAllocator* allocator, std::int32_t format, bool flipped) noexcept;
    /// Fills a host's record with this frame.
    void ToDesc(VideoFrameDesc* out) const noexcept;

    [[nodiscard]] std::uint8_t* Data() const { return m_data; }
    [[nodiscard]] std::int32_t Width() const { return m_width; }
    [[nodiscard]] std::int32_t Height() const { return m_height; }
    [[nodiscard]] std::int32_t Stride() const { return m_stride; }
    [[nodiscard]] std::int32_t RowElements() const { return m_rowElements; }
    [[nodiscard]] std::int32_t BytesPerPixel() const { return m_bytesPerPixel; }
    [[nodiscard]] std::int32_t Format() const { return m_format; }
    [[nodiscard]] bool Flipped() const { return m_flipped; }
    [[nodiscard]] bool Owned() const { return m_owned; }

    /// Of the render call that this frame belongs to: where operations on it get memory and threads. Null for a view
    /// that was not told and for frames of the module's heap; operations then work on the calling thread.
    [[nodiscard]] MemoryAllocator* Resources() const { return m_allocator; }
    /// Tells a view.
    void UseResources(MemoryAllocator* resources) { m_allocator = resources; }

    /// The samples of row `y`, of whatever type they are.
    template <class Sample>
    [[nodiscard]] Sample* row(std::int32_t y) const {
        return reinterpret_cast<Sample*>(m_data + static_cast<std::ptrdiff_t>(m_stride) * y);
    }

    /// Address of byte `offset` of pixel (x, y); null for an empty frame.
    [[nodiscard]] std::uint8_t* PixelAddress(std::int32_t x, std::int32_t y, std::int32_t offset) const {
        if (m_data == nullptr) {
            return nullptr;
        }
        return m_data + static_cast<std::ptrdiff_t>(m_stride) * y + static_cast<std::ptrdiff_t>(x) * m_bytesPerPixel +
               offset;
    }

private:
    std::uint8_t* m_data = nullptr;
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    std::int32_t m_stride = 0;
    std::int32_t m_rowElements = 0;
    std::int32_t m_bytesPerPixel = 0;
    bool m_owned = false;
    bool m_flipped = false;
    std::int32_t m_format = 0;
    MemoryAllocator* m_allocator = nullptr;
};

}  // namespace lumiset
