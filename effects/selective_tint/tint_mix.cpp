#include "effects/selective_tint/tint_mix.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/selective_tint/tint_mix.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"
#include "frame/rows.h"

// Shared by all instruction sets.
#ifndef LUMISET_TINT_MIX_TYPES
#define LUMISET_TINT_MIX_TYPES
namespace lumiset {
namespace {

struct TintJob {
    const TintRegion& inside;
    const TintRegion& outside;
    TintMode mode;
    /// A root and a division for each pixel, for those who need it.
    [[nodiscard]] bool usesTone() const { return inside.toneMask > 0.0F || outside.toneMask > 0.0F; }
};

}  // namespace
}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

constexpr TagF kF;

HWY_INLINE VecF value(float v) {
    return hn::Set(kF, v);
}
HWY_INLINE VecF mixed(VecF from, VecF to, VecF share) {
    return hn::Add(hn::Mul(from, hn::Sub(value(1.0F), share)), hn::Mul(to, share));
}
HWY_INLINE VecF negative(VecF v) {
    return hn::Sub(value(1.0F), v);
}
/// Limited to 0..1; a NaN becomes 0.
HWY_INLINE VecF limited(VecF v) {
    const VecF positive = hn::IfThenElseZero(hn::Gt(v, hn::Zero(kF)), v);
    return hn::Min(positive, value(1.0F));
}

using Colour = Triple<VecF>;  // red, green, blue

template <class Op>
HWY_INLINE Colour eachOf(const Op& op, Colour a, Colour b) {
    return {op(a.first, b.first), op(a.second, b.second), op(a.third, b.third)};
}

/// What the regions measure of a pixel.
struct Measures {
    VecF luma;
    VecF tone[2];
};

HWY_INLINE Measures measure(Colour s, bool withTone) {
    const VecF luma = hn::Add(hn::Add(hn::Mul(s.first, value(0.299F)), hn::Mul(s.second, value(0.587F))),
                              hn::Mul(s.third, value(0.114F)));
    Measures pixel{limited(luma), {hn::Zero(kF), hn::Zero(kF)}};
    if (withTone) {
        const VecF cb = hn::Mul(hn::Sub(s.third, luma), value(0.564F));
        const VecF cr = hn::Mul(hn::Sub(s.first, luma), value(0.713F));
        const VecF length = hn::Sqrt(hn::Add(hn::Mul(cb, cb), hn::Mul(cr, cr)));
        const VecF scale = hn::Div(value(1.0F), hn::Add(length, value(kToneSoftness)));
        pixel.tone[0] = hn::Mul(cb, scale);
        pixel.tone[1] = hn::Mul(cr, scale);
    }
    return pixel;
}

/// Share of the tint that a pixel's own colour lets through.
HWY_INLINE VecF toneWeight(const TintRegion& region, const Measures& pixel) {
    const VecF x = hn::Sub(pixel.tone[0], value(region.tone[0]));
    const VecF y = hn::Sub(pixel.tone[1], value(region.tone[1]));
    const VecF distance = hn::Sqrt(hn::Add(hn::Mul(x, x), hn::Mul(y, y)));
    const VecF u = limited(hn::Mul(hn::Sub(distance, value(kToneCutoff)), value(1.0F / kToneFade)));
    const VecF held = hn::Mul(hn::Mul(u, u), hn::Sub(value(3.0F), hn::Add(u, u)));
    return negative(hn::Mul(held, value(region.toneMask)));
}

/// The tint's colour at the pixel's brightness: black to the colour itself, and on to its highlight.
HWY_INLINE Colour tintAt(const TintRegion& region, VecF luma) {
    const VecF twice = hn::Add(luma, luma);
    const VecF above = hn::Sub(twice, value(1.0F));
    const VecF square = hn::Mul(above, above);
    const auto isDark = hn::Lt(above, hn::Zero(kF));
    const auto channel = [&](float color) HWY_ATTR {
        const VecF dark = hn::Mul(value(color), twice);
        const VecF bright = hn::Add(value(color), hn::Mul(value(region.highlight - color), square));
        return hn::IfThenElse(isDark, dark, bright);
    };
    return {channel(region.color[0]), channel(region.color[1]), channel(region.color[2])};
}

