// Noise from 32 generators side by side. Their values come in a fixed order whatever the length of the processor's
// vectors, and every step is either exact in whole numbers or one correctly rounded operation: one seed gives one
// picture everywhere.

#include "frame/primitives/noise.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <numeric>

#include "frame/primitives/check.h"

#ifndef LUMISET_NOISE_COMMON
#define LUMISET_NOISE_COMMON
namespace lumiset {
namespace {

constexpr std::size_t kLanes = NoiseLanes::kCount;
constexpr std::size_t kBlock = 1024;        ///< values made at a time
constexpr std::size_t kMaxVector = 16;      ///< 32-bit values in the longest vectors
constexpr std::size_t kPairs = kBlock / 2;  ///< points drawn for a block of normally distributed values

/// For each set of four lanes, the bytes that bring its lanes to the front.
struct Gathering {
    constexpr Gathering() {
        for (std::size_t set = 0; set < 16; ++set) {
            std::size_t at = 0;
            for (std::size_t lane = 0; lane < 4; ++lane) {
                for (std::size_t byte = 0; (set >> lane & 1U) != 0 && byte < 4; ++byte) {
                    bytes[set][at++] = static_cast<std::uint8_t>(4 * lane + byte);
                }
            }
        }
    }
    alignas(16) std::uint8_t bytes[16][16] = {};
};
constexpr Gathering kGathering;

struct UniformRange {
    std::int32_t low;
    std::int32_t high;
};
struct NormalShape {
    float mean;
    float deviation;
};

std::uint64_t samplesOf(ImgSize size) {
    return static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height);
}

}  // namespace
}  // namespace lumiset
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/noise.cpp"
#include "hwy/foreach_target.h"

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using DU = hn::CappedTag<std::uint32_t, kMaxVector>;
using DI = hn::RebindToSigned<DU>;
using DF = hn::RebindToFloat<DU>;
using VU = hn::Vec<DU>;
using VF = hn::Vec<DF>;

constexpr std::size_t kVector = hn::MaxLanes(DU());
constexpr std::size_t kGroups = kLanes / kVector;

/// The generators' state in registers.
class LaneVectors {
public:
    explicit LaneVectors(const NoiseLanes& lanes) {
        for (std::size_t g = 0; g < kGroups; ++g) {
            m_congruential[g] = hn::Load(DU(), lanes.congruential + g * kVector);
            m_newest[g] = hn::Load(DU(), lanes.newest + g * kVector);
            m_older[g] = hn::Load(DU(), lanes.older + g * kVector);
            m_borrow[g] = hn::Load(DU(), lanes.borrow + g * kVector);
        }
    }
    void store(NoiseLanes& lanes) const {
        for (std::size_t g = 0; g < kGroups; ++g) {
            hn::Store(m_congruential[g], DU(), lanes.congruential + g * kVector);
            hn::Store(m_newest[g], DU(), lanes.newest + g * kVector);
            hn::Store(m_older[g], DU(), lanes.older + g * kVector);
            hn::Store(m_borrow[g], DU(), lanes.borrow + g * kVector);
        }
    }

    /// The next 32 random bits of the generators of group `g`.
    HWY_INLINE VU next(std::size_t g) {
        const DU d;
        const VU one = hn::Set(d, 1U);
        m_congruential[g] = hn::Sub(hn::Mul(m_congruential[g], hn::Set(d, NoiseLanes::kMultiplier)),
                                    hn::Set(d, NoiseLanes::kDecrement));
        const VU difference = hn::Sub(m_older[g], m_newest[g]);
        const VU value = hn::Sub(difference, m_borrow[g]);
        const auto wrapped = hn::Or(hn::Lt(m_older[g], m_newest[g]), hn::Lt(difference, m_borrow[g]));
        m_borrow[g] = hn::IfThenElseZero(wrapped, one);
        m_older[g] = m_newest[g];
        m_newest[g] = value;
        return hn::Add(m_congruential[g], value);
    }

private:
    VU m_congruential[kGroups];
    VU m_newest[kGroups];
    VU m_older[kGroups];
    VU m_borrow[kGroups];
};

