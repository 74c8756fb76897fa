#include "effects/old_tv/bend.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/old_tv/bend.cpp"
#include "hwy/foreach_target.h"

#include "frame/layout.h"
#include "frame/primitives/row_loops-inl.h"

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
struct BentSides {
    BentSide topAndBottom;
    BentSide leftAndRight;
};

/// Pixels before and behind a row that may be read with it: a vector of them each.
constexpr std::int32_t kMargin = HWY_MAX_BYTES / 4;

}  // namespace
}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

using Pixels = hn::ScalableTag<std::uint32_t>;
using Places = hn::RebindToSigned<Pixels>;
using Shares = hn::RebindToFloat<Pixels>;

/// What the pixels of a row are made from: two taps, `step` bytes apart, with a share of the second.
template <bool kTopAndBottom>
class Line {
public:
    /// Of the pixels of row `y`; `first` is the first pixel of the line that the place 0 stands on.
    Line(const BentSide& side, const std::uint8_t* first, std::int32_t step, std::int32_t last, std::int32_t y)
        : m_side(side), m_first(first), m_step(step), m_last(last), m_y(y) {}

    /// Share of pixel `x` that the bent picture covers.
    [[nodiscard]] float coverage(std::int32_t x) const {
        const auto limited = [](float v) HWY_ATTR { return v < 0.0F ? 0.0F : v < 1.0F ? v : 1.0F; };
        const auto across = static_cast<float>(kTopAndBottom ? m_y : x);
        const float inset = m_side.inset[place(x)];
        const float cosine = m_side.cosine[place(x)];
        return limited(1.0F + (across - inset) * cosine) *
               limited(1.0F + (static_cast<float>(m_last) - inset - across) * cosine);
    }
    /// True where it covers nothing of a vector of pixels from `x` on.
    [[nodiscard]] HWY_INLINE bool isOutside(std::int32_t x) const {
        const Shares d;
        const auto inset = side(m_side.inset, x);
        const auto cosine = side(m_side.cosine, x);
        const auto from = hn::Sub(across(x), inset);
        const auto to = hn::Sub(hn::Sub(hn::Set(d, static_cast<float>(m_last)), inset), across(x));
        const auto least = hn::Mul(hn::Min(from, to), cosine);
        return hn::AllTrue(d, hn::Le(hn::Add(hn::Set(d, 1.0F), least), hn::Zero(d)));
    }

