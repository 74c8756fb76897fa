#include "effects/selective_color/key.h"

#include <bit>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/selective_color/key.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"
#include "frame/rows.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

using VecI = hn::Vec<TagI32>;

/// Studio-range luma and colour differences of Rec. 601 without offsets. The differences of a grey are exactly 0.
struct YCbCr {
    VecF y;
    VecF cb;
    VecF cr;
};
HWY_INLINE YCbCr toYCbCr(VecF red, VecF green, VecF blue) {
    const auto times = [](VecF v, float weight) HWY_ATTR { return hn::Mul(v, hn::Set(TagF(), weight)); };
    return {hn::Add(hn::Add(times(red, 0.257F), times(green, 0.504F)), times(blue, 0.098F)),
            hn::Add(times(hn::Sub(blue, red), 0.148F), times(hn::Sub(blue, green), 0.291F)),
            hn::Add(times(hn::Sub(red, green), 0.368F), times(hn::Sub(red, blue), 0.071F))};
}

/// Cuts off the fraction of a sum of thousandths, whose last bits may have been rounded down.
HWY_INLINE VecI truncatedThousandths(VecF v) {
    return hn::ConvertTo(TagI32(), hn::Add(v, hn::CopySign(hn::Set(TagF(), 0.0005F), v)));
}

/// Byte `kIndex` of each pixel.
template <int kIndex>
HWY_INLINE VecI sampleOf(Vec32 pixels) {
    Vec32 v = pixels;
    if constexpr (kIndex > 0) {
        v = hn::ShiftRight<8 * kIndex>(v);
    }
    return hn::BitCast(TagI32(), hn::And(v, hn::Set(Tag32(), 0xFF)));
}

using TagI16 = hn::ScalableTag<std::int16_t>;
using VecI16 = hn::Vec<TagI16>;

/// Of pixels of two vectors in turn.
HWY_INLINE VecI16 together(VecI first, VecI second) {
    return hn::OddEven(hn::BitCast(TagI16(), hn::ShiftLeft<16>(second)), hn::BitCast(TagI16(), first));
}

/// After the colour differences all numbers fit into 16 bits.
template <class L>
class ByteKey {
public:
    explicit ByteKey(const ColorKey& key)
        : m_keyY(whole(key.keyY)),
          m_cosine(whole(key.cosine)),
          m_sine(whole(key.sine)),
          m_radius(whole(key.radius)),
          m_level2(key.keepsWholeWedge ? kMost : bits(whole(key.level) * whole(key.level))),
          m_tangent(whole(key.tangent)),
          m_cotangent(whole(key.cotangent)),
          m_fade(key.keepsWholeWedge ? 1 : key.radius - key.level) {}

    /// The masks of two vectors of pixels, in turn.
    HWY_INLINE Vec16 operator()(Vec32 first, Vec32 second) const {
        const TagI16 d;
        const Tag16 dU;
        const auto unsignedOf = [&](VecI16 v) HWY_ATTR { return hn::BitCast(dU, v); };
        const Levels a = levelsOf(first);
        const Levels b = levelsOf(second);
        const VecI16 y = together(a.y, b.y);
        const VecI16 cb = together(a.cb, b.cb);
        const VecI16 cr = together(a.cr, b.cr);
        const Vec16 alpha = unsignedOf(together(sampleOf<L::kAlpha>(first), sampleOf<L::kAlpha>(second)));
        const VecI16 cosine = hn::Set(d, m_cosine);
        const VecI16 sine = hn::Set(d, m_sine);
        // Along the key's direction and across it.
        const VecI16 x = toSignedByte(hn::Add(hn::Mul(cb, cosine), hn::Mul(cr, sine)));
        const VecI16 z = toSignedByte(hn::Sub(hn::Mul(cr, cosine), hn::Mul(cb, sine)));

        const VecI16 edge = hn::ShiftRight<4>(hn::Mul(x, hn::Set(d, m_tangent)));
        const auto outside = hn::RebindMask(dU, hn::Gt(hn::Abs(z), edge));
        const VecI16 detour = hn::Min(hn::Abs(hn::ShiftRight<4>(hn::Mul(z, hn::Set(d, m_cotangent)))),
                                      hn::Set(d, whole(kKeyLargestDetour)));
        // Six tenths: 39322 / 65536 cuts off the same fraction for every difference of two bytes.
        const Vec16 lumaApart = hn::MulHigh(unsignedOf(hn::Abs(hn::Sub(y, hn::Set(d, m_keyY)))), hn::Set(dU, 39322));
        const auto square = [](Vec16 v) HWY_ATTR { return hn::Mul(v, v); };
        const Vec16 along = unsignedOf(hn::Abs(hn::Sub(x, hn::Set(d, m_radius))));
        // Blue and yellow, the furthest apart, have 61728, which fits.
        const Vec16 apart2 = hn::Add(hn::Add(square(along), square(unsignedOf(hn::Abs(z)))), square(lumaApart));
        const auto isKey = hn::Lt(apart2, hn::Set(dU, m_level2));

        const Vec16 reach = unsignedOf(hn::Max(hn::Sub(x, detour), hn::Zero(d)));
        const VecI16 faded = hn::BitCast(d, m_fade.quotient(reach));
        const VecI16 value = hn::Min(
            hn::Max(hn::Add(hn::Sub(hn::Set(d, 255), faded), hn::BitCast(d, lumaApart)), hn::Zero(d)), hn::Set(d, 255));
        const Vec16 inside = hn::IfThenZeroElse(isKey, hn::ShiftRight<8>(hn::Mul(alpha, unsignedOf(value))));
        return hn::IfThenElse(outside, alpha, inside);
    }

