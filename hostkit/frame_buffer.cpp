#include "hostkit/frame_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "host/sample_conversion.h"

namespace lumiset::hostkit {
namespace {

constexpr std::int64_t kRowAlignment = 64;

template <class To, class From>
To convertSample(From value) {
    if constexpr (std::is_same_v<From, To>) {
        return value;
    } else if constexpr (std::is_same_v<To, float>) {
        return floatFromByte(value);
    } else {
        return byteFromFloat(value);
    }
}

template <class From, class To, bool kReverse>
void convertRow(const void* from, void* to, std::int32_t width) {
    const auto* in = static_cast<const From*>(from);
    auto* out = static_cast<To*>(to);
    for (std::int32_t x = 0; x < width; ++x, in += 4, out += 4) {
        for (int i = 0; i < 4; ++i) {
            out[i] = convertSample<To>(in[kReverse ? 3 - i : i]);
        }
    }
}

using RowConversion = void (*)(const void*, void*, std::int32_t);

template <class From, class To>
RowConversion rowConversion(bool reverse) {
    return reverse ? &convertRow<From, To, true> : &convertRow<From, To, false>;
}

RowConversion rowConversion(std::uint32_t from, std::uint32_t to) {
    // The two orders are each other's reversal.
    const bool reverse = AlphaIndex(from) != AlphaIndex(to);
    if (isFloatFormat(from)) {
        return isFloatFormat(to) ? rowConversion<float, float>(reverse) : rowConversion<float, std::uint8_t>(reverse);
    }
    return isFloatFormat(to) ? rowConversion<std::uint8_t, float>(reverse)
                             : rowConversion<std::uint8_t, std::uint8_t>(reverse);
}

}  // namespace

std::uint8_t* rowOf(const VideoFrameDesc& frame, std::int32_t y) {
    const std::int32_t stored = frame.flipped != 0 ? frame.height - 1 - y : y;
    return static_cast<std::uint8_t*>(frame.data) + static_cast<std::ptrdiff_t>(frame.stride) * stored;
}

void FrameBuffer::Free::operator()(std::uint8_t* block) const {
    ::operator delete[](block, std::align_val_t{kRowAlignment});
}

FrameBuffer::FrameBuffer(std::int32_t width, std::int32_t height, PixelFormat format, FrameStorage storage) {
    if (width < 1 || height < 1 || storage.paddingBytes < 0 || !isHostFormat(format)) {
        throw std::invalid_argument("a frame needs a positive size and one of the four host formats");
    }
    const std::int64_t used = std::int64_t{width} * formatBytesPerPixel(format) + storage.paddingBytes;
    const std::int64_t stride = (used + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    if (stride > INT32_MAX || stride * height > PTRDIFF_MAX / 2) {
        throw std::length_error("the frame is too large");
    }
    m_block.reset(static_cast<std::uint8_t*>(::operator new[](
        static_cast<std::size_t>(stride) * static_cast<std::size_t>(height), std::align_val_t{kRowAlignment})));
    m_desc.data = m_block.get();
    m_desc.width = width;
    m_desc.height = height;
    m_desc.stride = static_cast<std::int32_t>(stride);
    m_desc.bytesPerPixel = formatBytesPerPixel(format);
    m_desc.format = static_cast<std::uint32_t>(format);
    m_desc.flipped = storage.flipped ? 1 : 0;
}

std::uint8_t* FrameBuffer::row(std::int32_t y) {
    return rowOf(m_desc, y);
}

const std::uint8_t* FrameBuffer::row(std::int32_t y) const {
    return rowOf(m_desc, y);
}

bool FrameBuffer::fits(std::int32_t width, std::int32_t height, PixelFormat format) const {
    return !empty() && width == m_desc.width && height == m_desc.height && format == this->format() &&
           m_desc.flipped == 0;
}

void convertFrame(const VideoFrameDesc& source, const VideoFrameDesc& destination) {
    const std::int32_t width = std::min(source.width, destination.width);
    const std::int32_t height = std::min(source.height, destination.height);
    const RowConversion convert = rowConversion(source.format, destination.format);
    const bool same = source.format == destination.format;
    const std::size_t rowBytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(source.bytesPerPixel);
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* from = rowOf(source, y);
        std::uint8_t* to = rowOf(destination, y);
        if (same) {
            std::memcpy(to, from, rowBytes);
        } else {
            convert(from, to, width);
        }
    }
}

VideoFrameDesc fieldOf(const VideoFrameDesc& frame, bool bottom) {
    VideoFrameDesc field = frame;
    field.height = (frame.height + (bottom ? 0 : 1)) / 2;
    field.stride = frame.stride * 2;
    if (field.height > 0) {
        // The field's first stored row: its top row, or with stored rows from the bottom up its last one.
        const std::int32_t firstRow = bottom ? 1 : 0;
        field.data = rowOf(frame, frame.flipped != 0 ? firstRow + 2 * (field.height - 1) : firstRow);
    }
    return field;
}

}  // namespace lumiset::hostkit
