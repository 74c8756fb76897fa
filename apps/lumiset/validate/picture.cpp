#include "apps/lumiset/validate/picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace lumiset::app::validate {
namespace {

/// Places of red, green, blue and alpha in a pixel.
constexpr int kBgra[4] = {2, 1, 0, 3};
constexpr int kArgb[4] = {1, 2, 3, 0};

const int* placesOf(std::int32_t format) {
    return AlphaIndex(format) == 3 ? kBgra : kArgb;
}

}  // namespace

Picture::Picture(std::int32_t width, std::int32_t height, const Layout& layout)
    : m_width(width),
      m_height(height),
      m_layout(layout),
      m_stride(width * formatBytesPerPixel(layout.format) + layout.padding),
      m_memory(std::make_unique<platform::GuardedMemory>(
          static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height), layout.atEnd)) {}

VideoFrameDesc Picture::desc() const {
    VideoFrameDesc desc{};
    desc.data = m_memory->data();
    if (m_layout.negativeStride) {
        desc.data = m_memory->data() + static_cast<std::ptrdiff_t>(m_stride) * (m_height - 1);
    }
    desc.width = m_width;
    desc.height = m_height;
    desc.stride = m_layout.negativeStride ? -m_stride : m_stride;
    desc.bytesPerPixel = formatBytesPerPixel(m_layout.format);
    desc.format = static_cast<std::uint32_t>(m_layout.format);
    desc.flipped = m_layout.flipped ? 1 : 0;
    return desc;
}

std::uint8_t* Picture::rowAt(std::int32_t y) const {
    const std::int32_t stored = m_layout.flipped ? m_height - 1 - y : y;
    const std::int32_t inMemory = m_layout.negativeStride ? m_height - 1 - stored : stored;
    return m_memory->data() + static_cast<std::ptrdiff_t>(m_stride) * inMemory;
}

void Picture::fill(std::uint8_t byte) {
    std::memset(m_memory->data(), byte, m_memory->size());
}

void Picture::draw(std::mt19937& random) {
    const int* const places = placesOf(m_layout.format);
    std::uint32_t level[4] = {};
    for (std::int32_t y = 0; y < m_height; ++y) {
        std::uint8_t* const row = rowAt(y);
        for (std::int32_t x = 0; x < m_width; ++x) {
            const auto kind = static_cast<std::uint32_t>(random());
            for (int channel = 0; channel < 4; ++channel) {
                const auto draw = static_cast<std::uint32_t>(random());
                if (kind % 4 == 0) {  // else as the pixel before
                    level[channel] = kind % 16 == 0 ? (draw & 1U) * 255U : draw & 255U;
                }
                const int sample = 4 * x + places[channel];
                if (isFloatFormat(m_layout.format)) {
                    const float value = static_cast<float>(level[channel]) / 255.0F;
                    std::memcpy(row + 4 * sample, &value, sizeof value);
                } else {
                    row[sample] = static_cast<std::uint8_t>(level[channel]);
                }
            }
        }
    }
}

void Picture::take(const Picture& other) {
    const auto bytes =
        static_cast<std::size_t>(std::min(m_width, other.m_width) * formatBytesPerPixel(m_layout.format));
    const VideoFrameDesc from = other.desc();
    const VideoFrameDesc to = desc();
    for (std::ptrdiff_t y = 0; y < std::min(m_height, other.m_height); ++y) {
        std::memcpy(static_cast<char*>(to.data) + y * to.stride, static_cast<char*>(from.data) + y * from.stride,
                    bytes);
    }
}

std::vector<std::uint32_t> Picture::row(std::int32_t y) const {
    const int* const places = placesOf(m_layout.format);
    std::vector<std::uint32_t> samples;
    for (std::int32_t i = 0; i < 4 * m_width; ++i) {
        const int sample = i / 4 * 4 + places[i % 4];
        std::uint32_t bits = rowAt(y)[sample];
        if (isFloatFormat(m_layout.format)) {
            std::memcpy(&bits, rowAt(y) + 4 * sample, sizeof bits);
        }
        samples.push_back(bits);
    }
    return samples;
}

std::vector<std::uint32_t> Picture::samples() const {
    std::vector<std::uint32_t> all;
    for (std::int32_t y = 0; y < m_height; ++y) {
        const std::vector<std::uint32_t> some = row(y);
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

std::vector<std::uint8_t> Picture::bytes() const {
    return {m_memory->data(), m_memory->data() + m_memory->size()};
}

bool Picture::isFinite() const {
    const std::vector<std::uint32_t> all = samples();
    return !isFloatFormat(m_layout.format) || std::all_of(all.begin(), all.end(), [](std::uint32_t bits) {
        constexpr std::uint32_t kExponent = 0x7F800000U;
        return (bits & kExponent) != kExponent;
    });
}

}  // namespace lumiset::app::validate