/// The tint's hue with the picture's saturation and value. The hue of a tint is that of its colour at every
/// brightness, and between the smallest and the largest channel the third lies in the same place at every saturation.
HWY_INLINE Colour withHue(const TintRegion& region, Colour s) {
    if (region.isGrey) {
        return s;
    }
    const VecF low = hn::Min(hn::Min(s.first, s.second), s.third);
    const VecF span = hn::Sub(hn::Max(hn::Max(s.first, s.second), s.third), low);
    const auto channel = [&](float place) HWY_ATTR { return hn::Add(low, hn::Mul(span, value(place))); };
    return {channel(region.hue[0]), channel(region.hue[1]), channel(region.hue[2])};
}

HWY_INLINE Colour blended(const TintRegion& region, TintMode mode, Colour s, VecF luma) {
    const VecF one = value(1.0F);
    const VecF zero = hn::Zero(kF);
    if (mode == TintMode::kHue) {
        return withHue(region, s);
    }
    const Colour t = tintAt(region, luma);
    switch (mode) {
        case TintMode::kPop:
            return eachOf(
                [&](VecF a, VecF b) HWY_ATTR {
                    const VecF product = hn::Mul(a, b);
                    const VecF dark = hn::Add(product, product);
                    const VecF inverse = hn::Mul(negative(a), negative(b));
                    return hn::IfThenElse(hn::Lt(a, value(0.5F)), dark, negative(hn::Add(inverse, inverse)));
                },
                s, t);
        case TintMode::kScreen:
            return eachOf([&](VecF a, VecF b) HWY_ATTR { return negative(hn::Mul(negative(a), negative(b))); }, s, t);
        case TintMode::kMultiply:
            return eachOf([&](VecF a, VecF b) HWY_ATTR { return hn::Mul(a, b); }, s, t);
        case TintMode::kLighten:
            return eachOf([&](VecF a, VecF b) HWY_ATTR { return hn::Max(a, b); }, s, t);
        case TintMode::kDarken:
            return eachOf([&](VecF a, VecF b) HWY_ATTR { return hn::Min(a, b); }, s, t);
        case TintMode::kColorDodge:
            return eachOf(
                [&](VecF a, VecF b) HWY_ATTR {
                    const VecF rest = negative(b);
                    const VecF lit = hn::IfThenElse(hn::Gt(rest, a), hn::Div(a, rest), one);
                    return hn::IfThenElseZero(hn::Gt(a, zero), lit);
                },
                s, t);
        case TintMode::kColorBurn:
            return eachOf(
                [&](VecF a, VecF b) HWY_ATTR {
                    const VecF rest = negative(a);
                    const VecF burnt = hn::IfThenElseZero(hn::Gt(b, rest), negative(hn::Div(rest, b)));
                    return hn::IfThenElse(hn::Gt(rest, zero), burnt, one);
                },
                s, t);
        case TintMode::kNegation:
            return eachOf([&](VecF a, VecF b) HWY_ATTR { return negative(hn::Abs(hn::Sub(negative(a), b))); }, s, t);
        default:
            return t;
    }
}

HWY_INLINE Colour regionColour(const TintRegion& region, TintMode mode, Colour s, const Measures& pixel) {
    if (region.kind == TintRegion::Kind::kSource) {
        return s;
    }
    if (region.kind == TintRegion::Kind::kNegative) {
        return {negative(s.first), negative(s.second), negative(s.third)};
    }
    VecF share = value(region.blend);
    if (region.toneMask > 0.0F) {
        share = hn::Mul(share, toneWeight(region, pixel));
    }
    return eachOf([&](VecF a, VecF b) HWY_ATTR { return mixed(a, b, share); }, s, blended(region, mode, s, pixel.luma));
}

/// One vector of pixels. A whole vector inside or outside needs only one of the two tints.
HWY_INLINE Colour tinted(const TintJob& job, Colour s, VecF mask) {
    const Measures pixel = measure(s, job.usesTone());
    if (hn::AllTrue(kF, hn::Eq(mask, hn::Zero(kF)))) {
        return regionColour(job.inside, job.mode, s, pixel);
    }
    const Colour outside = regionColour(job.outside, job.mode, s, pixel);
    if (hn::AllTrue(kF, hn::Eq(mask, value(1.0F)))) {
        return outside;
    }
    return eachOf([&](VecF a, VecF b) HWY_ATTR { return mixed(a, b, mask); },
                  regionColour(job.inside, job.mode, s, pixel), outside);
}

