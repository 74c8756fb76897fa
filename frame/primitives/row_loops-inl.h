// Row loops of the pointwise primitives, compiled once per instruction set: include between foreach_target.h
// and HWY_BEFORE_NAMESPACE, each in an include block of its own. A file of primitives is laid out as
//
//     #undef HWY_TARGET_INCLUDE
//     #define HWY_TARGET_INCLUDE "frame/primitives/fill.cpp"
//     #include "hwy/foreach_target.h"  // compiles this file once per instruction set
//
//     #include "frame/primitives/row_loops-inl.h"
//     HWY_BEFORE_NAMESPACE();
//     namespace lumiset::HWY_NAMESPACE { void setC1(...) { loops } }
//     HWY_AFTER_NAMESPACE();
//     #if HWY_ONCE
//     namespace lumiset {
//     HWY_EXPORT(setC1);
//     ImgStatus ImgSet8C1(...) { return runLoop(HWY_DYNAMIC_DISPATCH(setC1), size, pixels<1>(plane, step), value); }
//     }
//     #endif
//
// Lambdas need HWY_ATTR. Multiply and add stay two roundings (never MulAdd), so that every instruction set
// gives the same floats.

#if defined(LUMISET_ROW_LOOPS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef LUMISET_ROW_LOOPS_INL_H
#undef LUMISET_ROW_LOOPS_INL_H
#else
#define LUMISET_ROW_LOOPS_INL_H
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/fetch_ahead.h"
#include "frame/primitives/check.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// What a loop touches: every sample of a one-channel plane, or the first so many of each four.
enum class Touch { kOneChannel, kFirst, kFirstThree, kAllFour };

/// A region walked as rows of samples. Rows that follow each other without a gap become one long row.
struct SampleRows {
    std::size_t samples;  ///< from the first to the last touched one of a row
    std::int32_t height;
};

/// Samples from the first to the last touched one in a row.
template <Touch kTouch>
constexpr std::size_t samplesInRow(std::int32_t width) {
    const std::size_t perPixel = kTouch == Touch::kOneChannel ? 1 : 4;
    const std::size_t untouched = kTouch == Touch::kFirst ? 3 : kTouch == Touch::kFirstThree ? 1 : 0;
    return static_cast<std::size_t>(width) * perPixel - untouched;
}

template <Touch kTouch, class... T>
SampleRows sampleRows(ImgSize size, const Plane<T>&... planes) {
    const std::size_t samples = samplesInRow<kTouch>(size.width);
    const std::size_t whole = static_cast<std::size_t>(size.width) * (kTouch == Touch::kOneChannel ? 1 : 4);
    if ((... && (static_cast<std::size_t>(planes.step) == whole * sizeof(T)))) {
        return {whole * static_cast<std::size_t>(size.height - 1) + samples, 1};
    }
    return {samples, size.height};
}

/// The four values again and again.
template <class D>
HWY_INLINE hn::Vec<D> repeatFour(D d, const hn::TFromD<D>* values) {
    if constexpr (sizeof(hn::TFromD<D>) == 1) {
        std::uint32_t packed;
        std::memcpy(&packed, values, sizeof packed);
        return hn::BitCast(d, hn::Set(hn::RepartitionToWide<hn::RepartitionToWide<D>>(), packed));
    } else {
        return hn::LoadDup128(d, values);
    }
}
template <class D>
HWY_INLINE hn::Vec<D> repeatThree(D d, const hn::TFromD<D>* values) {
    HWY_ALIGN const hn::TFromD<D> four[4] = {values[0], values[1], values[2], 0};
    return repeatFour(d, four);
}

/// All bits set in the lanes that `kTouch` names.
template <Touch kTouch, class D>
HWY_INLINE hn::Vec<D> touchedLanes(D d) {
    using Bits = hwy::MakeUnsigned<hn::TFromD<D>>;
    const Bits all = static_cast<Bits>(~Bits{0});
    const Bits middle = kTouch == Touch::kFirst ? Bits{0} : all;
    const Bits last = kTouch == Touch::kFirst || kTouch == Touch::kFirstThree ? Bits{0} : all;
    HWY_ALIGN const Bits four[4] = {all, middle, middle, last};
    return hn::BitCast(d, repeatFour(hn::RebindToUnsigned<D>(), four));
}

