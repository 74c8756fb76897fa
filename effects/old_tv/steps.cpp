#include "effects/old_tv/steps.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/old_tv/steps.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"
#include "frame/rows.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

/// The colours of as many pixels as a vector of floats has lanes, as floats, and their alpha as it lies in memory.
template <class L>
struct Colours {
    using Sample = typename L::Sample;
    using Rest = std::conditional_t<L::kIsFloat, VecF, hn::Vec<TagI32>>;
    VecF red;
    VecF green;
    VecF blue;
    Rest rest;

    template <int kAt>
    static HWY_INLINE VecF byteAt(hn::Vec<TagI32> words) {
        auto v = hn::BitCast(Tag32(), words);
        if constexpr (kAt > 0) {
            v = hn::ShiftRight<8 * kAt>(v);
        }
        if constexpr (kAt < 3) {
            v = hn::And(v, hn::Set(Tag32(), 0xFF));
        }
        return hn::ConvertTo(TagF(), hn::BitCast(TagI32(), v));
    }
    template <int kAt>
    static HWY_INLINE hn::Vec<TagI32> toByteAt(VecF v) {
        const Vec32 byte = truncateToByte(v);
        if constexpr (kAt > 0) {
            return hn::BitCast(TagI32(), hn::ShiftLeft<8 * kAt>(byte));
        } else {
            return hn::BitCast(TagI32(), hn::And(byte, hn::Set(Tag32(), 0xFF)));
        }
    }

    static HWY_INLINE Colours load(const Sample* from) {
        if constexpr (L::kIsFloat) {
            VecF v[4];
            hn::LoadInterleaved4(TagF(), from, v[0], v[1], v[2], v[3]);
            return {v[L::kRed], v[L::kGreen], v[L::kBlue], v[L::kAlpha]};
        } else {
            const auto words = hn::LoadU(TagI32(), reinterpret_cast<const std::int32_t*>(from));
            const auto alpha = hn::BitCast(TagI32(), hn::Set(Tag32(), 0xFFU << (8 * L::kAlpha)));
            return {byteAt<L::kRed>(words), byteAt<L::kGreen>(words), byteAt<L::kBlue>(words), hn::And(words, alpha)};
        }
    }
    HWY_INLINE void store(Sample* to) const {
        if constexpr (L::kIsFloat) {
            VecF v[4];
            v[L::kRed] = red;
            v[L::kGreen] = green;
            v[L::kBlue] = blue;
            v[L::kAlpha] = rest;
            hn::StoreInterleaved4(v[0], v[1], v[2], v[3], TagF(), to);
        } else {
            const auto words = hn::Or(hn::Or(toByteAt<L::kRed>(red), toByteAt<L::kGreen>(green)),
                                      hn::Or(toByteAt<L::kBlue>(blue), rest));
            hn::StoreU(words, TagI32(), reinterpret_cast<std::int32_t*>(to));
        }
    }
    HWY_INLINE VecF weighted(float r, float g, float b) const {
        const TagF d;
        return hn::Add(hn::Add(hn::Mul(hn::Set(d, r), red), hn::Mul(hn::Set(d, g), green)),
                       hn::Mul(hn::Set(d, b), blue));
    }
};

/// `luma` has room for twice the width and a vector: the row's brightness, once from `shift` on and wrapped.
template <class L>
void ghostRow(typename L::Sample* row, std::int32_t width, std::int32_t shift, float* luma) {
    using Sample = typename L::Sample;
    const TagF df;
    const auto scale = hn::Set(df, L::kIsFloat ? 1.0F : 255.0F);
    const auto zero = hn::Zero(df);
    const auto alongRow = [&](const auto& step) HWY_ATTR { alongPixels<4>(hn::Lanes(df), width, step, row); };
    float* own = luma + width;
    alongRow([&](std::size_t x, Sample* at)
                 HWY_ATTR { hn::StoreU(Colours<L>::load(at).weighted(0.299F, 0.587F, 0.114F), df, own + x); });
    // The pixel at x sees the brightness at x - shift, which for the row's first pixels lies at its end.
    std::memcpy(own - shift, own + width - shift, static_cast<std::size_t>(shift) * sizeof(float));
    const float* shifted = own - shift;
    alongRow([&](std::size_t x, Sample* at) HWY_ATTR {
        auto pixels = Colours<L>::load(at);
        const auto u = pixels.weighted(-0.14713F, -0.28886F, 0.436F);
        const auto v = pixels.weighted(0.615F, -0.51499F, -0.10001F);
        const auto y = hn::Max(hn::LoadU(df, own + x), hn::Mul(hn::Set(df, 0.8F), hn::LoadU(df, shifted + x)));
        const auto limited = [&](auto value) HWY_ATTR { return hn::Min(hn::Max(value, zero), scale); };
        pixels.red = limited(hn::Add(y, hn::Mul(hn::Set(df, 1.13983F), v)));
        pixels.green =
            limited(hn::Sub(hn::Sub(y, hn::Mul(hn::Set(df, 0.39465F), u)), hn::Mul(hn::Set(df, 0.5806F), v)));
        pixels.blue = limited(hn::Add(y, hn::Mul(hn::Set(df, 2.03211F), u)));
        pixels.store(at);
    });
}

