// Separable resampling. Each source row that is needed is filtered along x once, into a few rows of floats that
// are kept while the rows of the destination need them; those are then summed along y.

#include "frame/primitives/resize.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "frame/bands.h"
#include "frame/fetch_ahead.h"
#include "frame/primitives/check.h"
#include "frame/primitives/memory.h"
#include "frame/primitives/resample_taps.h"

#ifndef LUMISET_RESIZE_COMMON
#define LUMISET_RESIZE_COMMON
namespace lumiset {
namespace {

template <class T>
struct ResizeJob {
    Plane<const T> src;
    ImgSize srcSize;
    Plane<T> dst;
    ImgResizeMap map;
    std::uint8_t* scratch;
    ImgSize dstSize;
    const MemoryAllocator* threads;  ///< may be null
};

/// Room after each row of scratch, so that whole vectors can be read and written past its end.
constexpr std::size_t kRowSlack = 64;

/// Parts of the scratch memory, as offsets in bytes.
struct ResizeScratch {
    std::size_t starts;     ///< first tap of each column, int32
    std::size_t weights;    ///< of each column's taps, float; once for each sample where `repeatsWeights`
    std::size_t sourceRow;  ///< one row of floats with `kTapMargin` pixels on both sides; for each band
    std::size_t rows;       ///< as many rows of floats as there are taps, `rowBytes` apart; for each band
    std::size_t rowBytes;
    std::size_t bandBytes;  ///< from one band's rows to the next one's
    std::size_t total;
};

/// The weights of two taps, four times each, are one vector: a pixel's eight samples are weighted at once.
constexpr bool repeatsWeights(std::size_t channels, std::size_t taps) {
    return channels == 4 && taps == 2;
}

ResizeScratch resizeScratch(ImgSize srcSize, ImgSize dstSize, std::int32_t channels, std::int32_t interpolation,
                            const MemoryAllocator* threads) {
    const auto taps = static_cast<std::size_t>(resampleTapCount(interpolation));
    const auto columns = static_cast<std::size_t>(dstSize.width);
    const auto perPixel = static_cast<std::size_t>(channels) * sizeof(float);
    const auto padded = [](std::size_t bytes) { return (bytes + kRowSlack + 31) / 32 * 32; };
    ResizeScratch parts{};
    parts.weights = padded(columns * sizeof(std::int32_t));
    parts.total = parts.weights;
    if (interpolation != kImgNearest) {
        const std::size_t repeats = repeatsWeights(static_cast<std::size_t>(channels), taps) ? 4 : 1;
        parts.sourceRow = parts.weights + taps * repeats * padded(columns * sizeof(float));
        parts.rows = parts.sourceRow + padded((static_cast<std::size_t>(srcSize.width) + 2 * kTapMargin) * perPixel);
        parts.rowBytes = padded(columns * perPixel);
        parts.bandBytes = parts.rows + taps * parts.rowBytes - parts.sourceRow;
        const auto bands = static_cast<std::size_t>(bandsForThreads(threads, dstSize).count());
        parts.total = parts.sourceRow + bands * parts.bandBytes;
    }
    return parts;
}

struct FourFloats {
    float samples[4];
};
template <class T, std::size_t kChannels>
struct PixelOf;
template <>
struct PixelOf<std::uint8_t, 1> {
    using Type = std::uint8_t;
};
template <>
struct PixelOf<std::uint8_t, 4> {
    using Type = std::uint32_t;
};
template <>
struct PixelOf<float, 1> {
    using Type = float;
};
template <>
struct PixelOf<float, 4> {
    using Type = FourFloats;
};

}  // namespace
}  // namespace lumiset
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/resize.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

