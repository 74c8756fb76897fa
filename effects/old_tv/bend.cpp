#include "effects/old_tv/bend.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/old_tv/bend.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/row_loops-inl.h"
#include "frame/rows.h"
#include "frame/scratch_block.h"

// Shared by all instruction sets.
#ifndef LUMISET_OLD_TV_BEND_TYPES
#define LUMISET_OLD_TV_BEND_TYPES
namespace lumiset {
namespace {

/// How the line across at one place of a bent side runs: where it begins, by how much it is scaled, and the cosine of
/// the side's slope there. Arrays over the places.
struct BentSide {
    const float* inset;
    const float* scale;
    const float* cosine;
};

/// Pixels that are worked on together, so that their taps stay in the nearest cache.
constexpr std::int32_t kBlock = 256;

}  // namespace
}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

/// Where the pixels of a row come from: the byte offset of the first of two taps, and the share of the second.
struct Taps {
    HWY_ALIGN std::int32_t offset[kBlock];
    HWY_ALIGN float share[kBlock];
};

using Pixels = hn::ScalableTag<std::uint32_t>;

/// A vector of pixels at `src` + `offsets`. Curves are smooth, so these nearly always follow each other, but for one
/// place where they go on from another row or a pixel further: then two plain loads hold them. Not tried for a vector
/// that passes the row's end.
template <bool kTopAndBottom>
HWY_INLINE hn::Vec<Pixels> fetch(const std::uint8_t* src, const std::int32_t* offsets, bool insideRow) {
    const Pixels d;
    const hn::RebindToSigned<Pixels> di;
    const hn::Repartition<std::uint8_t, Pixels> dBytes;
    constexpr std::int32_t kPixelBytes = 4;
    const auto lanes = static_cast<std::int32_t>(hn::Lanes(d));
    const std::int32_t first = offsets[0];
    const std::int32_t last = offsets[lanes - 1] - kPixelBytes * (lanes - 1);
    const auto all = hn::Load(di, offsets);
    const auto following = [&](std::int32_t start) HWY_ATTR {
        return hn::RebindMask(d, hn::Eq(all, hn::Add(hn::ShiftLeft<2>(hn::Iota(di, 0)), hn::Set(di, start))));
    };
    const auto fromFirst = following(first);
    // Where a row stands still at its ends, pixels in a line would lie outside it.
    if (insideRow && (kTopAndBottom || last >= first) && hn::AllTrue(d, hn::Or(fromFirst, following(last)))) {
        return hn::IfThenElse(fromFirst, hn::BitCast(d, hn::LoadU(dBytes, src + first)),
                              hn::BitCast(d, hn::LoadU(dBytes, src + last)));
    }
    HWY_ALIGN std::uint32_t pixels[HWY_MAX_BYTES / 4];
    for (std::int32_t i = 0; i < lanes; ++i) {
        std::memcpy(pixels + i, src + offsets[i], sizeof *pixels);
    }
    return hn::Load(d, pixels);
}

/// Interpolates a row of pixels between two taps `step` bytes apart; `count` is at most a block.
template <bool kTopAndBottom>
void interpolate(const std::uint8_t* src, std::int32_t step, Taps& taps, std::int32_t count, std::uint8_t* dst) {
    const Pixels d32;
    const hn::Repartition<std::uint16_t, Pixels> d16;
    const hn::RebindToFloat<Pixels> df;
    const hn::RebindToSigned<Pixels> di32;
    const hn::Repartition<std::uint8_t, Pixels> dBytes;
    const auto lanes = static_cast<std::int32_t>(hn::Lanes(d32));
    const auto bytes = hn::Set(d16, 0x00FF);
    const auto half = hn::Set(d16, 128);
    const auto whole = hn::Set(d16, 256);
    // A last vector takes the last pixel again and again.
    for (std::int32_t i = count; i % lanes != 0; ++i) {
        taps.offset[i] = taps.offset[count - 1];
    }
    for (std::int32_t i = 0; i < count; i += lanes) {
        const auto share =
            hn::ConvertTo(di32, hn::Add(hn::Mul(hn::Load(df, taps.share + i), hn::Set(df, 256.0F)), hn::Set(df, 0.5F)));
        const auto pair = hn::BitCast(d16, hn::Or(share, hn::ShiftLeft<16>(share)));
        const auto rest = hn::Sub(whole, pair);
        const bool insideRow = i + lanes <= count;
        const auto a = hn::BitCast(d16, fetch<kTopAndBottom>(src, taps.offset + i, insideRow));
        const auto b = hn::BitCast(d16, fetch<kTopAndBottom>(src + step, taps.offset + i, insideRow));
        const auto mix = [&](auto x, auto y) HWY_ATTR {
            return hn::ShiftRight<8>(hn::Add(hn::Add(hn::Mul(x, rest), hn::Mul(y, pair)), half));
        };
        const auto even = mix(hn::And(a, bytes), hn::And(b, bytes));
        const auto odd = mix(hn::ShiftRight<8>(a), hn::ShiftRight<8>(b));
        const auto result = hn::BitCast(dBytes, hn::Or(even, hn::ShiftLeft<8>(odd)));
        if (insideRow) {
            hn::StoreU(result, dBytes, dst + 4 * i);
        } else {
            HWY_ALIGN std::uint8_t last[HWY_MAX_BYTES];
            hn::Store(result, dBytes, last);
            std::memcpy(dst + 4 * i, last, static_cast<std::size_t>(count - i) * 4);
        }
    }
}

