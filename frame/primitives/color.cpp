#include "frame/primitives/color.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/color.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

using Floats = Triple<VecF>;

HWY_INLINE VecF weighted(const Floats& samples, const Floats& weights) {
    return hn::Add(hn::Add(hn::Mul(weights.first, samples.first), hn::Mul(weights.second, samples.second)),
                   hn::Mul(weights.third, samples.third));
}
HWY_INLINE Floats coloursOf(Vec8 pixels) {
    return {byteOfPixel<0>(pixels), byteOfPixel<1>(pixels), byteOfPixel<2>(pixels)};
}

/// The three colours where they stand in their pixels: times 1, 2^8 and 2^16. With weights made smaller by the same
/// powers of two the products are the same floats.
HWY_INLINE Floats coloursInPlace(Vec8 pixels) {
    const Vec32 v = hn::BitCast(Tag32(), pixels);
    const auto part = [&](std::uint32_t mask) HWY_ATTR {
        return hn::ConvertTo(TagF(), hn::BitCast(TagI32(), hn::And(v, hn::Set(Tag32(), mask))));
    };
    return {part(0xFFU), part(0xFF00U), part(0xFF0000U)};
}
HWY_INLINE Floats weightsInPlace(const float* three) {
    return {hn::Set(TagF(), three[0]), hn::Set(TagF(), three[1] * 0x1p-8F), hn::Set(TagF(), three[2] * 0x1p-16F)};
}

/// r, g, b to hue, saturation and value. Hue and saturation are 0..1; value has the scale of r, g, b.
HWY_INLINE Floats hsvOf(VecF r, VecF g, VecF b) {
    const VecF zero = hn::Zero(TagF());
    const VecF one = hn::Set(TagF(), 1.0F);
    const VecF six = hn::Set(TagF(), 6.0F);
    const VecF value = hn::Max(r, hn::Max(g, b));
    const VecF range = hn::Sub(value, hn::Min(r, hn::Min(g, b)));
    const auto coloured = hn::Gt(range, zero);
    const VecF divisor = hn::IfThenElse(coloured, range, one);
    const VecF fromRed = hn::Div(hn::Sub(g, b), divisor);
    const VecF fromGreen = hn::Add(hn::Set(TagF(), 2.0F), hn::Div(hn::Sub(b, r), divisor));
    const VecF fromBlue = hn::Add(hn::Set(TagF(), 4.0F), hn::Div(hn::Sub(r, g), divisor));
    VecF sector = hn::IfThenElse(hn::Eq(value, r), fromRed, hn::IfThenElse(hn::Eq(value, g), fromGreen, fromBlue));
    sector = hn::IfThenElse(hn::Lt(sector, zero), hn::Add(sector, six), sector);
    // A tiny negative one has become a full turn.
    sector = hn::IfThenElseZero(hn::And(coloured, hn::Lt(sector, six)), sector);
    const auto bright = hn::Gt(value, zero);
    return {hn::Div(sector, six), hn::IfThenElseZero(bright, hn::Div(range, hn::IfThenElse(bright, value, one))),
            value};
}

/// One colour of hue, saturation and value: the corner of its hue hexagon that `corner` names (5 red, 3 green,
/// 1 blue). `sector` is the hue in 0..6.
HWY_INLINE VecF colourOf(VecF sector, VecF chroma, VecF value, float corner) {
    const VecF six = hn::Set(TagF(), 6.0F);
    const VecF turned = hn::Add(sector, hn::Set(TagF(), corner));
    const VecF k = hn::IfThenElse(hn::Ge(turned, six), hn::Sub(turned, six), turned);
    const VecF slope = hn::Min(k, hn::Sub(hn::Set(TagF(), 4.0F), k));
    const VecF limited = hn::Min(hn::Max(slope, hn::Zero(TagF())), hn::Set(TagF(), 1.0F));
    return hn::Sub(value, hn::Mul(chroma, limited));
}
/// The way back. Hue is 0..1, both ends being red.
HWY_INLINE Floats rgbOf(VecF hue, VecF saturation, VecF value) {
    const VecF sector = hn::Mul(hue, hn::Set(TagF(), 6.0F));
    const VecF chroma = hn::Mul(value, saturation);
    return {colourOf(sector, chroma, value, 5.0F), colourOf(sector, chroma, value, 3.0F),
            colourOf(sector, chroma, value, 1.0F)};
}