template <class T, std::size_t kChannels>
void resizeNearest(const ResizeJob<T>& job) {
    using Pixel = typename PixelOf<T, kChannels>::Type;
    auto* columns = reinterpret_cast<std::int32_t*>(job.scratch);
    const auto width = static_cast<std::size_t>(job.dstSize.width);
    for (std::int32_t x = 0; x < job.dstSize.width; ++x) {
        columns[x] = resampleTaps((x - job.map.xShift) / job.map.xFactor, job.srcSize.width, kImgNearest).start;
    }
    inBands(job.threads, job.dstSize, [&](std::int32_t first, std::int32_t rows) {
        std::int32_t rowAbove = -1;
        for (std::int32_t y = first; y < first + rows; ++y) {
            const std::int32_t row =
                resampleTaps((y - job.map.yShift) / job.map.yFactor, job.srcSize.height, kImgNearest).start;
            auto* out = reinterpret_cast<std::uint8_t*>(job.dst.row(y));
            if (row == rowAbove) {
                std::memcpy(out, job.dst.row(y - 1), width * sizeof(Pixel));
                continue;
            }
            rowAbove = row;
            const auto* in = reinterpret_cast<const std::uint8_t*>(job.src.row(row));
            for (std::size_t x = 0; x < width; ++x) {
                Pixel pixel;
                std::memcpy(&pixel, in + static_cast<std::size_t>(columns[x]) * sizeof(Pixel), sizeof pixel);
                std::memcpy(out + x * sizeof(Pixel), &pixel, sizeof pixel);
            }
        }
        return true;
    });
}

/// The source row as floats, its edge pixels repeated `kTapMargin` times on both sides. Returns its first pixel.
template <class T, std::size_t kChannels>
const float* spreadRow(const T* in, std::size_t width, float* row) {
    float* first = row + kTapMargin * kChannels;
    const std::size_t samples = width * kChannels;
    for (std::size_t i = 0; i < samples; ++i) {
        first[i] = static_cast<float>(in[i]);
    }
    for (std::size_t i = 0; i < kTapMargin * kChannels; ++i) {
        row[i] = first[i % kChannels];
        first[samples + i] = first[samples - kChannels + i % kChannels];
    }
    return first;
}

#if HWY_MAX_BYTES >= 32
using TwoPixels = hn::FixedTag<float, 8>;

/// From the weighted samples of each of two pixels' taps their sums.
HWY_INLINE hn::Vec<TwoPixels> sumOfTaps(hn::Vec<TwoPixels> first, hn::Vec<TwoPixels> second) {
    const TwoPixels d;
    return hn::Add(hn::ConcatLowerLower(d, second, first), hn::ConcatUpperUpper(d, second, first));
}
#endif

/// One row along x. Four channels: weights[x][tap], or as `repeatsWeights` tells; one channel: weights[tap][x],
/// `tapStride` floats apart.
template <std::size_t kChannels, std::size_t kTaps>
void filterRow(const float* HWY_RESTRICT first, const std::int32_t* HWY_RESTRICT starts,
               const float* HWY_RESTRICT weights, std::size_t tapStride, float* HWY_RESTRICT out, std::size_t width) {
    if constexpr (kChannels == 4) {
        const hn::FixedTag<float, 4> d;
        constexpr std::size_t kRepeats = repeatsWeights(kChannels, kTaps) ? 4 : 1;
        const auto pixelAt = [&](std::size_t x) { return first + static_cast<std::ptrdiff_t>(starts[x]) * 4; };
        std::size_t x = 0;
#if HWY_MAX_BYTES >= 32
        if constexpr (kRepeats == 4) {
            const TwoPixels d8;
            const auto weighted = [&](std::size_t of) HWY_ATTR {
                return hn::Mul(hn::LoadU(d8, pixelAt(of)), hn::LoadU(d8, weights + 8 * of));
            };
            for (; x + 1 < width; x += 2) {
                hn::StoreU(sumOfTaps(weighted(x), weighted(x + 1)), d8, out + 4 * x);
            }
        }
#endif
        for (; x < width; ++x) {
            const float* pixel = pixelAt(x);
            const float* w = weights + x * kTaps * kRepeats;
            auto sum = hn::Mul(hn::LoadU(d, pixel), hn::Set(d, w[0]));
            for (std::size_t k = 1; k < kTaps; ++k) {
                sum = hn::Add(sum, hn::Mul(hn::LoadU(d, pixel + 4 * k), hn::Set(d, w[k * kRepeats])));
            }
            hn::StoreU(sum, d, out + 4 * x);
        }
    } else {
        const hn::ScalableTag<float> d;
        const hn::RebindToSigned<decltype(d)> di;
        for (std::size_t x = 0; x < width; x += hn::Lanes(d)) {
            const auto start = hn::LoadU(di, starts + x);
            auto sum = hn::Mul(hn::GatherIndex(d, first, start), hn::LoadU(d, weights + x));
            for (std::size_t k = 1; k < kTaps; ++k) {
                const auto samples = hn::GatherIndex(d, first + k, start);
                sum = hn::Add(sum, hn::Mul(samples, hn::LoadU(d, weights + k * tapStride + x)));
            }
            hn::StoreU(sum, d, out + x);
        }
    }
}

