#include "frame/primitives/alpha.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/alpha.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

/// Each pixel's alpha in all its samples, and the same with the largest value in the alpha sample itself, which a
/// product thereby leaves alone.
struct Alpha8 {
    Halves all;
    Halves colour;
};
template <int kAlphaIndex>
HWY_INLINE Alpha8 alphaOf(Vec8 pixels) {
    const Vec32 v = hn::BitCast(Tag32(), pixels);
    const Vec32 low = kAlphaIndex == 3 ? hn::ShiftRight<24>(v) : hn::And(v, hn::Set(Tag32(), 0xFF));
    const Vec32 both = hn::Or(low, hn::ShiftLeft<16>(low));
    const Vec16 all = hn::BitCast(Tag16(), both);
    const Vec16 colour =
        hn::BitCast(Tag16(), hn::Or(both, hn::Set(Tag32(), kAlphaIndex == 3 ? 0x00FF0000U : 0x000000FFU)));
    return kAlphaIndex == 3 ? Alpha8{{all, all}, {all, colour}} : Alpha8{{all, all}, {colour, all}};
}

HWY_INLINE Halves complement(Halves v) {
    const Vec16 ones = hn::Set(Tag16(), 0xFF);
    return {hn::Xor(v.even, ones), hn::Xor(v.odd, ones)};
}

struct AlphaF {
    VecF all;
    VecF colour;
};
template <int kAlphaIndex>
HWY_INLINE AlphaF alphaOf(VecF pixels) {
    HWY_ALIGN const std::uint32_t place[4] = {kAlphaIndex == 0 ? ~0U : 0U, 0, 0, kAlphaIndex == 3 ? ~0U : 0U};
    const VecF isAlpha = hn::BitCast(TagF(), hn::LoadDup128(Tag32(), place));
    const VecF all = hn::Broadcast<kAlphaIndex>(pixels);
    return {all, hn::IfVecThenElse(isAlpha, hn::Set(TagF(), 1.0F), all)};
}

template <int kAlphaIndex>
void premultiply8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    mapPlane<Touch::kAllFour>(
        size, dst, [](Vec8 v) HWY_ATTR { return join(scaledProducts(split(v), alphaOf<kAlphaIndex>(v).colour)); }, src);
}

template <int kAlphaIndex>
void premultiplyF(Plane<const float> src, Plane<float> dst, ImgSize size) {
    mapPlane<Touch::kAllFour>(
        size, dst, [](VecF v) HWY_ATTR { return hn::Mul(v, alphaOf<kAlphaIndex>(v).colour); }, src);
}

template <int kAlphaIndex>
void overStraight8(Plane<const std::uint8_t> top, Plane<const std::uint8_t> bottom, Plane<std::uint8_t> dst,
                   ImgSize size) {
    mapPlane<Touch::kAllFour>(
        size, dst,
        [](Vec8 t, Vec8 b) HWY_ATTR {
            const Alpha8 alpha = alphaOf<kAlphaIndex>(t);
            // The two rounded-down products never pass 255 together.
            const Halves above = scaledProducts(split(t), alpha.colour);
            const Halves below = scaledProducts(split(b), complement(alpha.all));
            return join({hn::Add(above.even, below.even), hn::Add(above.odd, below.odd)});
        },
        top, bottom);
}

template <int kAlphaIndex>
void overPremultiplied8(Plane<const std::uint8_t> top, Plane<const std::uint8_t> bottom, Plane<std::uint8_t> dst,
                        ImgSize size) {
    mapPlane<Touch::kAllFour>(
        size, dst,
        [](Vec8 t, Vec8 b) HWY_ATTR {
            return hn::SaturatedAdd(t, join(scaledProducts(split(b), complement(alphaOf<kAlphaIndex>(t).all))));
        },
        top, bottom);
}

template <int kAlphaIndex>
void overStraightF(Plane<const float> top, Plane<const float> bottom, Plane<float> dst, ImgSize size) {
    mapPlane<Touch::kAllFour>(
        size, dst,
        [](VecF t, VecF b) HWY_ATTR {
            const AlphaF alpha = alphaOf<kAlphaIndex>(t);
            return hn::Add(hn::Mul(t, alpha.colour), hn::Mul(b, hn::Sub(hn::Set(TagF(), 1.0F), alpha.all)));
        },
        top, bottom);
}

template <int kAlphaIndex>
void overPremultipliedF(Plane<const float> top, Plane<const float> bottom, Plane<float> dst, ImgSize size) {
    mapPlane<Touch::kAllFour>(
        size, dst,
        [](VecF t, VecF b)
            HWY_ATTR { return hn::Add(t, hn::Mul(b, hn::Sub(hn::Set(TagF(), 1.0F), alphaOf<kAlphaIndex>(t).all))); },
        top, bottom);
}

}  // namespace