    /// Makes a vector of pixels from `x` on.
    HWY_INLINE void draw(std::int32_t x, std::uint8_t* to) const {
        const Places di;
        const Pixels d;
        const hn::Repartition<std::uint8_t, Pixels> dBytes;
        const Taps taps = tapsFrom<std::uint8_t>(x);
        // Curves are smooth, so the taps of neighbours nearly always follow each other in memory, with a few breaks
        // where they go on in another row or a pixel further. A vector is put together from as many plain loads.
        const auto start = kTopAndBottom ? taps.offset : hn::Sub(taps.offset, hn::ShiftLeft<2>(hn::Iota(di, 0)));
        HWY_ALIGN std::int32_t starts[HWY_MAX_BYTES / 4];
        hn::Store(start, di, starts);
        const std::uint8_t* base = m_first + (kTopAndBottom ? 4 * static_cast<std::ptrdiff_t>(x) : 0);
        const auto pixelsAt = [&](std::int32_t offset)
                                  HWY_ATTR { return hn::BitCast(d, hn::LoadU(dBytes, base + offset)); };
        const auto startsAt = [&](std::int32_t offset) HWY_ATTR { return hn::Eq(start, hn::Set(di, offset)); };
        const std::int32_t first = starts[0];
        fetchNext(base + first, to);
        const std::int32_t last = starts[hn::Lanes(di) - 1];
        const auto isFirst = startsAt(first);
        auto a = hn::IfThenElse(hn::RebindMask(d, isFirst), pixelsAt(first), pixelsAt(last));
        auto b = hn::IfThenElse(hn::RebindMask(d, isFirst), pixelsAt(first + m_step), pixelsAt(last + m_step));
        auto others = hn::Not(hn::Or(isFirst, startsAt(last)));
        while (HWY_UNLIKELY(!hn::AllFalse(di, others))) {
            const std::int32_t next = starts[hn::FindFirstTrue(di, others)];
            const auto here = startsAt(next);
            a = hn::IfThenElse(hn::RebindMask(d, here), pixelsAt(next), a);
            b = hn::IfThenElse(hn::RebindMask(d, here), pixelsAt(next + m_step), b);
            others = hn::AndNot(here, others);
        }
        hn::StoreU(mixed(hn::BitCast(dBytes, a), hn::BitCast(dBytes, b), taps.share), dBytes, to);
    }
    HWY_INLINE void draw(std::int32_t x, float* to) const {
        const hn::FixedTag<float, 4> d;
        const Taps taps = tapsFrom<float>(x);
        HWY_ALIGN std::int32_t offset[HWY_MAX_BYTES / 4];
        HWY_ALIGN float share[HWY_MAX_BYTES / 4];
        hn::Store(taps.offset, Places(), offset);
        hn::Store(taps.share, Shares(), share);
        const std::uint8_t* base = m_first + (kTopAndBottom ? 16 * static_cast<std::ptrdiff_t>(x) : 0);
        for (std::size_t i = 0; i < hn::Lanes(Shares()); ++i) {
            const std::uint8_t* at = base + offset[i] + (kTopAndBottom ? 16 * i : 0);
            if (i % 4 == 0) {
                fetchNext(at, to + 4 * i);
            }
            const auto a = hn::LoadU(d, reinterpret_cast<const float*>(at));
            const auto b = hn::LoadU(d, reinterpret_cast<const float*>(at + m_step));
            hn::StoreU(hn::Add(a, hn::Mul(hn::Sub(b, a), hn::Set(d, share[i]))), d, to + 4 * i);
        }
    }

private:
    /// Byte offsets of the first taps, from the pixel's column where that is its own, and shares of the second ones.
    struct Taps {
        hn::Vec<Places> offset;
        hn::Vec<Shares> share;
    };

    /// Asks for memory that the processor does not fetch ahead by itself: lines of the picture run across its rows, and
    /// what is drawn is only written. The rows that the next line comes to are some below, or else in the cache.
    template <class Sample>
    HWY_INLINE void fetchNext(const std::uint8_t* from, const Sample* to) const {
        if constexpr (kTopAndBottom) {
            hwy::Prefetch(from + 6 * static_cast<std::ptrdiff_t>(m_step));
        } else {
            fetchAhead(to, 64 / sizeof(Sample));
        }
    }
    [[nodiscard]] std::int32_t place(std::int32_t x) const { return kTopAndBottom ? x : m_y; }
    /// One of the side's arrays at the places of pixels from `x` on.
    [[nodiscard]] HWY_INLINE hn::Vec<Shares> side(const float* values, std::int32_t x) const {
        return kTopAndBottom ? hn::LoadU(Shares(), values + x) : hn::Set(Shares(), values[m_y]);
    }
    [[nodiscard]] HWY_INLINE hn::Vec<Shares> across(std::int32_t x) const {
        return kTopAndBottom ? hn::Set(Shares(), static_cast<float>(m_y))
                             : hn::ConvertTo(Shares(), hn::Add(hn::Set(Places(), x), hn::Iota(Places(), 0)));
    }

    template <class Sample>
    [[nodiscard]] HWY_INLINE Taps tapsFrom(std::int32_t x) const {
        constexpr int kPixelShift = sizeof(Sample) == 1 ? 2 : 4;
        const Shares d;
        const Places di;
        const auto end = hn::Set(d, static_cast<float>(m_last));
        const auto position = hn::Min(
            hn::Max(hn::Mul(hn::Sub(across(x), side(m_side.inset, x)), side(m_side.scale, x)), hn::Zero(d)), end);
        const auto tap = hn::Min(hn::ConvertTo(di, position), hn::Set(di, m_last - 1));
        return {kTopAndBottom ? hn::Mul(tap, hn::Set(di, m_step)) : hn::ShiftLeft<kPixelShift>(tap),
                hn::Sub(position, hn::ConvertTo(d, tap))};
    }

