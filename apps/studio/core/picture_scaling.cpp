// Area averages: every pixel of the target is the mean of the source's rectangle below it, rows first and then columns.
// Filters with a fixed number of taps leave most of a large picture out where it is shown small, so that noise keeps
// its full height and thin lines come and go; a mean shows what a person sees from further away.

#include "apps/studio/core/picture_scaling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace lumiset::studio {
namespace {

/// The samples of a row or column that one of the target's covers.
struct Span {
    int first;
    int count;
    float firstWeight;  ///< weights add up to 1; those in the middle are `weight`
    float weight;
    float lastWeight;

    [[nodiscard]] float at(int i) const { return i == 0 ? firstWeight : i == count - 1 ? lastWeight : weight; }
};

std::vector<Span> spansOf(int from, int to) {
    std::vector<Span> spans;
    spans.reserve(static_cast<std::size_t>(to));
    const double scale = static_cast<double>(from) / to;
    for (int i = 0; i < to; ++i) {
        const double begin = i * scale;
        const double end = std::min((i + 1) * scale, static_cast<double>(from));
        const int first = std::min(static_cast<int>(begin), from - 1);
        const int last = std::max(first, std::min(static_cast<int>(std::ceil(end)) - 1, from - 1));
        const auto part = [&](int k) {
            return static_cast<float>(std::max(0.0, std::min(k + 1.0, end) - std::max<double>(k, begin)) / scale);
        };
        if (first == last) {
            spans.push_back({first, 1, 1.0F, 0.0F, 0.0F});
        } else {
            spans.push_back({first, last - first + 1, part(first), static_cast<float>(1.0 / scale), part(last)});
        }
    }
    return spans;
}

/// Adds a row of straight samples to sums of premultiplied ones, 0..1.
void addRow(const media::Picture& picture, int y, float weight, std::vector<float>& sums) {
    const std::size_t count = sums.size();
    if (picture.depth == media::Depth::kFloat) {
        const auto* row = media::samples<float>(picture, y);
        for (std::size_t i = 0; i < count; i += 4) {
            const float alpha = weight * row[i + 3];
            sums[i] += row[i] * alpha;
            sums[i + 1] += row[i + 1] * alpha;
            sums[i + 2] += row[i + 2] * alpha;
            sums[i + 3] += alpha;
        }
        return;
    }
    const std::uint8_t* row = picture.row(y);
    const float scale = weight / (255.0F * 255.0F);
    for (std::size_t i = 0; i < count; i += 4) {
        const float alpha = scale * static_cast<float>(row[i + 3]);
        sums[i] += static_cast<float>(row[i]) * alpha;
        sums[i + 1] += static_cast<float>(row[i + 1]) * alpha;
        sums[i + 2] += static_cast<float>(row[i + 2]) * alpha;
        sums[i + 3] += 255.0F * alpha;
    }
}

/// Calls `take(y, row)` for every row of the target, premultiplied floats, on as many threads as there are.
template <class Take>
void forEachRow(const media::Picture& picture, Size size, IHostParallel* threads, const Take& take) {
    const std::vector<Span> columns = spansOf(picture.width, size.width);
    const std::vector<Span> rows = spansOf(picture.height, size.height);
    const auto band = [&](int begin, int end) {
        std::vector<float> sums(static_cast<std::size_t>(picture.width) * 4);
        std::vector<float> means(static_cast<std::size_t>(size.width) * 4);
        for (int y = begin; y < end; ++y) {
            std::fill(sums.begin(), sums.end(), 0.0F);
            const Span& vertical = rows[static_cast<std::size_t>(y)];
            for (int k = 0; k < vertical.count; ++k) {
                addRow(picture, vertical.first + k, vertical.at(k), sums);
            }
            for (std::size_t x = 0; x < columns.size(); ++x) {
                const Span& span = columns[x];
                std::array<float, 4> mean{};
                const float* sample = sums.data() + 4 * static_cast<std::size_t>(span.first);
                for (int k = 0; k < span.count; ++k, sample += 4) {
                    const float weight = span.at(k);
                    for (std::size_t c = 0; c < 4; ++c) {
                        mean[c] += weight * sample[c];
                    }
                }
                std::copy(mean.begin(), mean.end(), means.begin() + static_cast<std::ptrdiff_t>(4 * x));
            }
            take(y, means.data());
        }
    };
    struct Bands {
        const decltype(band)& draw;
        int height;
        int count;
    };
    Bands bands{band, size.height, std::min(size.height, 16)};
    const auto draw = [](void* context, std::uint32_t i) {
        const Bands& all = *static_cast<Bands*>(context);
        const int number = static_cast<int>(i);
        all.draw(all.height * number / all.count, all.height * (number + 1) / all.count);
    };
    if (threads == nullptr || !threads->Run(draw, &bands, static_cast<std::uint32_t>(bands.count))) {
        band(0, size.height);
    }
}

/// Thresholds of an ordered dither (Bayer, 1973), in the middle of their steps.
constexpr auto kBayer = [] {
    std::array<std::array<float, 8>, 8> thresholds{};
    for (unsigned y = 0; y < 8; ++y) {
        for (unsigned x = 0; x < 8; ++x) {
            unsigned value = 0;
            for (unsigned bit = 0; bit < 3; ++bit) {
                value |= (((x ^ y) >> bit) & 1U) << (5 - 2 * bit);
                value |= ((y >> bit) & 1U) << (4 - 2 * bit);
            }
            thresholds[y][x] = (static_cast<float>(value) + 0.5F) / 64.0F;
        }
    }
    return thresholds;
}();

std::uint8_t toByte(float value, float threshold) {
    return static_cast<std::uint8_t>(std::min(std::max(0.0F, value * 255.0F + threshold), 255.0F));
}

/// Bytes of the size that is wanted need no arithmetic where nothing shines through.
bool copyOpaque(const media::Picture& picture, Size size, DisplayPicture& display) {
    if (picture.depth != media::Depth::kEightBit || size != Size{picture.width, picture.height} ||
        !media::isOpaque(picture)) {
        return false;
    }
    const std::size_t rowBytes = 4 * static_cast<std::size_t>(size.width);
    for (int y = 0; y < size.height; ++y) {
        std::copy_n(picture.row(y), rowBytes, display.bytes.data() + static_cast<std::size_t>(y) * rowBytes);
    }
    return true;
}

}  // namespace