/// Runs `op` over one row: dst[i] = op(src[i]...), where `op` takes and gives vectors of as many lanes as the
/// widest of the sample types fills. What `kTouch` leaves out stays.
template <Touch kTouch, class T, class Op, class... S>
HWY_INLINE void mapRow(T* dst, std::size_t samples, const Op& op, const S*... src) {
    constexpr bool kFloat = (sizeof(T) == 4) || (... || (sizeof(S) == 4));
    const hn::ScalableTag<std::conditional_t<kFloat, float, T>> widest;
    constexpr std::size_t kLanes = HWY_MAX_BYTES / (kFloat ? 4 : 1);
    const hn::Rebind<T, decltype(widest)> d;
    [[maybe_unused]] const auto touched = touchedLanes<kTouch>(d);
    const auto step = [&](T* out, const S*... in) HWY_ATTR {
        auto v = op(hn::LoadU(hn::Rebind<S, decltype(widest)>(), in)...);
        if constexpr (kTouch == Touch::kFirst || kTouch == Touch::kFirstThree) {
            v = hn::IfVecThenElse(touched, v, hn::LoadU(d, out));
        }
        hn::StoreU(v, d, out);
    };
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= samples; i += hn::Lanes(d)) {
        fetchAhead(dst + i, hn::Lanes(d));
        (fetchAhead(src + i, hn::Lanes(d)), ...);
        step(dst + i, src + i...);
    }
    if (i < samples) {
        // The last samples go through copies, so that nothing past them is read or written.
        const std::size_t rest = samples - i;
        struct Lanes {
            explicit Lanes(const void* from, std::size_t bytes) { std::memcpy(data, from, bytes); }
            HWY_ALIGN std::uint8_t data[kLanes * 4] = {};
        };
        Lanes out(dst + i, rest * sizeof(T));
        step(reinterpret_cast<T*>(out.data), reinterpret_cast<const S*>(Lanes(src + i, rest * sizeof(S)).data)...);
        std::memcpy(dst + i, out.data, rest * sizeof(T));
    }
}

/// `mapRow` over a region. Width counts pixels (samples of a one-channel plane).
template <Touch kTouch, class T, class Op, class... S>
HWY_INLINE void mapPlane(ImgSize size, Plane<T> dst, const Op& op, Plane<const S>... src) {
    const SampleRows rows = sampleRows<kTouch>(size, dst, src...);
    for (std::int32_t y = 0; y < rows.height; ++y) {
        mapRow<kTouch>(dst.row(y), rows.samples, op, src.row(y)...);
    }
}

/// Four-byte pixels to one byte each: `op` takes a vector of pixels and leaves each one's result in its first byte.
/// `kTouch` tells what of a pixel is read, `d` how long the vectors are.
template <Touch kTouch, class Op, class D = hn::ScalableTag<std::uint8_t>>
HWY_INLINE void foldPlane(ImgSize size, Plane<std::uint8_t> dst, Plane<const std::uint8_t> src, const Op& op,
                          D d = D()) {
    const std::size_t lanes = hn::Lanes(d);
    const auto step = [&](std::uint8_t* out, const std::uint8_t* in) HWY_ATTR {
        const auto first = hn::ConcatEven(d, op(hn::LoadU(d, in + lanes)), op(hn::LoadU(d, in)));
        const auto second = hn::ConcatEven(d, op(hn::LoadU(d, in + 3 * lanes)), op(hn::LoadU(d, in + 2 * lanes)));
        hn::StoreU(hn::ConcatEven(d, second, first), d, out);
    };
    const std::size_t rowBytes = samplesInRow<kTouch>(size.width);
    for (std::int32_t y = 0; y < size.height; ++y) {
        const std::uint8_t* in = src.row(y);
        std::uint8_t* out = dst.row(y);
        std::size_t x = 0;
        for (; (x + lanes) * 4 <= rowBytes; x += lanes) {
            fetchAhead(out + x, lanes);
            fetchAhead(in + 4 * x, 4 * lanes);
            step(out + x, in + 4 * x);
        }
        if (4 * x < rowBytes) {
            HWY_ALIGN std::uint8_t lastIn[4 * HWY_MAX_BYTES] = {};
            HWY_ALIGN std::uint8_t lastOut[HWY_MAX_BYTES];
            std::memcpy(lastIn, in + 4 * x, rowBytes - 4 * x);
            step(lastOut, lastIn);
            std::memcpy(out + x, lastOut, static_cast<std::size_t>(size.width) - x);
        }
    }
}

