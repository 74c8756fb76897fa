#include "frame/primitives/convolve.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "frame/primitives/check.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/convolve.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

#ifndef LUMISET_CONVOLVE
#define LUMISET_CONVOLVE
namespace lumiset {

template <class Tap>
struct ConvolveKernel {
    const Tap* taps;
    std::int32_t size;
    std::int32_t anchor;
    std::int32_t divisor;
};

/// Rows of samples; from one kernel element to the next are `tapStep` samples. With `skipsFourth` every fourth
/// sample of the destination stays.
template <class T>
struct ConvolvePlanes {
    Plane<const T> src;
    Plane<T> dst;
    std::int32_t samples;
    std::int32_t height;
    std::ptrdiff_t tapStep;
    bool skipsFourth;
};

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::int32_t kChunk = 512;  ///< samples that are summed together

/// Adds what some elements of the kernel, from `first` on, give to the sums of a chunk of a row.
template <std::int32_t kTaps, class Sum, class T, class Tap>
HWY_INLINE void addTaps(const T* src, std::int32_t count, std::ptrdiff_t tapStep, const ConvolveKernel<Tap>& kernel,
                        std::int32_t first, Sum* HWY_RESTRICT sums) {
    const T* from = src + tapStep * (first - kernel.anchor);
    Sum taps[static_cast<std::size_t>(kTaps)];
    for (std::int32_t k = 0; k < kTaps; ++k) {
        taps[k] = static_cast<Sum>(kernel.taps[kernel.size - 1 - first - k]);
    }
    std::int32_t i = 0;
    if constexpr (!std::is_same_v<Sum, std::int64_t>) {
        const hn::ScalableTag<Sum> d;
        const hn::Rebind<T, decltype(d)> dSample;
        const auto lanes = static_cast<std::int32_t>(hn::Lanes(d));
        for (; i + lanes <= count; i += lanes) {
            auto sum = hn::LoadU(d, sums + i);
            for (std::int32_t k = 0; k < kTaps; ++k) {
                const auto samples = hn::PromoteTo(d, hn::LoadU(dSample, from + tapStep * k + i));
                sum = hn::Add(sum, hn::Mul(hn::Set(d, taps[k]), samples));
            }
            hn::StoreU(sum, d, sums + i);
        }
    }
    for (; i < count; ++i) {
        for (std::int32_t k = 0; k < kTaps; ++k) {
            sums[i] += taps[k] * static_cast<Sum>(from[tapStep * k + i]);
        }
    }
}

/// Adds up one chunk of a row, several elements at a time, so that the sums are seldom loaded and stored.
template <class Sum, class T, class Tap>
void sumChunk(const T* src, std::int32_t count, std::ptrdiff_t tapStep, const ConvolveKernel<Tap>& kernel, Sum* sums) {
    constexpr std::int32_t kTogether = 8;
    std::fill(sums, sums + count, Sum{0});
    std::int32_t k = 0;
    for (; k + kTogether <= kernel.size; k += kTogether) {
        addTaps<kTogether>(src, count, tapStep, kernel, k, sums);
    }
    for (; k < kernel.size; ++k) {
        addTaps<1>(src, count, tapStep, kernel, k, sums);
    }
}

template <class Sum, class T, class Tap, class Finish>
void convolve(const ConvolvePlanes<T>& planes, const ConvolveKernel<Tap>& kernel, const Finish& finish) {
    Sum sums[kChunk];
    T results[kChunk];
    for (std::int32_t y = 0; y < planes.height; ++y) {
        for (std::int32_t first = 0; first < planes.samples; first += kChunk) {
            const std::int32_t count = std::min(kChunk, planes.samples - first);
            T* out = planes.dst.row(y) + first;
            sumChunk(planes.src.row(y) + first, count, planes.tapStep, kernel, sums);
            for (std::int32_t i = 0; i < count; ++i) {
                results[i] = finish(sums[i]);
            }
            if (!planes.skipsFourth) {
                std::copy(results, results + count, out);
                continue;
            }
            for (std::int32_t i = 0; i < count; ++i) {
                if (i % 4 != 3) {
                    out[i] = results[i];
                }
            }
        }
    }
}

/// The sum divided and rounded by a reciprocal: quotients reach 255.5, where a double is off by less than half of
/// 1 / divisor.
struct RoundedQuotient {
    double half;
    double divisor;
    double reciprocal;

