#include "media/video_encoder.h"

namespace lumiset::media {
namespace {

void tagColors(AVCodecContext& context, const VideoPlan& plan, const VideoFormat& format) {
    const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(plan.format);
    if (plan.fullRange) {
        // JPEG knows one matrix and the full range only.
        context.colorspace = AVCOL_SPC_BT470BG;
        context.color_range = AVCOL_RANGE_JPEG;
        return;
    }
    context.color_primaries = static_cast<AVColorPrimaries>(format.color.primaries);
    context.color_trc = static_cast<AVColorTransferCharacteristic>(format.color.transfer);
    if ((descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0) {
        context.colorspace = AVCOL_SPC_RGB;
        context.color_range = AVCOL_RANGE_JPEG;
        return;
    }
    // A y4m header has no place for the matrix, so readers go by the size.
    const bool untold = plan.codec->id == AV_CODEC_ID_WRAPPED_AVFRAME;
    const auto tagged = untold ? AVCOL_SPC_UNSPECIFIED : static_cast<AVColorSpace>(format.color.matrix);
    context.colorspace = yuvMatrix(tagged, format.width, format.height);
    context.color_range = AVCOL_RANGE_MPEG;
    if (context.colorspace == AVCOL_SPC_BT709) {
        if (context.color_primaries == AVCOL_PRI_UNSPECIFIED) {
            context.color_primaries = AVCOL_PRI_BT709;
        }
        if (context.color_trc == AVCOL_TRC_UNSPECIFIED) {
            context.color_trc = AVCOL_TRC_BT709;
        }
    }
    if (descriptor.log2_chroma_w == 1) {
        context.chroma_sample_location = AVCHROMA_LOC_LEFT;
    }
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
    tagColors(*context, plan, format);

    AVDictionary* options = nullptr;
    for (const auto& [name, value] : plan.options) {
        av_dict_set(&options, name, value.c_str(), 0);
    }
    const int result = avcodec_open2(context.get(), plan.codec, &options);
    av_dict_free(&options);
    avCheck(result, failure);
    return context;
}

}  // namespace

VideoEncoder::VideoEncoder(const VideoPlan& plan, const VideoFormat& format, AVRational timeBase, int threads,
                           bool globalHeader, const std::string& shownName)
    : m_failure("Cannot encode '" + shownName + "' as " + plan.codec->name),
      m_context(openEncoder(plan, format, timeBase, threads, globalHeader, m_failure)),
      m_writer(plan.format, threads),
      m_frame(allocated(av_frame_alloc())),
      m_packet(allocated(av_packet_alloc())) {}

void VideoEncoder::send(const Picture& picture, std::int64_t pts) {
    // Encoders keep frames that they look ahead at; a frame still in use is left to them.
    if (m_frame->buf[0] == nullptr || av_frame_is_writable(m_frame.get()) == 0) {
        m_frame.reset(allocated(av_frame_alloc()));
        m_frame->width = m_context->width;
        m_frame->height = m_context->height;
        m_frame->format = m_context->pix_fmt;
        m_frame->colorspace = m_context->colorspace;
        m_frame->color_range = m_context->color_range;
        m_frame->color_primaries = m_context->color_primaries;
        m_frame->color_trc = m_context->color_trc;
        m_frame->chroma_location = m_context->chroma_sample_location;
        m_frame->sample_aspect_ratio = m_context->sample_aspect_ratio;
        avCheck(av_frame_get_buffer(m_frame.get(), 64), m_failure);
    }
    m_frame->interlaced_frame = picture.interlaced ? 1 : 0;
    m_frame->top_field_first = picture.interlaced && picture.topFieldFirst ? 1 : 0;
    m_frame->quality = m_context->global_quality;
    m_frame->pict_type = AV_PICTURE_TYPE_NONE;
    m_writer.write(picture, *m_frame);
    sendFrame(pts);
}

void VideoEncoder::repeat(std::int64_t pts) {
    sendFrame(pts);
}

void VideoEncoder::sendFrame(std::int64_t pts) {
    m_frame->pts = pts;
    avCheck(avcodec_send_frame(m_context.get(), m_frame.get()), m_failure);
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
