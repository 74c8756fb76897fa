#include "media/yuv_rows.h"

#include <algorithm>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "media/yuv_rows.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;
using Words = hn::ScalableTag<std::uint16_t>;
using Shorts = hn::ScalableTag<std::int16_t>;
using Longs = hn::ScalableTag<std::int32_t>;

constexpr int kZero = 1 << (media::kYuvDepth - 1);  // of U and V
using media::kFromRgbBits;
using media::kToRgbBits;

// The sum of each two neighbouring products.
HWY_INLINE hn::Vec<Longs> pairSums(hn::Vec<Shorts> a, hn::Vec<Shorts> b) {
    const Longs d;
    auto odd = hn::Zero(d);
    const auto even = hn::ReorderWidenMulAccumulate(d, a, b, hn::Zero(d), odd);
    return hn::RearrangeToOddPlusEven(even, odd);
}

// A vector of `first` and `second` by turns.
HWY_INLINE hn::Vec<Shorts> byTurns(std::int16_t first, std::int16_t second) {
    const Shorts d;
    return hn::OddEven(hn::Set(d, second), hn::Set(d, first));
}

/// As many pixels as there are 16-bit lanes.
struct Pack {
    explicit Pack(const media::YuvWeights& w)
        : lumaZero(hn::Set(Shorts(), w.lumaZero)),
          red(byTurns(w.luma, w.redFromV)),
          green(byTurns(w.luma, w.greenFromV)),
          greenFromU(byTurns(w.greenFromU, 0)),
          blue(byTurns(w.luma, w.blueFromU)) {}

    HWY_INLINE hn::Vec<Words> level(hn::Vec<Longs> low, hn::Vec<Longs> high) const {
        const Shorts d;
        const auto half = hn::Set(Longs(), 1 << (kToRgbBits - 1));
        const auto both = hn::ReorderDemote2To(d, hn::ShiftRight<kToRgbBits>(hn::Add(low, half)),
                                               hn::ShiftRight<kToRgbBits>(hn::Add(high, half)));
        return hn::BitCast(Words(), hn::Min(hn::Max(both, hn::Zero(d)), hn::Set(d, std::int16_t{255})));
    }

    HWY_INLINE void run(const std::uint16_t* const planes[4], int x, std::uint8_t* pixels) const {
        const Shorts d;
        const Words dWords;
        const auto y = hn::Sub(hn::BitCast(d, hn::LoadU(dWords, planes[0] + x)), lumaZero);
        const auto u = hn::Sub(hn::BitCast(d, hn::LoadU(dWords, planes[1] + x)), hn::Set(d, std::int16_t{kZero}));
        const auto v = hn::Sub(hn::BitCast(d, hn::LoadU(dWords, planes[2] + x)), hn::Set(d, std::int16_t{kZero}));
        const auto yvLow = hn::InterleaveLower(d, y, v);
        const auto yvHigh = hn::InterleaveUpper(d, y, v);
        const auto r = level(pairSums(yvLow, red), pairSums(yvHigh, red));
        const auto b =
            level(pairSums(hn::InterleaveLower(d, y, u), blue), pairSums(hn::InterleaveUpper(d, y, u), blue));
        const auto uLow = hn::InterleaveLower(d, u, hn::Zero(d));
        const auto uHigh = hn::InterleaveUpper(d, u, hn::Zero(d));
        const auto g = level(hn::Add(pairSums(yvLow, green), pairSums(uLow, greenFromU)),
                             hn::Add(pairSums(yvHigh, green), pairSums(uHigh, greenFromU)));
        auto a = hn::Set(dWords, std::uint16_t{255});
        if (planes[3] != nullptr) {
            const auto alpha = hn::BitCast(d, hn::LoadU(dWords, planes[3] + x));
            a = hn::BitCast(dWords, hn::MulFixedPoint15(alpha, hn::Set(d, std::int16_t{255})));
        }
        hn::StoreInterleaved2(hn::Or(b, hn::ShiftLeft<8>(g)), hn::Or(r, hn::ShiftLeft<8>(a)), dWords,
                              reinterpret_cast<std::uint16_t*>(pixels + 4 * x));
    }

    hn::Vec<Shorts> lumaZero, red, green, greenFromU, blue;
};

