#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/pixel_format.h"
#include "host/records.h"

namespace lumiset::hostkit {

/// How a picture lies in memory.
struct FrameStorage {
    bool flipped = false;           ///< the first stored row is the picture's bottom
    std::int32_t paddingBytes = 0;  ///< kept free after each row, before the row is rounded up to 64 bytes
};

/// A picture that owns its memory. Rows start at multiples of 64 bytes. Used by one thread at a time while it is
/// written.
class FrameBuffer {
public:
    FrameBuffer() = default;
    /// The contents are undefined. Throws std::invalid_argument for a size below 1 or a format that hosts do
    /// not hand in, std::bad_alloc or std::length_error where the memory cannot be had.
    FrameBuffer(std::int32_t width, std::int32_t height, PixelFormat format, FrameStorage storage = {});

    [[nodiscard]] bool empty() const { return m_desc.data == nullptr; }
    [[nodiscard]] std::int32_t width() const { return m_desc.width; }
    [[nodiscard]] std::int32_t height() const { return m_desc.height; }
    [[nodiscard]] PixelFormat format() const { return static_cast<PixelFormat>(m_desc.format); }
    /// The record to hand to the module.
    [[nodiscard]] const VideoFrameDesc& desc() const { return m_desc; }
    /// First byte of a row of the picture, row 0 the top one whatever the storage.
    [[nodiscard]] std::uint8_t* row(std::int32_t y);
    [[nodiscard]] const std::uint8_t* row(std::int32_t y) const;

    /// True when a picture of this size and format, stored top row first, can be written here.
    [[nodiscard]] bool fits(std::int32_t width, std::int32_t height, PixelFormat format) const;

private:
    struct Free {
        void operator()(std::uint8_t* block) const;
    };
    std::unique_ptr<std::uint8_t[], Free> m_block;
    VideoFrameDesc m_desc{};
};

/// First byte of a row of a picture, row 0 the top one whatever the storage.
[[nodiscard]] std::uint8_t* rowOf(const VideoFrameDesc& frame, std::int32_t y);

/// Copies the common top-left part of one picture to another, between any two of the four host formats and
/// any two row orders. 8-bit v becomes v / 255; float v becomes floor(255 v + 0.5) limited to 0..255, NaN 0.
/// Float to float keeps values outside 0..1.
void convertFrame(const VideoFrameDesc& source, const VideoFrameDesc& destination);

/// One field of a picture as a frame of its own, without a copy: every second row from the picture's top row
/// (`bottom` false) or from the row below it. A picture of one row has no bottom field: its height is 0.
[[nodiscard]] VideoFrameDesc fieldOf(const VideoFrameDesc& frame, bool bottom);

}  // namespace lumiset::hostkit