template <bool kTopAndBottom>
void interpolate(const std::uint8_t* src, std::int32_t step, Taps& taps, std::int32_t count, float* dst) {
    const hn::FixedTag<float, 4> d4;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::uint8_t* at = src + taps.offset[i];
        const auto a = hn::LoadU(d4, reinterpret_cast<const float*>(at));
        const auto b = hn::LoadU(d4, reinterpret_cast<const float*>(at + step));
        hn::StoreU(hn::Add(a, hn::Mul(hn::Sub(b, a), hn::Set(d4, taps.share[i]))), d4, dst + 4 * i);
    }
}

/// Taps of the pixels from (x, y) on. A block may run past the row's end: the arrays are that much longer.
template <bool kTopAndBottom>
void locate(const Frame& source, const BentSide& side, std::int32_t x, std::int32_t y, Taps& taps) {
    const hn::ScalableTag<float> df;
    const hn::RebindToSigned<decltype(df)> di;
    const auto lanes = static_cast<std::int32_t>(hn::Lanes(df));
    const std::int32_t last = (kTopAndBottom ? source.Height() : source.Width()) - 1;
    const auto end = hn::Set(df, static_cast<float>(last));
    const auto lastTap = hn::Set(di, last - 1);
    const auto tapBytes = hn::Set(di, kTopAndBottom ? source.Stride() : source.BytesPerPixel());
    const auto counting = hn::Iota(di, 0);
    for (std::int32_t i = 0; i < kBlock; i += lanes) {
        const std::int32_t column = x + i;
        const auto columns = hn::Add(hn::Set(di, column), counting);
        const auto across = kTopAndBottom ? hn::Set(df, static_cast<float>(y)) : hn::ConvertTo(df, columns);
        const auto inset = kTopAndBottom ? hn::LoadU(df, side.inset + column) : hn::Set(df, side.inset[y]);
        const auto scale = kTopAndBottom ? hn::LoadU(df, side.scale + column) : hn::Set(df, side.scale[y]);
        const auto position = hn::Min(hn::Max(hn::Mul(hn::Sub(across, inset), scale), hn::Zero(df)), end);
        const auto tap = hn::Min(hn::ConvertTo(di, position), lastTap);
        auto offset = hn::Mul(tap, tapBytes);
        if constexpr (kTopAndBottom) {
            offset = hn::Add(offset, hn::Mul(columns, hn::Set(di, source.BytesPerPixel())));
        }
        hn::Store(offset, di, taps.offset + i);
        hn::Store(hn::Sub(position, hn::ConvertTo(df, tap)), df, taps.share + i);
    }
}

/// Share of the pixel at (x, y) that the bent picture covers.
template <bool kTopAndBottom>
float coverage(const BentSide& side, std::int32_t last, std::int32_t x, std::int32_t y) {
    const std::int32_t place = kTopAndBottom ? x : y;
    const auto across = static_cast<float>(kTopAndBottom ? y : x);
    const auto limited = [](float v) HWY_ATTR { return v < 0.0F ? 0.0F : v < 1.0F ? v : 1.0F; };
    const float inset = side.inset[place];
    const float cosine = side.cosine[place];
    return limited(1.0F + (across - inset) * cosine) *
           limited(1.0F + (static_cast<float>(last) - inset - across) * cosine);
}

