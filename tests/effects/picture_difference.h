#pragma once

#include <cstdint>
#include <string>

#include "tests/support/picture.h"

namespace lumiset::testing {

/// How far two pictures of one size are apart, all four channels, in levels of 255.
struct PictureDifference {
    double psnr = 0.0;  ///< dB; 999 for equal pictures, and 0 when a sample is not a number
    double largest = 0.0;
    std::int32_t x = 0;  ///< where the largest difference is, from the top left
    std::int32_t y = 0;
};
[[nodiscard]] PictureDifference comparePictures(const Picture& a, const Picture& b);

/// Writes both pictures and their difference (eight times enlarged) beside each other as a PNG, each over a
/// chequered ground and, in a second row, its alpha alone. Returns the file's path.
std::string writeComparison(const Picture& a, const Picture& b, const std::string& name);

}  // namespace lumiset::testing