DisplayPicture displayOf(const media::Picture& picture, Size size, IHostParallel* threads) {
    DisplayPicture display{size, media::isOpaque(picture), {}};
    const std::size_t rowBytes = 4 * static_cast<std::size_t>(size.width);
    display.bytes.resize(rowBytes * static_cast<std::size_t>(size.height));
    if (copyOpaque(picture, size, display)) {
        return display;
    }
    const bool dithers = picture.depth == media::Depth::kFloat;
    forEachRow(picture, size, threads, [&](int y, const float* row) {
        std::uint8_t* target = display.bytes.data() + static_cast<std::size_t>(y) * rowBytes;
        const std::array<float, 8>& thresholds = kBayer[static_cast<std::size_t>(y) % 8];
        for (std::size_t x = 0; x < static_cast<std::size_t>(size.width); ++x) {
            const float threshold = dithers ? thresholds[x % 8] : 0.5F;
            const std::uint8_t alpha = toByte(row[4 * x + 3], 0.5F);
            for (std::size_t c = 0; c < 3; ++c) {
                target[4 * x + c] = std::min(alpha, toByte(row[4 * x + c], threshold));
            }
            target[4 * x + 3] = alpha;
        }
    });
    return display;
}

void reduce(const media::Picture& picture, Size size, media::Picture& reduced, IHostParallel* threads) {
    reduced.allocate(size.width, size.height, picture.depth);
    reduced.pts = picture.pts;
    reduced.timeSeconds = picture.timeSeconds;
    reduced.interlaced = false;  // the means are of both fields
    reduced.topFieldFirst = picture.topFieldFirst;
    forEachRow(picture, size, threads, [&](int y, const float* row) {
        for (int x = 0; x < size.width; ++x, row += 4) {
            const float alpha = row[3];
            const float scale = alpha > 0.0F ? 1.0F / alpha : 0.0F;
            if (reduced.depth == media::Depth::kFloat) {
                float* target = media::samples<float>(reduced, y) + 4 * x;
                std::transform(row, row + 3, target, [scale](float value) { return value * scale; });
                target[3] = alpha;
            } else {
                std::uint8_t* target = reduced.row(y) + 4 * x;
                std::transform(row, row + 3, target, [scale](float value) { return toByte(value * scale, 0.5F); });
                target[3] = toByte(alpha, 0.5F);
            }
        }
    });
}

void fieldOf(const media::Picture& picture, bool top, media::Picture& field) {
    field.allocate(picture.width, picture.height, picture.depth);
    field.timeSeconds = picture.timeSeconds;
    const int first = top || picture.height < 2 ? 0 : 1;
    const std::size_t count = 4 * static_cast<std::size_t>(picture.width);
    for (int y = 0; y < picture.height; ++y) {
        // Neighbours are rows of the field; beyond the first and the last there are none.
        const bool own = y % 2 == first;
        const int above = own ? y : y > first ? y - 1 : first;
        const int below = own ? y : y + 1 < picture.height ? y + 1 : above;
        if (picture.depth == media::Depth::kFloat) {
            const auto* a = media::samples<float>(picture, above);
            const auto* b = media::samples<float>(picture, below);
            std::transform(a, a + count, b, media::samples<float>(field, y),
                           [](float one, float other) { return 0.5F * (one + other); });
        } else {
            const std::uint8_t* a = picture.row(above);
            const std::uint8_t* b = picture.row(below);
            std::transform(a, a + count, b, field.row(y), [](std::uint8_t one, std::uint8_t other) {
                return static_cast<std::uint8_t>((one + other + 1) / 2);
            });
        }
    }
}

Size shownSize(const media::VideoFormat& format, Size room) {
    const double aspect = format.pixelAspect.value() > 0.0 ? format.pixelAspect.value() : 1.0;
    double width = format.width;
    double height = format.height;
    (aspect > 1.0 ? width : height) *= aspect > 1.0 ? aspect : 1.0 / aspect;
    if (room.width > 0 && room.height > 0) {
        const double scale = std::min({room.width / width, room.height / height, 1.0});
        width *= scale;
        height *= scale;
    }
    return {std::max(1, static_cast<int>(std::lround(width))), std::max(1, static_cast<int>(std::lround(height)))};
}

}  // namespace lumiset::studio