/// Hue, saturation and value pixels of 8-bit colours that follow each other as `kBgr` tells.
template <bool kBgr>
HWY_INLINE Vec8 hsvPixels(Vec8 pixels) {
    const Floats in = coloursOf(pixels);
    const VecF full = hn::Set(TagF(), 255.0F);
    const Floats hsv = kBgr ? hsvOf(in.third, in.second, in.first) : hsvOf(in.first, in.second, in.third);
    const VecF turn = hn::Mul(hsv.first, full);
    const VecF hue = hn::IfThenElseZero(hn::Lt(turn, hn::Set(TagF(), 254.5F)), turn);
    const VecF saturation = hn::Mul(hsv.second, full);
    return kBgr ? pixelsOf(hsv.third, saturation, hue) : pixelsOf(hue, saturation, hsv.third);
}
template <bool kBgr>
HWY_INLINE Vec8 rgbPixels(Vec8 pixels) {
    const Floats in = coloursOf(pixels);
    const VecF full = hn::Set(TagF(), 255.0F);
    const VecF hue = hn::Div(kBgr ? in.third : in.first, full);
    const Floats rgb = rgbOf(hue, hn::Div(in.second, full), kBgr ? in.first : in.third);
    return kBgr ? pixelsOf(rgb.third, rgb.second, rgb.first) : pixelsOf(rgb.first, rgb.second, rgb.third);
}

template <bool kBgr>
void rgbToHsvF(Plane<const float> src, Plane<float> dst, ImgSize size) {
    mapColours(size, src, dst, [](Floats in) HWY_ATTR {
        const Floats hsv = kBgr ? hsvOf(in.third, in.second, in.first) : hsvOf(in.first, in.second, in.third);
        return kBgr ? Floats{hsv.third, hsv.second, hsv.first} : hsv;
    });
}
template <bool kBgr>
void hsvToRgbF(Plane<const float> src, Plane<float> dst, ImgSize size) {
    mapColours(size, src, dst, [](Floats in) HWY_ATTR {
        const VecF hue = kBgr ? in.third : in.first;
        const Floats rgb = rgbOf(hn::Sub(hue, hn::Floor(hue)), in.second, kBgr ? in.first : in.third);
        return kBgr ? Floats{rgb.third, rgb.second, rgb.first} : rgb;
    });
}
template <bool kBgr>
void rgbToHsv8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    mapPlane<Touch::kFirstThree>(
        size, dst, [](Vec8 v) HWY_ATTR { return hsvPixels<kBgr>(v); }, src);
}
template <bool kBgr>
void hsvToRgb8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    mapPlane<Touch::kFirstThree>(
        size, dst, [](Vec8 v) HWY_ATTR { return rgbPixels<kBgr>(v); }, src);
}

}  // namespace

// The outer two products are added first: so red, green, blue and blue, green, red round alike.

void luma8C3(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, const float* coefficients, ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        const std::uint8_t* in = src.row(y);
        std::uint8_t* out = dst.row(y);
        const float a = coefficients[0];
        const float b = coefficients[1];
        const float c = coefficients[2];
        for (std::int32_t x = 0; x < size.width; ++x, in += 3) {
            const float v =
                a * static_cast<float>(in[0]) + c * static_cast<float>(in[2]) + b * static_cast<float>(in[1]);
            const float positive = v > 0.0F ? v : 0.0F;
            out[x] = static_cast<std::uint8_t>(static_cast<int>((positive < 255.0F ? positive : 255.0F) + 0.5F));
        }
    }
}
void luma8A4(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, const float* coefficients, ImgSize size) {
    const Floats weights = weightsInPlace(coefficients);
    foldPlane<Touch::kFirstThree>(size, dst, src, [&](Vec8 v) HWY_ATTR {
        const Floats in = coloursInPlace(v);
        const VecF luma = weighted({in.first, in.third, in.second}, {weights.first, weights.third, weights.second});
        return hn::BitCast(Tag8(), roundToByte(luma));
    });
}
void lumaFA4(Plane<const float> src, Plane<float> dst, const float* coefficients, ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        const float* in = src.row(y);
        float* out = dst.row(y);
        const float a = coefficients[0];
        const float b = coefficients[1];
        const float c = coefficients[2];
        for (std::int32_t x = 0; x < size.width; ++x, in += 4) {
            out[x] = a * in[0] + c * in[2] + b * in[1];
        }
    }
}

