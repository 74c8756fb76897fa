#include "adapters/openfx/transfer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "adapters/openfx/half.h"
#include "host/pixel_format.h"

// A row goes through at most three simple loops, which the compiler makes vectors of: the host's samples to or from
// ours, then alpha. Rows stay in the cache in between.

namespace lumiset::openfx {
namespace {

constexpr int kRowsBetweenQuestions = 64;
constexpr int kBlue = 0;
constexpr int kGreen = 1;
constexpr int kRed = 2;
constexpr int kAlpha = 3;

// One sample. Numbers of 8 and 16 bits span 0..1; a float is what it is, beyond 0..1 too.

template <class To>
To sampleOf(std::uint8_t stored, Depth /*depth*/) {
    if constexpr (std::is_same_v<To, float>) {
        return static_cast<float>(stored) / 255.0F;
    } else {
        return stored;
    }
}

float sampleOf(std::uint16_t stored, Depth depth) {
    return depth == Depth::kHalf ? floatOfHalf(stored) : static_cast<float>(stored) / 65535.0F;
}

float limited(float sample) {
    // The constant stands first so that NaN becomes 0.
    return std::min(std::max(0.0F, sample), 1.0F);
}

void store(float sample, float& out, Depth /*depth*/) {
    out = sample;
}
void store(std::uint8_t sample, std::uint8_t& out, Depth /*depth*/) {
    out = sample;
}
void store(float sample, std::uint8_t& out, Depth /*depth*/) {
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): not negative
    out = static_cast<std::uint8_t>(static_cast<std::int32_t>(limited(sample) * 255.0F + 0.5F));
}
void store(float sample, std::uint16_t& out, Depth depth) {
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): not negative
    out = depth == Depth::kHalf
              ? halfOfFloat(sample)
              : static_cast<std::uint16_t>(static_cast<std::int32_t>(limited(sample) * 65535.0F + 0.5F));
}

template <class Sample>
constexpr Sample kWhole = static_cast<Sample>(sizeof(Sample) == 1 ? 255 : 1);

// Rows of a host to rows of ours, blue first with four channels, and back. `Stored` is the host's sample, `Sample`
// ours.

template <class Stored, class Sample>
void readRow(const Pixels& pixels, const std::uint8_t* row, Sample* out, int width) {
    const auto* in = reinterpret_cast<const Stored*>(row);
    const Depth depth = pixels.depth;
    const int red = pixels.blueFirst ? 2 : 0;
    const auto sample = [=](Stored stored) {
        if constexpr (std::is_same_v<Stored, float>) {
            return stored;
        } else if constexpr (std::is_same_v<Stored, std::uint8_t>) {
            return sampleOf<Sample>(stored, depth);
        } else {
            return sampleOf(stored, depth);
        }
    };
    for (int x = 0; x < width; ++x, in += pixels.channels, out += 4) {
        out[kBlue] = sample(in[2 - red]);
        out[kGreen] = sample(in[1]);
        out[kRed] = sample(in[red]);
        out[kAlpha] = pixels.alpha == Alpha::kOpaque ? kWhole<Sample> : sample(in[3]);
    }
}

template <class Stored, class Sample>
void writeRow(const Pixels& pixels, const Sample* in, std::uint8_t* row, int width) {
    auto* out = reinterpret_cast<Stored*>(row);
    const int red = pixels.blueFirst ? 2 : 0;
    for (int x = 0; x < width; ++x, in += 4, out += pixels.channels) {
        store(in[kBlue], out[2 - red], pixels.depth);
        store(in[kGreen], out[1], pixels.depth);
        store(in[kRed], out[red], pixels.depth);
        if (pixels.channels == 4) {
            store(pixels.alpha == Alpha::kOpaque ? kWhole<Sample> : in[kAlpha], out[3], pixels.depth);
        }
    }
}