/// One row of pixels along x, straight from the source: better than to spread all of a row of which less is left. Next
/// to its ends the edge pixel counts.
template <class T, std::size_t kTaps>
void filterPixels(const T* row, std::int32_t rowWidth, const std::int32_t* starts, const float* weights, float* out,
                  std::size_t width) {
    const hn::FixedTag<float, 4> d;
    const hn::Rebind<T, decltype(d)> dSample;
    const auto load = [&](std::int32_t pixel) HWY_ATTR {
        const T* at = row + std::ptrdiff_t{4} * pixel;
        if constexpr (sizeof(T) == 1) {
            return hn::ConvertTo(d, hn::PromoteTo(hn::RebindToSigned<decltype(d)>(), hn::LoadU(dSample, at)));
        } else {
            return hn::LoadU(dSample, at);
        }
    };
    constexpr std::size_t kRepeats = repeatsWeights(4, kTaps) ? 4 : 1;
    const auto liesInside = [&](std::size_t x) {
        return starts[x] >= 0 && starts[x] + static_cast<std::int32_t>(kTaps) <= rowWidth;
    };
    std::size_t firstInside = 0;
    std::size_t endInside = width;  // starts never fall along the row
    while (firstInside < endInside && !liesInside(firstInside)) {
        ++firstInside;
    }
    while (endInside > firstInside && !liesInside(endInside - 1)) {
        --endInside;
    }
    std::size_t x = 0;
    const auto pixelsTo = [&](std::size_t end, const auto& place) HWY_ATTR {
        for (; x < end; ++x) {
            const float* w = weights + x * kTaps * kRepeats;
            auto sum = hn::Zero(d);
            for (std::size_t k = 0; k < kTaps; ++k) {
                const std::int32_t pixel = place(starts[x] + static_cast<std::int32_t>(k));
                const auto product = hn::Mul(load(pixel), hn::Set(d, w[k * kRepeats]));
                sum = k == 0 ? product : hn::Add(sum, product);
            }
            hn::StoreU(sum, d, out + 4 * x);
        }
    };
    const auto nearest = [&](std::int32_t pixel) { return std::clamp(pixel, 0, rowWidth - 1); };
    pixelsTo(firstInside, nearest);
#if HWY_MAX_BYTES >= 32
    if constexpr (kTaps == 2) {
        const TwoPixels d8;
        const auto weighted = [&](std::size_t of) HWY_ATTR {
            const hn::Rebind<T, decltype(d8)> dSamples;
            const auto samples = hn::LoadU(dSamples, row + std::ptrdiff_t{4} * starts[of]);
            const auto pair = hn::LoadU(d8, weights + 8 * of);
            if constexpr (sizeof(T) == 1) {
                const auto whole = hn::PromoteTo(hn::RebindToSigned<decltype(d8)>(), samples);
                return hn::Mul(hn::ConvertTo(d8, whole), pair);
            } else {
                return hn::Mul(samples, pair);
            }
        };
        for (; x + 1 < endInside; x += 2) {
            fetchAhead(row + std::ptrdiff_t{4} * starts[x], 8);
            hn::StoreU(sumOfTaps(weighted(x), weighted(x + 1)), d8, out + 4 * x);
        }
    }
#endif
    pixelsTo(endInside, [](std::int32_t pixel) { return pixel; });
    pixelsTo(width, nearest);
}