/// Blocks of values spread evenly over whole numbers.
class UniformBlocks {
public:
    UniformBlocks(std::uint32_t& seed, const UniformRange& range) : m_lanes(seed), m_range(range) {}

    void fill(float* out) {
        const DF d;
        const auto count = static_cast<float>(m_range.high - m_range.low + 1);
        const VF scale = hn::Set(d, count * 0x1p-24F);
        const VF low = hn::Set(d, static_cast<float>(m_range.low));
        const VF last = hn::Set(d, count - 1);
        LaneVectors lanes(m_lanes);
        for (std::size_t i = 0; i < kBlock; i += kLanes) {
            for (std::size_t g = 0; g < kGroups; ++g) {
                const VF random = hn::ConvertTo(d, hn::BitCast(DI(), hn::ShiftRight<8>(lanes.next(g))));
                const VF whole = hn::ConvertTo(d, hn::ConvertTo(DI(), hn::Mul(random, scale)));
                hn::Store(hn::Add(low, hn::Min(whole, last)), d, out + i + g * kVector);
            }
        }
        lanes.store(m_lanes);
    }

private:
    NoiseLanes m_lanes;
    UniformRange m_range;
};

/// Natural logarithm of normal numbers above 0, to about one part in a million.
HWY_INLINE VF logarithm(VF v) {
    const DF d;
    const DI di;
    // v = 2^exponent * (1 + z), 1 + z from sqrt(1/2) to sqrt(2)
    const auto bits = hn::BitCast(di, v);
    const auto exponent = hn::ShiftRight<23>(hn::Sub(bits, hn::Set(di, 0x3F3504F3)));
    const VF z = hn::Sub(hn::BitCast(d, hn::Sub(bits, hn::ShiftLeft<23>(exponent))), hn::Set(d, 1.0F));
    // ln(1 + z) / z, interpolated at Chebyshev nodes.
    constexpr float kSeries[] = {0.205254436F, -0.249203363F, 0.333135633F, -0.500008774F, 1.00000103F};
    VF sum = hn::Add(hn::Mul(hn::Set(d, 0.116578061F), z), hn::Set(d, -0.185738401F));
    for (const float coefficient : kSeries) {
        sum = hn::Add(hn::Mul(sum, z), hn::Set(d, coefficient));
    }
    return hn::Add(hn::Mul(sum, z), hn::Mul(hn::ConvertTo(d, exponent), hn::Set(d, 0.693147181F)));
}

/// A point of the square from -1 to 1 for each lane.
struct Point {
    VF u;
    VF v;
    VF square;  ///< of the distance from the middle
};
HWY_INLINE Point drawPoint(LaneVectors& lanes, std::size_t g) {
    const DF d;
    const VF scale = hn::Set(d, 0x1p-31F);
    const VF u = hn::Mul(hn::ConvertTo(d, hn::BitCast(DI(), lanes.next(g))), scale);
    const VF v = hn::Mul(hn::ConvertTo(d, hn::BitCast(DI(), lanes.next(kGroups / 2 + g))), scale);
    return {u, v, hn::Add(hn::Mul(u, u), hn::Mul(v, v))};
}
HWY_INLINE hn::Mask<DF> isKept(const Point& point) {
    const DF d;
    return hn::And(hn::Lt(point.square, hn::Set(d, 1.0F)), hn::Gt(point.square, hn::Zero(d)));
}

/// Blocks of normally distributed values. Points (u, v) of a square are drawn; those in the unit circle are kept.
class NormalBlocks {
public:
    /// The blocks behind the first `skipped` points that are kept, fewer than a block has.
    NormalBlocks(const NoiseLanes& lanes, const NormalShape& shape, std::size_t skipped)
        : m_lanes(lanes), m_shape(shape) {
        if (skipped > 0) {
            collect();
            m_count -= skipped;
            std::memmove(m_u, m_u + skipped, m_count * sizeof(float));
            std::memmove(m_v, m_v + skipped, m_count * sizeof(float));
        }
    }