/// Calls `step(x, out, in...)` along a row, for `lanes` pixels from pixel `x` on, which have `kOut` samples in `out`
/// and `kIn`... in the others. The last pixels go through copies, so that nothing past them is read or written. `lanes`
/// is that of a vector of the row's samples or of wider numbers.
template <std::size_t kOut, std::size_t... kIn, class T, class Step, class... S>
HWY_INLINE void alongPixels(std::size_t lanes, std::int32_t width, const Step& step, T* out, const S*... in) {
    const auto pixels = static_cast<std::size_t>(width);
    std::size_t x = 0;
    for (; x + lanes <= pixels; x += lanes) {
        fetchAhead(out + kOut * x, kOut * lanes);
        (fetchAhead(in + kIn * x, kIn * lanes), ...);
        step(x, out + kOut * x, in + kIn * x...);
    }
    if (x < pixels) {
        const std::size_t rest = pixels - x;
        struct Last {
            explicit Last(const void* from, std::size_t bytes) { std::memcpy(data, from, bytes); }
            HWY_ALIGN std::uint8_t data[4 * HWY_MAX_BYTES] = {};
        };
        Last last(out + kOut * x, kOut * rest * sizeof(T));
        step(x, reinterpret_cast<T*>(last.data),
             reinterpret_cast<const S*>(Last(in + kIn * x, kIn * rest * sizeof(S)).data)...);
        std::memcpy(out + kOut * x, last.data, kOut * rest * sizeof(T));
    }
}

/// The first three samples of each pixel through `op`, which gets and gives them taken apart into three vectors (a
/// `Triple`). The fourth sample of dst stays.
template <class V>
struct Triple {
    V first;
    V second;
    V third;
};
template <class T, class Op>
HWY_INLINE void mapColours(ImgSize size, Plane<const T> src, Plane<T> dst, const Op& op) {
    const hn::ScalableTag<T> d;
    using V = hn::Vec<decltype(d)>;
    constexpr std::size_t kMaxSamples = 4 * HWY_MAX_BYTES / sizeof(T);
    const std::size_t stepSamples = 4 * hn::Lanes(d);
    const auto step = [&](T* out, const T* in) HWY_ATTR {
        V first;
        V second;
        V third;
        V unused;
        V fourth;
        hn::LoadInterleaved4(d, out, first, second, third, fourth);
        hn::LoadInterleaved4(d, in, first, second, third, unused);
        const Triple<V> result = op(Triple<V>{first, second, third});
        hn::StoreInterleaved4(result.first, result.second, result.third, fourth, d, out);
    };
    const SampleRows rows = sampleRows<Touch::kFirstThree>(size, src, dst);
    for (std::int32_t y = 0; y < rows.height; ++y) {
        const T* in = src.row(y);
        T* out = dst.row(y);
        std::size_t i = 0;
        for (; i + stepSamples <= rows.samples; i += stepSamples) {
            fetchAhead(out + i, stepSamples);
            fetchAhead(in + i, stepSamples);
            step(out + i, in + i);
        }
        if (i < rows.samples) {
            HWY_ALIGN T lastIn[kMaxSamples] = {};
            HWY_ALIGN T lastOut[kMaxSamples] = {};
            const std::size_t rest = (rows.samples - i) * sizeof(T);
            std::memcpy(lastIn, in + i, rest);
            std::memcpy(lastOut, out + i, rest);
            step(lastOut, lastIn);
            std::memcpy(out + i, lastOut, rest);
        }
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
