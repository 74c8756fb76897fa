#include "media/pixel_rows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "media/pixel_rows.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;
using Words = hn::ScalableTag<std::uint16_t>;
using Floats = hn::ScalableTag<float>;

// Calls `step` for vectors of pixels, the last one overlapping the one before; rows shorter than a vector go through
// `one`, pixel by pixel.
template <class Step, class One>
HWY_INLINE void forPixels(int count, int lanes, const Step& step, const One& one) {
    if (count < lanes) {
        for (int x = 0; x < count; x++) {
            one(x);
        }
        return;
    }
    for (int x = 0; x + lanes < count; x += lanes) {
        step(x);
    }
    step(count - lanes);
}

HWY_INLINE float unit(float value) {
    return std::min(std::max(0.0F, value), 1.0F);
}

void packBytes(const std::uint8_t* const planes[4], int count, std::uint8_t* pixels) {
    const Bytes d;
    const std::uint8_t* r = planes[0];
    const std::uint8_t* g = planes[1];
    const std::uint8_t* b = planes[2];
    const std::uint8_t* a = planes[3];
    forPixels(
        count, static_cast<int>(hn::Lanes(d)),
        [&](int x) HWY_ATTR {
            const auto alpha = a != nullptr ? hn::LoadU(d, a + x) : hn::Set(d, std::uint8_t{255});
            hn::StoreInterleaved4(hn::LoadU(d, b + x), hn::LoadU(d, g + x), hn::LoadU(d, r + x), alpha, d,
                                  pixels + 4 * x);
        },
        [&](int x) {
            std::uint8_t* pixel = pixels + 4 * x;
            pixel[0] = b[x];
            pixel[1] = g[x];
            pixel[2] = r[x];
            pixel[3] = a != nullptr ? a[x] : std::uint8_t{255};
        });
}

void packFloats(const float* const planes[4], int count, float* pixels) {
    const Floats d;
    const float* r = planes[0];
    const float* g = planes[1];
    const float* b = planes[2];
    const float* a = planes[3];
    const auto one = hn::Set(d, 1.0F);
    // The order of the operands makes NaN 0.
    const auto limited = [&](const float* samples) HWY_ATTR {
        const auto v = hn::LoadU(d, samples);
        return hn::Min(hn::IfThenElseZero(hn::Gt(v, hn::Zero(d)), v), one);
    };
    forPixels(
        count, static_cast<int>(hn::Lanes(d)),
        [&](int x) HWY_ATTR {
            hn::StoreInterleaved4(limited(b + x), limited(g + x), limited(r + x), a != nullptr ? limited(a + x) : one,
                                  d, pixels + 4 * x);
        },
        [&](int x) {
            float* pixel = pixels + 4 * x;
            pixel[0] = unit(b[x]);
            pixel[1] = unit(g[x]);
            pixel[2] = unit(r[x]);
            pixel[3] = a != nullptr ? unit(a[x]) : 1.0F;
        });
}

HWY_INLINE int overBlack(int color, int alpha) {
    return (color * alpha + 127) / 255;
}

// The same quotient, exactly.
HWY_INLINE hn::Vec<Words> overBlack(hn::Vec<Words> color, hn::Vec<Words> alpha) {
    const Words d;
    const auto product = hn::Add(hn::Mul(color, alpha), hn::Set(d, std::uint16_t{127}));
    const auto sum = hn::Add(hn::Add(product, hn::Set(d, std::uint16_t{1})), hn::ShiftRight<8>(product));
    return hn::ShiftRight<8>(sum);
}

HWY_INLINE hn::Vec<Bytes> overBlack(hn::Vec<Bytes> color, hn::Vec<Bytes> alpha) {
    const Bytes d;
    const Words dWords;
    const hn::Half<Bytes> dHalf;
    const auto low = overBlack(hn::PromoteTo(dWords, hn::LowerHalf(dHalf, color)),
                               hn::PromoteTo(dWords, hn::LowerHalf(dHalf, alpha)));
    const auto high = overBlack(hn::PromoteTo(dWords, hn::UpperHalf(dHalf, color)),
                                hn::PromoteTo(dWords, hn::UpperHalf(dHalf, alpha)));
    return hn::Combine(d, hn::DemoteTo(dHalf, hn::BitCast(hn::RebindToSigned<Words>(), high)),
                       hn::DemoteTo(dHalf, hn::BitCast(hn::RebindToSigned<Words>(), low)));
}

void splitBytes(const std::uint8_t* pixels, int count, std::uint8_t* const planes[4]) {
    const Bytes d;
    std::uint8_t* r = planes[0];
    std::uint8_t* g = planes[1];
    std::uint8_t* b = planes[2];
    std::uint8_t* a = planes[3];
    forPixels(
        count, static_cast<int>(hn::Lanes(d)),
        [&](int x) HWY_ATTR {
            hn::Vec<Bytes> blue, green, red, alpha;
            hn::LoadInterleaved4(d, pixels + 4 * x, blue, green, red, alpha);
            if (a != nullptr) {
                hn::StoreU(alpha, d, a + x);
            } else if (!hn::AllTrue(d, hn::Eq(alpha, hn::Set(d, std::uint8_t{255})))) {
                blue = overBlack(blue, alpha);
                green = overBlack(green, alpha);
                red = overBlack(red, alpha);
            }
            hn::StoreU(blue, d, b + x);
            hn::StoreU(green, d, g + x);
            hn::StoreU(red, d, r + x);
        },
        [&](int x) {
            const std::uint8_t* pixel = pixels + 4 * x;
            const int alpha = a != nullptr ? 255 : pixel[3];
            b[x] = static_cast<std::uint8_t>(overBlack(pixel[0], alpha));
            g[x] = static_cast<std::uint8_t>(overBlack(pixel[1], alpha));
            r[x] = static_cast<std::uint8_t>(overBlack(pixel[2], alpha));
            if (a != nullptr) {
                a[x] = pixel[3];
            }
        });
}