    void fill(float* out) {
        collect();
        const DF d;
        const VF mean = hn::Set(d, m_shape.mean);
        const VF deviation = hn::Set(d, m_shape.deviation);
        for (std::size_t i = 0; i < kPairs; i += kVector) {
            const VF u = hn::Load(d, m_u + i);
            const VF v = hn::Load(d, m_v + i);
            const VF s = hn::Add(hn::Mul(u, u), hn::Mul(v, v));
            const VF factor = hn::Mul(hn::Sqrt(hn::Div(hn::Mul(logarithm(s), hn::Set(d, -2.0F)), s)), deviation);
            hn::Store(hn::Add(hn::Mul(u, factor), mean), d, out + i);
            hn::Store(hn::Add(hn::Mul(v, factor), mean), d, out + kPairs + i);
        }
        // What was drawn beyond this block opens the next one.
        m_count -= kPairs;
        std::memcpy(m_u, m_u + kPairs, kSpare * sizeof(float));
        std::memcpy(m_v, m_v + kPairs, kSpare * sizeof(float));
    }

private:
    static constexpr std::size_t kSpare = 2 * kMaxVector;

    /// Draws until there are enough pairs for a block.
    void collect() {
        LaneVectors lanes(m_lanes);
        std::size_t count = m_count;
        while (count < kPairs) {
            for (std::size_t g = 0; g < kGroups / 2; ++g) {
                const Point point = drawPoint(lanes, g);
                count = keep(DF(), point.u, point.v, isKept(point), count);
            }
        }
        lanes.store(m_lanes);
        m_count = count;
    }

    /// Appends the pairs inside the circle. (GCC copies the table of Highway's Compress for the shorter vectors to the
    /// stack at every call.)
    template <class D>
    HWY_INLINE std::size_t keep(D d, hn::Vec<D> u, hn::Vec<D> v, hn::Mask<D> inside, std::size_t count) {
        if constexpr (kVector == 16) {
            hn::StoreU(hn::Compress(u, inside), d, m_u + count);
            hn::StoreU(hn::Compress(v, inside), d, m_v + count);
            return count + hn::CountTrue(d, inside);
        } else {
            std::uint8_t bits[8] = {};
            hn::StoreMaskBits(d, inside, bits);
            if constexpr (kVector == 8) {
                const hn::Half<D> dHalf;
                count = keepFour(hn::LowerHalf(u), hn::LowerHalf(v), bits[0] & 15U, count);
                return keepFour(hn::UpperHalf(dHalf, u), hn::UpperHalf(dHalf, v), bits[0] >> 4U, count);
            } else {
                return keepFour(u, v, bits[0] & 15U, count);
            }
        }
    }
    template <class V>
    HWY_INLINE std::size_t keepFour(V u, V v, std::size_t set, std::size_t count) {
        const hn::FixedTag<float, 4> d;
        const hn::FixedTag<std::uint8_t, 16> dBytes;
        const auto order = hn::Load(dBytes, kGathering.bytes[set]);
        hn::StoreU(hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(dBytes, u), order)), d, m_u + count);
        hn::StoreU(hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(dBytes, v), order)), d, m_v + count);
        return count + static_cast<std::size_t>(std::popcount(set));
    }

    NoiseLanes m_lanes;
    NormalShape m_shape;
    std::size_t m_count = 0;
    alignas(64) float m_u[kPairs + kSpare];
    alignas(64) float m_v[kPairs + kSpare];
};

/// Adds noise to whole vectors of samples.
template <class T>
HWY_INLINE void addVector(T* samples, const float* noise) {
    const DF d;
    const hn::Rebind<T, DF> dSample;
    if constexpr (sizeof(T) == 1) {
        const VF sample = hn::ConvertTo(d, hn::PromoteTo(DI(), hn::LoadU(dSample, samples)));
        const VF sum = hn::Add(hn::Add(sample, hn::LoadU(d, noise)), hn::Set(d, 0.5F));
        const VF limited = hn::Min(hn::Max(hn::Zero(d), sum), hn::Set(d, 255.0F));
        hn::StoreU(hn::DemoteTo(dSample, hn::ConvertTo(DI(), limited)), dSample, samples);
    } else {
        hn::StoreU(hn::Add(hn::LoadU(d, samples), hn::LoadU(d, noise)), d, samples);
    }
}

