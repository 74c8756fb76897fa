#include "media/resize.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "media/convert.h"
#include "media/picture_rows.h"

namespace lumiset::media {
namespace {

/// As far as rounding to an even number and cutting to whole pixels takes a size away from a shape.
constexpr double kRoundedBy = 2.0;

int allowedSide(double exact) {
    return std::clamp(evenSide(exact), kSmallestSide, kLargestSide);
}

/// A size of pixels of this shape shows the whole of `format`'s pictures as they are.
bool fits(const VideoFormat& format, int width, int height, Rational pixelAspect) {
    const double shape = format.width * format.pixelAspect.value() / format.height / pixelAspect.value();
    return std::abs(width - height * shape) < kRoundedBy || std::abs(height - width / shape) < kRoundedBy;
}

/// Planes of a whole picture or of a field; small ones are padded, since filters reach over several samples.
ImageKind planesOf(const Picture& picture, int field, bool alpha) {
    ImageKind kind;
    kind.regionWidth = picture.width;
    kind.regionHeight = field < 0 ? picture.height : (picture.height + 1 - field) / 2;
    kind.width = std::max(kind.regionWidth, kSmallestSide);
    kind.height = std::max(kind.regionHeight, kSmallestSide);
    kind.type = picture.depth == Depth::kFloat ? SampleType::kFloat : SampleType::kByte;
    kind.depth = picture.depth == Depth::kFloat ? 32 : 8;
    kind.field = field;
    kind.color.range = ColorRange::kFull;
    kind.color.alpha = alpha ? AlphaKind::kStraight : AlphaKind::kNone;
    return kind;
}

}  // namespace

int evenSide(double exact) {
    return static_cast<int>(2 * std::lround(exact / 2));
}

VideoFormat resized(VideoFormat format, int width, int height) {
    const double shape = static_cast<double>(format.width) / format.height;
    width = width > 0 ? width : allowedSide(height * shape);
    height = height > 0 ? height : allowedSide(width / shape);
    if (!fits(format, width, height, format.pixelAspect)) {
        const std::int64_t across = std::int64_t{format.pixelAspect.num} * format.width * height;
        const std::int64_t down = std::int64_t{format.pixelAspect.den} * format.height * width;
        Rational exact;
        av_reduce(&exact.num, &exact.den, across, down, 65535);
        format.pixelAspect = fits(format, width, height, {1, 1}) ? Rational{1, 1} : exact;
    }
    format.width = width;
    format.height = height;
    return format;
}

struct Resizer::Inside {
    int width;
    int height;
    GraphKeeper graphs;

    void resize(const Picture& picture, int field, Picture& result) {
        const bool alpha = !isOpaque(picture);
        const ImageKind from = planesOf(picture, field, alpha);
        ImageKind to = planesOf(result, field, alpha);
        to.width = to.regionWidth;
        to.height = to.regionHeight;
        to.regionWidth = 0;
        to.regionHeight = 0;
        graphs.graph(from, to, false)
            .run({{}, splitFrom(picture, field, alpha)}, {{}, packInto(result, field, false, alpha)});
    }
};

Resizer::Resizer(int width, int height) : m_inside(std::make_unique<Inside>()) {
    m_inside->width = width;
    m_inside->height = height;
}

Resizer::Resizer(Resizer&&) noexcept = default;
Resizer::~Resizer() = default;

void Resizer::resize(const Picture& picture, Picture& result) {
    result.allocate(m_inside->width, m_inside->height, picture.depth);
    result.pts = picture.pts;
    result.timeSeconds = picture.timeSeconds;
    result.interlaced = picture.interlaced;
    result.topFieldFirst = picture.topFieldFirst;
    if (picture.interlaced && picture.height > 3) {
        m_inside->resize(picture, 0, result);
        m_inside->resize(picture, 1, result);
    } else {
        m_inside->resize(picture, -1, result);
    }
}

}  // namespace lumiset::media
