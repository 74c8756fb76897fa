// A row is mixed from two rows of the region, resized, and stretched, in buffers that stay in the nearest cache.
// The two last steps are alike: each pixel lies between two neighbours of the row before. Whole vectors of pixels find
// theirs within two vectors of that row, since no step packs as much as two pixels into one.

#include "effects/progressive_stretch/stretch_rows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "effects/progressive_stretch/stretch_rows.cpp"
#include "hwy/foreach_target.h"

#include "frame/bands.h"
#include "frame/primitives/pixel_math-inl.h"
#include "frame/scratch_block.h"

#ifndef LUMISET_STRETCH_ROWS
#define LUMISET_STRETCH_ROWS
namespace lumiset {

/// Buffers, each with room for a row of the frame; the first two for each band.
struct StretchScratch {
    Bands bands;
    std::int64_t rowBytes;
    std::uint8_t* mixed;
    std::uint8_t* resized;
    std::int32_t* indices[2];
    std::uint32_t* weights[2];
    std::int32_t* starts[2];
};

}  // namespace lumiset
#endif

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

using VecI = hn::Vec<TagI32>;
using VecI16 = hn::Vec<hn::ScalableTag<std::int16_t>>;

/// Weights in 32768ths; the sum is rounded to nearest.
struct FineWeights {
    static std::uint32_t weight(float along) {
        return static_cast<std::uint32_t>(std::min(along * 32768.0F + 0.5F, 32767.0F));
    }
    static std::int32_t mix(std::int32_t a, std::int32_t b, std::uint32_t weight) {
        return a + (((b - a) * static_cast<std::int32_t>(weight) + 16384) >> 15);
    }
    static HWY_INLINE Vec16 mix(Vec16 a, Vec16 b, Vec16 weight) {
        const hn::ScalableTag<std::int16_t> d;
        const VecI16 apart = hn::BitCast(d, hn::Sub(b, a));
        return hn::Add(a, hn::BitCast(Tag16(), hn::MulFixedPoint15(apart, hn::BitCast(d, weight))));
    }
};

/// Weights in 255ths, cut off; the sum is rounded to nearest.
struct ByteWeights {
    static std::uint32_t weight(float along) { return static_cast<std::uint32_t>(along * 255.0F); }
    static std::int32_t mix(std::int32_t a, std::int32_t b, std::uint32_t weight) {
        const auto second = static_cast<std::int32_t>(weight);
        return (a * (255 - second) + b * second + 127) / 255;
    }
    static HWY_INLINE Vec16 mix(Vec16 a, Vec16 b, Vec16 weight) {
        const Vec16 other = hn::Sub(hn::Set(Tag16(), 255), weight);
        const Vec16 sum = hn::Add(hn::Add(hn::Mul(a, other), hn::Mul(b, weight)), hn::Set(Tag16(), 128));
        return hn::ShiftRight<8>(hn::Add(sum, hn::ShiftRight<8>(sum)));  // the division by 255, exactly
    }
};

template <class Weights>
HWY_INLINE Vec8 mixPixels(Vec8 a, Vec8 b, Vec16 weight) {
    const Halves first = split(a);
    const Halves second = split(b);
    return join({Weights::mix(first.even, second.even, weight), Weights::mix(first.odd, second.odd, weight)});
}

/// Two-tap interpolation of a row of 8-bit pixels, prepared for vectors.
template <class Weights>
class ByteTaps {
public:
    ByteTaps(std::span<const StretchTap> taps, std::int32_t rowWidth, std::int32_t* indices, std::uint32_t* weights,
             std::int32_t* starts)
        : m_width(static_cast<std::int32_t>(taps.size())),
          m_rowWidth(rowWidth),
          m_indices(indices),
          m_weights(weights),
          m_starts(starts),
          m_inVectors(m_width >= lanes() && m_rowWidth >= 2 * lanes()) {
        for (std::int32_t x = 0; x < m_width; ++x) {
            const StretchTap& tap = taps[static_cast<std::size_t>(x)];
            const std::uint32_t weight = Weights::weight(tap.along);
            m_indices[x] = tap.first;
            m_weights[x] = weight | weight << 16U;
        }
        for (std::int32_t i = 0, x = 0; m_inVectors && x < m_width; ++i, x += lanes()) {
            m_starts[i] = std::min(m_indices[std::min(x, m_width - lanes())], m_rowWidth - 2 * lanes());
        }
    }