/// The most frequent case, bytes with all four channels: the first and third of them change places, either way.
void swapRow(const std::uint8_t* in, std::uint8_t* out, int width, std::uint32_t alpha) {
    for (int x = 0; x < width; ++x, in += 4, out += 4) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, in, 4);
        pixel = (pixel & 0xFF00FF00U) | (pixel >> 16U & 0xFFU) | (pixel & 0xFFU) << 16U | alpha;
        std::memcpy(out, &pixel, 4);
    }
}

/// Most rows are opaque, and alpha changes nothing there.
bool isOpaque(const std::uint8_t* row, int width) {
    std::uint32_t all = 0xFFFFFFFFU;
    for (int x = 0; x < width; ++x, row += 4) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, row, 4);
        all &= pixel;
    }
    return (all & 0xFF000000U) == 0xFF000000U;
}

/// 2^32 divided by each alpha, rounded up: a product with it is exact for numerators of 16 bits, and much quicker than
/// a division.
constexpr auto kInverse = [] {
    std::array<std::uint64_t, 256> inverse{};
    for (std::uint64_t alpha = 1; alpha < 256; ++alpha) {
        inverse[alpha] = ((std::uint64_t{1} << 32U) + alpha - 1) / alpha;
    }
    return inverse;
}();

void unpremultiply(std::uint8_t* row, int width) {
    if (isOpaque(row, width)) {
        return;
    }
    for (int x = 0; x < width; ++x, row += 4) {
        const unsigned alpha = row[kAlpha];
        for (int i = 0; i < 3 && alpha != 0; ++i) {
            const std::uint64_t colour = (row[i] * 255U + alpha / 2) * kInverse[alpha] >> 32U;
            row[i] = static_cast<std::uint8_t>(std::min<std::uint64_t>(colour, 255));
        }
    }
}

void unpremultiply(float* row, int width) {
    for (int x = 0; x < width; ++x, row += 4) {
        const float alpha = row[kAlpha];
        // A colour where nothing is covers nothing: it stays as it is, and is taken away when alpha comes in again.
        const bool covers = alpha > 0.0F;
        for (int i = 0; i < 3; ++i) {
            row[i] = covers ? row[i] / alpha : row[i];
        }
    }
}

void premultiply(std::uint8_t* row, int width) {
    if (isOpaque(row, width)) {
        return;
    }
    for (int x = 0; x < width; ++x, row += 4) {
        for (int i = 0; i < 3; ++i) {
            row[i] = static_cast<std::uint8_t>((row[i] * unsigned{row[kAlpha]} + 127U) / 255U);
        }
    }
}

void premultiply(float* row, int width) {
    for (int x = 0; x < width; ++x, row += 4) {
        for (int i = 0; i < 3; ++i) {
            row[i] *= row[kAlpha];
        }
    }
}

/// Host's bytes to our floats or the like: calls `work` with a null pointer of the host's type of sample.
template <class Work>
void withStored(Depth depth, const Work& work) {
    switch (depth) {
        case Depth::kByte:
            work(static_cast<std::uint8_t*>(nullptr));
            break;
        case Depth::kFloat:
            work(static_cast<float*>(nullptr));
            break;
        default:
            work(static_cast<std::uint16_t*>(nullptr));
            break;
    }
}

template <class Sample>
void readAny(const Pixels& pixels, const std::uint8_t* row, Sample* out, int width) {
    if constexpr (std::is_same_v<Sample, std::uint8_t>) {
        if (pixels.channels == 4 && !pixels.blueFirst) {
            swapRow(row, out, width, pixels.alpha == Alpha::kOpaque ? 0xFF000000U : 0U);
        } else {
            readRow<std::uint8_t>(pixels, row, out, width);
        }
    } else {
        withStored(pixels.depth, [&]<class Stored>(Stored*) { readRow<Stored>(pixels, row, out, width); });
    }
    if (pixels.alpha == Alpha::kPremultiplied) {
        unpremultiply(out, width);
    }
}

