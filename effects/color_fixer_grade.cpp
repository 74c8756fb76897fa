#include "effects/color_fixer_grade.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/color_fixer_grade.cpp"
#include "hwy/foreach_target.h"

#include "frame/layout.h"
#include "frame/primitives/row_loops-inl.h"

// Shared by all instruction sets.
#ifndef LUMISET_COLOR_FIXER_GRADE_TYPES
#define LUMISET_COLOR_FIXER_GRADE_TYPES
namespace lumiset {
namespace {

/// Whole-number grade of 8-bit pixels: gains on 256, weights on 127.
struct ByteGrade {
    std::int32_t gain[3];  ///< red, green, blue
    std::int32_t lumaWeight;
    std::int32_t colorWeight;
    std::array<std::uint8_t, 256> curve;  ///< film curve, then output range
};

/// A curve of floats over 0..1, tabled over the square root: steep beginnings of power curves become straight.
struct FloatCurve {
    static constexpr std::int32_t kSteps = 4096;
    std::array<float, kSteps + 2> value;
};

/// Grade of float pixels.
struct FloatGrade {
    float gain[3];
    float grayScale;
    FloatCurve curve;
};

}  // namespace
}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

/// What comes before the curves, on rows of bytes; vectorised by the compiler.
template <class L>
void mixRow(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst, std::int32_t width,
            const ByteGrade& grade) {
    const std::int32_t gainR = grade.gain[0];
    const std::int32_t gainG = grade.gain[1];
    const std::int32_t gainB = grade.gain[2];
    const std::int32_t lumaWeight = grade.lumaWeight;
    const std::int32_t colorWeight = grade.colorWeight;
    const auto limited = [](std::int32_t v) HWY_ATTR { return v < 0 ? 0 : v > 255 ? 255 : v; };
    for (std::int32_t x = 0; x < width; ++x) {
        const std::int32_t red = src[4 * x + L::kRed];
        const std::int32_t green = src[4 * x + L::kGreen];
        const std::int32_t blue = src[4 * x + L::kBlue];
        const std::int32_t luma = ((red * 76 + green * 149 + blue * 30) >> 8) * lumaWeight;
        const auto mixed = [&](std::int32_t sample, std::int32_t gain) HWY_ATTR {
            const std::int32_t balanced = (sample * gain) >> 8;
            return static_cast<std::uint8_t>(limited((colorWeight * (balanced < 255 ? balanced : 255) + luma) >> 7));
        };
        dst[4 * x + L::kRed] = mixed(red, gainR);
        dst[4 * x + L::kGreen] = mixed(green, gainG);
        dst[4 * x + L::kBlue] = mixed(blue, gainB);
        dst[4 * x + L::kAlpha] = src[4 * x + L::kAlpha];
    }
}

template <class L>
void gradeRow(const std::uint8_t* src, std::uint8_t* dst, std::int32_t width, const ByteGrade& grade) {
    mixRow<L>(src, dst, width, grade);
    const std::uint8_t* curve = grade.curve.data();
    for (std::int32_t x = 0; x < width; ++x) {
        dst[4 * x + L::kRed] = curve[dst[4 * x + L::kRed]];
        dst[4 * x + L::kGreen] = curve[dst[4 * x + L::kGreen]];
        dst[4 * x + L::kBlue] = curve[dst[4 * x + L::kBlue]];
    }
}

template <class L>
void gradeRow(const float* src, float* dst, std::int32_t width, const FloatGrade& grade) {
    const float keep = 0.498F - grade.grayScale;
    const float* table = grade.curve.value.data();
    const auto limited = [](float v) HWY_ATTR {
        const float positive = 0.0F < v ? v : 0.0F;  // a NaN becomes 0
        return positive < 1.0F ? positive : 1.0F;
    };
    for (std::int32_t x = 0; x < width; ++x, src += 4, dst += 4) {
        const float red = src[L::kRed];
        const float green = src[L::kGreen];
        const float blue = src[L::kBlue];
        const float luma = (76.0F * red + 149.0F * green + 30.0F * blue) / 256.0F * grade.grayScale;
        const auto graded = [&](float sample, float gain) HWY_ATTR {
            const float balanced = sample * gain;
            const float mixed = limited(2.0F * (keep * (balanced < 1.0F ? balanced : 1.0F) + luma));
            const float position = __builtin_sqrtf(mixed) * FloatCurve::kSteps;
            const auto index = static_cast<std::int32_t>(position);
            const float along = position - static_cast<float>(index);
            return table[index] + (table[index + 1] - table[index]) * along;
        };
        dst[L::kRed] = graded(red, grade.gain[0]);
        dst[L::kGreen] = graded(green, grade.gain[1]);
        dst[L::kBlue] = graded(blue, grade.gain[2]);
        dst[L::kAlpha] = src[L::kAlpha];
    }
}

template <bool kFloat, class Grade>
void gradeRows(const Frame& source, Frame& destination, const Grade& grade) {
    visitLayout(source.Format(), [&](auto layout) {
        using L = decltype(layout);
        if constexpr (L::kIsFloat == kFloat) {
            using Sample = typename L::Sample;
            for (std::int32_t y = 0; y < destination.Height(); ++y) {
                gradeRow<L>(reinterpret_cast<const Sample*>(source.PixelAddress(0, y, 0)),
                            reinterpret_cast<Sample*>(destination.PixelAddress(0, y, 0)), destination.Width(), grade);
            }
        }
        return L::kIsFloat == kFloat;
    });
}

}  // namespace

