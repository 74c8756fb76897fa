#pragma once

// The one comparer of pictures: how far samples are apart, and how far they may be.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace lumiset::test {

/// How far two pictures of one size may be apart; as it stands: not at all.
struct Tolerance {
    double largest = 0.0;    ///< of one sample
    double leastPsnr = 0.0;  ///< dB
};

/// How far two pictures of one size are apart, in levels of 255 or whatever their samples are given in.
struct Difference {
    double psnr = 999.0;   ///< dB against a peak of 255; 999 for equal pictures, and 0 when a sample is not a number
    double largest = 0.0;  ///< infinite where one picture alone is not a number
    std::int32_t x = 0;    ///< where the largest difference is, in rows and columns of the two
    std::int32_t y = 0;
    std::int32_t channel = 0;
    double actual = 0.0;  ///< its samples
    double expected = 0.0;
};

/// Compares what `actual(x, y, channel)` and `expected(x, y, channel)` answer.
template <class Actual, class Expected>
[[nodiscard]] Difference differenceOf(std::int32_t width, std::int32_t height, std::int32_t channels,
                                      const Actual& actual, const Expected& expected) {
    Difference found;
    double squares = 0.0;
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            for (std::int32_t channel = 0; channel < channels; ++channel) {
                const double a = actual(x, y, channel);
                const double e = expected(x, y, channel);
                const double apart = a == e ? 0.0 : std::abs(a - e);  // Infinities of one sign are equal.
                squares += apart * apart;
                if (!(apart <= found.largest)) {
                    const double largest = std::isnan(apart) ? std::numeric_limits<double>::infinity() : apart;
                    found = {found.psnr, largest, x, y, channel, a, e};
                }
            }
        }
    }
    const double mean = squares / (static_cast<double>(channels) * width * height);
    if (!std::isfinite(mean)) {
        found.psnr = 0.0;
    } else if (mean > 0.0) {
        found.psnr = 10.0 * std::log10(255.0 * 255.0 / mean);
    }
    return found;
}

/// Fails beyond the tolerance, naming the sample that is furthest off.
[[nodiscard]] inline ::testing::AssertionResult within(const Difference& apart, const Tolerance& tolerance) {
    if (apart.largest <= tolerance.largest && apart.psnr >= tolerance.leastPsnr) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << apart.psnr << " dB apart, most in channel " << apart.channel << " of "
                                         << apart.x << ", " << apart.y << ": " << apart.actual << " where "
                                         << apart.expected << " was expected";
}

}  // namespace lumiset::test