    void run(const std::uint8_t* src, std::uint8_t* dst, std::int32_t width) const {
        const Tag32 d;
        const hn::Rebind<std::uint8_t, TagI32> d8;
        const auto half = hn::Lanes(d);
        const auto step = [&](std::size_t, std::uint8_t* out, const std::uint8_t* in) HWY_ATTR {
            const auto pixels = [&](std::size_t from) HWY_ATTR { return hn::BitCast(d, hn::LoadU(Tag8(), in + from)); };
            const auto masks = hn::BitCast(d, (*this)(pixels(0), pixels(4 * half)));
            const auto store = [&](Vec32 mask, std::uint8_t* to)
                                   HWY_ATTR { hn::StoreU(hn::DemoteTo(d8, hn::BitCast(TagI32(), mask)), d8, to); };
            store(hn::And(masks, hn::Set(d, 0xFFFF)), out);
            store(hn::ShiftRight<16>(masks), out + half);
        };
        alongPixels<1, 4>(2 * half, width, step, dst, src);
    }

private:
    struct Levels {
        VecI y;
        VecI cb;
        VecI cr;
    };
    /// 255 * n / divisor for n up to 127 and whole divisors up to 127, by a multiplication. The error of the factor,
    /// less than the divisor, times 255 * n is less than `2^(16 + shift)`, so the quotient never comes out one too
    /// high.
    class Fade {
    public:
        explicit Fade(float usedDivisor) {
            const auto divisor = static_cast<std::uint32_t>(usedDivisor);
            // The factor for 1 would have 17 bits.
            const std::uint32_t even = divisor == 1 ? 2 : divisor;
            m_whole = bits(divisor == 1 ? 2 * 255 : 255);
            m_shift = static_cast<int>(std::bit_width(even - 1)) - 1;
            m_factor = bits(((std::uint32_t{1} << (16 + m_shift)) + even - 1) / even);
        }
        [[nodiscard]] HWY_INLINE Vec16 quotient(Vec16 n) const {
            const Tag16 d;
            const Vec16 product = hn::Mul(n, hn::Set(d, m_whole));
            return hn::ShiftRightSame(hn::MulHigh(product, hn::Set(d, m_factor)), m_shift);
        }

    private:
        std::uint16_t m_whole;
        std::uint16_t m_factor;
        int m_shift;
    };

    static constexpr std::uint16_t kMost = 0xFFFF;

    static std::int16_t whole(float v) { return static_cast<std::int16_t>(v); }
    template <class T>
    static std::uint16_t bits(T v) {
        return static_cast<std::uint16_t>(v);
    }
    static HWY_INLINE Levels levelsOf(Vec32 pixels) {
        const auto sample = [](VecI v) HWY_ATTR { return hn::ConvertTo(TagF(), v); };
        const YCbCr color = toYCbCr(sample(sampleOf<L::kRed>(pixels)), sample(sampleOf<L::kGreen>(pixels)),
                                    sample(sampleOf<L::kBlue>(pixels)));
        return {truncatedThousandths(color.y), truncatedThousandths(color.cb), truncatedThousandths(color.cr)};
    }
    static HWY_INLINE VecI16 toSignedByte(VecI16 sum) {
        const TagI16 d;
        return hn::Min(hn::Max(hn::ShiftRight<7>(sum), hn::Set(d, -128)), hn::Set(d, 127));
    }

    std::int16_t m_keyY;
    std::int16_t m_cosine;
    std::int16_t m_sine;
    std::int16_t m_radius;
    std::uint16_t m_level2;
    std::int16_t m_tangent;
    std::int16_t m_cotangent;
    Fade m_fade;
};

/// The same in real numbers.
template <class L>
class FloatKey {
public:
    explicit FloatKey(const ColorKey& key) : m_key(key) {}

