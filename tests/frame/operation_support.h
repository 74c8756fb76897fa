#pragma once

// Frames of literal samples for the tests of frame operations, and what all operations promise about frames of
// different sizes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/frame/filter_support.h"

namespace lumiset::test {

inline constexpr std::int32_t kColorFormats[] = {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};
inline constexpr std::int32_t kMaskFormats[] = {kFormatMask8, kFormatMaskFloat};
inline constexpr std::int32_t kAllFormats[] = {kFormatBgra8,     kFormatArgb8, kFormatBgraFloat,
                                               kFormatArgbFloat, kFormatMask8, kFormatMaskFloat};

/// One sample as the frame stores it; `i` counts samples along the row.
inline double sampleAt(const GuardedFrame& f, std::int32_t y, std::int32_t i) {
    return isFloatFormat(f.frame.Format()) ? static_cast<double>(f.row<float>(y)[i]) : f.row<std::uint8_t>(y)[i];
}
inline void setSample(GuardedFrame& f, std::int32_t y, std::int32_t i, double value) {
    if (isFloatFormat(f.frame.Format())) {
        f.row<float>(y)[i] = static_cast<float>(value);
    } else {
        f.row<std::uint8_t>(y)[i] = static_cast<std::uint8_t>(value);
    }
}
inline std::vector<double> samplesIn(const GuardedFrame& f) {
    std::vector<double> all;
    for (std::int32_t y = 0; y < f.frame.Height(); ++y) {
        for (std::int32_t i = 0; i < f.samplesPerRow(); ++i) {
            all.push_back(sampleAt(f, y, i));
        }
    }
    return all;
}
inline void setSamples(GuardedFrame& f, const std::vector<double>& values) {
    ASSERT_EQ(values.size(), static_cast<std::size_t>(f.samplesPerRow() * f.frame.Height()));
    for (std::size_t k = 0; k < values.size(); ++k) {
        setSample(f, static_cast<std::int32_t>(k) / f.samplesPerRow(), static_cast<std::int32_t>(k) % f.samplesPerRow(),
                  values[k]);
    }
}
/// Position of red, green, blue or alpha, counted 0..3, in a pixel of a colour format.
inline std::int32_t positionOf(std::int32_t format, std::int32_t channel) {
    return AlphaIndex(format) == 3 ? (channel == 3 ? 3 : 2 - channel) : (channel + 1) % 4;
}
/// The value that stands for 255 or 1.
inline double fullScale(std::int32_t format) {
    return isFloatFormat(format) ? 1.0 : 255.0;
}

/// Runs `operation(src, dst)` on random frames of several sizes, `src` and `dst` differing, and fails unless it
/// answers true, changes `dst` in the common rectangle alone to what `expected(src, dst before, y, i)` says (to
/// within `tolerance`), and leaves `src` and everything around as it was.
template <class Operation, class Expected>
void expectOnCommonRectangle(std::int32_t srcFormat, std::int32_t dstFormat, const Operation& operation,
                             const Expected& expected, double tolerance = 0.0) {
    std::mt19937 random(static_cast<std::uint32_t>(srcFormat * 16 + dstFormat));
    constexpr std::int32_t kSizes[][4] = {{1, 1, 1, 1},   {7, 3, 7, 3},    {9, 4, 5, 6},  {33, 2, 40, 5},
                                          {70, 5, 69, 5}, {131, 2, 67, 1}, {64, 3, 64, 3}};
    for (const auto& size : kSizes) {
        SCOPED_TRACE(testing::Message() << size[0] << " x " << size[1] << " to " << size[2] << " x " << size[3]
                                        << ", formats " << srcFormat << ", " << dstFormat);
        GuardedFrame src(size[0], size[1], srcFormat, 8);
        GuardedFrame dst(size[2], size[3], dstFormat, 4);
        src.randomize(random);
        dst.randomize(random);
        GuardedFrame before(size[2], size[3], dstFormat, 4);
        before.restore(dst.bytes());
        const std::vector<std::uint8_t> source = src.bytes();
        ASSERT_TRUE(operation(src.frame, dst.frame));
        EXPECT_EQ(src.bytes(), source);
        EXPECT_TRUE(dst.guardsIntact());
        for (std::int32_t y = 0; y < size[3]; ++y) {
            for (std::int32_t i = 0; i < dst.samplesPerRow(); ++i) {
                const bool common = y < size[1] && i / dst.channels() < size[0];
                const double want = common ? expected(src, before, y, i) : sampleAt(before, y, i);
                const double got = sampleAt(dst, y, i);
                ASSERT_TRUE(got - want <= (common ? tolerance : 0.0) && want - got <= (common ? tolerance : 0.0))
                    << "row " << y << ", sample " << i << ": " << got << ", expected " << want;
            }
        }
    }
}

/// Calls `check(bad)` with frames that no operation can work on: without data, with bytes per pixel of another
/// format, with rows that do not fit the stride, of unknown format. Fails if one is written.
template <class Check>
void forEachUnsoundFrame(const Check& check) {
    GuardedFrame memory(6, 3, kFormatBgra8);
    const std::vector<std::uint8_t> bytes = memory.bytes();
    struct Case {
        void* data;
        std::int32_t width, height, stride, bytesPerPixel, format;
    };
    std::uint8_t* data = memory.frame.Data();
    for (const Case& c : {Case{nullptr, 6, 3, 24, 4, kFormatBgra8}, Case{data, 0, 3, 24, 4, kFormatBgra8},
                          Case{data, 6, -1, 24, 4, kFormatBgra8}, Case{data, 6, 3, 23, 4, kFormatBgra8},
                          Case{data, 6, 3, 24, 3, kFormatBgra8}, Case{data, 1, 1, 24, 16, kFormatBgra8},
                          Case{data, 1, 1, 24, 4, kFormatBgraFloat}, Case{data, 6, 3, 24, 4, 2},
                          Case{data, 6, 3, 24, 4, 5}, Case{data, 6, 3, 24, 4, -1}}) {
        SCOPED_TRACE(testing::Message() << "width " << c.width << ", height " << c.height << ", stride " << c.stride
                                        << ", " << c.bytesPerPixel << " bytes a pixel, format " << c.format);
        Frame bad;
        bad.Wrap(c.data, c.width, c.height, c.stride, c.bytesPerPixel, c.format, false);
        check(bad);
        EXPECT_EQ(memory.bytes(), bytes);
    }
}

/// Fails unless `operation(src, dst)` answers false and writes nothing when either is unsound.
template <class Operation>
void expectRefusesUnsoundFrames(const Operation& operation) {
    forEachUnsoundFrame([&](Frame& bad) {
        GuardedFrame sound(6, 3, kFormatBgra8);
        const std::vector<std::uint8_t> bytes = sound.bytes();
        EXPECT_FALSE(operation(bad, sound.frame));
        EXPECT_FALSE(operation(sound.frame, bad));
        EXPECT_FALSE(operation(bad, bad));
        EXPECT_EQ(sound.bytes(), bytes);
    });
}

}  // namespace lumiset::test