/// To the samples from `first` to before `end`, counted from the first row's through all rows.
template <class T, class Blocks>
void addNoise(Plane<T> plane, ImgSize size, Blocks&& blocks, std::uint64_t first, std::uint64_t end) {
    alignas(64) float noise[kBlock + kMaxVector] = {};
    std::size_t used = kBlock;
    const auto rowSamples = static_cast<std::uint64_t>(size.width);
    auto x = static_cast<std::size_t>(first % rowSamples);
    for (auto y = static_cast<std::int32_t>(first / rowSamples); first < end; ++y, x = 0) {
        T* row = plane.row(y);
        const auto width = static_cast<std::size_t>(std::min(rowSamples, x + (end - first)));
        first += width - x;
        while (x < width) {
            if (used == kBlock) {
                blocks.fill(noise);
                used = 0;
            }
            const std::size_t count = std::min(width - x, kBlock - used);
            std::size_t i = 0;
            for (; i + kVector <= count; i += kVector) {
                addVector(row + x + i, noise + used + i);
            }
            if (i < count) {
                T last[kVector] = {};
                std::memcpy(last, row + x + i, (count - i) * sizeof(T));
                addVector(last, noise + used + i);
                std::memcpy(row + x + i, last, (count - i) * sizeof(T));
            }
            x += count;
            used += count;
        }
    }
}

}  // namespace

void addUniform8(Plane<std::uint8_t> plane, const UniformRange& range, std::uint32_t* seed, ImgSize size) {
    addNoise(plane, size, UniformBlocks(*seed, range), 0, samplesOf(size));
}
void addGauss8(Plane<std::uint8_t> plane, const NormalShape& shape, const GaussStretch& stretch, ImgSize size) {
    addNoise(plane, size, NormalBlocks(stretch.start, shape, stretch.skipped), stretch.first, stretch.end);
}
void addGaussF(Plane<float> plane, const NormalShape& shape, const GaussStretch& stretch, ImgSize size) {
    addNoise(plane, size, NormalBlocks(stretch.start, shape, stretch.skipped), stretch.first, stretch.end);
}

std::uint32_t countKept(const NoiseLanes& start, std::uint32_t steps) {
    LaneVectors lanes(start);
    std::size_t count = 0;
    for (std::uint32_t i = 0; i < steps; ++i) {
        for (std::size_t g = 0; g < kGroups / 2; ++g) {
            count += hn::CountTrue(DF(), isKept(drawPoint(lanes, g)));
        }
    }
    return static_cast<std::uint32_t>(count);
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

HWY_EXPORT(addUniform8);
HWY_EXPORT(addGauss8);
HWY_EXPORT(addGaussF);
HWY_EXPORT(countKept);

constexpr std::int32_t kUniformLimit = 65536;

ImgStatus checkShape(const NormalShape& shape) {
    return std::isfinite(shape.mean) && std::isfinite(shape.deviation) && shape.deviation >= 0 ? kImgOk : kImgBadRange;
}
ImgStatus checkRange(const UniformRange& range) {
    return range.high >= range.low && range.low >= -kUniformLimit && range.high <= kUniformLimit ? kImgOk
                                                                                                 : kImgBadRange;
}

}  // namespace