/// Scales the alpha of the row's pixels that are not covered whole, which stand at its ends.
template <class L, bool kTopAndBottom>
void fadeEnds(const BentSide& side, std::int32_t last, std::int32_t width, std::int32_t y, typename L::Sample* row) {
    constexpr float kWhole = 0.999F;
    const auto fade = [&](std::int32_t x) HWY_ATTR {
        const float cover = coverage<kTopAndBottom>(side, last, x, y);
        if (cover > kWhole) {
            return false;
        }
        typename L::Sample* pixel = row + 4 * static_cast<std::ptrdiff_t>(x);
        const float alpha = static_cast<float>(pixel[L::kAlpha]) * cover + (L::kIsFloat ? 0.0F : 0.5F);
        pixel[L::kAlpha] = static_cast<typename L::Sample>(alpha);
        if (!(pixel[L::kAlpha] > 0)) {
            std::memset(pixel, 0, 4 * sizeof *pixel);
        }
        return true;
    };
    std::int32_t left = 0;
    while (left < width && fade(left)) {
        ++left;
    }
    for (std::int32_t x = width - 1; x > left && fade(x); --x) {
    }
}

template <bool kTopAndBottom>
void bend(const Frame& source, Frame& destination, const BentSide& side) {
    const std::int32_t width = source.Width();
    const std::int32_t last = (kTopAndBottom ? source.Height() : width) - 1;
    const std::int32_t step = kTopAndBottom ? source.Stride() : source.BytesPerPixel();
    visitBands(source.Format(), destination, [&](auto layout, std::int32_t first, std::int32_t rows) {
        using L = decltype(layout);
        Taps taps;
        for (std::int32_t y = first; y < first + rows; ++y) {
            const std::uint8_t* from = source.PixelAddress(0, kTopAndBottom ? 0 : y, 0);
            auto* row = destination.row<typename L::Sample>(y);
            for (std::int32_t x = 0; x < width; x += kBlock) {
                const std::int32_t count = width - x < kBlock ? width - x : kBlock;
                locate<kTopAndBottom>(source, side, x, y, taps);
                interpolate<kTopAndBottom>(from, step, taps, count, row + 4 * static_cast<std::ptrdiff_t>(x));
            }
            fadeEnds<L, kTopAndBottom>(side, last, width, y, row);
        }
    });
}

}  // namespace

void bendFrame(const Frame& source, Frame& destination, const BentSide& side, bool topAndBottom) {
    topAndBottom ? bend<true>(source, destination, side) : bend<false>(source, destination, side);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <cmath>
#include <numbers>

namespace lumiset {

HWY_EXPORT(bendFrame);

namespace {

/// The bent sides are drawn as straight pieces of this many pixels.
constexpr std::int32_t kPiece = 8;

/// Places of a side's arrays: blocks of a row read on behind its end.
std::int64_t roomOf(std::int32_t length) {
    return std::int64_t{length} + 2 * kBlock;
}

/// Fills the three arrays of a side of `length` pixels whose lines across have `across` pixels.
void fillSide(std::int32_t length, std::int32_t across, std::int32_t depth, float* inset, float* scale, float* cosine) {
    const double end = across - 1;
    const auto bent = [&](std::int32_t at) { return depth - depth * std::sin(std::numbers::pi * at / length); };
    for (std::int32_t from = 0; from < length - 1;) {
        // The last piece takes a short rest with it.
        const std::int32_t to = from + kPiece >= length - 3 ? length - 1 : from + kPiece;
        const double slope = (bent(to) - bent(from)) / (to - from);
        for (std::int32_t at = from; at <= to; ++at) {
            const double here = bent(from) + slope * (at - from);
            inset[at] = static_cast<float>(here);
            scale[at] = static_cast<float>(end / (end - 2.0 * here));
            cosine[at] = static_cast<float>(1.0 / std::hypot(1.0, slope));
        }
        from = to;
    }
}

}  // namespace

std::int64_t bendScratch(std::int32_t longestSide) {
    return ScratchBlock::reserveFor(3 * roomOf(longestSide) * static_cast<std::int64_t>(sizeof(float)));
}

bool bendSides(const Frame& source, Frame& destination, std::int32_t depth, bool topAndBottom,
               MemoryAllocator& allocator) noexcept {
    const std::int32_t length = topAndBottom ? source.Width() : source.Height();
    const std::int32_t across = topAndBottom ? source.Height() : source.Width();
    const std::int64_t room = roomOf(length);
    ScratchBlock block(allocator);
    block.add<float>(3 * room);
    if (!block.allocate()) {
        return false;
    }
    auto* inset = block.take<float>(3 * room);
    std::fill_n(inset, 3 * room, 0.0F);
    fillSide(length, across, depth, inset, inset + room, inset + 2 * room);
    HWY_DYNAMIC_DISPATCH(bendFrame)(source, destination, {inset, inset + room, inset + 2 * room}, topAndBottom);
    return true;
}

}  // namespace lumiset
#endif