/// `in` is changed.
template <class Sample>
void writeAny(const Pixels& pixels, Sample* in, std::uint8_t* row, int width) {
    if (pixels.alpha != Alpha::kStraight) {
        premultiply(in, width);
    }
    if constexpr (std::is_same_v<Sample, std::uint8_t>) {
        if (pixels.channels == 4 && !pixels.blueFirst) {
            swapRow(in, row, width, pixels.alpha == Alpha::kOpaque ? 0xFF000000U : 0U);
        } else {
            writeRow<std::uint8_t>(pixels, in, row, width);
        }
    } else {
        withStored(pixels.depth, [&]<class Stored>(Stored*) { writeRow<Stored>(pixels, in, row, width); });
    }
}

bool isMeant(Rows rows, int rowFromBottom) {
    return rows == Rows::kAll || (rowFromBottom % 2 != 0) == (rows == Rows::kUpper);
}

std::uint8_t* frameRow(const VideoFrameDesc& frame, int y) {
    return static_cast<std::uint8_t*>(frame.data) + static_cast<std::ptrdiff_t>(frame.stride) * y;
}

template <class Sample>
void writeRows(const VideoFrameDesc& frame, const RectI& region, const Pixels& pixels, const RectI& window, Rows rows,
               const GoOn& goOn) {
    const RectI wanted = intersection(window, pixels.bounds);
    const RectI inside = intersection(wanted, region);
    const int width = inside.x2 - inside.x1;
    std::vector<Sample> copy(static_cast<std::size_t>(std::max(width, 0)) * 4);
    if (inside.x1 > wanted.x1 || inside.y1 > wanted.y1 || inside.x2 < wanted.x2 || inside.y2 < wanted.y2) {
        clearPixels(pixels, wanted, rows, region.y1);
    }
    for (int y = inside.y1; y < inside.y2 && width > 0; ++y) {
        if ((y - inside.y1) % kRowsBetweenQuestions == 0 && !goOn()) {
            return;
        }
        if (isMeant(rows, y - region.y1)) {
            const std::uint8_t* from = frameRow(frame, region.y2 - 1 - y);
            const std::size_t skipped = static_cast<std::size_t>(inside.x1 - region.x1) * 4 * sizeof(Sample);
            std::memcpy(copy.data(), from + skipped, copy.size() * sizeof(Sample));
            writeAny(pixels, copy.data(), pixels.at(inside.x1, y), width);
        }
    }
}

}  // namespace

bool readPixels(const Pixels& pixels, const RectI& region, const VideoFrameDesc& frame, const GoOn& goOn) {
    for (int y = 0; y < frame.height; ++y) {
        if (y % kRowsBetweenQuestions == 0 && !goOn()) {
            return false;
        }
        const std::uint8_t* from = pixels.at(region.x1, region.y2 - 1 - y);
        std::uint8_t* to = frameRow(frame, y);
        if (isFloatFormat(frame.format)) {
            readAny(pixels, from, reinterpret_cast<float*>(to), frame.width);
        } else {
            readAny(pixels, from, to, frame.width);
        }
    }
    return true;
}

void writePixels(const VideoFrameDesc& frame, const RectI& region, const Pixels& pixels, const RectI& window, Rows rows,
                 const GoOn& goOn) {
    if (isFloatFormat(frame.format)) {
        writeRows<float>(frame, region, pixels, window, rows, goOn);
    } else {
        writeRows<std::uint8_t>(frame, region, pixels, window, rows, goOn);
    }
}

void clearPixels(const Pixels& pixels, const RectI& window, Rows rows, int bottom) {
    const RectI wanted = intersection(window, pixels.bounds);
    if (isEmpty(wanted)) {
        return;
    }
    const int width = wanted.x2 - wanted.x1;
    const std::vector<float> nothing(static_cast<std::size_t>(width) * 4);
    for (int y = wanted.y1; y < wanted.y2; ++y) {
        if (isMeant(rows, y - bottom)) {
            std::uint8_t* row = pixels.at(wanted.x1, y);
            withStored(pixels.depth,
                       [&]<class Stored>(Stored*) { writeRow<Stored>(pixels, nothing.data(), row, width); });
        }
    }
}

}  // namespace lumiset::openfx
