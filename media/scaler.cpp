#include "media/scaler.h"

#include <thread>

#include "media/convert.h"

namespace lumiset::media {
namespace {

// Chroma positions in the scaler's units: 256ths of a luma sample.
constexpr int kChromaUnset = -513;
constexpr int kChromaBeside = 0;
constexpr int kChromaBetween = 128;
constexpr int kChromaTopField = 64;
constexpr int kChromaBottomField = 192;

constexpr int kNoDither = 0;

bool isFullRange(const AVFrame& frame, const AVPixFmtDescriptor& descriptor) {
    const std::string name = descriptor.name;
    return frame.color_range == AVCOL_RANGE_JPEG || name.starts_with("yuvj");
}

// A frame that borrows the memory of another: whole, or one field of it.
AvFrame borrow(const AVFrame& frame, int field) {
    AvFrame part(allocated(av_frame_alloc()));
    part->format = frame.format;
    part->width = frame.width;
    part->height = field < 0 ? frame.height : (frame.height + 1 - field) / 2;
    for (int i = 0; i < 4 && frame.data[i] != nullptr; i++) {
        const bool palette = i == 1 && frame.format == AV_PIX_FMT_PAL8;
        part->data[i] = frame.data[i] + (field == 1 && !palette ? frame.linesize[i] : 0);
        part->linesize[i] = frame.linesize[i] * (field < 0 || palette ? 1 : 2);
    }
    // The library copies frames that are not reference counted; this reference owns nothing.
    part->buf[0] = allocated(av_buffer_create(
        frame.data[0], 1, [](void*, std::uint8_t*) {}, nullptr, 0));
    return part;
}

}  // namespace

Scaler::Side Scaler::sideOf(const AVFrame& frame, int field) {
    const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const bool rgb = (descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    Side side = {frame.format, frame.width, frame.height, AVCOL_SPC_BT709, 1, kChromaUnset, kChromaUnset};
    if (!rgb) {
        side.matrix = yuvMatrix(frame.colorspace, frame.width, frame.height);
        side.fullRange = isFullRange(frame, descriptor);
    }
    if (descriptor.log2_chroma_w == 1 && !rgb) {
        const bool between = frame.chroma_location == AVCHROMA_LOC_CENTER ||
                             (frame.chroma_location == AVCHROMA_LOC_UNSPECIFIED && side.fullRange != 0);
        side.chromaX = between ? kChromaBetween : kChromaBeside;
    }
    if (descriptor.log2_chroma_h == 1 && !rgb) {
        side.chromaY = frame.chroma_location == AVCHROMA_LOC_TOPLEFT ? kChromaBeside : kChromaBetween;
        if (field >= 0) {
            side.chromaY = field == 0 ? kChromaTopField : kChromaBottomField;
        }
    }
    return side;
}

void Scaler::convertPart(const AVFrame& from, AVFrame& to, int field) {
    Side fromSide = sideOf(from, field);
    Side toSide = sideOf(to, field);
    const AvFrame source = borrow(from, field);
    const AvFrame target = borrow(to, field);
    fromSide.height = source->height;
    toSide.height = target->height;

    Context& context = m_contexts[field + 1];
    if (!context.sws || !(context.from == fromSide) || !(context.to == toSide)) {
        context = {fromSide, toSide, AvScaler(allocated(sws_alloc_context()))};
        SwsContext* sws = context.sws.get();
        const int threads = m_threads > 0 ? m_threads : static_cast<int>(std::thread::hardware_concurrency());
        const std::pair<const char*, int> settings[] = {
            {"srcw", fromSide.width},
            {"srch", fromSide.height},
            {"src_format", fromSide.format},
            {"dstw", toSide.width},
            {"dsth", toSide.height},
            {"dst_format", toSide.format},
            {"src_h_chr_pos", fromSide.chromaX},
            {"src_v_chr_pos", fromSide.chromaY},
            {"dst_h_chr_pos", toSide.chromaX},
            {"dst_v_chr_pos", toSide.chromaY},
            {"sws_flags", SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT},
            {"sws_dither", kNoDither},
            {"threads", std::max(1, std::min(threads, 4))},
        };
        for (const auto& [name, value] : settings) {
            av_opt_set_int(sws, name, value, 0);
        }
        avCheck(sws_init_context(sws, nullptr, nullptr),
                std::string("Pictures of the kind ") + av_get_pix_fmt_name(static_cast<AVPixelFormat>(from.format)) +
                    " cannot be converted");
        sws_setColorspaceDetails(sws, sws_getCoefficients(fromSide.matrix), fromSide.fullRange,
                                 sws_getCoefficients(toSide.matrix), toSide.fullRange, 0, 1 << 16, 1 << 16);
    }
    avCheck(sws_scale_frame(context.sws.get(), target.get(), source.get()), "A picture cannot be converted");
}

void Scaler::convert(const AVFrame& from, AVFrame& to, bool interlaced) {
    const auto hasHalfHeightChroma = [](const AVFrame& frame) {
        return av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))->log2_chroma_h == 1;
    };
    if (interlaced && from.height == to.height && from.height > 3 &&
        (hasHalfHeightChroma(from) || hasHalfHeightChroma(to))) {
        convertPart(from, to, 0);
        convertPart(from, to, 1);
    } else {
        convertPart(from, to, -1);
    }
}

}  // namespace lumiset::media
