#include "media/video_encoder.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "media/picture_color.h"

namespace lumiset::media {
namespace {

// What the pictures' description becomes in this kind of file.
PictureColor codedColor(const VideoPlan& plan, const VideoFormat& format) {
    PictureColor color = format.color;
    if (plan.fullRange) {
        // JPEG knows one matrix and the full range only.
        color.matrix = AVCOL_SPC_BT470BG;
        color.range = ColorRange::kFull;
    } else if (!plan.keepsRange) {
        color.range = ColorRange::kUnknown;
        color.chromaPosition = -1;
    }
    // A y4m header has no place for the matrix, so readers go by the size.
    if (plan.codec->id == AV_CODEC_ID_WRAPPED_AVFRAME) {
        color.matrix = AVCOL_SPC_UNSPECIFIED;
    }
    color = settledColor(color, plan.format, format.width, format.height);
    if (color.matrix == AVCOL_SPC_BT709) {
        color.primaries = color.primaries == AVCOL_PRI_UNSPECIFIED ? AVCOL_PRI_BT709 : color.primaries;
        color.transfer = color.transfer == AVCOL_TRC_UNSPECIFIED ? AVCOL_TRC_BT709 : color.transfer;
    }
    return color;
}

// Encoders take smaller pictures than come back as they were.
bool readsBack(AVCodecID codec, const VideoFormat& format) {
    constexpr int kBlock = 16;
    constexpr int kNarrowestTheora = 18;  // that FFmpeg decodes
    if (codec == AV_CODEC_ID_VP8 || codec == AV_CODEC_ID_UTVIDEO) {
        return std::min(format.width, format.height) >= kBlock;
    }
    return codec != AV_CODEC_ID_THEORA || format.width >= kNarrowestTheora;
}

AvCodecContext openEncoder(const VideoPlan& plan, const VideoFormat& format, AVRational timeBase, int threads,
                           bool globalHeader, const std::string& failure) {
    silenceLibraries();
    AvCodecContext context(allocated(avcodec_alloc_context3(plan.codec)));
    context->width = format.width;
    context->height = format.height;
    context->pix_fmt = plan.format;
    context->time_base = timeBase;
    context->framerate = avRational(format.frameRate);
    context->sample_aspect_ratio = avRational(format.pixelAspect);
    context->thread_count = threads;
    if (plan.profile != FF_PROFILE_UNKNOWN) {
        context->profile = plan.profile;
    }
    if (plan.qscale >= 0) {
        context->flags |= AV_CODEC_FLAG_QSCALE;
        context->global_quality = plan.qscale * FF_QP2LAMBDA;
        context->qmin = 1;
    }
    context->field_order = !format.interlaced ? AV_FIELD_PROGRESSIVE : format.topFieldFirst ? AV_FIELD_TT : AV_FIELD_BB;
    if (format.interlaced && plan.codesFields) {
        context->flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
    }
    if (globalHeader) {
        context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    context->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    const PictureColor color = codedColor(plan, format);
    setColor(*context, color);
    context->chroma_sample_location = chromaLocation(color);

    AVDictionary* options = nullptr;
    for (const auto& [name, value] : plan.options) {
        av_dict_set(&options, name, value.c_str(), 0);
    }
    const int result = avcodec_open2(context.get(), plan.codec, &options);
    av_dict_free(&options);
    const int refusals[] = {AVERROR(EINVAL), AVERROR(ENOSYS),     AVERROR_EXTERNAL,
                            AVERROR_UNKNOWN, AVERROR_INVALIDDATA, AVERROR_PATCHWELCOME};
    if (!readsBack(plan.codec->id, format) ||
        std::find(std::begin(refusals), std::end(refusals), result) != std::end(refusals)) {
        // Most often a size: some codecs have a smallest one, or even ones alone.
        throw MediaError(fmt::format("{}: it refuses pictures of {}x{}, {:.5g} a second.", failure, format.width,
                                     format.height, format.frameRate.value()));
    }
    avCheck(result, failure);
    return context;
}

}  // namespace

VideoEncoder::VideoEncoder(const VideoPlan& plan, const VideoFormat& format, AVRational timeBase, int threads,
                           bool globalHeader, const std::string& shownName)
    : m_failure("Cannot encode '" + shownName + "' as " + plan.codec->name),
      m_context(openEncoder(plan, format, timeBase, threads, globalHeader, m_failure)),
      m_writers([format = plan.format] { return FrameWriter(format); }),
      m_frames(std::make_shared<SpareFrames>()),
      m_packet(allocated(av_packet_alloc())) {}

std::shared_ptr<AVFrame> VideoEncoder::frameOf(const Picture& picture) {
    const AvFrame like(allocated(av_frame_alloc()));
    like->width = m_context->width;
    like->height = m_context->height;
    like->format = m_context->pix_fmt;
    like->colorspace = m_context->colorspace;
    like->color_range = m_context->color_range;
    like->color_primaries = m_context->color_primaries;
    like->color_trc = m_context->color_trc;
    like->chroma_location = m_context->chroma_sample_location;
    like->sample_aspect_ratio = m_context->sample_aspect_ratio;
    like->quality = m_context->global_quality;
    std::shared_ptr<AVFrame> frame = m_frames->take(*like);
    frame->interlaced_frame = picture.interlaced ? 1 : 0;
    frame->top_field_first = picture.interlaced && picture.topFieldFirst ? 1 : 0;
    frame->pict_type = AV_PICTURE_TYPE_NONE;
    m_writers.borrow()->write(picture, *frame);
    return frame;
}

void VideoEncoder::send(std::shared_ptr<AVFrame> frame, std::int64_t pts) {
    m_latest = std::move(frame);
    repeat(pts);
}

void VideoEncoder::repeat(std::int64_t pts) {
    m_latest->pts = pts;
    avCheck(avcodec_send_frame(m_context.get(), m_latest.get()), m_failure);
}

void VideoEncoder::sendEnd() {
    avCheck(avcodec_send_frame(m_context.get(), nullptr), m_failure);
}

bool VideoEncoder::receiveOne() {
    const int result = avcodec_receive_packet(m_context.get(), m_packet.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
        return false;
    }
    avCheck(result, m_failure);
    return true;
}

}  // namespace lumiset::media