void colorTwist8A4(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, const float* matrix, ImgSize size) {
    const Floats rows[3] = {weightsInPlace(matrix), weightsInPlace(matrix + 4), weightsInPlace(matrix + 8)};
    const Floats offsets = {hn::Set(TagF(), matrix[3]), hn::Set(TagF(), matrix[7]), hn::Set(TagF(), matrix[11])};
    mapPlane<Touch::kFirstThree>(
        size, dst,
        [&](Vec8 v) HWY_ATTR {
            const Floats in = coloursInPlace(v);
            return pixelsOf(hn::Add(weighted(in, rows[0]), offsets.first),
                            hn::Add(weighted(in, rows[1]), offsets.second),
                            hn::Add(weighted(in, rows[2]), offsets.third));
        },
        src);
}
void colorTwistFA4(Plane<const float> src, Plane<float> dst, const float* matrix, ImgSize size) {
    VecF columns[4];
    for (std::size_t i = 0; i < 4; ++i) {
        const float column[3] = {matrix[i], matrix[4 + i], matrix[8 + i]};
        columns[i] = repeatThree(TagF(), column);
    }
    mapPlane<Touch::kFirstThree>(
        size, dst,
        [&](VecF v) HWY_ATTR {
            const Floats in = {hn::Broadcast<0>(v), hn::Broadcast<1>(v), hn::Broadcast<2>(v)};
            return hn::Add(weighted(in, {columns[0], columns[1], columns[2]}), columns[3]);
        },
        src);
}

void colorRgbToHsv8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, bool bgr, ImgSize size) {
    (bgr ? rgbToHsv8<true> : rgbToHsv8<false>)(src, dst, size);
}
void colorHsvToRgb8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, bool bgr, ImgSize size) {
    (bgr ? hsvToRgb8<true> : hsvToRgb8<false>)(src, dst, size);
}
void colorRgbToHsvF(Plane<const float> src, Plane<float> dst, bool bgr, ImgSize size) {
    (bgr ? rgbToHsvF<true> : rgbToHsvF<false>)(src, dst, size);
}
void colorHsvToRgbF(Plane<const float> src, Plane<float> dst, bool bgr, ImgSize size) {
    (bgr ? hsvToRgbF<true> : hsvToRgbF<false>)(src, dst, size);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(luma8C3);
ImgStatus ImgLuma8C3(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     const float* coefficients, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(luma8C3), size, pixels<3>(src, srcStep), pixels<1>(dst, dstStep), coefficients);
}

HWY_EXPORT(luma8A4);
ImgStatus ImgLuma8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     const float* coefficients, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(luma8A4), size, pixels<4>(src, srcStep), pixels<1>(dst, dstStep), coefficients);
}

HWY_EXPORT(lumaFA4);
ImgStatus ImgLumaFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     const float* coefficients, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(lumaFA4), size, pixels<4>(src, srcStep), pixels<1>(dst, dstStep), coefficients);
}

HWY_EXPORT(colorTwist8A4);
ImgStatus ImgColorTwist8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                           const float* matrix, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(colorTwist8A4), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep), matrix);
}

HWY_EXPORT(colorTwistFA4);
ImgStatus ImgColorTwistFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                           const float* matrix, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(colorTwistFA4), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep), matrix);
}
ImgStatus ImgColorTwistInPlaceFA4(float* plane, std::int32_t step, const float* matrix, ImgSize size) noexcept {
    return ImgColorTwistFA4(plane, step, plane, step, matrix, size);
}

HWY_EXPORT(colorRgbToHsv8);
ImgStatus ImgRgbToHsv8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                         ImgColorOrder order, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(colorRgbToHsv8), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep),
                   order == ImgColorOrder::kBgr);
}

HWY_EXPORT(colorHsvToRgb8);
ImgStatus ImgHsvToRgb8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                         ImgColorOrder order, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(colorHsvToRgb8), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep),
                   order == ImgColorOrder::kBgr);
}

HWY_EXPORT(colorRgbToHsvF);
ImgStatus ImgRgbToHsvFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgColorOrder order,
                         ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(colorRgbToHsvF), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep),
                   order == ImgColorOrder::kBgr);
}

HWY_EXPORT(colorHsvToRgbF);
ImgStatus ImgHsvToRgbFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgColorOrder order,
                         ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(colorHsvToRgbF), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep),
                   order == ImgColorOrder::kBgr);
}

}  // namespace lumiset
#endif
