#include "frame/primitives/convolve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

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
    bool alongRows;
    bool skipsFourth;
};

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Each sample that is loaded and converted serves several results at once: those of the rows below each other, or of
// neighbours in a row. A result's products are added in the order of the kernel. They are exact, those of floats in
// doubles and those of bytes in whatever holds their sum: multiply-add rounds as often as two instructions.

constexpr std::int32_t kRowsTogether = 6;    ///< as many results of two vectors share their samples
constexpr std::int32_t kPiecesTogether = 3;  ///< likewise along a row, where fewer of their samples are the same
constexpr std::int32_t kChunk = 256;         ///< samples of a row that are summed together, for so many results

/// A part of the kernel as it is applied, from its last element to its first.
template <class Sum>
struct TapWindow {
    static constexpr std::int32_t kMost = 512;

    template <class Tap>
    void show(const ConvolveKernel<Tap>& kernel, std::int32_t first) {
        if (first == shown) {
            return;
        }
        shown = first;
        count = std::min(kMost, kernel.size - first);
        for (std::int32_t k = 0; k < count; ++k) {
            taps[k] = static_cast<Sum>(kernel.taps[kernel.size - 1 - first - k]);
        }
    }

    Sum taps[kMost];
    std::int32_t shown = -1;
    std::int32_t count = 0;
};

/// Vectors of sums.
template <class Sum>
struct SumVectors {
    using D = hn::ScalableTag<Sum>;
    using V = hn::Vec<D>;

    static std::int32_t lanes() { return static_cast<std::int32_t>(hn::Lanes(D())); }
    static HWY_INLINE V load(const float* from) { return hn::PromoteTo(D(), hn::LoadU(hn::Rebind<float, D>(), from)); }
    static HWY_INLINE V load(const std::uint8_t* from) {
        const auto whole = hn::PromoteTo(hn::Rebind<std::int32_t, D>(), hn::LoadU(hn::Rebind<std::uint8_t, D>(), from));
        if constexpr (sizeof(Sum) == sizeof(float)) {
            return hn::ConvertTo(D(), whole);
        } else {
            return hn::PromoteTo(D(), whole);
        }
    }
};

/// Adds the taps of `window` to `kCount` results of two vectors each, `sumStep` apart; the first taps of two that
/// follow each other are `ahead` taps apart.
template <std::int32_t kCount, class Sum, class T>
HWY_INLINE void addTile(const T* src, std::ptrdiff_t tapStep, std::int32_t ahead, const TapWindow<Sum>& window,
                        Sum* HWY_RESTRICT sums, std::ptrdiff_t sumStep) {
    using Vectors = SumVectors<Sum>;
    const typename Vectors::D d;
    const std::int32_t lanes = Vectors::lanes();
    typename Vectors::V left[static_cast<std::size_t>(kCount)];
    typename Vectors::V right[static_cast<std::size_t>(kCount)];
    for (std::int32_t r = 0; r < kCount; ++r) {
        left[r] = hn::LoadU(d, sums + r * sumStep);
        right[r] = hn::LoadU(d, sums + r * sumStep + lanes);
    }
    const auto add = [&](std::int32_t position, const auto& reaches) HWY_ATTR {
        const T* from = src + tapStep * position;
        const auto first = Vectors::load(from);
        const auto second = Vectors::load(from + lanes);
        for (std::int32_t r = 0; r < kCount; ++r) {
            const std::int32_t k = position - r * ahead;
            if (reaches(k)) {
                const auto tap = hn::Set(d, window.taps[k]);
                left[r] = hn::MulAdd(tap, first, left[r]);
                right[r] = hn::MulAdd(tap, second, right[r]);
            }
        }
    };
    const std::int32_t last = (kCount - 1) * ahead;
    const auto some = [&](std::int32_t k) { return k >= 0 && k < window.count; };
    std::int32_t position = 0;
    for (; position < std::min(last, window.count + last); ++position) {
        add(position, some);
    }
    for (; position < window.count; ++position) {
        add(position, [](std::int32_t) { return true; });
    }
    for (; position < window.count + last; ++position) {
        add(position, some);
    }
    for (std::int32_t r = 0; r < kCount; ++r) {
        hn::StoreU(left[r], d, sums + r * sumStep);
        hn::StoreU(right[r], d, sums + r * sumStep + lanes);
    }
}

