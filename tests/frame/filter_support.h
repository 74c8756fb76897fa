#pragma once

// Frames for the tests of filters: rows of odd length between guard bytes, filled at random.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "frame/frame.h"
#include "tests/frame/instruction_sets.h"
#include "tests/support/picture.h"

namespace lumiset::test {

/// A picture that frame operations take, masks too.
class GuardedFrame : public Picture {
public:
    /// `padding` bytes follow each row; a multiple of 4 for float formats.
    GuardedFrame(std::int32_t width, std::int32_t height, std::int32_t format, std::int32_t padding = 4)
        : Picture(width, height,
                  {.format = format,
                   .padding = padding,
                   .misalignment = isFloatFormat(format) ? 4 : 5,  // whole samples
                   .fill = 0xC7}) {
        const VideoFrameDesc memory = desc();
        frame.Wrap(memory.data, width, height, memory.stride, memory.bytesPerPixel, format, false);
    }
    GuardedFrame(const GuardedFrame&) = delete;
    GuardedFrame& operator=(const GuardedFrame&) = delete;

    template <class T>
    [[nodiscard]] T* row(std::int32_t y) const {
        return reinterpret_cast<T*>(frame.PixelAddress(0, y, 0));
    }
    [[nodiscard]] std::int32_t samplesPerRow() const {
        return frame.Width() * frame.BytesPerPixel() / BytesPerChannel(frame.Format());
    }
    [[nodiscard]] std::int32_t channels() const { return samplesPerRow() / frame.Width(); }

    /// Random samples; floats in -0.5..1.5. Some are at the ends of the range.
    void randomize(std::mt19937& random) {
        for (std::int32_t y = 0; y < height(); ++y) {
            for (std::int32_t i = 0; i < samplesPerRow(); ++i) {
                const auto draw = static_cast<std::uint32_t>(random());
                const bool extreme = draw % 8 == 0;
                if (isFloatFormat(frame.Format())) {
                    const float value = static_cast<float>(draw >> 8U) / 8388608.0F - 0.5F;
                    row<float>(y)[i] = extreme ? static_cast<float>(draw >> 31U) : value;
                } else {
                    row<std::uint8_t>(y)[i] = static_cast<std::uint8_t>(extreme ? (draw >> 31U) * 255U : draw >> 24U);
                }
            }
        }
    }

    Frame frame;
};

/// Fails unless two frames agree to within `tolerance` (0: bit for bit but for the sign of zero), naming the sample
/// that is furthest off.
[[nodiscard]] inline ::testing::AssertionResult framesAgree(const GuardedFrame& actual, const GuardedFrame& expected,
                                                            float tolerance = 0.0F) {
    const auto samplesOf = [](const GuardedFrame& f) {
        return [&f](std::int32_t i, std::int32_t y, std::int32_t) {
            return isFloatFormat(f.frame.Format()) ? static_cast<double>(f.row<float>(y)[i])
                                                   : f.row<std::uint8_t>(y)[i];
        };
    };
    if (!actual.guardsIntact()) {
        return ::testing::AssertionFailure() << "bytes outside the pixels were written";
    }
    return within(differenceOf(expected.samplesPerRow(), expected.height(), 1, samplesOf(actual), samplesOf(expected)),
                  {static_cast<double>(tolerance)});
}

}  // namespace lumiset::test
