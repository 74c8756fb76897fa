#include "effects/background_generator/grade.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/background_generator/grade.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/row_loops-inl.h"
#include "frame/rows.h"

// Shared by all instruction sets.
#ifndef LUMISET_BACKGROUND_GRADE_TYPES
#define LUMISET_BACKGROUND_GRADE_TYPES
namespace lumiset {
namespace {

struct ByteGrade {
    std::int32_t sharp;  ///< share of the sharp picture, of 255
    bool fadesAlpha;
    std::int32_t opacity;  ///< of 255
    bool hasSaturation;
    std::int32_t lumaWeight;  ///< of 128
    bool hasLevels;
    std::array<std::array<std::uint8_t, 256>, 3> levels;  ///< red, green, blue
};

struct FloatGrade {
    float sharp;
    bool fadesAlpha;
    float opacity;
    bool hasSaturation;
    float lumaWeight;  ///< of 128
    bool hasLevels;
    std::array<LevelCurve, 3> levels;
};

}  // namespace
}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

// The loops below are vectorised by the compiler.

inline void mixRow(const std::uint8_t* soft, const std::uint8_t* sharp, std::uint8_t* dst, std::int32_t samples,
                   const ByteGrade& grade) {
    const auto second = static_cast<std::uint32_t>(grade.sharp);
    const std::uint32_t first = 255U - second;
    for (std::int32_t i = 0; i < samples; ++i) {
        // The product and shift divide by 255, exactly for every such sum.
        const std::uint32_t sum = soft[i] * first + sharp[i] * second + 127U;
        dst[i] = static_cast<std::uint8_t>((sum * 0x8081U) >> 23U);
    }
}

inline void mixRow(const float* soft, const float* sharp, float* dst, std::int32_t samples, const FloatGrade& grade) {
    const float second = grade.sharp;
    const float first = 1.0F - second;
    for (std::int32_t i = 0; i < samples; ++i) {
        dst[i] = soft[i] * first + sharp[i] * second;
    }
}

template <class L>
void fadeAlpha(std::uint8_t* row, std::int32_t width, const ByteGrade& grade) {
    const std::int32_t opacity = grade.opacity;
    for (std::int32_t x = 0; x < width; ++x) {
        const std::int32_t product = row[4 * x + L::kAlpha] * opacity;
        row[4 * x + L::kAlpha] = static_cast<std::uint8_t>((product + 1 + (product >> 8)) >> 8);
    }
}

template <class L>
void fadeAlpha(float* row, std::int32_t width, const FloatGrade& grade) {
    const float opacity = grade.opacity;
    for (std::int32_t x = 0; x < width; ++x) {
        row[4 * x + L::kAlpha] *= opacity;
    }
}

/// colour * colorWeight + luma * lumaWeight, of 128, as 127 * colour - lumaWeight * (colour - luma): both products fit
/// into 16 bits, and where their sum does not, the sample is white.
template <class L>
void saturateRow(std::uint8_t* row, std::int32_t width, const ByteGrade& grade) {
    constexpr bool kRedFirst = L::kRed < L::kBlue;
    const ImgSize size{width, 1};
    std::uint8_t* first = row + L::kFirstColor;
    const auto lumaWeight = static_cast<std::int16_t>(grade.lumaWeight);
    const auto op = [lumaWeight](auto colors) HWY_ATTR {
        using D8 = hn::DFromV<decltype(colors.first)>;
        using D16 = hn::Repartition<std::int16_t, D8>;
        const D8 d8;
        const D16 d16;
        const hn::Repartition<std::uint16_t, D8> u16;
        // Even samples lie in the low bytes, odd ones in the high bytes.
        const auto even = [&](auto v)
                              HWY_ATTR { return hn::BitCast(d16, hn::And(hn::BitCast(u16, v), hn::Set(u16, 0xFF))); };
        const auto odd = [&](auto v) HWY_ATTR { return hn::BitCast(d16, hn::ShiftRight<8>(hn::BitCast(u16, v))); };
        const auto lumaOf = [&](auto red, auto green, auto blue) HWY_ATTR {
            const auto weighted = [&](auto v, std::int16_t weight)
                                      HWY_ATTR { return hn::BitCast(u16, hn::Mul(v, hn::Set(d16, weight))); };
            const auto sum = hn::Add(hn::Add(weighted(red, 76), weighted(green, 149)), weighted(blue, 30));
            return hn::BitCast(d16, hn::ShiftRight<8>(sum));
        };
        const auto mixed = [&](auto v, auto luma) HWY_ATTR {
            const auto away = hn::Mul(hn::Sub(v, luma), hn::Set(d16, lumaWeight));
            const auto sum = hn::SaturatedSub(hn::Mul(v, hn::Set(d16, std::int16_t{127})), away);
            return hn::Max(hn::ShiftRight<7>(sum), hn::Zero(d16));
        };
        const auto& red = kRedFirst ? colors.first : colors.third;
        const auto& blue = kRedFirst ? colors.third : colors.first;
        const auto evenLuma = lumaOf(even(red), even(colors.second), even(blue));
        const auto oddLuma = lumaOf(odd(red), odd(colors.second), odd(blue));
        const auto both = [&](auto v) HWY_ATTR {
            return hn::BitCast(d8, hn::Or(mixed(even(v), evenLuma), hn::ShiftLeft<8>(mixed(odd(v), oddLuma))));
        };
        return decltype(colors){both(colors.first), both(colors.second), both(colors.third)};
    };
    mapColours<std::uint8_t>(size, {first, 4 * width}, {first, 4 * width}, op);
}