/// The same for single samples next to each other, of one result.
template <class Sum, class T>
void addSamples(const T* src, std::int32_t count, std::ptrdiff_t tapStep, const TapWindow<Sum>& window, Sum* sums) {
    for (std::int32_t i = 0; i < count; ++i) {
        for (std::int32_t k = 0; k < window.count; ++k) {
            sums[i] += window.taps[k] * static_cast<Sum>(src[tapStep * k + i]);
        }
    }
}

/// Adds up `count` samples of `rows` rows, whose sums are `kChunk` apart.
template <class Sum, class T>
void addRows(const T* src, std::int32_t count, std::int32_t rows, std::ptrdiff_t rowStep, std::ptrdiff_t tapStep,
             const TapWindow<Sum>& window, Sum* sums) {
    const std::int32_t width = 2 * SumVectors<Sum>::lanes();
    std::int32_t i = 0;
    for (; i + width <= count; i += width) {
        if (rows == kRowsTogether) {
            addTile<kRowsTogether>(src + i, tapStep, 1, window, sums + i, kChunk);
            continue;
        }
        for (std::int32_t r = 0; r < rows; ++r) {
            addTile<1>(src + r * rowStep + i, tapStep, 1, window, sums + r * kChunk + i, 0);
        }
    }
    for (std::int32_t r = 0; r < rows; ++r) {
        addSamples(src + r * rowStep + i, count - i, tapStep, window, sums + r * kChunk + i);
    }
}

/// Adds up `count` samples of one row with what is beside them.
template <class Sum, class T>
void addAlongRow(const T* src, std::int32_t count, std::ptrdiff_t tapStep, const TapWindow<Sum>& window, Sum* sums) {
    const std::int32_t width = 2 * SumVectors<Sum>::lanes();
    const auto ahead = static_cast<std::int32_t>(width / tapStep);
    std::int32_t i = 0;
    for (; i + kPiecesTogether * width <= count; i += kPiecesTogether * width) {
        addTile<kPiecesTogether>(src + i, tapStep, ahead, window, sums + i, width);
    }
    for (; i + width <= count; i += width) {
        addTile<1>(src + i, tapStep, ahead, window, sums + i, 0);
    }
    addSamples(src + i, count - i, tapStep, window, sums + i);
}

/// Stores `finish` of a row's sums.
template <class T, class Sum, class Finish>
void storeRow(const Sum* sums, std::int32_t count, bool skipsFourth, const Finish& finish, T* out) {
    if (!skipsFourth) {
        finish(sums, count, out);
        return;
    }
    T results[kRowsTogether * kChunk];
    finish(sums, count, results);
    for (std::int32_t i = 0; i < count; ++i) {
        if (i % 4 != 3) {
            out[i] = results[i];
        }
    }
}

template <class Sum, class T, class Tap, class Finish>
void convolve(const ConvolvePlanes<T>& planes, const ConvolveKernel<Tap>& kernel, const Finish& finish) {
    HWY_ALIGN Sum sums[kRowsTogether * kChunk];
    TapWindow<Sum> window;
    const std::ptrdiff_t rowStep = planes.src.step / static_cast<std::ptrdiff_t>(sizeof(T));
    const std::int32_t rowsTogether = planes.alongRows ? 1 : kRowsTogether;
    const std::int32_t chunk = kRowsTogether / rowsTogether * kChunk;
    for (std::int32_t y = 0; y < planes.height; y += rowsTogether) {
        const std::int32_t rows = std::min(rowsTogether, planes.height - y);
        for (std::int32_t first = 0; first < planes.samples; first += chunk) {
            const std::int32_t count = std::min(chunk, planes.samples - first);
            const T* src = planes.src.row(y) + first - planes.tapStep * kernel.anchor;
            std::fill(std::begin(sums), std::end(sums), Sum{0});
            for (std::int32_t tap = 0; tap < kernel.size; tap += TapWindow<Sum>::kMost) {
                window.show(kernel, tap);
                const T* from = src + planes.tapStep * tap;
                if (planes.alongRows) {
                    addAlongRow(from, count, planes.tapStep, window, sums);
                } else {
                    addRows(from, count, rows, rowStep, planes.tapStep, window, sums);
                }
            }
            for (std::int32_t r = 0; r < rows; ++r) {
                storeRow(sums + r * kChunk, count, planes.skipsFourth, finish, planes.dst.row(y + r) + first);
            }
        }
    }
}

