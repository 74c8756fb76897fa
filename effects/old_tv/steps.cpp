#include "effects/old_tv/steps.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/old_tv/steps.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/row_loops-inl.h"
#include "frame/rows.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

/// The four samples of as many pixels as a vector of floats has lanes, as floats.
template <class Sample>
struct Pixels {
    using Tag = hn::ScalableTag<float>;
    using Vector = hn::Vec<Tag>;
    Vector sample[4];

    static HWY_INLINE Pixels load(const Sample* from) {
        const Tag df;
        Pixels pixels;
        if constexpr (sizeof(Sample) == 1) {
            const hn::Rebind<std::int32_t, Tag> d32;
            const auto words = hn::LoadU(d32, reinterpret_cast<const std::int32_t*>(from));
            const auto bytes = hn::Set(d32, 0xFF);
            pixels.sample[0] = hn::ConvertTo(df, hn::And(words, bytes));
            pixels.sample[1] = hn::ConvertTo(df, hn::And(hn::ShiftRight<8>(words), bytes));
            pixels.sample[2] = hn::ConvertTo(df, hn::And(hn::ShiftRight<16>(words), bytes));
            pixels.sample[3] = hn::ConvertTo(df, hn::And(hn::ShiftRight<24>(words), bytes));
        } else {
            hn::LoadInterleaved4(df, from, pixels.sample[0], pixels.sample[1], pixels.sample[2], pixels.sample[3]);
        }
        return pixels;
    }
    HWY_INLINE void store(Sample* to) const {
        const Tag df;
        if constexpr (sizeof(Sample) == 1) {
            const hn::Rebind<std::int32_t, Tag> d32;
            const auto low = hn::Or(hn::ConvertTo(d32, sample[0]), hn::ShiftLeft<8>(hn::ConvertTo(d32, sample[1])));
            const auto high = hn::Or(hn::ConvertTo(d32, sample[2]), hn::ShiftLeft<8>(hn::ConvertTo(d32, sample[3])));
            hn::StoreU(hn::Or(low, hn::ShiftLeft<16>(high)), d32, reinterpret_cast<std::int32_t*>(to));
        } else {
            hn::StoreInterleaved4(sample[0], sample[1], sample[2], sample[3], df, to);
        }
    }
};

template <class L>
HWY_INLINE typename Pixels<typename L::Sample>::Vector lumaOf(const Pixels<typename L::Sample>& p) {
    const hn::ScalableTag<float> df;
    return hn::Add(
        hn::Add(hn::Mul(hn::Set(df, 0.299F), p.sample[L::kRed]), hn::Mul(hn::Set(df, 0.587F), p.sample[L::kGreen])),
        hn::Mul(hn::Set(df, 0.114F), p.sample[L::kBlue]));
}

/// `luma` has room for twice the width and a vector: the row's brightness, once from `shift` on and wrapped.
template <class L>
void ghostRow(typename L::Sample* row, std::int32_t width, std::int32_t shift, float* luma) {
    using Sample = typename L::Sample;
    const hn::ScalableTag<float> df;
    const auto scale = hn::Set(df, L::kIsFloat ? 1.0F : 255.0F);
    const auto zero = hn::Zero(df);
    const auto alongRow = [&](const auto& step) HWY_ATTR { alongPixels<4>(hn::Lanes(df), width, step, row); };
    alongRow([&](std::size_t x, Sample* at)
                 HWY_ATTR { hn::StoreU(lumaOf<L>(Pixels<Sample>::load(at)), df, luma + width + x); });
    // The pixel at x sees the brightness at x - shift, which for the row's first pixels lies at its end.
    std::memcpy(luma + width - shift, luma + 2 * static_cast<std::ptrdiff_t>(width) - shift,
                static_cast<std::size_t>(shift) * sizeof(float));
    const float* shifted = luma + width - shift;
    alongRow([&](std::size_t x, Sample* at) HWY_ATTR {
        auto pixels = Pixels<Sample>::load(at);
        auto& red = pixels.sample[L::kRed];
        auto& green = pixels.sample[L::kGreen];
        auto& blue = pixels.sample[L::kBlue];
        const auto weighted = [&](float r, float g, float b) HWY_ATTR {
            return hn::Add(hn::Add(hn::Mul(hn::Set(df, r), red), hn::Mul(hn::Set(df, g), green)),
                           hn::Mul(hn::Set(df, b), blue));
        };
        const auto u = weighted(-0.14713F, -0.28886F, 0.436F);
        const auto v = weighted(0.615F, -0.51499F, -0.10001F);
        const auto y = hn::Max(lumaOf<L>(pixels), hn::Mul(hn::Set(df, 0.8F), hn::LoadU(df, shifted + x)));
        const auto limited = [&](auto value) HWY_ATTR { return hn::Min(hn::Max(value, zero), scale); };
        red = limited(hn::Add(y, hn::Mul(hn::Set(df, 1.13983F), v)));
        green = limited(hn::Sub(hn::Sub(y, hn::Mul(hn::Set(df, 0.39465F), u)), hn::Mul(hn::Set(df, 0.5806F), v)));
        blue = limited(hn::Add(y, hn::Mul(hn::Set(df, 2.03211F), u)));
        pixels.store(at);
    });
}