    /// (a * (256 - share) + b * share + 128) / 256 of each byte, shares in 256ths.
    static HWY_INLINE hn::Vec<hn::Repartition<std::uint8_t, Pixels>> mixed(
        hn::Vec<hn::Repartition<std::uint8_t, Pixels>> a, hn::Vec<hn::Repartition<std::uint8_t, Pixels>> b,
        hn::Vec<Shares> shares) {
        const Shares df;
        const hn::Repartition<std::uint16_t, Pixels> d16;
        const auto share = hn::ConvertTo(Places(), hn::Add(hn::Mul(shares, hn::Set(df, 256.0F)), hn::Set(df, 0.5F)));
        const auto pair = hn::BitCast(d16, hn::Or(share, hn::ShiftLeft<16>(share)));
        const auto half = hn::Set(d16, 128);
        const auto low = hn::Set(d16, 0x00FF);
        const auto x = hn::BitCast(d16, a);
        const auto y = hn::BitCast(d16, b);
        // 256 a + (b - a) share + 128, which 16 bits hold.
        const auto even =
            hn::Add(hn::Add(hn::ShiftLeft<8>(x), half), hn::Mul(hn::Sub(hn::And(y, low), hn::And(x, low)), pair));
        const auto odd = hn::Add(hn::Add(hn::AndNot(low, x), half),
                                 hn::Mul(hn::Sub(hn::ShiftRight<8>(y), hn::ShiftRight<8>(x)), pair));
        return hn::BitCast(hn::Repartition<std::uint8_t, Pixels>(),
                           hn::Or(hn::ShiftRight<8>(even), hn::AndNot(low, odd)));
    }

    const BentSide& m_side;
    const std::uint8_t* m_first;
    std::int32_t m_step;
    std::int32_t m_last;
    std::int32_t m_y;
};

/// Scales the alpha of a pixel that is not covered whole; answers whether it is such a one.
template <class L>
bool fade(typename L::Sample* pixel, float cover) {
    constexpr float kWhole = 0.999F;
    if (cover > kWhole) {
        return false;
    }
    const float alpha = static_cast<float>(pixel[L::kAlpha]) * cover + (L::kIsFloat ? 0.0F : 0.5F);
    pixel[L::kAlpha] = static_cast<typename L::Sample>(alpha);
    if (!(pixel[L::kAlpha] > 0)) {
        std::memset(pixel, 0, 4 * sizeof *pixel);
    }
    return true;
}

/// Draws a row of at least a vector of pixels. Those that are not covered whole stand at its ends.
template <class L, bool kTopAndBottom>
void drawRow(const Line<kTopAndBottom>& line, std::int32_t width, typename L::Sample* row) {
    const auto lanes = static_cast<std::int32_t>(hn::Lanes(Pixels()));
    const auto at = [&](std::int32_t x) HWY_ATTR { return row + 4 * static_cast<std::ptrdiff_t>(x); };
    std::int32_t left = 0;
    while (left + lanes <= width && line.isOutside(left)) {
        left += lanes;
    }
    std::int32_t right = width;
    while (right - lanes > left && line.isOutside(right - lanes)) {
        right -= lanes;
    }
    // The last vector may begin before the end of the one before.
    for (std::int32_t x = left; x < right; x += lanes) {
        const std::int32_t first = x + lanes <= width ? x : width - lanes;
        line.draw(first, at(first));
    }
    std::memset(row, 0, 4 * static_cast<std::size_t>(left) * sizeof *row);
    std::memset(at(right), 0, 4 * static_cast<std::size_t>(width - right) * sizeof *row);
    while (left < right && fade<L>(at(left), line.coverage(left))) {
        ++left;
    }
    for (std::int32_t x = right - 1; x > left && fade<L>(at(x), line.coverage(x)); --x) {
    }
}

}  // namespace