    HWY_INLINE VecF operator()(VecF red, VecF green, VecF blue, VecF alpha) const {
        const TagF d;
        const auto levels = [&](VecF v) HWY_ATTR { return hn::Mul(v, hn::Set(d, 255.0F)); };
        const auto product = [&](VecF v, float factor) HWY_ATTR { return hn::Mul(v, hn::Set(d, factor)); };
        const YCbCr color = toYCbCr(levels(red), levels(green), levels(blue));
        const VecF x = limited(hn::Add(product(color.cb, m_key.cosine), product(color.cr, m_key.sine)));
        const VecF z = limited(hn::Sub(product(color.cr, m_key.cosine), product(color.cb, m_key.sine)));

        const auto outside = hn::Gt(hn::Abs(z), product(x, m_key.tangent / 16.0F));
        const VecF detour = hn::Min(hn::Abs(product(z, m_key.cotangent / 16.0F)), hn::Set(d, kKeyLargestDetour));
        const VecF lumaApart = product(hn::Abs(hn::Sub(color.y, hn::Set(d, m_key.keyY))), kKeyNoise);
        const VecF along = hn::Sub(x, hn::Set(d, m_key.radius));
        const VecF apart2 = hn::Add(hn::Add(hn::Mul(z, z), hn::Mul(along, along)), hn::Mul(lumaApart, lumaApart));
        const VecF reach = hn::Max(hn::Sub(x, detour), hn::Zero(d));
        const float slope = m_key.keepsWholeWedge ? 0.0F : 1.0F / (m_key.radius - m_key.level);
        const VecF value = hn::Add(hn::Sub(hn::Set(d, 1.0F), product(reach, slope)), product(lumaApart, 1.0F / 255.0F));
        const VecF mask = hn::Mul(alpha, hn::Min(hn::Max(value, hn::Zero(d)), hn::Set(d, 1.0F)));
        const auto isKey =
            hn::Lt(apart2, hn::Set(d, m_key.keepsWholeWedge ? hwy::HighestValue<float>() : m_key.level * m_key.level));
        return hn::IfThenElse(outside, alpha, hn::IfThenZeroElse(isKey, mask));
    }

    void run(const float* src, float* dst, std::int32_t width) const {
        const TagF d;
        const auto step = [&](std::size_t, float* out, const float* in) HWY_ATTR {
            VecF samples[4];
            hn::LoadInterleaved4(d, in, samples[0], samples[1], samples[2], samples[3]);
            hn::StoreU((*this)(samples[L::kRed], samples[L::kGreen], samples[L::kBlue], samples[L::kAlpha]), d, out);
        };
        alongPixels<1, 4>(hn::Lanes(d), width, step, dst, src);
    }

private:
    static HWY_INLINE VecF limited(VecF sum) {
        const TagF d;
        const VecF v = hn::Mul(sum, hn::Set(d, 1.0F / 128.0F));
        return hn::Min(hn::Max(v, hn::Set(d, -128.0F)), hn::Set(d, 127.0F));
    }

    const ColorKey& m_key;
};

}  // namespace

void keyRows(const Frame& source, Frame& mask, const ColorKey& key) {
    visitRows(
        source.Format(), mask,
        [&](auto layout, std::int32_t, auto* out, const auto* in) {
            using L = decltype(layout);
            std::conditional_t<L::kIsFloat, FloatKey<L>, ByteKey<L>>(key).run(in, out, mask.Width());
        },
        source);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <algorithm>
#include <cmath>
#include <numbers>

namespace lumiset {

HWY_EXPORT(keyRows);

ColorKey colorKey(std::uint32_t color, float range, bool wholeNumbers) {
    const auto red = static_cast<std::int32_t>(color & 0xFFU);
    const auto green = static_cast<std::int32_t>((color >> 8U) & 0xFFU);
    const auto blue = static_cast<std::int32_t>((color >> 16U) & 0xFFU);
    const double y = (257 * red + 504 * green + 98 * blue) / 1000.0;
    const double cb = (-148 * red - 291 * green + 439 * blue) / 1000.0;
    const double cr = (439 * red - 368 * green - 71 * blue) / 1000.0;
    const double norm = std::hypot(cb, cr);
    constexpr double kGrey = 0.001;
    const bool grey = norm < kGrey;
    const double tangent = std::tan((static_cast<double>(range) * 0.498 + 0.001) * std::numbers::pi);
    const auto number = [&](double v) { return static_cast<float>(wholeNumbers ? std::trunc(v) : v); };
    ColorKey key{
        .keyY = number(y),
        .cosine = grey ? 0.0F : number(cb / norm * 127.0),
        .sine = grey ? 0.0F : number(cr / norm * 127.0),
        .radius = grey ? 0.0F : number(std::min(norm, 127.0)),
        .level = number(static_cast<double>(range) * 255.0),
        .tangent = number(std::min(tangent * 16.0, 255.0)),
        .cotangent = number(std::min(16.0 / tangent, 255.0)),
        .keepsWholeWedge = false,
    };
    key.keepsWholeWedge = key.radius <= key.level;
    return key;
}

void keyMask(const Frame& source, Frame& mask, const ColorKey& key) noexcept {
    HWY_DYNAMIC_DISPATCH(keyRows)(source, mask, key);
}

}  // namespace lumiset
#endif
