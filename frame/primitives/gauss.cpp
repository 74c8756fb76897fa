#include "frame/primitives/gauss.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "frame/primitives/check.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/gauss.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// Bytes are filtered in 16 bits, where their largest sum, 255 * 256 + 128, fits.
struct Bytes {
    using Sample = std::uint8_t;
    using D = hn::ScalableTag<std::uint16_t>;
    static HWY_INLINE hn::Vec<D> load(const Sample* from) {
        return hn::PromoteTo(D(), hn::LoadU(hn::Rebind<std::uint8_t, D>(), from));
    }
    template <int kRadius>
    static HWY_INLINE void store(hn::Vec<D> sum, Sample* to) {
        constexpr int kShift = 4 * kRadius;
        const auto mean = hn::ShiftRight<kShift>(hn::Add(sum, hn::Set(D(), 1U << (kShift - 1))));
        const hn::Rebind<std::uint8_t, D> d8;
        hn::StoreU(hn::DemoteTo(d8, hn::BitCast(hn::RebindToSigned<D>(), mean)), d8, to);
    }
};
struct Floats {
    using Sample = float;
    using D = hn::ScalableTag<float>;
    static HWY_INLINE hn::Vec<D> load(const Sample* from) { return hn::LoadU(D(), from); }
    template <int kRadius>
    static HWY_INLINE void store(hn::Vec<D> sum, Sample* to) {
        hn::StoreU(hn::Mul(sum, hn::Set(D(), kRadius == 1 ? 1.0F / 16.0F : 1.0F / 256.0F)), D(), to);
    }
};

/// Weights 1 2 1 or 1 4 6 4 1.
template <int kRadius, class V>
HWY_INLINE V binomial(V a, V b, V c, V e, V f) {
    if constexpr (kRadius == 1) {
        return hn::Add(hn::Add(a, c), hn::Add(b, b));
    } else {
        const V ends = hn::Add(a, f);
        const V twice = hn::Add(hn::Add(b, e), c);
        const V four = hn::Add(twice, twice);
        return hn::Add(hn::Add(ends, hn::Add(four, four)), hn::Add(c, c));
    }
}

template <class Kind, int kRadius>
class Gauss {
public:
    using T = typename Kind::Sample;
    using D = typename Kind::D;
    using Wide = hn::TFromD<D>;

    static void run(Plane<const T> src, Plane<T> dst, ImgSize size) {
        for (std::int32_t first = 0; first < size.width; first += kStrip) {
            strip(src, dst, first, std::min(kStrip, size.width - first), size.height);
        }
    }

private:
    static constexpr std::int32_t kStrip = 1024;  ///< columns whose row sums stay in the nearest cache
    static constexpr std::int32_t kRows = 2 * kRadius + 1;
    static constexpr std::size_t kRoom = HWY_MAX_BYTES;

    static HWY_INLINE std::int32_t lanes() { return static_cast<std::int32_t>(hn::Lanes(D())); }

    static void strip(Plane<const T> src, Plane<T> dst, std::int32_t first, std::int32_t width, std::int32_t height) {
        HWY_ALIGN Wide sums[std::size_t{kRows}][std::size_t{kStrip} + kRoom];
        for (std::int32_t y = -kRadius; y < kRadius; ++y) {
            alongRow(src.row(y) + first, width, sums[slot(y)]);
        }
        for (std::int32_t y = 0; y < height; ++y) {
            alongRow(src.row(y + kRadius) + first, width, sums[slot(y + kRadius)]);
            const Wide* rows[5];
            for (std::int32_t r = 0; r < kRows; ++r) {
                rows[r] = sums[slot(y - kRadius + r)];
            }
            rows[3] = kRadius == 1 ? rows[0] : rows[3];
            rows[4] = kRadius == 1 ? rows[0] : rows[4];
            acrossRows(rows, width, dst.row(y) + first);
        }
    }

    static std::int32_t slot(std::int32_t y) { return (y + kRows) % kRows; }

    static void alongRow(const T* from, std::int32_t width, Wide* out) {
        const D d;
        std::int32_t x = 0;
        for (; x + lanes() <= width; x += lanes()) {
            hn::Store(sum(from + x), d, out + x);
        }
        if (x < width) {
            T few[kRoom + 4] = {};
            std::memcpy(few, from + x - kRadius, static_cast<std::size_t>(width - x + 2 * kRadius) * sizeof(T));
            hn::Store(sum(few + kRadius), d, out + x);
        }
    }

    static HWY_INLINE hn::Vec<D> sum(const T* at) {
        const auto a = Kind::load(at - kRadius);
        const auto b = Kind::load(at - kRadius + 1);
        const auto c = Kind::load(at - kRadius + 2);
        return kRadius == 1 ? binomial<kRadius>(a, b, c, c, c)
                            : binomial<kRadius>(a, b, c, Kind::load(at + kRadius - 1), Kind::load(at + kRadius));
    }

    static void acrossRows(const Wide* const (&rows)[5], std::int32_t width, T* out) {
        const D d;
        const auto at = [&](std::int32_t x) HWY_ATTR {
            return binomial<kRadius>(hn::Load(d, rows[0] + x), hn::Load(d, rows[1] + x), hn::Load(d, rows[2] + x),
                                     hn::Load(d, rows[3] + x), hn::Load(d, rows[4] + x));
        };
        std::int32_t x = 0;
        for (; x + lanes() <= width; x += lanes()) {
            Kind::template store<kRadius>(at(x), out + x);
        }
        if (x < width) {
            T few[kRoom];
            Kind::template store<kRadius>(at(x), few);
            std::memcpy(out + x, few, static_cast<std::size_t>(width - x) * sizeof(T));
        }
    }
};

}  // namespace

void gaussBytes(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, std::int32_t maskCode, ImgSize size) {
    maskCode == kImgMask3x3 ? Gauss<Bytes, 1>::run(src, dst, size) : Gauss<Bytes, 2>::run(src, dst, size);
}
void gaussFloats(Plane<const float> src, Plane<float> dst, std::int32_t maskCode, ImgSize size) {
    maskCode == kImgMask3x3 ? Gauss<Floats, 1>::run(src, dst, size) : Gauss<Floats, 2>::run(src, dst, size);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(gaussBytes);
HWY_EXPORT(gaussFloats);

namespace {

ImgStatus checkMask(std::int32_t maskCode) {
    return maskCode == kImgMask3x3 || maskCode == kImgMask5x5 ? kImgOk : kImgBadMaskSize;
}

}  // namespace

ImgStatus ImgGauss8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                    ImgSize size, std::int32_t maskCode) noexcept {
    return runLoop(checkMask(maskCode), HWY_DYNAMIC_DISPATCH(gaussBytes), size, pixels<1>(src, srcStep),
                   pixels<1>(dst, dstStep), maskCode);
}
ImgStatus ImgGaussF(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                    std::int32_t maskCode) noexcept {
    return runLoop(checkMask(maskCode), HWY_DYNAMIC_DISPATCH(gaussFloats), size, pixels<1>(src, srcStep),
                   pixels<1>(dst, dstStep), maskCode);
}

}  // namespace lumiset
#endif