/// The weighted sum of rows, to one row of the destination.
template <class T, std::size_t kTaps>
void sumRows(const float* const* rows, const float* weights, T* HWY_RESTRICT out, std::size_t samples) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> di;
    const hn::Rebind<T, decltype(d)> dOut;
    const auto sumAt = [&](std::size_t i) HWY_ATTR {
        auto sum = hn::Mul(hn::LoadU(d, rows[0] + i), hn::Set(d, weights[0]));
        for (std::size_t k = 1; k < kTaps; ++k) {
            sum = hn::Add(sum, hn::Mul(hn::LoadU(d, rows[k] + i), hn::Set(d, weights[k])));
        }
        if constexpr (sizeof(T) == 1) {
            return hn::DemoteTo(dOut, hn::ConvertTo(di, hn::Add(sum, hn::Set(d, 0.5F))));
        } else {
            return sum;
        }
    };
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= samples; i += hn::Lanes(d)) {
        fetchAhead(out + i, hn::Lanes(d));
        hn::StoreU(sumAt(i), dOut, out + i);
    }
    if (i < samples) {
        HWY_ALIGN T last[HWY_MAX_BYTES / sizeof(float)];
        hn::StoreU(sumAt(i), dOut, last);
        std::memcpy(out + i, last, (samples - i) * sizeof(T));
    }
}

/// Rows from `firstRow` on; each band keeps its own filtered source rows.
template <class T, std::size_t kChannels, std::size_t kTaps>
void resizeBand(const ResizeJob<T>& job, const ResizeScratch& parts, std::uint8_t* bandScratch, std::int32_t firstRow,
                std::int32_t rowCount) {
    const auto* starts = reinterpret_cast<const std::int32_t*>(job.scratch + parts.starts);
    const auto* weights = reinterpret_cast<const float*>(job.scratch + parts.weights);
    const std::size_t tapStride = (parts.sourceRow - parts.weights) / sizeof(float) / kTaps;
    const auto width = static_cast<std::size_t>(job.dstSize.width);
    auto* sourceRow = reinterpret_cast<float*>(bandScratch);
    std::uint8_t* keptRows = bandScratch + (parts.rows - parts.sourceRow);
    std::int32_t held[kTaps];  // source row in each of the kept rows
    std::fill_n(held, kTaps, -1);
    for (std::int32_t y = firstRow; y < firstRow + rowCount; ++y) {
        const ResampleTaps taps =
            resampleTaps((y - job.map.yShift) / job.map.yFactor, job.srcSize.height, job.map.interpolation);
        const float* rows[kTaps];
        for (std::size_t k = 0; k < kTaps; ++k) {
            const std::int32_t row = std::clamp(taps.start + static_cast<std::int32_t>(k), 0, job.srcSize.height - 1);
            const std::size_t slot = static_cast<std::size_t>(row) % kTaps;
            auto* kept = reinterpret_cast<float*>(keptRows + slot * parts.rowBytes);
            if (held[slot] != row) {
                held[slot] = row;
                if (kChannels == 4 && job.srcSize.width > job.dstSize.width) {
                    filterPixels<T, kTaps>(job.src.row(row), job.srcSize.width, starts, weights, kept, width);
                } else {
                    const float* first = spreadRow<T, kChannels>(
                        job.src.row(row), static_cast<std::size_t>(job.srcSize.width), sourceRow);
                    filterRow<kChannels, kTaps>(first, starts, weights, tapStride, kept, width);
                }
            }
            rows[k] = kept;
        }
        sumRows<T, kTaps>(rows, taps.weights, job.dst.row(y), width * kChannels);
    }
}

