#include "media/convert.h"

#include <algorithm>

#include "host/sample_conversion.h"
#include "media/picture_color.h"
#include "media/picture_rows.h"
#include "media/pixel_rows.h"
#include "media/yuv_rows.h"

namespace lumiset::media {
namespace {

// Filters reach over several samples, which the smallest pictures do not have.
constexpr int kLeastSide = 16;

constexpr SampleType typeOf(Depth depth) {
    return depth == Depth::kFloat ? SampleType::kFloat : SampleType::kByte;
}

int padded(int size, int log2) {
    const int step = 1 << log2;
    return std::max((size + step - 1) / step * step, kLeastSide);
}

ImageKind kindOf(const FrameView& view) {
    const PlaneLayout& layout = *view.layout;
    ImageKind kind;
    kind.width = padded(view.width(), layout.log2ChromaW);
    kind.height = padded(view.height(), layout.log2ChromaH);
    kind.family = layout.family;
    kind.type = layout.type;
    kind.depth = layout.depth;
    kind.log2ChromaW = layout.log2ChromaW;
    kind.log2ChromaH = layout.log2ChromaH;
    kind.field = view.field;
    kind.color = colorOf(*view.frame);
    return kind;
}

// Planar samples as they go to and come from pixels, of the same size.
ImageKind pixelsKind(Depth depth, const ImageKind& other) {
    ImageKind kind;
    kind.width = other.width;
    kind.height = other.height;
    kind.type = typeOf(depth);
    kind.depth = depth == Depth::kFloat ? 32 : 8;
    kind.field = other.field;
    kind.color = other.color;
    kind.color.range = ColorRange::kFull;
    kind.color.chromaPosition = -1;
    kind.color.alpha = other.color.hasAlpha() ? AlphaKind::kStraight : AlphaKind::kNone;
    return kind;
}

bool isAligned(const FrameView& view, const ImageKind& kind) {
    const PlaneLayout& layout = *view.layout;
    bool good = layout.planar && kind.width == view.width() && kind.height == view.height();
    for (int i = 0; i < 4 && good; i++) {
        if (layout.channels[i].plane >= 0) {
            const auto address = reinterpret_cast<std::uintptr_t>(view.row(i, 0));
            const std::ptrdiff_t rows = layout.isChroma(i) ? kind.height >> layout.log2ChromaH : kind.height;
            good = (address | static_cast<std::uintptr_t>(view.stride(i))) % ZimgGraph::kAlignment == 0 &&
                   view.height(i) == rows;
        }
    }
    return good;
}

ZimgGraph::Image inMemory(const FrameView& view) {
    ZimgGraph::Image image{};
    image.planes.version = ZIMG_API_VERSION;
    for (int i = 0; i < 4; i++) {
        if (view.layout->channels[i].plane >= 0) {
            image.planes.plane[i] = {view.row(i, 0), view.stride(i), ZIMG_BUFFER_MAX};
        }
    }
    return image;
}

// Calls `take(channel, row of the channel, begin, end, samples)` for what a row of `kind` is made of.
template <class Take>
void forChannels(const PlaneLayout& layout, int row, int begin, int end, const ZimgGraph::Planes& planes, Take take) {
    for (int channel = 0; channel < 4; channel++) {
        if (layout.channels[channel].plane < 0) {
            continue;
        }
        const bool chroma = layout.isChroma(channel);
        const int log2W = chroma ? layout.log2ChromaW : 0;
        const int rows = chroma ? 1 : 1 << layout.log2ChromaH;
        const int first = chroma ? row >> layout.log2ChromaH : row;
        for (int y = first; y < first + rows; y++) {
            take(channel, y, begin >> log2W, (end + (1 << log2W) - 1) >> log2W, ZimgGraph::rowOf(planes, channel, y));
        }
    }
}

ZimgGraph::Image throughRows(const FrameView& view) {
    return {{}, [view](int row, int begin, int end, const ZimgGraph::Planes& planes) {
                forChannels(*view.layout, row, begin, end, planes,
                            [&](int channel, int y, int from, int to, std::uint8_t* samples) {
                                fetchSamples(view, channel, y, from, to, samples);
                            });
            }};
}

// The matrix between YUV and 8-bit pixels is part of the pass that packs or splits them, and zimg has only chroma to
// resample: that takes half the time.
std::optional<YuvWeights> weightsFor(const ImageKind& kind, Depth depth) {
    if (kind.family != Family::kYuv || depth == Depth::kFloat) {
        return std::nullopt;
    }
    return yuvWeights(kind.color);
}

ImageKind fullChroma(const ImageKind& kind) {
    ImageKind full = kind;
    full.type = SampleType::kWord;
    full.depth = kYuvDepth;
    full.log2ChromaW = 0;
    full.log2ChromaH = 0;
    full.color.chromaPosition = -1;
    full.regionWidth = 0;
    full.regionHeight = 0;
    return full;
}

bool hasHalfHeightChroma(const std::optional<PlaneLayout>& layout) {
    return layout && layout->log2ChromaH == 1;
}

// Bytes of RGB that stand side by side: the order that takes them to B, G, R, A, or back.
bool isPixelBytes(const PlaneLayout& layout) {
    const int step = layout.channels[0].step;
    bool good = layout.family == Family::kRgb && layout.type == SampleType::kByte && layout.depth == 8 &&
                (step == 3 || step == 4);
    for (int i = 0; i < 4; i++) {
        const PlaneLayout::Channel& channel = layout.channels[i];
        good = good && (channel.plane == 0 ? channel.step == step : i == 3 && channel.plane < 0);
    }
    return good;
}

constexpr std::uint8_t kNoByte = 4;

AVFrame* planesLike(AvFrame& kept, AVPixelFormat format, int width, int height) {
    if (!kept || kept->format != format || kept->width != width || kept->height != height) {
        kept.reset(allocated(av_frame_alloc()));
        kept->format = format;
        kept->width = width;
        kept->height = height;
        avCheck(av_frame_get_buffer(kept.get(), ZimgGraph::kAlignment), "No memory for a picture");
    }
    return kept.get();
}

// What an unusual format is taken to, or made from.
AVPixelFormat planesFor(AVPixelFormat format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    if (descriptor == nullptr) {
        throw MediaError("The pictures are of an unknown pixel format.");
    }
    // Palettes and short words become bytes exactly only where the bytes stand side by side.
    const bool deep = descriptor->comp[0].depth > 8;
    const bool alpha = (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    return !deep ? AV_PIX_FMT_BGRA : alpha ? AV_PIX_FMT_GBRAP16 : AV_PIX_FMT_GBRP16;
}

}  // namespace

ZimgGraph& GraphKeeper::graph(const ImageKind& from, const ImageKind& to, bool dither) {
    Kept& kept = m_kept[from.field + 1];
    if (!kept.graph || !(kept.from == from) || !(kept.to == to) || kept.dither != dither) {
        kept.graph = std::make_unique<ZimgGraph>(from, to, dither);
        kept.from = from;
        kept.to = to;
        kept.dither = dither;
    }
    return *kept.graph;
}

void FrameReader::read(const AVFrame& frame, Picture& picture) {
    const std::optional<PlaneLayout> layout = planeLayout(static_cast<AVPixelFormat>(frame.format));
    if (!layout) {
        readUnusual(frame, picture);
        return;
    }
    picture.allocate(m_width, m_height, m_depth);
    const bool sameSize = frame.width == m_width && frame.height == m_height;
    if (frame.interlaced_frame != 0 && sameSize && frame.height > 3 && hasHalfHeightChroma(layout)) {
        convert({&frame, &*layout, 0}, picture);
        convert({&frame, &*layout, 1}, picture);
    } else if (const FrameView view{&frame, &*layout, -1}; !sameSize || !copyBytes(view, picture)) {
        convert(view, picture);
    }
}

void FrameReader::readUnusual(const AVFrame& frame, Picture& picture) {
    AVFrame& planes =
        *planesLike(m_planes, planesFor(static_cast<AVPixelFormat>(frame.format)), frame.width, frame.height);
    m_unusual.convert(frame, planes);
    read(planes, picture);
}

void FrameReader::convert(const FrameView& view, Picture& picture) {
    ImageKind from = kindOf(view);
    // Deeper samples are dithered, which is for zimg to do once it has RGB.
    const auto weights = from.depth == 8 ? weightsFor(from, m_depth) : std::nullopt;
    ImageKind to = weights ? fullChroma(from) : pixelsKind(m_depth, from);
    if (view.frame->width != m_width || view.frame->height != m_height) {
        from.regionWidth = view.width();
        from.regionHeight = view.height();
        to.width = m_width;
        to.height = m_height;
    }
    const bool grey = from.family == Family::kGrey;
    if (grey) {
        to.family = Family::kGrey;
    }
    const bool dither = m_depth == Depth::kEightBit && from.depth > 8;
    const bool alpha = to.color.hasAlpha();
    ZimgGraph::Image target;
    target.rows =
        weights ? packYuvInto(picture, view.field, alpha, *weights) : packInto(picture, view.field, grey, alpha);
    m_graphs.graph(from, to, dither).run(isAligned(view, from) ? inMemory(view) : throughRows(view), target);
}

// 8-bit RGB and grey, exactly.
bool FrameReader::copyBytes(const FrameView& view, Picture& picture) {
    const PlaneLayout& layout = *view.layout;
    const PictureColor color = colorOf(*view.frame);
    if (layout.family == Family::kYuv || layout.type != SampleType::kByte || layout.depth != 8 ||
        color.range != ColorRange::kFull) {
        return false;
    }
    const bool pixels = isPixelBytes(layout);
    const auto at = [&](int channel) {
        return layout.channels[channel].plane < 0 ? kNoByte
                                                  : static_cast<std::uint8_t>(layout.channels[channel].offset);
    };
    const ByteOrder order = {layout.channels[0].step, 4, {at(2), at(1), at(0), at(3)}, false};
    const auto stride = static_cast<std::size_t>(m_width);
    std::vector<std::uint8_t> line(stride * 8);
    std::uint8_t* bytes = line.data() + stride * 4;
    std::uint8_t* planes[4];
    for (std::size_t i = 0; i < 4; i++) {
        planes[i] = line.data() + stride * (layout.family == Family::kGrey && i < 3 ? 0 : i);
    }
    planes[3] = layout.hasAlpha() ? planes[3] : nullptr;
    for (int y = 0; y < m_height; y++) {
        std::uint8_t* target = m_depth == Depth::kFloat ? bytes : picture.row(y);
        if (pixels) {
            reorderPixels(view.frame->data[0] + static_cast<std::ptrdiff_t>(y) * view.frame->linesize[0], m_width,
                          order, target);
        } else {
            for (int i = 0; i < 4; i++) {
                if (layout.channels[i].plane >= 0) {
                    fetchSamples(view, i, y, 0, m_width, planes[i]);
                }
            }
            packPixels(planes, m_width, target);
        }
        if (m_depth == Depth::kFloat) {
            std::transform(bytes, bytes + 4 * stride, samples<float>(picture, y), floatFromByte);
        }
    }
    return true;
}

FrameWriter::FrameWriter(AVPixelFormat format) : m_format(format), m_layout(planeLayout(format)) {
    if (!m_layout || m_layout->mingled) {
        m_layout.reset();
        m_planesWriter = std::make_unique<FrameWriter>(planesFor(format));
    }
}

void FrameWriter::write(const Picture& picture, AVFrame& frame) {
    if (!m_layout) {
        AVFrame& planes = *planesLike(m_planes, planesFor(m_format), frame.width, frame.height);
        m_planesWriter->write(picture, planes);
        m_unusual.convert(planes, frame);
    } else if (frame.interlaced_frame != 0 && frame.height > 3 && hasHalfHeightChroma(m_layout)) {
        convert(picture, {&frame, &*m_layout, 0});
        convert(picture, {&frame, &*m_layout, 1});
    } else if (const FrameView view{&frame, &*m_layout, -1}; !copyBytes(picture, view)) {
        convert(picture, view);
    }
}

void FrameWriter::convert(const Picture& picture, const FrameView& view) {
    ImageKind to = kindOf(view);
    const bool alpha = to.color.hasAlpha();
    const bool grey = to.family == Family::kGrey;
    if (grey) {
        // The luma of JPEG pictures; their chroma is left behind.
        to.family = Family::kYuv;
        to.color.matrix = AVCOL_SPC_SMPTE170M;
    }
    const auto weights = weightsFor(to, picture.depth);
    const ImageKind from = weights ? fullChroma(to) : pixelsKind(picture.depth, to);
    const bool dither = picture.depth == Depth::kFloat && to.depth < 16;
    ZimgGraph::Image source;
    source.rows =
        weights ? splitToYuvFrom(picture, view.field, alpha, *weights) : splitFrom(picture, view.field, alpha);
    ZimgGraph::Image target;
    if (!grey && isAligned(view, to)) {
        target = inMemory(view);
    } else {
        target.rows = [view](int row, int begin, int end, const ZimgGraph::Planes& planes) {
            forChannels(*view.layout, row, begin, end, planes,
                        [&](int channel, int y, int first, int last, const std::uint8_t* samples) {
                            if (y < view.height(channel)) {
                                storeSamples(samples, first, last, view, channel, y);
                            }
                        });
        };
    }
    m_graphs.graph(from, to, dither).run(source, target);
}

bool FrameWriter::copyBytes(const Picture& picture, const FrameView& view) {
    const PlaneLayout& layout = *view.layout;
    if (picture.depth != Depth::kEightBit || !isPixelBytes(layout)) {
        return false;
    }
    ByteOrder order = {4, layout.channels[0].step, {kNoByte, kNoByte, kNoByte, kNoByte}, !layout.hasAlpha()};
    for (int i = 0; i < 4; i++) {
        if (layout.channels[i].plane >= 0) {
            order.source[layout.channels[i].offset] = static_cast<std::uint8_t>(i == 3 ? 3 : 2 - i);
        }
    }
    for (int y = 0; y < view.height(); y++) {
        reorderPixels(picture.row(y), picture.width, order,
                      view.frame->data[0] + static_cast<std::ptrdiff_t>(y) * view.frame->linesize[0]);
    }
    return true;
}

}  // namespace lumiset::media