/// The sums divided and rounded by a reciprocal: quotients reach 255.5, where a double is off by less than half of
/// 1 / divisor.
class RoundedQuotient {
public:
    /// A negative divisor is that of the negated kernel; the half is its whole part, and half a unit more keeps
    /// quotients clear of whole numbers.
    explicit RoundedQuotient(std::int64_t divisor)
        : m_sign(divisor < 0 ? -1.0 : 1.0),
          m_divisor(static_cast<double>(std::abs(divisor))),
          m_half(std::floor(m_divisor / 2) + 0.5) {}

    template <class Sum>
    void operator()(const Sum* sums, std::int32_t count, std::uint8_t* out) const {
        const D d;
        const auto lanes = static_cast<std::int32_t>(hn::Lanes(d));
        const hn::Rebind<std::uint8_t, D> dByte;
        std::int32_t i = 0;
        for (; i + lanes <= count; i += lanes) {
            hn::StoreU(quotients(sums + i), dByte, out + i);
        }
        if (i < count) {
            HWY_ALIGN Sum last[HWY_MAX_BYTES / sizeof(double)] = {};
            HWY_ALIGN std::uint8_t rest[HWY_MAX_BYTES];
            std::copy(sums + i, sums + count, last);
            hn::StoreU(quotients(last), dByte, rest);
            std::copy(rest, rest + (count - i), out + i);
        }
    }

private:
    using D = hn::ScalableTag<double>;

    template <class Sum>
    HWY_INLINE auto quotients(const Sum* sums) const {
        const D d;
        const auto sum = hn::Mul(toDoubles(hn::LoadU(hn::Rebind<Sum, D>(), sums)), hn::Set(d, m_sign));
        const auto bounded = hn::Min(hn::Max(sum, hn::Zero(d)), hn::Set(d, 255.0 * m_divisor));
        const auto quotient = hn::Mul(hn::Add(bounded, hn::Set(d, m_half)), hn::Set(d, 1.0 / m_divisor));
        return hn::DemoteTo(hn::Rebind<std::uint8_t, D>(), hn::DemoteTo(hn::Rebind<std::int32_t, D>(), quotient));
    }
    static HWY_INLINE auto toDoubles(hn::Vec<hn::Rebind<float, D>> sums) { return hn::PromoteTo(D(), sums); }
    static HWY_INLINE auto toDoubles(hn::Vec<D> sums) { return sums; }

    double m_sign;
    double m_divisor;
    double m_half;
};

}  // namespace

void convolveBytePlanes(const ConvolvePlanes<std::uint8_t>& planes, const ConvolveKernel<std::int32_t>& kernel) {
    std::int64_t most = 0;
    for (std::int32_t k = 0; k < kernel.size; ++k) {
        most += 255 * std::abs(std::int64_t{kernel.taps[k]});
    }
    const RoundedQuotient finish(kernel.divisor);
    if (most <= std::int64_t{1} << 24) {
        convolve<float>(planes, kernel, finish);
    } else {
        convolve<double>(planes, kernel, finish);
    }
}

void convolveFloatPlanes(const ConvolvePlanes<float>& planes, const ConvolveKernel<float>& kernel) {
    convolve<double>(planes, kernel,
                     [](const double* sums, std::int32_t count, float* out) { std::copy(sums, sums + count, out); });
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
    loop({src, dst, samples, size.height, tapStep, kind.alongRows, kind.skipsFourth}, kernel);
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