    void run(const std::uint8_t* from, std::uint8_t* to) const {
        if (!m_inVectors) {
            runPlainly(from, to);
            return;
        }
        const TagI32 d;
        const auto n = static_cast<std::size_t>(lanes());
        for (std::int32_t i = 0, next = 0; next < m_width; ++i, next += lanes()) {
            const std::int32_t x = std::min(next, m_width - lanes());
            const std::uint8_t* at = from + std::ptrdiff_t{4} * m_starts[i];
            const Vec32 low = hn::BitCast(Tag32(), hn::LoadU(Tag8(), at));
            const Vec32 high = hn::BitCast(Tag32(), hn::LoadU(Tag8(), at + 4 * n));
            const auto first = hn::Sub(hn::LoadU(d, m_indices + x), hn::Set(d, m_starts[i]));
            const auto pixelsAt = [&](VecI index) HWY_ATTR { return hn::BitCast(Tag8(), pick(low, high, index)); };
            const Vec8 mixed = mixPixels<Weights>(pixelsAt(first), pixelsAt(hn::Add(first, hn::Set(d, 1))),
                                                  hn::BitCast(Tag16(), hn::LoadU(Tag32(), m_weights + x)));
            hn::StoreU(mixed, Tag8(), to + std::ptrdiff_t{4} * x);
        }
    }

private:
    static HWY_INLINE std::int32_t lanes() { return static_cast<std::int32_t>(hn::Lanes(Tag32())); }

    /// Pixels of two vectors that follow each other.
    static HWY_INLINE Vec32 pick(Vec32 low, Vec32 high, VecI index) {
        const TagI32 d;
        const auto within = hn::IndicesFromVec(Tag32(), hn::And(index, hn::Set(d, lanes() - 1)));
        const auto inLow = hn::RebindMask(Tag32(), hn::Lt(index, hn::Set(d, lanes())));
        return hn::IfThenElse(inLow, hn::TableLookupLanes(low, within), hn::TableLookupLanes(high, within));
    }

    void runPlainly(const std::uint8_t* from, std::uint8_t* to) const {
        for (std::int32_t x = 0; x < m_width; ++x, to += 4) {
            const std::uint8_t* a = from + std::ptrdiff_t{4} * m_indices[x];
            const std::uint8_t* b = m_indices[x] + 1 < m_rowWidth ? a + 4 : a;
            for (int i = 0; i < 4; ++i) {
                to[i] = static_cast<std::uint8_t>(Weights::mix(a[i], b[i], m_weights[x] & 0xFFFFU));
            }
        }
    }

    std::int32_t m_width;
    std::int32_t m_rowWidth;
    std::int32_t* m_indices;
    std::uint32_t* m_weights;
    std::int32_t* m_starts;  ///< first pixel for each vector of the result
    bool m_inVectors;
};

/// Two whole rows of pixels.
void mixRows(const std::uint8_t* a, const std::uint8_t* b, float along, std::int32_t pixels, std::uint8_t* to) {
    const std::uint32_t weight = FineWeights::weight(along);
    const Vec16 weights = hn::Set(Tag16(), static_cast<std::uint16_t>(weight));
    const std::size_t bytes = static_cast<std::size_t>(pixels) * 4;
    std::size_t i = 0;
    for (; i + hn::Lanes(Tag8()) <= bytes; i += hn::Lanes(Tag8())) {
        const Vec8 mixed = mixPixels<FineWeights>(hn::LoadU(Tag8(), a + i), hn::LoadU(Tag8(), b + i), weights);
        hn::StoreU(mixed, Tag8(), to + i);
    }
    for (; i < bytes; ++i) {
        to[i] = static_cast<std::uint8_t>(FineWeights::mix(a[i], b[i], weight));
    }
}
void mixRows(const float* a, const float* b, float along, std::int32_t pixels, float* to) {
    for (std::ptrdiff_t i = 0; i < std::ptrdiff_t{4} * pixels; ++i) {
        to[i] = a[i] * (1.0F - along) + b[i] * along;
    }
}

/// Two-tap interpolation of a row of float pixels.
class FloatTaps {
public:
    FloatTaps(std::span<const StretchTap> taps, std::int32_t rowWidth) : m_taps(taps), m_rowWidth(rowWidth) {}