void splitFloats(const float* pixels, int count, float* const planes[4]) {
    const Floats d;
    float* r = planes[0];
    float* g = planes[1];
    float* b = planes[2];
    float* a = planes[3];
    const auto one = hn::Set(d, 1.0F);
    const auto limited = [&](hn::Vec<Floats> v)
                             HWY_ATTR { return hn::Min(hn::IfThenElseZero(hn::Gt(v, hn::Zero(d)), v), one); };
    forPixels(
        count, static_cast<int>(hn::Lanes(d)),
        [&](int x) HWY_ATTR {
            hn::Vec<Floats> blue, green, red, alpha;
            hn::LoadInterleaved4(d, pixels + 4 * x, blue, green, red, alpha);
            alpha = limited(alpha);
            if (a != nullptr) {
                hn::StoreU(alpha, d, a + x);
                alpha = one;
            }
            hn::StoreU(hn::Mul(limited(blue), alpha), d, b + x);
            hn::StoreU(hn::Mul(limited(green), alpha), d, g + x);
            hn::StoreU(hn::Mul(limited(red), alpha), d, r + x);
        },
        [&](int x) {
            const float* pixel = pixels + 4 * x;
            const float alpha = a != nullptr ? 1.0F : unit(pixel[3]);
            b[x] = unit(pixel[0]) * alpha;
            g[x] = unit(pixel[1]) * alpha;
            r[x] = unit(pixel[2]) * alpha;
            if (a != nullptr) {
                a[x] = unit(pixel[3]);
            }
        });
}

template <int kFrom, int kTo>
HWY_INLINE void reorder(const std::uint8_t* from, int count, const media::ByteOrder& order, std::uint8_t* to) {
    const Bytes d;
    const auto full = hn::Set(d, std::uint8_t{255});
    forPixels(
        count, static_cast<int>(hn::Lanes(d)),
        [&](int x) HWY_ATTR {
            hn::Vec<Bytes> v0, v1, v2, v3 = full;
            if constexpr (kFrom == 4) {
                hn::LoadInterleaved4(d, from + 4 * x, v0, v1, v2, v3);
            } else {
                hn::LoadInterleaved3(d, from + 3 * x, v0, v1, v2);
            }
            if (order.overBlack && !hn::AllTrue(d, hn::Eq(v3, full))) {
                v0 = overBlack(v0, v3);
                v1 = overBlack(v1, v3);
                v2 = overBlack(v2, v3);
            }
            const auto pick = [&](int i) HWY_ATTR {
                const int byte = order.source[i];
                return byte == 0 ? v0 : byte == 1 ? v1 : byte == 2 ? v2 : byte == 3 ? v3 : full;
            };
            if constexpr (kTo == 4) {
                hn::StoreInterleaved4(pick(0), pick(1), pick(2), pick(3), d, to + 4 * x);
            } else {
                hn::StoreInterleaved3(pick(0), pick(1), pick(2), d, to + 3 * x);
            }
        },
        [&](int x) {
            const std::uint8_t* pixel = from + kFrom * x;
            for (int i = 0; i < kTo; i++) {
                const int byte = order.source[i];
                const int level = byte < kFrom ? pixel[byte] : 255;
                to[kTo * x + i] = static_cast<std::uint8_t>(order.overBlack ? overBlack(level, pixel[3]) : level);
            }
        });
}

void reorderBytes(const std::uint8_t* from, int count, const media::ByteOrder& order, std::uint8_t* to) {
    const bool four = order.targetBytes == 4;
    if (order.sourceBytes == 4) {
        four ? reorder<4, 4>(from, count, order, to) : reorder<4, 3>(from, count, order, to);
    } else {
        four ? reorder<3, 4>(from, count, order, to) : reorder<3, 3>(from, count, order, to);
    }
}

}  // namespace
}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(packBytes);
HWY_EXPORT(packFloats);
HWY_EXPORT(splitBytes);
HWY_EXPORT(splitFloats);
HWY_EXPORT(reorderBytes);

void media::packPixels(const std::uint8_t* const planes[4], int count, std::uint8_t* pixels) {
    HWY_DYNAMIC_DISPATCH(packBytes)(planes, count, pixels);
}

void media::packPixels(const float* const planes[4], int count, float* pixels) {
    HWY_DYNAMIC_DISPATCH(packFloats)(planes, count, pixels);
}

void media::splitPixels(const std::uint8_t* pixels, int count, std::uint8_t* const planes[4]) {
    HWY_DYNAMIC_DISPATCH(splitBytes)(pixels, count, planes);
}

void media::splitPixels(const float* pixels, int count, float* const planes[4]) {
    HWY_DYNAMIC_DISPATCH(splitFloats)(pixels, count, planes);
}

void media::reorderPixels(const std::uint8_t* from, int count, const ByteOrder& order, std::uint8_t* to) {
    HWY_DYNAMIC_DISPATCH(reorderBytes)(from, count, order, to);
}

}  // namespace lumiset
#endif
