#include "effects/color_fixer/grade.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/color_fixer/grade.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/lookup.h"
#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"
#include "frame/rows.h"

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

/// What comes before the curves, on whole vectors. Everything fits 16 bits without sign: a gain of 65535 makes white
/// of all but black, and a negative sum is a negative share of luma, taken away with saturation.
class ByteMix {
public:
    explicit ByteMix(const ByteGrade& grade)
        : m_colorWeight(static_cast<std::uint16_t>(grade.colorWeight)),
          m_lumaWeight(static_cast<std::uint16_t>(grade.lumaWeight < 0 ? -grade.lumaWeight : grade.lumaWeight)),
          m_takesLumaAway(grade.lumaWeight < 0) {
        for (std::size_t i = 0; i < 3; ++i) {
            m_gain[i] = static_cast<std::uint16_t>(grade.gain[i] < 65535 ? grade.gain[i] : 65535);
        }
    }

    template <class L>
    void run(const std::uint8_t* src, std::uint8_t* dst, std::int32_t width) const {
        const auto onePass = [this](std::size_t, std::uint8_t* out, const std::uint8_t* in)
                                 HWY_ATTR { step<L>(in, out); };
        alongPixels<4, 4>(hn::Lanes(Tag8()), width, onePass, dst, src);
    }

private:
    template <class L>
    HWY_INLINE void step(const std::uint8_t* src, std::uint8_t* dst) const {
        Vec8 planes[4];
        hn::LoadInterleaved4(Tag8(), src, planes[0], planes[1], planes[2], planes[3]);
        const Halves red = split(planes[L::kRed]);
        const Halves green = split(planes[L::kGreen]);
        const Halves blue = split(planes[L::kBlue]);
        const Halves luma{lumaShare(red.even, green.even, blue.even), lumaShare(red.odd, green.odd, blue.odd)};
        planes[L::kRed] = join({mixed(red.even, m_gain[0], luma.even), mixed(red.odd, m_gain[0], luma.odd)});
        planes[L::kGreen] = join({mixed(green.even, m_gain[1], luma.even), mixed(green.odd, m_gain[1], luma.odd)});
        planes[L::kBlue] = join({mixed(blue.even, m_gain[2], luma.even), mixed(blue.odd, m_gain[2], luma.odd)});
        hn::StoreInterleaved4(planes[0], planes[1], planes[2], planes[3], Tag8(), dst);
    }

    HWY_INLINE Vec16 lumaShare(Vec16 red, Vec16 green, Vec16 blue) const {
        const Tag16 d;
        const Vec16 sum = hn::Add(hn::Add(hn::Mul(red, hn::Set(d, 76)), hn::Mul(green, hn::Set(d, 149))),
                                  hn::Mul(blue, hn::Set(d, 30)));
        return hn::Mul(hn::ShiftRight<8>(sum), hn::Set(d, m_lumaWeight));
    }
    HWY_INLINE Vec16 mixed(Vec16 sample, std::uint16_t gain, Vec16 luma) const {
        const Tag16 d;
        const Vec16 full = hn::Set(d, 255);
        const Vec16 balanced = hn::Min(hn::MulHigh(hn::ShiftLeft<8>(sample), hn::Set(d, gain)), full);
        const Vec16 color = hn::Mul(balanced, hn::Set(d, m_colorWeight));
        const Vec16 sum = m_takesLumaAway ? hn::SaturatedSub(color, luma) : hn::Add(color, luma);
        return hn::Min(hn::ShiftRight<7>(sum), full);
    }

    std::uint16_t m_gain[3];
    std::uint16_t m_colorWeight;
    std::uint16_t m_lumaWeight;
    bool m_takesLumaAway;
};

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

}  // namespace

void gradeBytes(const Frame& source, Frame& destination, const ByteGrade& grade) {
    const ByteMix mix(grade);
    const std::uint8_t* const curves[3] = {grade.curve.data(), grade.curve.data(), grade.curve.data()};
    visitLayout(source.Format(), [&](auto layout) {
        using L = decltype(layout);
        const ImgSize size{destination.Width(), destination.Height()};
        return inCachedRows(
            destination.Resources(), size, destination.Stride(), [&](std::int32_t first, std::int32_t rows) {
                if constexpr (!L::kIsFloat) {
                    for (std::int32_t y = first; y < first + rows; ++y) {
                        mix.run<L>(source.row<std::uint8_t>(y), destination.row<std::uint8_t>(y), size.width);
                    }
                    std::uint8_t* colors = destination.row<std::uint8_t>(first) + L::kFirstColor;
                    ImgLookup8A4(colors, destination.Stride(), colors, destination.Stride(), curves,
                                 {size.width, rows});
                }
                return true;
            });
    });
}

void gradeFloats(const Frame& source, Frame& destination, const FloatGrade& grade) {
    visitRows(
        source.Format(), destination,
        [&](auto layout, std::int32_t, auto* out, const auto* in) {
            using L = decltype(layout);
            if constexpr (L::kIsFloat) {
                gradeRow<L>(in, out, destination.Width(), grade);
            }
        },
        source);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
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
