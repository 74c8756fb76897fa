#include "frame/yuv422.h"

#include <cstddef>
#include <cstring>

#include "frame/primitives/check.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/yuv422.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::ScalableTag<std::int16_t>;
using Longs = hn::ScalableTag<std::int32_t>;
using Floats = hn::ScalableTag<float>;

// Weights of the way to colour, times 8192: 1.164383 = 255 / 219, and the chroma weights of Rec. 601 times 255 / 224.
constexpr std::int16_t kLuma = 9539;
constexpr std::int16_t kRedFromV = 13075;
constexpr std::int16_t kGreenFromU = 3209;
constexpr std::int16_t kGreenFromV = 6660;
constexpr std::int16_t kBlueFromU = 16525;

/// v * weight / 8192 * 32, rounded, where v was shifted left by 7.
template <class V>
HWY_INLINE V weighted(V v, std::int16_t weight) {
    return hn::MulFixedPoint15(v, hn::Set(Words(), weight));
}

/// Rounds 32nds and limits them to a byte.
template <class V>
HWY_INLINE V toByte(V thirtySeconds) {
    const Words d;
    const V rounded = hn::ShiftRight<5>(hn::Add(thirtySeconds, hn::Set(d, std::int16_t{16})));
    return hn::Min(hn::Max(rounded, hn::Zero(d)), hn::Set(d, std::int16_t{255}));
}

/// As many pixels as there are 16-bit lanes.
HWY_INLINE void stepToBgra(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst, std::uint8_t alpha) {
    const Words d;
    const hn::RebindToUnsigned<Words> du;
    const hn::RepartitionToWide<decltype(du)> dGroup;
    const auto group = hn::BitCast(dGroup, hn::LoadU(hn::Repartition<std::uint8_t, Words>(), src));
    const auto u = hn::And(hn::ShiftRight<8>(group), hn::Set(dGroup, 0xFFU));
    const auto v = hn::ShiftRight<24>(group);
    const auto centred = [&](auto words, std::int16_t zero)
                             HWY_ATTR { return hn::ShiftLeft<7>(hn::Sub(hn::BitCast(d, words), hn::Set(d, zero))); };
    const auto luma = weighted(centred(hn::And(group, hn::Set(dGroup, 0x00FF00FFU)), 16), kLuma);
    const auto bothU = centred(hn::Or(u, hn::ShiftLeft<16>(u)), 128);
    const auto bothV = centred(hn::Or(v, hn::ShiftLeft<16>(v)), 128);
    const auto blue = toByte(hn::Add(luma, weighted(bothU, kBlueFromU)));
    const auto green = toByte(hn::Sub(luma, hn::Add(weighted(bothU, kGreenFromU), weighted(bothV, kGreenFromV))));
    const auto red = toByte(hn::Add(luma, weighted(bothV, kRedFromV)));
    const auto blueGreen = hn::BitCast(du, hn::Or(blue, hn::ShiftLeft<8>(green)));
    const auto redAlpha =
        hn::Or(hn::BitCast(du, red), hn::Set(du, static_cast<std::uint16_t>(static_cast<unsigned>(alpha) << 8U)));
    if constexpr (HWY_TARGET == HWY_EMU128) {
        // The portable vectors store words one by one, which needs words at even addresses.
        HWY_ALIGN std::uint16_t pixels[HWY_MAX_BYTES];
        hn::StoreInterleaved2(blueGreen, redAlpha, du, pixels);
        std::memcpy(dst, pixels, 4 * hn::Lanes(d));
    } else {
        hn::StoreInterleaved2(blueGreen, redAlpha, du, reinterpret_cast<std::uint16_t*>(dst));
    }
}

/// First the whole vectors of a row, then the rest by way of buffers.
void rowToBgra(const std::uint8_t* src, std::uint8_t* dst, std::size_t width, std::uint8_t alpha, bool wholeGroups) {
    const std::size_t lanes = hn::Lanes(Words());
    std::size_t x = 0;
    for (; x + lanes <= width; x += lanes) {
        stepToBgra(src + 2 * x, dst + 4 * x, alpha);
    }
    if (x == width) {
        return;
    }
    HWY_ALIGN std::uint8_t from[HWY_MAX_BYTES] = {};
    HWY_ALIGN std::uint8_t to[HWY_MAX_BYTES * 2];
    const std::size_t rest = width - x;
    std::memcpy(from, src + 2 * x, 2 * rest);
    if (rest % 2 != 0) {
        const std::size_t lone = 2 * (width - 1);
        from[2 * rest + 1] = src[wholeGroups ? lone + 3 : lone - 1];
    }
    stepToBgra(from, to, alpha);
    std::memcpy(dst + 4 * x, to, 4 * rest);
}

/// Sum of three weighted samples. Every weight times every sample and every sum of them is a whole number below 2 to
/// the 24, which single precision holds exactly.
template <class V>
HWY_INLINE hn::Vec<Longs> weigh(V blue, V green, V red, float ofBlue, float ofGreen, float ofRed) {
    const Floats d;
    return hn::ConvertTo(Longs(),
                         hn::Add(hn::Add(hn::Mul(blue, hn::Set(d, ofBlue)), hn::Mul(green, hn::Set(d, ofGreen))),
                                 hn::Mul(red, hn::Set(d, ofRed))));
}

