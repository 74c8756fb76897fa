#include "effects/background_generator/tiles.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <type_traits>

#include "frame/bands.h"
#include "frame/frame_operations.h"
#include "frame/scratch_block.h"

namespace lumiset {
namespace {

/// Positions of the pattern closer to a pixel than this are on it.
constexpr double kOnPixel = 1e-6;

double wrapped(double value, double period) {
    const double rest = value - std::floor(value / period) * period;
    return rest >= 0.0 && rest < period ? rest : 0.0;  // rounding may reach the period; not finite is 0 too
}

/// Pixels begin..end - 1 of the window lie in one period of the pattern, the first at `local`.
struct Piece {
    std::int32_t begin;
    std::int32_t end;
    double local;
};

Piece nextPiece(const TileAxis& axis, std::int32_t begin, std::int32_t repeat) {
    const double start = static_cast<double>(repeat) * axis.period;
    const double next = std::ceil((start + axis.period - axis.first) / axis.step);
    const std::int32_t last = axis.windowLength();
    const std::int32_t end = next >= last ? last : std::max(begin, static_cast<std::int32_t>(next));
    return {begin, end, std::max(axis.first + begin * axis.step - start, 0.0)};
}

/// Calls `visit(piece)` for the pieces of one axis; ends at the first false.
template <class Visit>
bool forEachPiece(const TileAxis& axis, Visit&& visit) {
    std::int32_t begin = 0;
    for (std::int32_t repeat = 0; begin < axis.windowLength(); ++repeat) {
        const Piece piece = nextPiece(axis, begin, repeat);
        if (piece.end > begin && !visit(piece)) {
            return false;
        }
        begin = piece.end;
    }
    return true;
}

/// Shares in numbers that suit the samples: of 256 for bytes.
template <class Sample>
using WeightOf = std::conditional_t<sizeof(Sample) == 1, std::uint16_t, float>;

/// Share of the later pixel in the band.
template <class Sample>
WeightOf<Sample> bandWeight(std::int32_t at, std::int32_t band) {
    const float share = (static_cast<float>(at) + 0.5F) / static_cast<float>(band);
    if constexpr (sizeof(Sample) == 1) {
        return static_cast<std::uint16_t>(share * 256.0F + 0.5F);
    } else {
        return share;
    }
}

std::uint8_t faded(std::uint8_t from, std::uint8_t to, std::uint16_t weight) {
    const auto rest = static_cast<std::uint16_t>(256 - weight);
    return static_cast<std::uint8_t>(static_cast<std::uint16_t>(from * rest + to * weight + 128) >> 8U);
}
float faded(float from, float to, float weight) {
    return from + (to - from) * weight;
}

/// `weightAt(i)` for each sample. The rows must not overlap, so that the compiler can vectorise the loop.
template <class Sample, class WeightAt>
void fadeRow(const Sample* __restrict__ from, const Sample* __restrict__ to, Sample* __restrict__ out,
             std::size_t samples, const WeightAt& weightAt) {
    for (std::size_t i = 0; i < samples; ++i) {
        out[i] = faded(from[i], to[i], weightAt(i));
    }
}

/// The pattern with its first column and row repeated behind its last ones.
template <class Sample>
bool makePattern(const Frame& source, Frame& pattern, const TileAxis& columns, const TileAxis& rows,
                 MemoryAllocator& allocator) {
    using Weight = WeightOf<Sample>;
    const auto period = static_cast<std::size_t>(columns.period) * 4;
    const auto band = static_cast<std::size_t>(columns.band) * 4;
    const Bands parts = bandsForThreads(&allocator, {columns.period, rows.period});
    Frame fadedRows;  // one for each part
    ScratchBlock block(allocator);
    block.add<Weight>(columns.band * std::int64_t{4});
    if (!fadedRows.Allocate(columns.length, parts.count(), source.BytesPerPixel(), &allocator, source.Format(),
                            false) ||
        !block.allocate()) {
        return false;
    }
    auto* weights = block.take<Weight>(columns.band * std::int64_t{4});
    for (std::size_t i = 0; i < band; ++i) {
        weights[i] = bandWeight<Sample>(static_cast<std::int32_t>(i / 4), columns.band);
    }
    runTasks(&allocator, parts.count(), [&](std::int32_t part) {
        for (std::int32_t y = parts.first(part); y < parts.first(part) + parts.rowsOf(part); ++y) {
            const Sample* picture = source.row<Sample>(y);
            if (y < rows.band) {
                const Weight weight = bandWeight<Sample>(y, rows.band);
                auto* fadedRow = fadedRows.row<Sample>(part);
                fadeRow(source.row<Sample>(y + rows.period), picture, fadedRow, period + band,
                        [weight](std::size_t) { return weight; });
                picture = fadedRow;
            }
            Sample* out = pattern.row<Sample>(y);
            fadeRow(picture + period, picture, out, band, [weights](std::size_t i) { return weights[i]; });
            std::memcpy(out + band, picture + band, (period - band) * sizeof(Sample));
            std::memcpy(out + period, out, 4 * sizeof(Sample));
        }
    });
    return FrameCopyRect(pattern, 0, 0, columns.period + 1, 1, pattern, 0, rows.period);
}

/// The pattern's pixels that a piece is interpolated from.
struct PieceTaps {
    std::int32_t from;
    std::int32_t to;  ///< first pixel behind
    double shift;
};

PieceTaps pieceTaps(const TileAxis& axis, const Piece& piece) {
    const double last = piece.local + (piece.end - piece.begin - 1) * axis.step;
    const std::int32_t from = std::min(static_cast<std::int32_t>(piece.local), axis.period - 1);
    const std::int32_t to = std::min(static_cast<std::int32_t>(last) + 2, axis.period + 1);
    return {from, to, (from - piece.local) / axis.step};
}

/// The window, whose pixels are those of the pattern.
void copyPieces(const Frame& pattern, Frame& window, const TileAxis& columns, const TileAxis& rows,
                const MemoryAllocator& allocator) {
    const auto pixelBytes = static_cast<std::size_t>(pattern.BytesPerPixel());
    inBands(&allocator, {window.Width(), window.Height()}, [&](std::int32_t first, std::int32_t count) {
        return forEachPiece(rows, [&](const Piece& y) {
            for (std::int32_t row = std::max(y.begin, first); row < std::min(y.end, first + count); ++row) {
                const std::int32_t from = static_cast<std::int32_t>(y.local) + row - y.begin;
                forEachPiece(columns, [&](const Piece& x) {
                    std::memcpy(window.PixelAddress(x.begin, row, 0),
                                pattern.PixelAddress(static_cast<std::int32_t>(x.local), from, 0),
                                static_cast<std::size_t>(x.end - x.begin) * pixelBytes);
                    return true;
                });
            }
            return true;
        });
    });
}

}  // namespace

bool TileAxis::isShift() const {
    return step == 1.0 && first == std::floor(first);
}

TileAxis tileAxis(std::int32_t length, std::int32_t margin, float crossFade, float magnify, double position,
                  double rowPhase) {
    const double magnification = 1.0 + 9.0 * static_cast<double>(magnify);
    const auto band = static_cast<std::int32_t>(static_cast<float>(length) * kWidestBand * crossFade);
    const std::int32_t period = length - band;
    const double middle = 0.5 * length - 0.5 - rowPhase;  // position of the frame's middle among its pixel centres
    double first = middle + (position - 0.5) * period - (middle + margin) / magnification;
    const double nearest = std::round(first);
    if (magnification == 1.0 && std::fabs(first - nearest) < kOnPixel) {
        first = nearest;
    }
    return {length, margin, band, period, wrapped(first, period), 1.0 / magnification};
}

bool fillWindow(const Frame& source, Frame& window, const TileAxis& columns, const TileAxis& rows,
                MemoryAllocator& allocator) noexcept {
    const bool isShift = columns.isShift() && rows.isShift();
    const Frame* pattern = &source;
    Frame made;
    if (!isShift || columns.band > 0 || rows.band > 0) {
        pattern = &made;
        if (!made.Allocate(columns.period + 1, rows.period + 1, source.BytesPerPixel(), &allocator, source.Format(),
                           source.Flipped())) {
            return false;
        }
        const auto make = isFloatFormat(source.Format()) ? makePattern<float> : makePattern<std::uint8_t>;
        if (!make(source, made, columns, rows, allocator)) {
            return false;
        }
    }
    if (isShift) {
        copyPieces(*pattern, window, columns, rows, allocator);
        return true;
    }
    return forEachPiece(rows, [&](const Piece& y) {
        return forEachPiece(columns, [&](const Piece& x) {
            const PieceTaps across = pieceTaps(columns, x);
            const PieceTaps down = pieceTaps(rows, y);
            return FrameResizeRect(*pattern, window, {across.from, down.from, across.to, down.to},
                                   {x.begin, y.begin, x.end, y.end}, kResizeLinear, 1.0 / columns.step, 1.0 / rows.step,
                                   across.shift, down.shift);
        });
    });
}

PatternPosition positionAt(double timeSeconds, float angle, float speed, float startX, float startY) {
    constexpr double kTurn = 2.0 * std::numbers::pi;
    constexpr double kAlongAxis = 1e-9;  // what the sines leave of a direction across
    const double direction = kTurn * static_cast<double>(angle) - 0.25 * kTurn;
    const double velocity = 0.5 * static_cast<double>(speed) * static_cast<double>(speed);
    const double distance = 4.0 * velocity * timeSeconds;
    const auto moved = [&](float start, double share) {
        const double along = std::fabs(share) < kAlongAxis ? 0.0 : share * distance;
        return wrapped(static_cast<double>(start) + along, 1.0);
    };
    return {moved(startX, std::sin(direction)), moved(startY, std::cos(direction))};
}

ReducedBlur reducedBlur(std::int32_t taps, std::int32_t windowLength) {
    constexpr std::int32_t kMostTaps = 60;
    const std::int32_t factor = (taps + kMostTaps - 1) / kMostTaps;
    const bool isOdd = taps % 2 != 0;
    if (factor <= 1) {
        return {1, windowLength, 0.5F * static_cast<float>(taps + 1), isOdd ? 0.0F : -0.5F};
    }
    // A triangle is two boxes, one after the other; a box of n pixels has the variance (n * n - 1) / 12.
    const auto boxVariance = [](std::int32_t size) {
        const double n = size;
        return (n * n - 1.0) / 12.0;
    };
    const double whole = boxVariance(taps / 2 + taps % 2) + boxVariance(taps / 2 + 1);
    // Averaging softens by a box, linear enlargement by a triangle of that half width.
    const double softened = boxVariance(factor) + static_cast<double>(factor) * factor / 6.0;
    const double halfWidth = std::sqrt(6.0 * (whole - softened)) / factor;
    return {factor, (windowLength + factor - 1) / factor, static_cast<float>(halfWidth),
            isOdd ? 0.0F : -0.5F / static_cast<float>(factor)};
}

}  // namespace lumiset
