#include "media/plane_layout.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace lumiset::media {
namespace {

constexpr std::uint64_t kStrange =
    AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;

constexpr int shifted(int size, int log2) {
    return -((-size) >> log2);
}

template <class Sample>
Sample swapBytes(Sample value) {
    if constexpr (sizeof(Sample) == 2) {
        return static_cast<Sample>(value << 8 | value >> 8);
    } else if constexpr (sizeof(Sample) == 4) {
        return __builtin_bswap32(value);
    } else {
        return value;
    }
}

// Samples of a known distance, so that the compiler makes vector loops of the common ones.
template <int kStep, class Sample>
void copyLine(const std::uint8_t* from, int count, Sample* to) {
    for (int i = 0; i < count; i++) {
        std::memcpy(to + i, from + static_cast<std::ptrdiff_t>(i) * kStep, sizeof(Sample));
    }
}

template <class Sample>
void copyLine(const std::uint8_t* from, int step, int count, Sample* to) {
    switch (step) {
        case sizeof(Sample):
            std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof(Sample));
            break;
        case 2 * sizeof(Sample):
            copyLine<2 * sizeof(Sample)>(from, count, to);
            break;
        case 3 * sizeof(Sample):
            copyLine<3 * sizeof(Sample)>(from, count, to);
            break;
        case 4 * sizeof(Sample):
            copyLine<4 * sizeof(Sample)>(from, count, to);
            break;
        default:
            for (int i = 0; i < count; i++) {
                std::memcpy(to + i, from + static_cast<std::ptrdiff_t>(i) * step, sizeof(Sample));
            }
    }
}

template <class Sample>
void fetch(const FrameView& from, int channel, int row, int begin, int end, void* target) {
    const PlaneLayout& layout = *from.layout;
    const PlaneLayout::Channel& place = layout.channels[channel];
    auto* out = static_cast<Sample*>(target);
    const int last = from.width(channel) - 1;
    const std::uint8_t* line = from.row(channel, std::min(row, from.height(channel) - 1));
    const int inside = std::max(begin, std::min(end, last + 1));
    copyLine(line + static_cast<std::ptrdiff_t>(begin) * place.step, place.step, inside - begin, out + begin);
    if (inside < end) {
        Sample edge;
        std::memcpy(&edge, line + static_cast<std::ptrdiff_t>(last) * place.step, sizeof edge);
        std::fill(out + inside, out + end, edge);
    }
    if (layout.swapped) {
        std::transform(out + begin, out + end, out + begin, swapBytes<Sample>);
    }
    if (sizeof(Sample) < 4 && (place.shift > 0 || layout.mingled)) {
        const unsigned mask = (1U << layout.depth) - 1;
        std::transform(out + begin, out + end, out + begin,
                       [&](Sample value) { return static_cast<Sample>(value >> place.shift & mask); });
    }
}

template <class Sample>
void store(const void* source, int begin, int end, const FrameView& to, int channel, int row) {
    const PlaneLayout& layout = *to.layout;
    const PlaneLayout::Channel& place = layout.channels[channel];
    const auto* in = static_cast<const Sample*>(source);
    end = std::min(end, to.width(channel));
    std::uint8_t* line = to.row(channel, row);
    for (int i = begin; i < end; i++) {
        auto value = in[i];
        if constexpr (sizeof(Sample) < 4) {
            value = static_cast<Sample>(value << place.shift);
        }
        if (layout.swapped) {
            value = swapBytes(value);
        }
        std::memcpy(line + static_cast<std::ptrdiff_t>(i) * place.step, &value, sizeof value);
    }
}

}  // namespace

std::optional<PlaneLayout> planeLayout(AVPixelFormat format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    if (descriptor == nullptr || (descriptor->flags & kStrange) != 0 || format == AV_PIX_FMT_XYZ12LE ||
        format == AV_PIX_FMT_XYZ12BE) {
        return std::nullopt;
    }
    PlaneLayout layout;
    const bool alpha = (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const bool floats = (descriptor->flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    const int colors = descriptor->nb_components - (alpha ? 1 : 0);
    layout.family = colors == 1                                      ? Family::kGrey
                    : (descriptor->flags & AV_PIX_FMT_FLAG_RGB) != 0 ? Family::kRgb
                                                                     : Family::kYuv;
    layout.depth = descriptor->comp[0].depth;
    layout.type = floats ? SampleType::kFloat : layout.depth > 8 ? SampleType::kWord : SampleType::kByte;
    if (layout.depth > 16 && !(floats && layout.depth == 32)) {
        return std::nullopt;
    }
    layout.log2ChromaW = descriptor->log2_chroma_w;
    layout.log2ChromaH = descriptor->log2_chroma_h;
    const bool otherOrder =
        ((descriptor->flags & AV_PIX_FMT_FLAG_BE) != 0) == (std::endian::native == std::endian::little);
    layout.swapped = bytesOf(layout.type) > 1 && otherOrder;
    layout.planar = !layout.swapped;
    unsigned long long bytesTaken[4] = {};
    for (int i = 0; i < descriptor->nb_components; i++) {
        const AVComponentDescriptor& component = descriptor->comp[i];
        const bool isAlpha = alpha && i == descriptor->nb_components - 1;
        if (component.depth != layout.depth || component.step < bytesOf(layout.type) ||
            component.shift + component.depth > 8 * bytesOf(layout.type)) {
            return std::nullopt;
        }
        const unsigned long long bytes = ((1ULL << bytesOf(layout.type)) - 1) << component.offset;
        layout.mingled = layout.mingled || (bytesTaken[component.plane] & bytes) != 0;
        bytesTaken[component.plane] |= bytes;
        layout.channels[isAlpha ? 3 : i] = {component.plane, component.step, component.offset, component.shift};
        layout.planar = layout.planar && component.step == bytesOf(layout.type) && component.shift == 0;
    }
    return layout;
}

int FrameView::width(int channel) const {
    return layout->isChroma(channel) ? shifted(frame->width, layout->log2ChromaW) : frame->width;
}

int FrameView::height(int channel) const {
    return rowsOfView(layout->isChroma(channel) ? shifted(frame->height, layout->log2ChromaH) : frame->height);
}

std::ptrdiff_t FrameView::stride(int channel) const {
    return static_cast<std::ptrdiff_t>(frame->linesize[layout->channels[channel].plane]) * (field < 0 ? 1 : 2);
}

std::uint8_t* FrameView::row(int channel, int y) const {
    const PlaneLayout::Channel& place = layout->channels[channel];
    const std::ptrdiff_t first = field == 1 ? frame->linesize[place.plane] : 0;
    return frame->data[place.plane] + place.offset + first + y * stride(channel);
}

void fetchSamples(const FrameView& from, int channel, int row, int begin, int end, void* target) {
    switch (from.layout->type) {
        case SampleType::kByte:
            return fetch<std::uint8_t>(from, channel, row, begin, end, target);
        case SampleType::kWord:
            return fetch<std::uint16_t>(from, channel, row, begin, end, target);
        case SampleType::kFloat:
            return fetch<std::uint32_t>(from, channel, row, begin, end, target);
    }
}

void storeSamples(const void* source, int begin, int end, const FrameView& to, int channel, int row) {
    switch (to.layout->type) {
        case SampleType::kByte:
            return store<std::uint8_t>(source, begin, end, to, channel, row);
        case SampleType::kWord:
            return store<std::uint16_t>(source, begin, end, to, channel, row);
        case SampleType::kFloat:
            return store<std::uint32_t>(source, begin, end, to, channel, row);
    }
}

}  // namespace lumiset::media