/// With `plus` above 0 colour = min(colour + colour * plus, white), else colour * factor.
template <class L>
void scaleRow(typename L::Sample* row, std::int32_t width, float factor, float plus) {
    using Sample = typename L::Sample;
    const hn::ScalableTag<float> df;
    const auto white = hn::Set(df, L::kIsFloat ? 1.0F : 255.0F);
    const auto times = hn::Set(df, factor);
    const auto added = hn::Set(df, plus);
    const auto step = [&](std::size_t, Sample* at) HWY_ATTR {
        auto pixels = Pixels<Sample>::load(at);
        for (const int position : {L::kRed, L::kGreen, L::kBlue}) {
            auto& value = pixels.sample[position];
            value = plus > 0.0F ? hn::Min(hn::Add(value, hn::Mul(value, added)), white) : hn::Mul(value, times);
        }
        pixels.store(at);
    };
    alongPixels<4>(hn::Lanes(df), width, step, row);
}

/// Straight-alpha over of a grey pixel with one opacity. 8-bit products are the scaled product.
void staticRow8(std::uint8_t* row, const std::uint8_t* noise, std::int32_t width, std::uint32_t opacity, int alphaAt) {
    for (std::int32_t x = 0; x < width; ++x) {
        std::uint8_t* pixel = row + 4 * static_cast<std::ptrdiff_t>(x);
        const std::uint32_t grey = scaledProduct(noise[x], opacity);
        for (int i = 0; i < 4; ++i) {
            const std::uint32_t top = i == alphaAt ? opacity : grey;
            pixel[i] = static_cast<std::uint8_t>(top + scaledProduct(pixel[i], 255 - opacity));
        }
    }
}
void staticRowF(float* row, const float* noise, std::int32_t width, float opacity, int alphaAt) {
    for (std::int32_t x = 0; x < width; ++x) {
        float* pixel = row + 4 * static_cast<std::ptrdiff_t>(x);
        const float grey = noise[x] * opacity;
        for (int i = 0; i < 4; ++i) {
            const float top = i == alphaAt ? opacity : grey;
            pixel[i] = top + pixel[i] * (1.0F - opacity);
        }
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
            using L = decltype(layout);
            if constexpr (L::kIsFloat) {
                staticRowF(row, grey, frame.Width(), static_cast<float>(opacity) / 255.0F, L::kAlpha);
            } else {
                staticRow8(row, grey, frame.Width(), opacity, L::kAlpha);
            }
        },
        noise);
}

void scaleFrameRow(Frame& frame, std::int32_t y, float factor, float plus) {
    visitLayout(frame.Format(), [&](auto layout) {
        using L = decltype(layout);
        scaleRow<L>(frame.row<typename L::Sample>(y), frame.Width(), factor, plus);
        return true;
    });
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <algorithm>

#include "frame/frame_operations.h"

namespace lumiset {

HWY_EXPORT(ghostFrame);
HWY_EXPORT(staticFrame);
HWY_EXPORT(scaleFrameRow);

std::int64_t ghostFloats(std::int32_t width) {
    return 2 * std::int64_t{width} + HWY_MAX_BYTES;
}

void addGhost(Frame& frame, std::int32_t shift, float* luma) noexcept {
    HWY_DYNAMIC_DISPATCH(ghostFrame)(frame, shift % frame.Width(), luma);
}

void addStatic(Frame& frame, const Frame& noise, std::uint8_t opacity) noexcept {
    HWY_DYNAMIC_DISPATCH(staticFrame)(frame, noise, opacity);
}

void brightenRow(Frame& frame, std::int32_t y, float gain) noexcept {
    HWY_DYNAMIC_DISPATCH(scaleFrameRow)(frame, y, 1.0F, gain);
}

void darkenRow(Frame& frame, std::int32_t y, float factor) noexcept {
    HWY_DYNAMIC_DISPATCH(scaleFrameRow)(frame, y, factor, 0.0F);
}

void tearRows(const Frame& source, Frame& destination, std::span<const TearStrip> strips) noexcept {
    const std::int32_t width = source.Width();
    const auto pixel = static_cast<std::size_t>(source.BytesPerPixel());
    inBands(destination.Resources(), {width, source.Height()}, [&](std::int32_t first, std::int32_t rows) {
        for (const TearStrip& strip : strips) {
            const auto left = static_cast<std::size_t>(strip.offset) * pixel;
            const auto right = static_cast<std::size_t>(width - strip.offset) * pixel;
            for (std::int32_t y = std::max(strip.top, first); y < std::min(strip.bottom, first + rows); ++y) {
                std::memcpy(destination.PixelAddress(0, y, 0), source.PixelAddress(strip.offset, y, 0), right);
                std::memcpy(destination.PixelAddress(width - strip.offset, y, 0), source.PixelAddress(0, y, 0), left);
            }
        }
        return true;
    });
}

void rollPicture(const Frame& source, Frame& destination, const RollEvent& roll) noexcept {
    FrameFillColor(destination, 0xFF000000U);
    const std::int32_t width = source.Width();
    const std::int32_t height = source.Height();
    // Parts that lie wholly outside copy nothing.
    if (roll.upperSource < height) {
        FrameCopyRect(source, 0, roll.upperSource, width, height - roll.upperSource, destination, 0, roll.upperRow);
    }
    if (roll.lowerRow < height) {
        FrameCopyRect(source, 0, 0, width, height - roll.lowerRow, destination, 0, roll.lowerRow);
    }
}

}  // namespace lumiset
#endif