template <class L>
void saturateRow(float* row, std::int32_t width, const FloatGrade& grade) {
    const float lumaWeight = grade.lumaWeight / 128.0F;
    const float colorWeight = (127.0F - grade.lumaWeight) / 128.0F;
    for (std::int32_t x = 0; x < width; ++x) {
        const float red = row[4 * x + L::kRed];
        const float green = row[4 * x + L::kGreen];
        const float blue = row[4 * x + L::kBlue];
        const float luma = (76.0F * red + 149.0F * green + 30.0F * blue) / 256.0F * lumaWeight;
        const auto mixed = [&](float sample) HWY_ATTR {
            const float v = sample * colorWeight + luma;
            const float positive = 0.0F < v ? v : 0.0F;  // a NaN becomes 0
            return positive < 1.0F ? positive : 1.0F;
        };
        row[4 * x + L::kRed] = mixed(red);
        row[4 * x + L::kGreen] = mixed(green);
        row[4 * x + L::kBlue] = mixed(blue);
    }
}

template <class L>
void levelRow(std::uint8_t* row, std::int32_t width, const ByteGrade& grade) {
    const std::uint8_t* red = grade.levels[0].data();
    const std::uint8_t* green = grade.levels[1].data();
    const std::uint8_t* blue = grade.levels[2].data();
    for (std::int32_t x = 0; x < width; ++x) {
        row[4 * x + L::kRed] = red[row[4 * x + L::kRed]];
        row[4 * x + L::kGreen] = green[row[4 * x + L::kGreen]];
        row[4 * x + L::kBlue] = blue[row[4 * x + L::kBlue]];
    }
}

template <class L>
void levelRow(float* row, std::int32_t width, const FloatGrade& grade) {
    const auto level = [](float v, const LevelCurve& curve) HWY_ATTR {
        const float moved = v * curve.gain + curve.offset;
        return (moved < curve.least ? curve.least : moved) * curve.spread + curve.floor;
    };
    const std::array<LevelCurve, 3> levels = grade.levels;
    for (std::int32_t x = 0; x < width; ++x) {
        row[4 * x + L::kRed] = level(row[4 * x + L::kRed], levels[0]);
        row[4 * x + L::kGreen] = level(row[4 * x + L::kGreen], levels[1]);
        row[4 * x + L::kBlue] = level(row[4 * x + L::kBlue], levels[2]);
    }
}

/// Row by row, so that each step finds the row in the cache.
template <bool kFloat, class Grade>
void gradeRows(const Frame& soft, const Frame& sharp, Frame& destination, const Grade& grade) {
    const std::int32_t width = destination.Width();
    visitRows(
        destination.Format(), destination,
        [&](auto layout, std::int32_t, auto* row, const auto* from, const auto* sharpRow) {
            using L = decltype(layout);
            if constexpr (L::kIsFloat == kFloat) {
                if (grade.sharp != 0) {
                    mixRow(from, sharpRow, row, 4 * width, grade);
                } else {
                    std::memcpy(row, from, static_cast<std::size_t>(width) * 4 * sizeof *row);
                }
                if (grade.fadesAlpha) {
                    fadeAlpha<L>(row, width, grade);
                }
                if (grade.hasSaturation) {
                    saturateRow<L>(row, width, grade);
                }
                if (grade.hasLevels) {
                    levelRow<L>(row, width, grade);
                }
            }
        },
        soft, sharp);
}

}  // namespace