template <class L>
HWY_INLINE void tintPixels(const std::uint8_t* src, const std::uint8_t* mask, std::uint8_t* dst, const TintJob& job) {
    const VecF unit = value(1.0F / 255.0F);
    const VecF full = value(255.0F);
    const Vec8 pixels = hn::LoadU(Tag8(), src);
    const Colour s{hn::Mul(byteOfPixel<L::kRed>(pixels), unit), hn::Mul(byteOfPixel<L::kGreen>(pixels), unit),
                   hn::Mul(byteOfPixel<L::kBlue>(pixels), unit)};
    const hn::Rebind<std::uint8_t, TagF> maskTag;
    const VecF m = hn::Mul(hn::ConvertTo(kF, hn::PromoteTo(TagI32(), hn::LoadU(maskTag, mask))), unit);
    const Colour result = tinted(job, s, m);
    const Vec32 byte = hn::Set(Tag32(), 0xFF);
    const auto whole = [&](VecF v) HWY_ATTR { return hn::And(roundToByte(hn::Mul(v, full)), byte); };
    const Vec32 alpha = hn::And(hn::BitCast(Tag32(), pixels), hn::Set(Tag32(), 0xFFU << (8 * L::kAlpha)));
    const Vec32 colours = hn::Or(
        hn::Or(hn::ShiftLeft<8 * L::kRed>(whole(result.first)), hn::ShiftLeft<8 * L::kGreen>(whole(result.second))),
        hn::ShiftLeft<8 * L::kBlue>(whole(result.third)));
    hn::StoreU(hn::BitCast(Tag8(), hn::Or(colours, alpha)), Tag8(), dst);
}

template <class L>
HWY_INLINE void tintPixels(const float* src, const float* mask, float* dst, const TintJob& job) {
    VecF samples[4];
    hn::LoadInterleaved4(kF, src, samples[0], samples[1], samples[2], samples[3]);
    const Colour result = tinted(job, {samples[L::kRed], samples[L::kGreen], samples[L::kBlue]}, hn::LoadU(kF, mask));
    samples[L::kRed] = result.first;
    samples[L::kGreen] = result.second;
    samples[L::kBlue] = result.third;
    hn::StoreInterleaved4(samples[0], samples[1], samples[2], samples[3], kF, dst);
}

}  // namespace

void tintRows(const Frame& source, const Frame& mask, Frame& destination, const TintJob& job) {
    visitRows(
        source.Format(), destination,
        [&](auto layout, std::int32_t, auto* out, const auto* in, const auto* masked) HWY_ATTR {
            alongPixels<4, 4, 1>(
                hn::Lanes(kF), destination.Width(),
                [&](std::size_t, auto* to, const auto* from, const auto* share)
                    HWY_ATTR { tintPixels<decltype(layout)>(from, share, to, job); },
                out, in, masked);
        },
        source, mask);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <algorithm>
#include <cmath>

namespace lumiset {

HWY_EXPORT(tintRows);

TintRegion plainRegion(TintRegion::Kind kind) {
    TintRegion region{};
    region.kind = kind;
    return region;
}

TintRegion tintedRegion(const TintSettings& settings) {
    TintRegion region = plainRegion(settings.blend > 0.0F ? TintRegion::Kind::kTinted : TintRegion::Kind::kSource);
    for (std::uint32_t i = 0; i < 3; ++i) {
        region.color[i] = static_cast<float>((settings.color >> (8 * i)) & 0xFFU) / 255.0F;
    }
    const auto [low, high] = std::minmax({region.color[0], region.color[1], region.color[2]});
    region.highlight = std::sqrt(high);
    region.isGrey = low == high;
    for (std::size_t i = 0; i < 3; ++i) {
        region.hue[i] = region.isGrey ? 0.0F : (region.color[i] - low) / (high - low);
    }
    const float luma = 0.299F * region.color[0] + 0.587F * region.color[1] + 0.114F * region.color[2];
    const float cb = 0.564F * (region.color[2] - luma);
    const float cr = 0.713F * (region.color[0] - luma);
    const float length = std::hypot(cb, cr) + kToneSoftness;
    region.tone[0] = cb / length;
    region.tone[1] = cr / length;
    region.blend = settings.blend;
    region.toneMask = settings.toneMask;
    return region;
}

void tintFrame(const Frame& source, const Frame& mask, Frame& destination, const TintRegion& inside,
               const TintRegion& outside, TintMode mode) noexcept {
    HWY_DYNAMIC_DISPATCH(tintRows)(source, mask, destination, {inside, outside, mode});
}

}  // namespace lumiset
#endif