ImgStatus ImgAddUniform8C1(std::uint8_t* plane, std::int32_t step, std::int32_t low, std::int32_t high,
                           std::uint32_t* seed, ImgSize size) noexcept {
    const UniformRange range{low, high};
    return runLoop(checkRange(range), HWY_DYNAMIC_DISPATCH(addUniform8), size, pixels<1>(plane, step), range, seed);
}
ImgStatus ImgAddGauss8C1(std::uint8_t* plane, std::int32_t step, float mean, float deviation, std::uint32_t* seed,
                         ImgSize size) noexcept {
    const auto loop = [](Plane<std::uint8_t> to, const NormalShape& shape, std::uint32_t* from, ImgSize of) {
        HWY_DYNAMIC_DISPATCH(addGauss8)(to, shape, {NoiseLanes(*from), 0, 0, samplesOf(of)}, of);
    };
    const NormalShape shape{mean, deviation};
    return runLoop(checkShape(shape), loop, size, pixels<1>(plane, step), shape, seed);
}
ImgStatus ImgAddGaussF(float* plane, std::int32_t step, float mean, float deviation, std::uint32_t* seed,
                       ImgSize size) noexcept {
    const auto loop = [](Plane<float> to, const NormalShape& shape, std::uint32_t* from, ImgSize of) {
        HWY_DYNAMIC_DISPATCH(addGaussF)(to, shape, {NoiseLanes(*from), 0, 0, samplesOf(of)}, of);
    };
    const NormalShape shape{mean, deviation};
    return runLoop(checkShape(shape), loop, size, pixels<1>(plane, step), shape, seed);
}

// A part is a number of steps of the generators. How many points they keep, and with that where in the plane their
// noise lies, is known when they are counted; a part adds the blocks whose first point is one of its own, and the last
// part all that are left.
GaussParts::GaussParts(std::uint32_t& seed, ImgSize size, bool cut) noexcept : m_start(seed), m_size(size) {
    constexpr std::uint64_t kSamples = 64 * 1024;  // of a part; waking a thread for fewer costs more than it saves
    const std::uint64_t samples = samplesOf(size);
    m_count = static_cast<std::int32_t>(std::clamp<std::uint64_t>(samples / kSamples, 1, cut ? m_kept.size() : 1));
    // Of 16 points a step a share of pi/4 is kept, and each gives two samples.
    m_steps = static_cast<std::uint32_t>(samples / 25 / static_cast<std::uint64_t>(m_count) + 1);
}

NoiseLanes GaussParts::startOf(std::int32_t part) const {
    NoiseLanes start = m_start;
    start.skip(static_cast<std::uint32_t>(part) * m_steps);
    return start;
}

void GaussParts::measure(std::int32_t part) noexcept {
    if (part + 1 < m_count) {
        m_kept[static_cast<std::size_t>(part)] = HWY_DYNAMIC_DISPATCH(countKept)(startOf(part), m_steps);
    }
}

GaussStretch GaussParts::stretchOf(std::int32_t part) const {
    const auto before = std::accumulate(m_kept.begin(), m_kept.begin() + part, std::uint64_t{0});
    const auto blocks = [](std::uint64_t kept) { return (kept + kPairs - 1) / kPairs; };
    const std::uint64_t first = blocks(before);
    const std::uint64_t all = samplesOf(m_size);
    const std::uint64_t end =
        part + 1 == m_count ? all : blocks(before + m_kept[static_cast<std::size_t>(part)]) * kBlock;
    return {startOf(part), static_cast<std::size_t>(first * kPairs - before), std::min(first * kBlock, all),
            std::min(end, all)};
}

ImgStatus GaussParts::add8C1(std::int32_t part, std::uint8_t* plane, std::int32_t step, float mean,
                             float deviation) const noexcept {
    const NormalShape shape{mean, deviation};
    return runLoop(checkShape(shape), HWY_DYNAMIC_DISPATCH(addGauss8), m_size, pixels<1>(plane, step), shape,
                   stretchOf(part));
}
ImgStatus GaussParts::addF(std::int32_t part, float* plane, std::int32_t step, float mean,
                           float deviation) const noexcept {
    const NormalShape shape{mean, deviation};
    return runLoop(checkShape(shape), HWY_DYNAMIC_DISPATCH(addGaussF), m_size, pixels<1>(plane, step), shape,
                   stretchOf(part));
}

}  // namespace lumiset
#endif