void alphaPremultiply8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, std::int32_t alphaIndex, ImgSize size) {
    (alphaIndex == 3 ? premultiply8<3> : premultiply8<0>)(src, dst, size);
}
void alphaPremultiplyF(Plane<const float> src, Plane<float> dst, std::int32_t alphaIndex, ImgSize size) {
    (alphaIndex == 3 ? premultiplyF<3> : premultiplyF<0>)(src, dst, size);
}
void alphaOver8(Plane<const std::uint8_t> top, Plane<const std::uint8_t> bottom, Plane<std::uint8_t> dst, bool straight,
                std::int32_t alphaIndex, ImgSize size) {
    const bool last = alphaIndex == 3;
    (straight ? (last ? overStraight8<3> : overStraight8<0>) : (last ? overPremultiplied8<3> : overPremultiplied8<0>))(
        top, bottom, dst, size);
}
void alphaOverF(Plane<const float> top, Plane<const float> bottom, Plane<float> dst, bool straight,
                std::int32_t alphaIndex, ImgSize size) {
    const bool last = alphaIndex == 3;
    (straight ? (last ? overStraightF<3> : overStraightF<0>) : (last ? overPremultipliedF<3> : overPremultipliedF<0>))(
        top, bottom, dst, size);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

ImgStatus checkAlphaIndex(std::int32_t alphaIndex) {
    return alphaIndex == 0 || alphaIndex == 3 ? kImgOk : kImgBadRange;
}
ImgStatus checkOver(std::int32_t mode, std::int32_t alphaIndex) {
    return mode == kImgOverStraight || mode == kImgOverPremultiplied ? checkAlphaIndex(alphaIndex) : kImgBadRange;
}

}  // namespace

HWY_EXPORT(alphaPremultiply8);
ImgStatus ImgPremultiply8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            std::int32_t alphaIndex, ImgSize size) noexcept {
    return runLoop(checkAlphaIndex(alphaIndex), HWY_DYNAMIC_DISPATCH(alphaPremultiply8), size, pixels<4>(src, srcStep),
                   pixels<4>(dst, dstStep), alphaIndex);
}
HWY_EXPORT(alphaPremultiplyF);
ImgStatus ImgPremultiplyFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                            std::int32_t alphaIndex, ImgSize size) noexcept {
    return runLoop(checkAlphaIndex(alphaIndex), HWY_DYNAMIC_DISPATCH(alphaPremultiplyF), size, pixels<4>(src, srcStep),
                   pixels<4>(dst, dstStep), alphaIndex);
}
ImgStatus ImgPremultiply8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    return ImgPremultiply8C4(src, srcStep, dst, dstStep, 3, size);
}

HWY_EXPORT(alphaOver8);
ImgStatus ImgAlphaOver8C4(const std::uint8_t* top, std::int32_t topStep, const std::uint8_t* bottom,
                          std::int32_t bottomStep, std::uint8_t* dst, std::int32_t dstStep, std::int32_t mode,
                          std::int32_t alphaIndex, ImgSize size) noexcept {
    return runLoop(checkOver(mode, alphaIndex), HWY_DYNAMIC_DISPATCH(alphaOver8), size, pixels<4>(top, topStep),
                   pixels<4>(bottom, bottomStep), pixels<4>(dst, dstStep), mode == kImgOverStraight, alphaIndex);
}
HWY_EXPORT(alphaOverF);
ImgStatus ImgAlphaOverFC4(const float* top, std::int32_t topStep, const float* bottom, std::int32_t bottomStep,
                          float* dst, std::int32_t dstStep, std::int32_t mode, std::int32_t alphaIndex,
                          ImgSize size) noexcept {
    return runLoop(checkOver(mode, alphaIndex), HWY_DYNAMIC_DISPATCH(alphaOverF), size, pixels<4>(top, topStep),
                   pixels<4>(bottom, bottomStep), pixels<4>(dst, dstStep), mode == kImgOverStraight, alphaIndex);
}
ImgStatus ImgAlphaOver8A4(const std::uint8_t* top, std::int32_t topStep, const std::uint8_t* bottom,
                          std::int32_t bottomStep, std::uint8_t* dst, std::int32_t dstStep, std::int32_t mode,
                          ImgSize size) noexcept {
    return ImgAlphaOver8C4(top, topStep, bottom, bottomStep, dst, dstStep, mode, 3, size);
}

}  // namespace lumiset
#endif