/// Twice as many pixels as there are 32-bit lanes.
HWY_INLINE void stepToYuv(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst) {
    const Longs d;
    const hn::RebindToUnsigned<Longs> du;
    const hn::Repartition<std::uint8_t, Longs> dBytes;
    const hn::Repartition<std::uint64_t, Longs> dPair;
    const auto toFloat = [&](auto v) HWY_ATTR { return hn::ConvertTo(Floats(), hn::BitCast(d, v)); };
    const auto low = [&](auto v) HWY_ATTR { return hn::And(v, hn::Set(du, 0xFFFFU)); };
    const auto luma = [&](auto blueRed, auto green) HWY_ATTR {
        const auto sum = weigh(toFloat(low(blueRed)), toFloat(green), toFloat(hn::ShiftRight<16>(blueRed)), 6423.0F,
                               33030.0F, 16843.0F);
        return hn::BitCast(du, hn::ShiftRight<16>(hn::Add(sum, hn::Set(d, 0x108000))));
    };
    // The sum of both pixels of a pair, in the even lanes.
    const auto pairSum = [&](auto v) HWY_ATTR {
        return hn::Add(v, hn::BitCast(du, hn::ShiftRight<32>(hn::BitCast(dPair, v))));
    };
    const auto pixels0 = hn::BitCast(du, hn::LoadU(dBytes, src));
    const auto pixels1 = hn::BitCast(du, hn::LoadU(dBytes, src + hn::Lanes(dBytes)));
    const auto blueRedMask = hn::Set(du, 0x00FF00FFU);
    const auto byteMask = hn::Set(du, 0xFFU);
    const auto blueRed0 = hn::And(pixels0, blueRedMask);
    const auto blueRed1 = hn::And(pixels1, blueRedMask);
    const auto green0 = hn::And(hn::ShiftRight<8>(pixels0), byteMask);
    const auto green1 = hn::And(hn::ShiftRight<8>(pixels1), byteMask);
    const auto luma0 = luma(blueRed0, green0);
    const auto luma1 = luma(blueRed1, green1);

    const auto blueRed = hn::ConcatEven(du, pairSum(blueRed1), pairSum(blueRed0));
    const auto green = toFloat(hn::ConcatEven(du, pairSum(green1), pairSum(green0)));
    const auto blue = toFloat(low(blueRed));
    const auto red = toFloat(hn::ShiftRight<16>(blueRed));
    const auto chroma = [&](float ofBlue, float ofGreen, float ofRed) HWY_ATTR {
        const auto middle = hn::Set(d, (128 << 17) + (1 << 16));
        return hn::BitCast(du, hn::ShiftRight<17>(hn::Add(weigh(blue, green, red, ofBlue, ofGreen, ofRed), middle)));
    };
    const auto u = chroma(28784.0F, -19070.0F, -9714.0F);
    const auto v = chroma(-4681.0F, -24103.0F, 28784.0F);
    const auto evenWithU = hn::Or(hn::ConcatEven(du, luma1, luma0), hn::ShiftLeft<8>(u));
    const auto oddWithV = hn::Or(hn::ConcatOdd(du, luma1, luma0), hn::ShiftLeft<8>(v));
    hn::StoreU(hn::BitCast(dBytes, hn::Or(evenWithU, hn::ShiftLeft<16>(oddWithV))), dBytes, dst);
}

void rowToYuv(const std::uint8_t* src, std::uint8_t* dst, std::size_t width, bool wholeGroups) {
    const std::size_t lanes = 2 * hn::Lanes(Longs());
    std::size_t x = 0;
    for (; x + lanes <= width; x += lanes) {
        stepToYuv(src + 4 * x, dst + 2 * x);
    }
    if (x == width) {
        return;
    }
    HWY_ALIGN std::uint8_t from[HWY_MAX_BYTES * 2] = {};
    HWY_ALIGN std::uint8_t to[HWY_MAX_BYTES];
    const std::size_t rest = width - x;
    std::memcpy(from, src + 4 * x, 4 * rest);
    if (rest % 2 != 0) {
        std::memcpy(from + 4 * rest, from + 4 * (rest - 1), 4);  // a lone pixel is its own neighbour
    }
    stepToYuv(from, to);
    std::memcpy(dst + 2 * x, to, 2 * rest);
    if (rest % 2 != 0 && wholeGroups) {
        dst[2 * width + 1] = to[2 * rest + 1];
    }
}

}  // namespace

void yuv422ToBgra(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, std::uint8_t alpha, bool wholeGroups,
                  ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        rowToBgra(src.row(y), dst.row(y), static_cast<std::size_t>(size.width), alpha, wholeGroups);
    }
}

void bgraToYuv422(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, bool wholeGroups, ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        rowToYuv(src.row(y), dst.row(y), static_cast<std::size_t>(size.width), wholeGroups);
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(yuv422ToBgra);
HWY_EXPORT(bgraToYuv422);

ImgStatus ImgYuv422ToBgra(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                          std::uint8_t alpha, bool wholeGroups, ImgSize size) noexcept {
    return runLoop(size.width < 2 ? kImgBadSize : kImgOk, HWY_DYNAMIC_DISPATCH(yuv422ToBgra), size,
                   pixels<2>(src, srcStep), pixels<4>(dst, dstStep), alpha, wholeGroups);
}

ImgStatus ImgBgraToYuv422(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                          bool wholeGroups, ImgSize size) noexcept {
    return runLoop(size.width < 2 ? kImgBadSize : kImgOk, HWY_DYNAMIC_DISPATCH(bgraToYuv422), size,
                   pixels<4>(src, srcStep), pixels<2>(dst, dstStep), wholeGroups);
}

}  // namespace lumiset
#endif