    template <class Sum>
    std::uint8_t operator()(Sum sum) const {
        const double bounded = std::min(std::max(static_cast<double>(sum), 0.0), 255.0 * divisor);
        return static_cast<std::uint8_t>(static_cast<std::int32_t>((bounded + half) * reciprocal));
    }
};

}  // namespace

void convolveBytePlanes(const ConvolvePlanes<std::uint8_t>& planes, const ConvolveKernel<std::int32_t>& kernel) {
    std::int64_t most = 0;
    for (std::int32_t k = 0; k < kernel.size; ++k) {
        most += 255 * std::abs(std::int64_t{kernel.taps[k]});
    }
    // A negative divisor is that of the negated kernel; the half is its whole part, and half a unit more keeps
    // quotients clear of whole numbers.
    const std::int64_t divisor = std::abs(std::int64_t{kernel.divisor});
    const std::int64_t wholeHalf = divisor / 2;
    const double half = static_cast<double>(wholeHalf) + 0.5;
    const double real = static_cast<double>(divisor);
    const RoundedQuotient quotient{half, real, 1.0 / real};
    const bool negative = kernel.divisor < 0;
    if (most <= INT32_MAX) {
        convolve<std::int32_t>(planes, kernel, [&](std::int32_t sum) { return quotient(negative ? -sum : sum); });
    } else {
        convolve<std::int64_t>(planes, kernel, [&](std::int64_t sum) { return quotient(negative ? -sum : sum); });
    }
}

void convolveFloatPlanes(const ConvolvePlanes<float>& planes, const ConvolveKernel<float>& kernel) {
    convolve<double>(planes, kernel, [](double sum) { return static_cast<float>(sum); });
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(convolveBytePlanes);
HWY_EXPORT(convolveFloatPlanes);

namespace {

/// `loop(planes, kernel)`, unless an argument is wrong.
template <class Loop, class T, class Tap>
ImgStatus convolve(const Loop& loop, const ImgConvolution& kind, Plane<const T> src, Plane<T> dst, ImgSize size,
                   const ConvolveKernel<Tap>& kernel) {
    const std::int32_t pixelBytes = kind.channels * static_cast<std::int32_t>(sizeof(T));
    const ImgStatus status = checkPlanes(
        size, {{src.data, src.step, pixelBytes}, {dst.data, dst.step, pixelBytes}, arrayArgument(kernel.taps)});
    if (status != kImgOk) {
        return status;
    }
    if (kernel.size < 1 || kernel.anchor < 0 || kernel.anchor >= kernel.size) {
        return kImgBadMaskSize;
    }
    if (kernel.divisor == 0) {
        return kImgBadRange;
    }
    const std::int32_t samples = size.width * kind.channels - (kind.skipsFourth ? 1 : 0);
    const std::ptrdiff_t tapStep = kind.alongRows ? kind.channels : src.step / static_cast<std::ptrdiff_t>(sizeof(T));
    loop({src, dst, samples, size.height, tapStep, kind.skipsFourth}, kernel);
    return kImgOk;
}

}  // namespace

ImgStatus ImgConvolution8::operator()(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                                      std::int32_t dstStep, ImgSize size, const std::int32_t* kernel,
                                      std::int32_t kernelSize, std::int32_t anchor,
                                      std::int32_t divisor) const noexcept {
    return convolve(HWY_DYNAMIC_DISPATCH(convolveBytePlanes), *this, Plane<const std::uint8_t>{src, srcStep},
                    Plane<std::uint8_t>{dst, dstStep}, size,
                    ConvolveKernel<std::int32_t>{kernel, kernelSize, anchor, divisor});
}

ImgStatus ImgConvolutionF::operator()(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                                      ImgSize size, const float* kernel, std::int32_t kernelSize,
                                      std::int32_t anchor) const noexcept {
    return convolve(HWY_DYNAMIC_DISPATCH(convolveFloatPlanes), *this, Plane<const float>{src, srcStep},
                    Plane<float>{dst, dstStep}, size, ConvolveKernel<float>{kernel, kernelSize, anchor, 1});
}

}  // namespace lumiset
#endif
