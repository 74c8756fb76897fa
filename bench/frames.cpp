#include "bench/frames.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <random>

namespace lumiset::bench {
namespace {

/// Frames of one pool take this much memory together, well above a processor's last cache with two pools in use.
constexpr std::int64_t kPoolBytes = 64 << 20;

void fill(Frame& frame, std::mt19937& random) {
    const bool isFloat = isFloatFormat(frame.Format());
    for (std::int32_t y = 0; y < frame.Height(); ++y) {
        for (std::int32_t i = 0; i + 4 <= frame.Width() * frame.BytesPerPixel(); i += 4) {
            const auto bits = static_cast<std::uint32_t>(random());
            const float value = static_cast<float>(bits >> 8U) * 0x1p-24F;
            std::memcpy(frame.PixelAddress(0, y, i), isFloat ? static_cast<const void*>(&value) : &bits, 4);
        }
    }
}

/// Waves of colour with some grain; alpha is 1 but for one tile in three, where it is a wave too.
void paint(Frame& frame, std::mt19937& random) {
    constexpr std::int32_t kTile = 100;
    const bool isFloat = isFloatFormat(frame.Format());
    for (std::int32_t y = 0; y < frame.Height(); ++y) {
        for (std::int32_t i = 0; i < 4 * frame.Width(); ++i) {
            const std::int32_t x = i / 4;
            const auto channel = static_cast<float>(i % 4);
            const float grain = static_cast<float>(random() >> 8U) * 0x1p-24F - 0.5F;
            const float wave = 0.5F + 0.3F * std::sin(static_cast<float>(x) * 0.013F + channel) +
                               0.2F * std::sin(static_cast<float>(y) * 0.021F + 2.0F * channel) + 0.05F * grain;
            const bool opaque = i % 4 == AlphaIndex(frame.Format()) && (x / kTile + y / kTile) % 3 != 0;
            const float value = opaque ? 1.0F : std::clamp(wave, 0.0F, 1.0F);
            if (isFloat) {
                std::memcpy(frame.PixelAddress(0, y, 4 * i), &value, sizeof value);
            } else {
                *frame.PixelAddress(0, y, i) = static_cast<std::uint8_t>(value * 255.0F + 0.5F);
            }
        }
    }
}

}  // namespace

void Pool::make() const {
    const std::int64_t frameBytes = std::int64_t{m_width} * m_height * formatBytesPerPixel(m_format);
    const auto count =
        std::max(m_leastFrames, static_cast<std::size_t>(std::clamp<std::int64_t>(kPoolBytes / frameBytes, 2, 32)));
    std::mt19937 random(static_cast<std::uint32_t>(m_format + 1));
    for (std::size_t n = 0; n < count; ++n) {
        auto frame = std::make_unique<Frame>();
        if (!frame->Allocate(m_width, m_height, formatBytesPerPixel(m_format), nullptr, m_format, false)) {
            throw std::bad_alloc();
        }
        if (n == 0) {
            m_content == Content::kPicture ? paint(*frame, random) : fill(*frame, random);
        } else {
            std::memcpy(frame->Data(), m_frames[0]->Data(),
                        static_cast<std::size_t>(frame->Stride()) * static_cast<std::size_t>(m_height));
        }
        m_frames.push_back(std::move(frame));
    }
}

cv::Mat Pool::mat(std::size_t n) const {
    Frame& frame = (*this)[n];
    const int depth = isFloatFormat(frame.Format()) ? CV_32F : CV_8U;
    return {frame.Height(), frame.Width(), CV_MAKETYPE(depth, isHostFormat(frame.Format()) ? 4 : 1), frame.Data(),
            static_cast<std::size_t>(frame.Stride())};
}

Frames& frames() {
    static Frames all;
    return all;
}

}  // namespace lumiset::bench