void gradeBackgroundBytes(const Frame& soft, const Frame& sharp, Frame& destination, const ByteGrade& grade) {
    gradeRows<false>(soft, sharp, destination, grade);
}
void gradeBackgroundFloats(const Frame& soft, const Frame& sharp, Frame& destination, const FloatGrade& grade) {
    gradeRows<true>(soft, sharp, destination, grade);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <algorithm>
#include <cmath>
#include <limits>

#include "frame/operations/copy.h"

namespace lumiset {

HWY_EXPORT(gradeBackgroundBytes);
HWY_EXPORT(gradeBackgroundFloats);

namespace {

std::int32_t ofByte(float share) {
    return static_cast<std::int32_t>(share * 255.0F + 0.5F);
}

std::array<std::uint8_t, 256> levelTable(const LevelCurve& curve) {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        const float moved = std::max(static_cast<float>(i) / 255.0F * curve.gain + curve.offset, curve.least);
        const float level = moved * curve.spread + curve.floor;
        table[i] = static_cast<std::uint8_t>(std::clamp(level * 255.0F + 0.5F, 0.0F, 255.0F));
    }
    return table;
}

}  // namespace

bool BackgroundGrade::hasSaturation() const {
    return saturation != 0.0F;
}

bool BackgroundGrade::hasLevels() const {
    return brightness != 0.0F || tints != std::array<float, 3>{};
}

bool BackgroundGrade::isNeutral() const {
    return clarity == 0.0F && opacity == 1.0F && !hasSaturation() && !hasLevels();
}

float lumaWeight(const BackgroundGrade& grade, bool wholeNumbers) {
    const float weight = -grade.saturation * 127.0F;
    return wholeNumbers ? std::trunc(weight) : weight;
}

LevelCurve levelCurve(float tint, float brightness) {
    LevelCurve curve{};
    if (tint < 0.0F) {
        const float black = tint / -2.0F;
        curve.gain = 1.0F / (1.0F - black);
        curve.offset = -black * curve.gain;
        curve.least = 0.0F;
    } else {
        const float lift = tint / 2.0F;
        curve.gain = 1.0F - lift;
        curve.offset = lift;
        curve.least = std::numeric_limits<float>::lowest();
    }
    curve.spread = 1.0F - std::fabs(brightness);
    curve.floor = std::max(brightness, 0.0F);
    return curve;
}

void gradeBackground(const Frame& soft, const Frame& sharp, Frame& destination, const BackgroundGrade& grade) noexcept {
    if (grade.isNeutral()) {
        FrameCopy(soft, destination);
    } else if (isFloatFormat(destination.Format())) {
        FloatGrade floats{grade.clarity,
                          grade.opacity < 1.0F,
                          grade.opacity,
                          grade.hasSaturation(),
                          lumaWeight(grade, false),
                          grade.hasLevels(),
                          {}};
        for (std::size_t i = 0; i < 3; ++i) {
            floats.levels[i] = levelCurve(grade.tints[i], grade.brightness);
        }
        HWY_DYNAMIC_DISPATCH(gradeBackgroundFloats)(soft, sharp, destination, floats);
    } else {
        ByteGrade bytes{ofByte(grade.clarity),
                        grade.opacity < 1.0F,
                        ofByte(grade.opacity),
                        grade.hasSaturation(),
                        static_cast<std::int32_t>(lumaWeight(grade, true)),
                        grade.hasLevels(),
                        {}};
        for (std::size_t i = 0; i < 3 && bytes.hasLevels; ++i) {
            bytes.levels[i] = levelTable(levelCurve(grade.tints[i], grade.brightness));
        }
        HWY_DYNAMIC_DISPATCH(gradeBackgroundBytes)(soft, sharp, destination, bytes);
    }
}

}  // namespace lumiset
#endif
