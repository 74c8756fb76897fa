#include "media/convert.h"

#include "media/pixel_loops.h"
#include "media/scaler.h"

namespace lumiset::media {
namespace {

const AVPixFmtDescriptor& descriptorOf(int format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    if (descriptor == nullptr) {
        throw MediaError("The pictures are of an unknown pixel format.");
    }
    return *descriptor;
}

bool has(const AVPixFmtDescriptor& descriptor, std::uint64_t flag) {
    return (descriptor.flags & flag) != 0;
}

// Formats that the scaler turns into 8-bit BGRA, or makes from it, by moving bytes alone.
bool isBytesOfRgb(const AVPixFmtDescriptor& descriptor) {
    return has(descriptor, AV_PIX_FMT_FLAG_PAL) ||
           (has(descriptor, AV_PIX_FMT_FLAG_RGB) && !has(descriptor, AV_PIX_FMT_FLAG_BAYER) &&
            descriptor.nb_components >= 3 && descriptor.comp[0].depth == 8);
}

// RGB and grey of other depths, which the scaler would take through YUV.
bool isReadByLines(const AVPixFmtDescriptor& descriptor, const AVFrame& frame) {
    const bool gray = descriptor.nb_components <= 2;
    return (has(descriptor, AV_PIX_FMT_FLAG_RGB) || (gray && frame.color_range != AVCOL_RANGE_MPEG)) &&
           !has(descriptor, AV_PIX_FMT_FLAG_FLOAT) && !has(descriptor, AV_PIX_FMT_FLAG_BAYER);
}

AVFrame* sameGeometry(AvFrame& kept, int format, int width, int height) {
    if (!kept || kept->format != format || kept->width != width || kept->height != height) {
        kept.reset(allocated(av_frame_alloc()));
        kept->format = format;
        kept->width = width;
        kept->height = height;
        avCheck(av_frame_get_buffer(kept.get(), 64), "No memory for a picture");
    }
    return kept.get();
}

// The 8-bit picture's memory seen as a frame.
AvFrame frameOf(Picture& picture) {
    AvFrame frame(allocated(av_frame_alloc()));
    frame->format = AV_PIX_FMT_BGRA;
    frame->width = picture.width;
    frame->height = picture.height;
    frame->data[0] = picture.data.data();
    frame->linesize[0] = picture.stride;
    return frame;
}

// Component of a descriptor that holds sample i of B, G, R, A: grey stands for all three colours.
int componentOf(const AVPixFmtDescriptor& descriptor, int i) {
    const bool gray = descriptor.nb_components <= 2;
    if (i == 3) {
        return has(descriptor, AV_PIX_FMT_FLAG_ALPHA) ? descriptor.nb_components - 1 : -1;
    }
    return gray ? 0 : 2 - i;
}

template <class Sample>
void readLines(const AVFrame& frame, const AVPixFmtDescriptor& descriptor, std::vector<std::uint16_t>& line,
               Picture& picture) {
    line.resize(static_cast<std::size_t>(frame.width));
    for (int y = 0; y < picture.height; y++) {
        Sample* row = samples<Sample>(picture, y);
        for (int i = 0; i < 4; i++) {
            const int component = componentOf(descriptor, i);
            if (component < 0) {
                for (int x = 0; x < picture.width; x++) {
                    row[4 * x + i] = kOpaque<Sample>;
                }
                continue;
            }
            av_read_image_line2(line.data(), const_cast<const std::uint8_t**>(frame.data), frame.linesize, &descriptor,
                                0, y, component, frame.width, 0, sizeof line[0]);
            const int levels = (1 << descriptor.comp[component].depth) - 1;
            // One bit of ink on paper: zero is white in this one format.
            const int inverted = frame.format == AV_PIX_FMT_MONOWHITE ? levels : 0;
            for (int x = 0; x < picture.width; x++) {
                const int level = line[static_cast<std::size_t>(x)] ^ inverted;
                if constexpr (std::is_same_v<Sample, float>) {
                    row[4 * x + i] = static_cast<float>(level) / static_cast<float>(levels);
                } else {
                    row[4 * x + i] = static_cast<Sample>((level * 255 + levels / 2) / levels);
                }
            }
        }
    }
}

}  // namespace

AVColorSpace yuvMatrix(AVColorSpace tagged, int width, int height) {
    if (tagged != AVCOL_SPC_UNSPECIFIED && tagged != AVCOL_SPC_RGB && tagged != AVCOL_SPC_RESERVED) {
        return tagged;
    }
    return width >= 1280 || height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

struct FrameReader::Scalers : Scaler {
    using Scaler::Scaler;
};
struct FrameWriter::Scalers : Scaler {
    using Scaler::Scaler;
};

FrameReader::FrameReader(int width, int height, Depth depth, int threads)
    : m_width(width), m_height(height), m_depth(depth), m_scalers(std::make_unique<Scalers>(threads)) {}
FrameReader::~FrameReader() = default;

void FrameReader::read(const AVFrame& frame, Picture& picture) {
    const AVPixFmtDescriptor& descriptor = descriptorOf(frame.format);
    picture.allocate(m_width, m_height, m_depth);
    const bool sameSize = frame.width == m_width && frame.height == m_height;
    if (isBytesOfRgb(descriptor) && m_depth == Depth::kEightBit) {
        const AvFrame target = frameOf(picture);
        m_scalers->convert(frame, *target, frame.interlaced_frame != 0);
    } else if (isBytesOfRgb(descriptor)) {
        Picture bytes;
        bytes.allocate(m_width, m_height, Depth::kEightBit);
        const AvFrame target = frameOf(bytes);
        m_scalers->convert(frame, *target, frame.interlaced_frame != 0);
        toFloat(bytes, picture);
    } else if (sameSize && isReadByLines(descriptor, frame)) {
        if (m_depth == Depth::kFloat) {
            readLines<float>(frame, descriptor, m_line, picture);
        } else {
            readLines<std::uint8_t>(frame, descriptor, m_line, picture);
        }
    } else {
        readByScaler(frame, picture);
    }
}

void FrameReader::readByScaler(const AVFrame& frame, Picture& picture) {
    // Planar RGB is what the scaler makes fastest, and with interpolated chroma.
    const bool alpha = has(descriptorOf(frame.format), AV_PIX_FMT_FLAG_ALPHA);
    const bool deep = m_depth == Depth::kFloat;
    const AVPixelFormat format =
        deep ? (alpha ? AV_PIX_FMT_GBRAPF32 : AV_PIX_FMT_GBRPF32) : (alpha ? AV_PIX_FMT_GBRAP : AV_PIX_FMT_GBRP);
    AVFrame& planes = *sameGeometry(m_planes, format, m_width, m_height);
    m_scalers->convert(frame, planes, frame.interlaced_frame != 0);
    for (int y = 0; y < m_height; y++) {
        const std::uint8_t* rows[4] = {};
        for (int i = 0; i < (alpha ? 4 : 3); i++) {
            rows[i] = planes.data[i] + static_cast<std::ptrdiff_t>(y) * planes.linesize[i];
        }
        if (deep) {
            interleaveRow(rows, samples<float>(picture, y), m_width);
        } else {
            interleaveRow(rows, picture.row(y), m_width);
        }
    }
}

FrameWriter::FrameWriter(AVPixelFormat format, int threads)
    : m_format(format), m_scalers(std::make_unique<Scalers>(threads)) {}
FrameWriter::~FrameWriter() = default;

void FrameWriter::write(const Picture& original, AVFrame& frame) {
    const AVPixFmtDescriptor& descriptor = descriptorOf(m_format);
    const Picture* picture = &original;
    if (!has(descriptor, AV_PIX_FMT_FLAG_ALPHA) && !isOpaque(original)) {
        if (original.depth == Depth::kFloat) {
            blendOverBlack<float>(original, m_opaque);
        } else {
            blendOverBlack<std::uint8_t>(original, m_opaque);
        }
        picture = &m_opaque;
    }

    const bool interlaced = frame.interlaced_frame != 0;
    const bool rgb = has(descriptor, AV_PIX_FMT_FLAG_RGB);
    if (rgb && descriptor.comp[0].depth > 8) {
        writeLines(*picture, frame);
    } else if (picture->depth == Depth::kEightBit) {
        const AvFrame bytes = frameOf(const_cast<Picture&>(*picture));  // only read from
        m_scalers->convert(*bytes, frame, interlaced);
    } else if (rgb) {
        Picture rounded;
        toEightBit(*picture, rounded);
        const AvFrame bytes = frameOf(rounded);
        m_scalers->convert(*bytes, frame, interlaced);
    } else {
        AVFrame& planes = *sameGeometry(m_planes, AV_PIX_FMT_GBRAPF32, picture->width, picture->height);
        for (int y = 0; y < picture->height; y++) {
            std::uint8_t* rows[4];
            for (int i = 0; i < 4; i++) {
                rows[i] = planes.data[i] + static_cast<std::ptrdiff_t>(y) * planes.linesize[i];
            }
            splitRow(samples<float>(*picture, y), rows, picture->width);
        }
        m_scalers->convert(planes, frame, interlaced);
    }
}

void FrameWriter::writeLines(const Picture& picture, AVFrame& frame) {
    const AVPixFmtDescriptor& descriptor = descriptorOf(m_format);
    std::vector<std::uint16_t> line(static_cast<std::size_t>(picture.width));
    const int levels = (1 << descriptor.comp[0].depth) - 1;
    // The library's line writer only sets bits.
    for (int plane = 0; plane < 4 && frame.data[plane] != nullptr; plane++) {
        const std::ptrdiff_t stride = frame.linesize[plane];
        std::fill_n(frame.data[plane], stride * frame.height, std::uint8_t{0});
    }
    for (int y = 0; y < picture.height; y++) {
        for (int i = 0; i < 4; i++) {
            const int component = componentOf(descriptor, i);
            if (component < 0) {
                continue;
            }
            for (int x = 0; x < picture.width; x++) {
                line[static_cast<std::size_t>(x)] =
                    picture.depth == Depth::kFloat
                        ? quantize(samples<float>(picture, y)[4 * x + i], static_cast<float>(levels))
                        : static_cast<std::uint16_t>((picture.row(y)[4 * x + i] * levels + 127) / 255);
            }
            av_write_image_line2(line.data(), frame.data, frame.linesize, &descriptor, 0, y, component, picture.width,
                                 sizeof line[0]);
        }
    }
}

}  // namespace lumiset::media