/// As many pixels as there are 32-bit lanes.
struct Split {
    struct Channel {
        Channel(const media::YuvWeights::FromRgb& w, int zero)
            : blueRed(byTurns(w.blue, w.red)),
              green(byTurns(w.green, 0)),
              add(hn::Set(Longs(), (zero << kFromRgbBits) + (1 << (kFromRgbBits - 1)))) {}

        HWY_INLINE void store(hn::Vec<Shorts> br, hn::Vec<Shorts> ga, std::uint16_t* to) const {
            const hn::Rebind<std::int16_t, Longs> d;
            const auto sum = hn::Add(hn::Add(pairSums(br, blueRed), pairSums(ga, green)), add);
            hn::StoreU(hn::DemoteTo(d, hn::ShiftRight<kFromRgbBits>(sum)), d, reinterpret_cast<std::int16_t*>(to));
        }

        hn::Vec<Shorts> blueRed, green;
        hn::Vec<Longs> add;
    };

    explicit Split(const media::YuvWeights& w) : y(w.toY, w.lumaZero), u(w.toU, kZero), v(w.toV, kZero) {}

    // (color * alpha + 127) / 255, exactly.
    HWY_INLINE static hn::Vec<Words> overBlack(hn::Vec<Words> color, hn::Vec<Words> alpha) {
        const Words d;
        const auto product = hn::Add(hn::Mul(color, alpha), hn::Set(d, std::uint16_t{127}));
        const auto sum = hn::Add(hn::Add(product, hn::Set(d, std::uint16_t{1})), hn::ShiftRight<8>(product));
        return hn::ShiftRight<8>(sum);
    }

    HWY_INLINE void run(const std::uint8_t* pixels, int x, std::uint16_t* const planes[4]) const {
        const Words d;
        const Longs dLongs;
        const auto pixel = hn::BitCast(d, hn::LoadU(Bytes(), pixels + 4 * x));
        auto br = hn::And(pixel, hn::Set(d, std::uint16_t{0xFF}));
        auto ga = hn::ShiftRight<8>(pixel);
        const auto alpha = hn::ShiftRight<16>(hn::BitCast(hn::RebindToUnsigned<Longs>(), ga));
        if (planes[3] != nullptr) {
            // 32767 / 255, rounded.
            const auto wide = hn::BitCast(dLongs, alpha);
            const auto scaled = hn::ShiftRight<8>(hn::Add(hn::Mul(wide, hn::Set(dLongs, 32896)), hn::Set(dLongs, 128)));
            const hn::Rebind<std::int16_t, Longs> dHalf;
            hn::StoreU(hn::DemoteTo(dHalf, scaled), dHalf, reinterpret_cast<std::int16_t*>(planes[3] + x));
        } else if (!hn::AllTrue(dLongs, hn::Eq(hn::BitCast(dLongs, alpha), hn::Set(dLongs, 255)))) {
            const auto both = hn::BitCast(d, hn::Or(alpha, hn::ShiftLeft<16>(alpha)));
            br = overBlack(br, both);
            ga = overBlack(ga, both);
        }
        const Shorts dShorts;
        y.store(hn::BitCast(dShorts, br), hn::BitCast(dShorts, ga), planes[0] + x);
        u.store(hn::BitCast(dShorts, br), hn::BitCast(dShorts, ga), planes[1] + x);
        v.store(hn::BitCast(dShorts, br), hn::BitCast(dShorts, ga), planes[2] + x);
    }

    Channel y, u, v;
};

// Rows shorter than a vector go through a vector's worth of memory; of longer ones the last vector overlaps the one
// before.
void pack(const std::uint16_t* const planes[4], int count, const media::YuvWeights& weights, std::uint8_t* pixels) {
    const Pack loop(weights);
    const int lanes = static_cast<int>(hn::Lanes(Words()));
    if (count < lanes) {
        std::uint16_t samples[4][hn::MaxLanes(Words())] = {};
        std::uint8_t result[4 * hn::MaxLanes(Words())];
        const std::uint16_t* rows[4] = {samples[0], samples[1], samples[2],
                                        planes[3] == nullptr ? nullptr : samples[3]};
        for (int i = 0; i < 4; i++) {
            if (planes[i] != nullptr) {
                std::copy_n(planes[i], count, samples[i]);
            }
        }
        loop.run(rows, 0, result);
        std::copy_n(result, 4 * count, pixels);
        return;
    }
    for (int x = 0; x + lanes < count; x += lanes) {
        loop.run(planes, x, pixels);
    }
    loop.run(planes, count - lanes, pixels);
}

