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

/// The 16-bit lanes of each 128 bits that `order` names, by shuffling their bytes.
template <class V>
HWY_INLINE V pick(V v, const std::uint8_t (&order)[16]) {
    const hn::Repartition<std::uint8_t, Words> dBytes;
    return hn::BitCast(Words(), hn::TableLookupBytes(hn::BitCast(dBytes, v), hn::LoadDup128(dBytes, order)));
}

/// As many pixels as there are 16-bit lanes.
HWY_INLINE void stepToBgra(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst, std::uint8_t alpha) {
    HWY_ALIGN static constexpr std::uint8_t kEven[16] = {0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13};
    HWY_ALIGN static constexpr std::uint8_t kOdd[16] = {2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15};
    HWY_ALIGN static constexpr std::uint8_t kOther[16] = {2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13};
    HWY_ALIGN static constexpr std::int16_t kToGreen[8] = {kGreenFromU, kGreenFromV, kGreenFromU, kGreenFromV,
                                                           kGreenFromU, kGreenFromV, kGreenFromU, kGreenFromV};
    HWY_ALIGN static constexpr std::int16_t kToBlueRed[8] = {kBlueFromU, kRedFromV, kBlueFromU, kRedFromV,
                                                             kBlueFromU, kRedFromV, kBlueFromU, kRedFromV};
    const Words d;
    const hn::RebindToUnsigned<Words> du;
    const hn::Repartition<std::uint8_t, Words> dBytes;
    // Y in the low bytes, U and V by turns in the high ones; both less their zero and times 128. A product by
    // MulFixedPoint15 then is v * weight / 8192 * 32, rounded.
    const auto pairs = hn::BitCast(du, hn::LoadU(dBytes, src));
    const auto times128 = [&](auto highBytes, std::int16_t zero) HWY_ATTR {
        const auto v = hn::BitCast(d, hn::ShiftRight<1>(highBytes));
        return hn::Sub(v, hn::Set(d, zero));
    };
    const auto chroma = times128(hn::And(pairs, hn::Set(du, std::uint16_t{0xFF00})), 128 * 128);
    const auto scaledLuma = hn::MulFixedPoint15(times128(hn::ShiftLeft<8>(pairs), 16 * 128), hn::Set(d, kLuma));
    const auto luma = hn::Add(scaledLuma, hn::Set(d, std::int16_t{16}));  // half a unit of the result
    const auto toGreen = hn::MulFixedPoint15(chroma, hn::LoadDup128(d, kToGreen));
    const auto toBlueRed = hn::MulFixedPoint15(chroma, hn::LoadDup128(d, kToBlueRed));
    const auto toByte = [&](auto thirtySeconds) HWY_ATTR {
        return hn::Min(hn::Max(hn::ShiftRight<5>(thirtySeconds), hn::Zero(d)), hn::Set(d, std::int16_t{255}));
    };
    const auto blue = toByte(hn::Add(luma, pick(toBlueRed, kEven)));
    const auto red = toByte(hn::Add(luma, pick(toBlueRed, kOdd)));
    const auto green = toByte(hn::Sub(luma, hn::Add(toGreen, pick(toGreen, kOther))));
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