void gradeBytes(const Frame& source, Frame& destination, const ByteGrade& grade) {
    gradeRows<false>(source, destination, grade);
}
void gradeFloats(const Frame& source, Frame& destination, const FloatGrade& grade) {
    gradeRows<true>(source, destination, grade);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <algorithm>
#include <cmath>
#include <numbers>

namespace lumiset {

HWY_EXPORT(gradeBytes);
HWY_EXPORT(gradeFloats);

namespace {

/// The panel's ranges for white and black are 20 levels each.
constexpr double kRangeSpan = 0.078431375;

double sigmoid(double x, double strength) {
    const double low = 1.0 / (std::exp(3.0) + 1.0);
    const double high = 1.0 / (std::exp(-3.0) + 1.0);
    const double at = 1.0 / (std::exp(x * 6.0 - 3.0) + 1.0);
    return (1.0 - (at / (high - low) - low)) * strength + (1.0 - strength) * x;
}

std::uint8_t toByte(double v) {
    return static_cast<std::uint8_t>(std::clamp(v * 255.0 + 0.5, 0.0, 255.0));
}

ByteGrade byteGrade(const ColorFixerSettings& settings) {
    ByteGrade grade{};
    const std::array<double, 3> gains = neutralGains(settings, 1.0);
    for (std::size_t i = 0; i < 3; ++i) {
        grade.gain[i] = static_cast<std::int32_t>(gains[i] * 256.0 + 0.5);
    }
    grade.lumaWeight = static_cast<std::int32_t>((0.0F - settings.saturation) * 127.0F);
    grade.colorWeight = 127 - grade.lumaWeight;
    std::array<std::uint8_t, 256> range{};
    for (std::size_t i = 0; i < 256; ++i) {
        range[i] = toByte(rangeCurve(static_cast<double>(i) / 255.0, settings));
    }
    for (std::size_t i = 0; i < 256; ++i) {
        grade.curve[i] = range[toByte(filmCurve(static_cast<double>(i) / 255.0, settings.filmGamma))];
    }
    return grade;
}

void fillFloatGrade(const ColorFixerSettings& settings, FloatGrade& grade) {
    const std::array<double, 3> gains = neutralGains(settings, 1.0);
    for (std::size_t i = 0; i < 3; ++i) {
        grade.gain[i] = static_cast<float>(gains[i]);
    }
    grade.grayScale = -settings.saturation * 0.498F;
    constexpr auto kSteps = static_cast<std::size_t>(FloatCurve::kSteps);
    for (std::size_t i = 0; i <= kSteps; ++i) {
        const double root = static_cast<double>(i) / FloatCurve::kSteps;
        const double film = std::clamp(filmCurve(root * root, settings.filmGamma), 0.0, 1.0);
        grade.curve.value[i] = static_cast<float>(std::clamp(rangeCurve(film, settings), 0.0, 1.0));
    }
    grade.curve.value[kSteps + 1] = grade.curve.value[kSteps];
}

}  // namespace

std::array<double, 3> neutralGains(const ColorFixerSettings& settings, double leastLevel) {
    const double levels[3] = {static_cast<double>(settings.sample & 0xFFU),
                              static_cast<double>((settings.sample >> 8U) & 0xFFU),
                              static_cast<double>((settings.sample >> 16U) & 0xFFU)};
    // A sample of nothing counts as white: it asks for no correction.
    const bool black = (settings.sample & 0xFFFFFFU) == 0;
    const double average = black ? 255.0 : (levels[0] + levels[1] + levels[2]) / 3.0;
    const double k = std::pow(1.5, static_cast<double>(settings.brightness) * 2.0 - 1.0);
    std::array<double, 3> gains{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double level = black ? 255.0 : levels[i] > 0.0 ? levels[i] : leastLevel;
        const double corrected = std::max((level - average) * settings.correction + average, leastLevel) / k;
        gains[i] = std::max(average / corrected, 0.0);
    }
    return gains;
}

double filmCurve(double x, double filmGamma) {
    return (std::sin((x - 0.5) * std::numbers::pi) + 1.0) * 0.5 * filmGamma + (1.0 - filmGamma) * x;
}

double rangeCurve(double x, const ColorFixerSettings& settings) {
    const double exponent = std::pow(0.5, static_cast<double>(settings.brightness) * 2.0 - 1.0);
    const double span = 1.0 - (static_cast<double>(settings.top) + settings.bottom) * kRangeSpan;
    const double strength = std::min((1.0 - span) * 6.5, 1.0);
    return sigmoid(std::pow(x, exponent), strength) * span + kRangeSpan * settings.bottom;
}

void gradeFrame(const Frame& source, Frame& destination, const ColorFixerSettings& settings) noexcept {
    if (isFloatFormat(source.Format())) {
        FloatGrade grade;
        fillFloatGrade(settings, grade);
        HWY_DYNAMIC_DISPATCH(gradeFloats)(source, destination, grade);
    } else {
        HWY_DYNAMIC_DISPATCH(gradeBytes)(source, destination, byteGrade(settings));
    }
}

}  // namespace lumiset
#endif