template <class T, std::size_t kChannels, std::size_t kTaps>
void resizeFiltered(const ResizeJob<T>& job) {
    const ResizeScratch parts = resizeScratch(job.srcSize, job.dstSize, kChannels, job.map.interpolation, job.threads);
    auto* starts = reinterpret_cast<std::int32_t*>(job.scratch + parts.starts);
    auto* weights = reinterpret_cast<float*>(job.scratch + parts.weights);
    const auto width = static_cast<std::size_t>(job.dstSize.width);
    const std::size_t tapStride = (parts.sourceRow - parts.weights) / sizeof(float) / kTaps;
    std::memset(job.scratch, 0, parts.sourceRow);  // vectors at the end of a row read past the last column
    for (std::size_t x = 0; x < width; ++x) {
        const double s = (static_cast<double>(x) - job.map.xShift) / job.map.xFactor;
        const ResampleTaps taps = resampleTaps(s, job.srcSize.width, job.map.interpolation);
        starts[x] = taps.start;
        for (std::size_t k = 0; k < kTaps; ++k) {
            if constexpr (repeatsWeights(kChannels, kTaps)) {
                std::fill_n(weights + 8 * x + 4 * k, 4, taps.weights[k]);
            } else {
                weights[kChannels == 4 ? x * kTaps + k : k * tapStride + x] = taps.weights[k];
            }
        }
    }
    const Bands bands = bandsForThreads(job.threads, job.dstSize);
    runTasks(job.threads, bands.count(), [&](std::int32_t band) {
        std::uint8_t* bandScratch = job.scratch + parts.sourceRow + static_cast<std::size_t>(band) * parts.bandBytes;
        resizeBand<T, kChannels, kTaps>(job, parts, bandScratch, bands.first(band), bands.rowsOf(band));
    });
}

template <class T, std::size_t kChannels>
void resizeAny(const ResizeJob<T>& job) {
    switch (job.map.interpolation) {
        case kImgNearest:
            return resizeNearest<T, kChannels>(job);
        case kImgLinear:
            return resizeFiltered<T, kChannels, 2>(job);
        case kImgCubic:
            return resizeFiltered<T, kChannels, 4>(job);
        default:
            return resizeFiltered<T, kChannels, 6>(job);
    }
}

}  // namespace

void resizeBytes(const ResizeJob<std::uint8_t>& job, std::int32_t channels) {
    channels == 4 ? resizeAny<std::uint8_t, 4>(job) : resizeAny<std::uint8_t, 1>(job);
}
void resizeFloats(const ResizeJob<float>& job, std::int32_t channels) {
    channels == 4 ? resizeAny<float, 4>(job) : resizeAny<float, 1>(job);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

HWY_EXPORT(resizeBytes);
HWY_EXPORT(resizeFloats);

template <class T>
ImgStatus checkResize(const ResizeJob<T>& job, std::int32_t channels) {
    const auto bytes = static_cast<std::int32_t>(sizeof(T)) * channels;
    if (const ImgStatus status =
            checkPlanes(job.srcSize, {{job.src.data, job.src.step, bytes}, arrayArgument(job.dst.data)});
        status != kImgOk) {
        return status;
    }
    if (const ImgStatus status = checkPlanes(job.dstSize, {{job.dst.data, job.dst.step, bytes}}); status != kImgOk) {
        return status;
    }
    const ImgResizeMap& map = job.map;
    const bool usable = map.xFactor > 0 && map.yFactor > 0 && std::isfinite(map.xFactor) &&
                        std::isfinite(map.yFactor) && std::isfinite(map.xShift) && std::isfinite(map.yShift);
    return usable && resampleTapCount(map.interpolation) != 0 ? kImgOk : kImgBadRange;
}

}  // namespace

