#pragma once

// The one guarded picture of the tests: any format, padded rows, either stride sign and row order, guard bytes around
// and between the rows, and samples addressed as a person sees them.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "host/pixel_format.h"
#include "host/records.h"
#include "tests/support/difference.h"

namespace lumiset::test {

enum Channel { kRed, kGreen, kBlue, kAlpha };

struct Storage {
    std::int32_t format = kFormatBgra8;
    bool flipped = false;
    bool negativeStride = false;
    std::int32_t padding = 0;       ///< bytes behind each row; a multiple of 4 for floats
    std::int32_t misalignment = 0;  ///< bytes by which the first row misses an aligned address
    std::uint8_t fill = 0;          ///< what every byte of the pixels holds at first
};

class Picture {
public:
    Picture(std::int32_t width, std::int32_t height, Storage storage = {})
        : m_width(width), m_height(height), m_storage(storage) {
        m_rowBytes = width * formatBytesPerPixel(storage.format);
        m_stride = m_rowBytes + storage.padding;
        m_start = kGuard + static_cast<std::size_t>(storage.misalignment);
        m_memory.assign(m_start + static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height) + kGuard,
                        kGuardByte);
        for (std::int32_t row = 0; row < height; ++row) {
            std::memset(storedRow(row), storage.fill, static_cast<std::size_t>(m_rowBytes));
        }
    }

    [[nodiscard]] std::int32_t width() const { return m_width; }
    [[nodiscard]] std::int32_t height() const { return m_height; }
    [[nodiscard]] const Storage& storage() const { return m_storage; }
    [[nodiscard]] bool isFloat() const { return isFloatFormat(m_storage.format); }

    [[nodiscard]] VideoFrameDesc desc() {
        const std::int32_t sign = m_storage.negativeStride ? -1 : 1;
        return {storedRow(0),
                m_width,
                m_height,
                sign * m_stride,
                formatBytesPerPixel(m_storage.format),
                {0, 0},
                static_cast<std::uint32_t>(m_storage.format),
                static_cast<std::uint8_t>(m_storage.flipped ? 1 : 0)};
    }

    /// Sample of the pixel at column x and row y counted from the picture's top; 8-bit samples 0..255, float
    /// samples times 255.
    [[nodiscard]] double get(std::int32_t x, std::int32_t y, Channel channel) const {
        const std::uint8_t* pixel = pixelAt(x, y);
        const auto position = static_cast<std::size_t>(samplePosition(channel));
        if (!isFloat()) {
            return pixel[position];
        }
        float value = 0.0F;
        std::memcpy(&value, pixel + 4 * position, sizeof value);
        return static_cast<double>(value) * 255.0;
    }
    void set(std::int32_t x, std::int32_t y, Channel channel, double value) {
        auto* pixel = const_cast<std::uint8_t*>(pixelAt(x, y));
        const auto position = static_cast<std::size_t>(samplePosition(channel));
        if (!isFloat()) {
            pixel[position] = static_cast<std::uint8_t>(std::lround(value));
            return;
        }
        const auto sample = static_cast<float>(value / 255.0);
        std::memcpy(pixel + 4 * position, &sample, sizeof sample);
    }
    void setPixel(std::int32_t x, std::int32_t y, double red, double green, double blue, double alpha) {
        set(x, y, kRed, red);
        set(x, y, kGreen, green);
        set(x, y, kBlue, blue);
        set(x, y, kAlpha, alpha);
    }

    /// Every byte, the guards too.
    [[nodiscard]] const std::vector<std::uint8_t>& bytes() const { return m_memory; }
    /// Those of another picture of the same size and storage.
    void restore(const std::vector<std::uint8_t>& bytes) { std::copy(bytes.begin(), bytes.end(), m_memory.begin()); }

    [[nodiscard]] bool guardsIntact() const {
        std::vector<std::uint8_t> copy = m_memory;
        for (std::int32_t row = 0; row < m_height; ++row) {
            std::memset(copy.data() + m_start + static_cast<std::ptrdiff_t>(row) * m_stride, kGuardByte,
                        static_cast<std::size_t>(m_rowBytes));
        }
        for (const std::uint8_t byte : copy) {
            if (byte != kGuardByte) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr std::size_t kGuard = 128;
    static constexpr std::uint8_t kGuardByte = 0xC3;

    /// Position of a colour in the pixel: B, G, R, A or A, R, G, B.
    [[nodiscard]] int samplePosition(Channel channel) const {
        return AlphaIndex(m_storage.format) == 3 ? (channel == kAlpha ? 3 : 2 - channel) : (channel + 1) % 4;
    }
    [[nodiscard]] std::uint8_t* storedRow(std::int32_t row) {
        const std::int32_t inMemory = m_storage.negativeStride ? m_height - 1 - row : row;
        return m_memory.data() + m_start + static_cast<std::ptrdiff_t>(inMemory) * m_stride;
    }
    [[nodiscard]] const std::uint8_t* pixelAt(std::int32_t x, std::int32_t y) const {
        const std::int32_t row = m_storage.flipped ? m_height - 1 - y : y;
        return const_cast<Picture*>(this)->storedRow(row) +
               static_cast<std::ptrdiff_t>(x) * formatBytesPerPixel(m_storage.format);
    }

    std::int32_t m_width;
    std::int32_t m_height;
    Storage m_storage;
    std::int32_t m_rowBytes = 0;
    std::int32_t m_stride = 0;
    std::size_t m_start = 0;
    std::vector<std::uint8_t> m_memory;
};

/// Compares all four channels of two pictures of one size, in levels of 255.
[[nodiscard]] inline Difference comparePictures(const Picture& actual, const Picture& expected) {
    const auto samplesOf = [](const Picture& picture) {
        return [&picture](std::int32_t x, std::int32_t y, std::int32_t channel) {
            return picture.get(x, y, static_cast<Channel>(channel));
        };
    };
    return differenceOf(expected.width(), expected.height(), 4, samplesOf(actual), samplesOf(expected));
}

/// A picture with something for every effect: colour ramps, a hard-edged opaque disc, a soft alpha ramp and
/// single bright pixels, which may be left out. `turned` draws it upside down.
inline void drawTestCard(Picture& picture, bool turned = false, bool sparks = true) {
    const double w = picture.width();
    const double h = picture.height();
    for (std::int32_t y = 0; y < picture.height(); ++y) {
        const std::int32_t row = turned ? picture.height() - 1 - y : y;
        for (std::int32_t x = 0; x < picture.width(); ++x) {
            const bool disc = std::hypot(x - 0.4 * w, y - 0.6 * h) < 0.22 * h;
            const double soft = std::round(255.0 * std::max(0.0, (x - 0.7 * w) / w));
            const bool spark = sparks && (x * 7 + y * 13) % 97 == 0;
            picture.setPixel(x, row, spark ? 255 : std::round(255.0 * x / w), std::round(255.0 * y / h),
                             std::round(127.5 + 127.5 * std::sin(x * 0.3) * std::cos(y * 0.2)), disc ? 255 : soft);
        }
    }
}

}  // namespace lumiset::test
