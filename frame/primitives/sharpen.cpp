#include "frame/primitives/sharpen.h"

#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/sharpen.cpp"
#include "hwy/foreach_target.h"

#include "frame/fetch_ahead.h"
#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

constexpr std::size_t kPixel = 4;  ///< samples from a pixel to its neighbour

/// Bytes are summed in 16 bits.
struct Bytes {
    using Sample = std::uint8_t;
    using D = hn::ScalableTag<std::int16_t>;
    static HWY_INLINE hn::Vec<D> load(const Sample* from) {
        return hn::PromoteTo(D(), hn::LoadU(hn::Rebind<Sample, D>(), from));
    }
    static HWY_INLINE auto finish(hn::Vec<D> centre, hn::Vec<D> neighbours) {
        const auto eighths = hn::Sub(hn::ShiftLeft<4>(centre), neighbours);
        return hn::DemoteTo(hn::Rebind<Sample, D>(), hn::ShiftRight<3>(hn::Add(eighths, hn::Set(D(), 4))));
    }
};

struct Floats {
    using Sample = float;
    using D = hn::CappedTag<float, 8>;  // longer ones straddle a cache line at every load of a neighbour
    static HWY_INLINE hn::Vec<D> load(const Sample* from) { return hn::LoadU(D(), from); }
    static HWY_INLINE auto finish(hn::Vec<D> centre, hn::Vec<D> neighbours) {
        const auto eighths = hn::Sub(hn::Mul(centre, hn::Set(D(), 16.0F)), neighbours);
        return hn::Mul(eighths, hn::Set(D(), 0.125F));
    }
};

/// A vector of samples; each row is given from the pixel before on.
template <class Kind, class T = typename Kind::Sample>
HWY_INLINE void sharpenVector(const T* above, const T* here, const T* below, T* out) {
    const hn::Rebind<T, typename Kind::D> d;
    const auto column = [&](std::size_t at)
                            HWY_ATTR { return hn::Add(Kind::load(above + at), Kind::load(below + at)); };
    const auto sides = hn::Add(Kind::load(here), Kind::load(here + 2 * kPixel));
    const auto neighbours = hn::Add(hn::Add(column(0), column(2 * kPixel)), hn::Add(column(kPixel), sides));
    const auto result = Kind::finish(Kind::load(here + kPixel), neighbours);
    hn::StoreU(hn::IfVecThenElse(touchedLanes<Touch::kFirstThree>(d), result, hn::LoadU(d, out)), d, out);
}

template <class Kind, class T = typename Kind::Sample>
void sharpen(Plane<const T> src, Plane<T> dst, ImgSize size) {
    constexpr std::size_t kMostLanes = HWY_MAX_BYTES / sizeof(T);
    const std::size_t samples = samplesInRow<Touch::kFirstThree>(size.width);
    const std::size_t lanes = hn::Lanes(typename Kind::D());
    for (std::int32_t y = 0; y < size.height; ++y) {
        const T* above = src.row(y - 1) - kPixel;
        const T* here = src.row(y) - kPixel;
        const T* below = src.row(y + 1) - kPixel;
        T* out = dst.row(y);
        std::size_t i = 0;
        for (; i + lanes <= samples; i += lanes) {
            fetchAhead(out + i, lanes);
            fetchAhead(below + i, lanes);
            sharpenVector<Kind>(above + i, here + i, below + i, out + i);
        }
        if (i < samples) {
            // The last samples go through copies, so that nothing past them is read or written.
            T rows[3][kMostLanes + 2 * kPixel] = {};
            T last[kMostLanes] = {};
            const std::size_t bytes = (samples - i) * sizeof(T);
            std::memcpy(rows[0], above + i, bytes + 2 * kPixel * sizeof(T));
            std::memcpy(rows[1], here + i, bytes + 2 * kPixel * sizeof(T));
            std::memcpy(rows[2], below + i, bytes + 2 * kPixel * sizeof(T));
            std::memcpy(last, out + i, bytes);
            sharpenVector<Kind>(rows[0], rows[1], rows[2], last);
            std::memcpy(out + i, last, bytes);
        }
    }
}

}  // namespace

void sharpenBytes(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    sharpen<Bytes>(src, dst, size);
}
void sharpenFloats(Plane<const float> src, Plane<float> dst, ImgSize size) {
    sharpen<Floats>(src, dst, size);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(sharpenBytes);
HWY_EXPORT(sharpenFloats);

ImgStatus ImgSharpen8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                        ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(sharpenBytes), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep));
}
ImgStatus ImgSharpenFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                        ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(sharpenFloats), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep));
}

}  // namespace lumiset
#endif