void split(const std::uint8_t* pixels, int count, const media::YuvWeights& weights, std::uint16_t* const planes[4]) {
    const Split loop(weights);
    const int lanes = static_cast<int>(hn::Lanes(Longs()));
    if (count < lanes) {
        std::uint8_t source[4 * hn::MaxLanes(Longs())] = {};
        std::uint16_t samples[4][hn::MaxLanes(Longs())];
        std::uint16_t* const rows[4] = {samples[0], samples[1], samples[2],
                                        planes[3] == nullptr ? nullptr : samples[3]};
        std::copy_n(pixels, 4 * count, source);
        loop.run(source, 0, rows);
        for (int i = 0; i < 4; i++) {
            if (planes[i] != nullptr) {
                std::copy_n(samples[i], count, planes[i]);
            }
        }
        return;
    }
    for (int x = 0; x + lanes < count; x += lanes) {
        loop.run(pixels, x, planes);
    }
    loop.run(pixels, count - lanes, planes);
}

}  // namespace
}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(pack);
HWY_EXPORT(split);

namespace media {
namespace {

struct Lumas {
    double red, blue;
};

std::optional<Lumas> lumasOf(int matrix) {
    switch (matrix) {
        case 1:
            return Lumas{0.2126, 0.0722};
        case 4:
            return Lumas{0.30, 0.11};
        case 5:
        case 6:
            return Lumas{0.299, 0.114};
        case 7:
            return Lumas{0.212, 0.087};
        case 9:
            return Lumas{0.2627, 0.0593};
        default:
            return std::nullopt;
    }
}

std::int16_t fixed(double value, int bits) {
    return static_cast<std::int16_t>(std::lround(std::ldexp(value, bits)));
}

// The weights of a grey pixel sum up exactly, so that greys stay grey.
YuvWeights::FromRgb fromRgb(double blue, double red, double sum) {
    const std::int16_t b = fixed(blue, kFromRgbBits);
    const std::int16_t r = fixed(red, kFromRgbBits);
    return {b, static_cast<std::int16_t>(fixed(sum, kFromRgbBits) - b - r), r};
}

}  // namespace

// Rec. ITU-R BT.601, 709 and 2020 differ in the lumas of red and blue alone, of which all other weights follow.
std::optional<YuvWeights> yuvWeights(const PictureColor& color) {
    const std::optional<Lumas> lumas = lumasOf(color.matrix);
    if (!lumas) {
        return std::nullopt;
    }
    const auto [kr, kb] = *lumas;
    const double kg = 1 - kr - kb;
    const bool full = color.range == ColorRange::kFull;
    const double step = 1 << (kYuvDepth - 8);
    const double whole = (1 << kYuvDepth) - 1;
    // Units of Y, and of U or V, to a level of RGB.
    const double luma = (full ? whole : 219 * step) / 255;
    const double chroma = (full ? whole : 224 * step) / 255;
    YuvWeights weights{};
    weights.lumaZero = static_cast<std::int16_t>(full ? 0 : 16 * step);
    weights.luma = fixed(1 / luma, kToRgbBits);
    weights.redFromV = fixed(2 * (1 - kr) / chroma, kToRgbBits);
    weights.blueFromU = fixed(2 * (1 - kb) / chroma, kToRgbBits);
    weights.greenFromU = fixed(-2 * (1 - kb) * kb / kg / chroma, kToRgbBits);
    weights.greenFromV = fixed(-2 * (1 - kr) * kr / kg / chroma, kToRgbBits);
    weights.toY = fromRgb(kb * luma, kr * luma, luma);
    weights.toU = fromRgb(0.5 * chroma, -0.5 * kr / (1 - kb) * chroma, 0);
    weights.toV = fromRgb(-0.5 * kb / (1 - kr) * chroma, 0.5 * chroma, 0);
    return weights;
}

void packYuv(const std::uint16_t* const planes[4], int count, const YuvWeights& weights, std::uint8_t* pixels) {
    HWY_DYNAMIC_DISPATCH(pack)(planes, count, weights, pixels);
}

void splitToYuv(const std::uint8_t* pixels, int count, const YuvWeights& weights, std::uint16_t* const planes[4]) {
    HWY_DYNAMIC_DISPATCH(split)(pixels, count, weights, planes);
}

}  // namespace media
}  // namespace lumiset
#endif