/// Pixels from `from` to `to`: colour * light, and then min(that + that * gain, white).
template <class L, bool kBrightens>
void lightPixels(const typename L::Sample* from, typename L::Sample* to, std::int32_t count, float light, float gain) {
    using Sample = typename L::Sample;
    const TagF df;
    const auto white = hn::Set(df, L::kIsFloat ? 1.0F : 255.0F);
    const auto times = hn::Set(df, light);
    const auto added = hn::Set(df, gain);
    const auto lit = [&](VecF value) HWY_ATTR {
        auto v = hn::Mul(value, times);
        if constexpr (kBrightens) {
            if constexpr (!L::kIsFloat) {
                v = hn::Floor(v);
            }
            v = hn::Min(hn::Add(v, hn::Mul(v, added)), white);
        }
        return v;
    };
    const auto step = [&](std::size_t, Sample* out, const Sample* in) HWY_ATTR {
        auto pixels = Colours<L>::load(in);
        pixels.red = lit(pixels.red);
        pixels.green = lit(pixels.green);
        pixels.blue = lit(pixels.blue);
        pixels.store(out);
    };
    alongPixels<4, 4>(hn::Lanes(df), count, step, to, from);
}

/// Straight-alpha over of a grey pixel with one opacity. 8-bit products are the scaled product.
template <class L>
void staticRow(std::uint8_t* row, const std::uint8_t* noise, std::int32_t width, std::uint8_t opacity) {
    const Tag32 d;
    const hn::Rebind<std::uint8_t, Tag32> dNoise;
    const auto own = hn::Set(Tag16(), opacity);
    const auto rest = hn::Set(Tag16(), static_cast<std::uint16_t>(255 - opacity));
    const auto alpha = hn::Set(d, std::uint32_t{opacity} << (8 * L::kAlpha));
    const auto step = [&](std::size_t, std::uint8_t* to, const std::uint8_t* from) HWY_ATTR {
        const Vec16 wide = hn::BitCast(Tag16(), hn::PromoteTo(d, hn::LoadU(dNoise, from)));
        const Vec32 grey = hn::BitCast(d, over255(hn::Mul(wide, own)));
        const Vec32 twice = hn::Or(grey, hn::ShiftLeft<8>(grey));
        const Vec32 colours = hn::ShiftLeft<8 * L::kFirstColor>(hn::Or(twice, hn::ShiftLeft<16>(grey)));
        const Halves below = scaledProducts(split(hn::LoadU(Tag8(), to)), {rest, rest});
        // The two rounded-down products never pass 255 together.
        hn::StoreU(hn::Add(hn::BitCast(Tag8(), hn::Or(colours, alpha)), join(below)), Tag8(), to);
    };
    alongPixels<4, 1>(hn::Lanes(d), width, step, row, noise);
}
template <class L>
void staticRow(float* row, const float* noise, std::int32_t width, std::uint8_t opacity) {
    const hn::FixedTag<float, 4> d;
    const float share = static_cast<float>(opacity) / 255.0F;
    const auto own = hn::Set(d, share);
    const auto rest = hn::Set(d, 1.0F - share);
    const auto isAlpha = hn::Eq(hn::Iota(d, 0.0F), hn::Set(d, static_cast<float>(L::kAlpha)));
    for (std::int32_t x = 0; x < width; ++x) {
        float* pixel = row + 4 * static_cast<std::ptrdiff_t>(x);
        const auto above = hn::IfThenElse(isAlpha, own, hn::Mul(hn::Set(d, noise[x]), own));
        hn::StoreU(hn::Add(above, hn::Mul(hn::LoadU(d, pixel), rest)), d, pixel);
    }
}

template <class L>
void show(const typename L::Sample* from, typename L::Sample* to, std::int32_t count, const RowLook& look) {
    if (look.gain > 0.0F) {
        lightPixels<L, true>(from, to, count, look.light, look.gain);
    } else if (look.light != 1.0F) {
        lightPixels<L, false>(from, to, count, look.light, 0.0F);
    } else {
        std::memcpy(to, from, 4 * static_cast<std::size_t>(count) * sizeof *to);
    }
}

}  // namespace

void ghostFrame(Frame& frame, std::int32_t shift, float* luma) {
    visitLayout(frame.Format(), [&](auto layout) {
        using L = decltype(layout);
        for (std::int32_t y = 0; y < frame.Height(); ++y) {
            ghostRow<L>(frame.row<typename L::Sample>(y), frame.Width(), shift, luma);
        }
        return true;
    });
}

void staticFrame(Frame& frame, const Frame& noise, std::uint8_t opacity) {
    visitRows(
        frame.Format(), frame,
        [&](auto layout, std::int32_t, auto* row, const auto* grey) {
            staticRow<decltype(layout)>(row, grey, frame.Width(), opacity);
        },
        noise);
}

void showFrameRow(const Frame& source, Frame& destination, const RowLook& look) {
    visitLayout(source.Format(), [&](auto layout) {
        using L = decltype(layout);
        const auto* from = source.row<const typename L::Sample>(0);
        auto* to = destination.row<typename L::Sample>(0);
        const std::int32_t left = source.Width() - look.turn;
        show<L>(from + 4 * static_cast<std::ptrdiff_t>(look.turn), to, left, look);
        show<L>(from, to + 4 * static_cast<std::ptrdiff_t>(left), look.turn, look);
        return true;
    });
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(ghostFrame);
HWY_EXPORT(staticFrame);
HWY_EXPORT(showFrameRow);

std::int64_t ghostFloats(std::int32_t width) {
    return 2 * std::int64_t{width} + HWY_MAX_BYTES;
}

void addGhost(Frame& frame, std::int32_t shift, float* luma) noexcept {
    HWY_DYNAMIC_DISPATCH(ghostFrame)(frame, shift, luma);
}

void addStatic(Frame& frame, const Frame& noise, std::uint8_t opacity) noexcept {
    HWY_DYNAMIC_DISPATCH(staticFrame)(frame, noise, opacity);
}

void showRow(const Frame& source, Frame& destination, const RowLook& look) noexcept {
    HWY_DYNAMIC_DISPATCH(showFrameRow)(source, destination, look);
}

}  // namespace lumiset
#endif