ImgStatus ImgResizeBuffer(ImgSize srcSize, std::int32_t channels, std::int32_t interpolation, std::size_t* bytes,
                          ImgSize dstSize, const MemoryAllocator* threads) noexcept {
    if (bytes == nullptr) {
        return kImgNullPointer;
    }
    if (srcSize.width < 1 || srcSize.height < 1 || dstSize.width < 1 || dstSize.height < 1) {
        return kImgBadSize;
    }
    if ((channels != 1 && channels != 4) || resampleTapCount(interpolation) == 0) {
        return kImgBadRange;
    }
    // At most 6 rows and tables of 20 bytes a pixel: one comparison covers every sum above.
    const std::int64_t pixels = std::int64_t{std::max(srcSize.width, dstSize.width)} + 64;
    if (pixels > static_cast<std::int64_t>(std::numeric_limits<std::ptrdiff_t>::max() / 256)) {
        return kImgNoMemory;
    }
    *bytes = resizeScratch(srcSize, dstSize, channels, interpolation, threads).total;
    return kImgOk;
}

template <class T>
ImgStatus ImgResize<T>::operator()(const T* src, std::int32_t srcStep, ImgSize srcSize, T* dst, std::int32_t dstStep,
                                   const ImgResizeMap& map, void* scratch, ImgSize dstSize,
                                   const MemoryAllocator* threads) const noexcept {
    const ResizeJob<T> job{{src, srcStep}, srcSize, {dst, dstStep}, map, static_cast<std::uint8_t*>(scratch),
                           dstSize,        threads};
    const ImgStatus status = scratch == nullptr ? kImgNullPointer : checkResize(job, channels);
    if (status != kImgOk) {
        return status;
    }
    if constexpr (sizeof(T) == 1) {
        HWY_DYNAMIC_DISPATCH(resizeBytes)(job, channels);
    } else {
        HWY_DYNAMIC_DISPATCH(resizeFloats)(job, channels);
    }
    return kImgOk;
}

template struct ImgResize<std::uint8_t>;
template struct ImgResize<float>;

namespace {

template <class T>
ImgStatus resizeSimple(const T* src, std::int32_t srcStep, ImgSize srcSize, T* dst, std::int32_t dstStep,
                       const ImgResizeMap& map, ImgSize dstSize) {
    const ResizeJob<T> job{{src, srcStep}, srcSize, {dst, dstStep}, map, nullptr, dstSize, nullptr};
    if (const ImgStatus status = checkResize(job, 4); status != kImgOk) {
        return status;
    }
    std::size_t bytes = 0;
    if (const ImgStatus status = ImgResizeBuffer(srcSize, 4, map.interpolation, &bytes, dstSize, nullptr);
        status != kImgOk) {
        return status;
    }
    void* scratch = ImgAlloc(bytes);
    if (scratch == nullptr) {
        return kImgNoMemory;
    }
    const ImgStatus status = ImgResize<T>{4}(src, srcStep, srcSize, dst, dstStep, map, scratch, dstSize);
    ImgFree(scratch);
    return status;
}

}  // namespace

ImgStatus ImgResizeSimple8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                             std::int32_t dstStep, double xFactor, double yFactor, std::int32_t interpolation,
                             ImgSize dstSize) noexcept {
    const ImgResizeMap map{xFactor, yFactor, 0, 0, interpolation};
    return resizeSimple(src, srcStep, srcSize, dst, dstStep, map, dstSize);
}

ImgStatus ImgResizeSimpleFC4(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst, std::int32_t dstStep,
                             double xFactor, double yFactor, std::int32_t interpolation, ImgSize dstSize) noexcept {
    const ImgResizeMap map{xFactor, yFactor, 0, 0, interpolation};
    return resizeSimple(src, srcStep, srcSize, dst, dstStep, map, dstSize);
}

}  // namespace lumiset
#endif