    void run(const float* from, float* to) const {
        const hn::FixedTag<float, 4> d;
        for (const StretchTap& tap : m_taps) {
            const float* a = from + std::ptrdiff_t{4} * tap.first;
            const float* b = tap.first + 1 < m_rowWidth ? a + 4 : a;
            const auto mixed = hn::Add(hn::Mul(hn::LoadU(d, a), hn::Set(d, 1.0F - tap.along)),
                                       hn::Mul(hn::LoadU(d, b), hn::Set(d, tap.along)));
            hn::StoreU(mixed, d, to);
            to += 4;
        }
    }

private:
    std::span<const StretchTap> m_taps;
    std::int32_t m_rowWidth;
};

template <class Sample, class Resize, class Stretch>
void runRows(const StretchJob& job, const Resize& resize, const Stretch& stretch, const StretchScratch& scratch) {
    const StretchRegion& region = job.region;
    const auto sourceRow = [&](std::int32_t row) {
        const std::int32_t y = region.top + std::min(row, region.height - 1);
        return job.source.row<const Sample>(y) + std::ptrdiff_t{4} * region.left;
    };
    runTasks(job.destination.Resources(), scratch.bands.count(), [&](std::int32_t band) {
        auto* mixed = reinterpret_cast<Sample*>(scratch.mixed + band * scratch.rowBytes);
        auto* resized = reinterpret_cast<Sample*>(scratch.resized + band * scratch.rowBytes);
        const std::int32_t first = scratch.bands.first(band);
        for (std::int32_t y = first; y < first + scratch.bands.rowsOf(band); ++y) {
            const StretchTap tap = resizeTap(y, job.destination.Height(), region.height);
            const Sample* row = sourceRow(tap.first);
            if (tap.along > 0.0F) {
                mixRows(row, sourceRow(tap.first + 1), tap.along, region.width, mixed);
                row = mixed;
            }
            resize.run(row, resized);
            stretch.run(resized, job.destination.row<Sample>(y));
        }
    });
}

}  // namespace

void runStretch(const StretchJob& job, const StretchScratch& scratch) {
    const std::int32_t width = job.destination.Width();
    if (isFloatFormat(job.source.Format())) {
        runRows<float>(job, FloatTaps(job.resized, job.region.width), FloatTaps(job.stretched, width), scratch);
    } else {
        const ByteTaps<FineWeights> resize(job.resized, job.region.width, scratch.indices[0], scratch.weights[0],
                                           scratch.starts[0]);
        const ByteTaps<ByteWeights> stretch(job.stretched, width, scratch.indices[1], scratch.weights[1],
                                            scratch.starts[1]);
        runRows<std::uint8_t>(job, resize, stretch, scratch);
    }
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(runStretch);

StretchTap resizeTap(std::int32_t at, std::int32_t size, std::int32_t sourceSize) {
    const double place = static_cast<double>(at) * sourceSize / size;
    const auto first = std::min(static_cast<std::int32_t>(place), std::max(sourceSize - 2, 0));
    return {first, static_cast<float>(std::min(place - first, sourceSize > 1 ? 1.0 : 0.0))};
}

bool stretchRows(const StretchJob& job, MemoryAllocator& allocator) noexcept {
    const std::int64_t width = job.destination.Width();
    const std::int64_t rowBytes = width * job.source.BytesPerPixel();
    const Bands bands =
        bandsForThreads(job.destination.Resources(), {job.destination.Width(), job.destination.Height()});
    ScratchBlock block(allocator);
    block.add<std::uint8_t>(bands.count() * rowBytes);
    block.add<std::uint8_t>(bands.count() * rowBytes);
    for (int step = 0; step < 2; ++step) {
        block.add<std::int32_t>(width);
        block.add<std::uint32_t>(width);
        block.add<std::int32_t>(width);
    }
    if (!block.allocate()) {
        return false;
    }
    StretchScratch scratch{};
    scratch.bands = bands;
    scratch.rowBytes = rowBytes;
    scratch.mixed = block.take<std::uint8_t>(bands.count() * rowBytes);
    scratch.resized = block.take<std::uint8_t>(bands.count() * rowBytes);
    for (std::size_t step = 0; step < 2; ++step) {
        scratch.indices[step] = block.take<std::int32_t>(width);
        scratch.weights[step] = block.take<std::uint32_t>(width);
        scratch.starts[step] = block.take<std::int32_t>(width);
    }
    HWY_DYNAMIC_DISPATCH(runStretch)(job, scratch);
    return true;
}

}  // namespace lumiset
#endif