/// `room` holds a row of pixels between two margins.
void bendRow(const Frame& source, Frame& destination, const BentSides& sides, std::int32_t y, std::uint8_t* room) {
    visitLayout(source.Format(), [&](auto layout) {
        using L = decltype(layout);
        using Sample = typename L::Sample;
        const std::int32_t width = source.Width();
        const std::int32_t pixelBytes = source.BytesPerPixel();
        std::uint8_t* between = room + std::ptrdiff_t{kMargin} * pixelBytes;
        drawRow<L>(Line<true>(sides.topAndBottom, source.Data(), source.Stride(), source.Height() - 1, y), width,
                   reinterpret_cast<Sample*>(between));
        drawRow<L>(Line<false>(sides.leftAndRight, between, pixelBytes, width - 1, y), width,
                   destination.row<Sample>(y));
        return true;
    });
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <algorithm>
#include <cmath>
#include <numbers>

#include "frame/bands.h"
#include "frame/frame_operations.h"
#include "frame/frame_rows.h"
#include "frame/scratch_block.h"

namespace lumiset {

HWY_EXPORT(bendRow);

namespace {

/// The bent sides are drawn as straight pieces of this many pixels.
constexpr std::int32_t kPiece = 8;

Bands bendBands(const MemoryAllocator& allocator, ImgSize size) {
    constexpr std::int32_t kMostBands = 64;  // each has a row of its own
    return bandsForThreads(&allocator, size, size.height / kMostBands);
}

std::int64_t rowRoom(std::int32_t width, std::int32_t pixelBytes) {
    return (std::int64_t{width} + 2 * kMargin + 15) / 16 * 16 * pixelBytes;
}

/// The three arrays of a side of `length` pixels whose lines across have `across` pixels.
BentSide fillSide(std::int32_t length, std::int32_t across, std::int32_t depth, float* room) {
    float* inset = room;
    float* scale = inset + length;
    float* cosine = scale + length;
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
    return {inset, scale, cosine};
}

std::int64_t sideFloats(ImgSize size) {
    return 3 * (std::int64_t{size.width} + size.height);
}

}  // namespace

std::int64_t bendScratch(ImgSize size, std::int32_t pixelBytes, const MemoryAllocator& allocator) {
    return ScratchBlock::reserveFor(sideFloats(size) * static_cast<std::int64_t>(sizeof(float)) +
                                    bendBands(allocator, size).count() * rowRoom(size.width, pixelBytes) + 64);
}

bool bendSides(const Frame& source, Frame& destination, std::int32_t topDepth, std::int32_t sideDepth, Frame* alpha,
               MemoryAllocator& allocator) noexcept {
    const ImgSize size{source.Width(), source.Height()};
    const Bands bands = bendBands(allocator, size);
    const std::int64_t room = rowRoom(size.width, source.BytesPerPixel());
    ScratchBlock block(allocator);
    block.add<float>(sideFloats(size));
    block.add<std::uint8_t>(bands.count() * room);
    if (!block.allocate()) {
        return false;
    }
    auto* floats = block.take<float>(sideFloats(size));
    auto* rows = block.take<std::uint8_t>(bands.count() * room);
    std::fill_n(rows, bands.count() * room, std::uint8_t{0});  // what lies beside a row is read and not used
    const BentSides sides{fillSide(size.width, size.height, topDepth, floats),
                          fillSide(size.height, size.width, sideDepth, floats + 3 * std::ptrdiff_t{size.width})};
    runTasks(bands.count() > 1 ? &allocator : nullptr, bands.count(), [&](std::int32_t band) {
        for (std::int32_t y = bands.first(band); y < bands.first(band) + bands.rowsOf(band); ++y) {
            HWY_DYNAMIC_DISPATCH(bendRow)(source, destination, sides, y, rows + band * room);
            if (alpha != nullptr) {
                FrameRows from(destination, y, 1);
                FrameRows to(*alpha, y, 1);
                FrameCopyChannel(from, to, AlphaIndex(source.Format()), 0);
            }
        }
    });
    return true;
}

}  // namespace lumiset
#endif
