#include "media/decoder.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

namespace lumiset::media {
namespace {

std::string displayName(const Input& input) {
    return input.isPipe() ? "standard input" : "'" + input.name + "'";
}

// The built-in VP8 and VP9 decoders leave out the second stream that holds the alpha.
const AVCodec* findDecoder(const AVStream& stream) {
    const AVDictionaryEntry* alpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
    if (alpha != nullptr && std::string(alpha->value) == "1") {
        const AVCodecID id = stream.codecpar->codec_id;
        const char* name = id == AV_CODEC_ID_VP9 ? "libvpx-vp9" : id == AV_CODEC_ID_VP8 ? "libvpx" : "";
        if (const AVCodec* codec = avcodec_find_decoder_by_name(name)) {
            return codec;
        }
    }
    return avcodec_find_decoder(stream.codecpar->codec_id);
}

}  // namespace

Decoder::Decoder(const Input& input)
    : m_input(input), m_frame(allocated(av_frame_alloc())), m_packet(allocated(av_packet_alloc())) {
    silenceLibraries();
    openContainer();
    openCodec();
}

bool Decoder::isStill() const {
    const std::string demuxer = m_container->iformat->name;
    return demuxer == "image2" || demuxer.ends_with("_pipe");
}

void Decoder::openContainer() {
    std::error_code ignored;
    if (!m_input.isPipe() && std::filesystem::is_directory(m_input.name, ignored)) {
        throw MediaError(fmt::format("'{}' is a folder, not a picture or video.", m_input.name));
    }
    AVDictionary* options = nullptr;
    const AVInputFormat* demuxer = nullptr;
    if (m_input.sequence) {
        demuxer = av_find_input_format("image2");
        av_dict_set(&options, "pattern_type", m_input.sequence->glob ? "glob" : "sequence", 0);
        if (!m_input.sequence->glob) {
            av_dict_set_int(&options, "start_number", *m_input.sequence->first, 0);
            av_dict_set_int(&options, "start_number_range", 1, 0);
        }
        const Rational rate = m_input.sequenceRate;
        av_dict_set(&options, "framerate", fmt::format("{}/{}", rate.num, rate.den).c_str(), 0);
    } else {
        av_dict_set(&options, "pattern_type", "none", 0);
    }
    AVFormatContext* container = nullptr;
    if (m_input.isPipe()) {
        m_standardInput = std::make_unique<StandardInput>();
        container = allocated(avformat_alloc_context());
        container->pb = m_standardInput->io();
    }
    const int result = avformat_open_input(&container, m_input.url().c_str(), demuxer, &options);
    av_dict_free(&options);
    const std::string shown = displayName(m_input);
    // The readers of some kinds answer what they like of a bad header.
    if (result == AVERROR_INVALIDDATA || result == AVERROR_EOF || result == AVERROR(EBUSY) ||
        result == AVERROR(EINVAL) || result == AVERROR(EPERM) || result == AVERROR_PATCHWELCOME ||
        result == AVERROR_UNKNOWN) {
        throw MediaError(fmt::format("Cannot read {}: it is no picture or video, or it is damaged.", shown));
    }
    avCheck(result, "Cannot open " + shown);
    m_container.reset(container);
    // Any text at all passes for a picture made of characters.
    if (std::string(container->iformat->name) == "tty") {
        throw MediaError(fmt::format("Cannot read {}: it is text, not a picture or video.", shown));
    }
    avCheck(avformat_find_stream_info(container, nullptr), "Cannot read " + shown);
    const int index = av_find_best_stream(container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0 || (container->streams[index]->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
        throw MediaError(fmt::format("There is no picture or video in {}.", shown));
    }
    for (unsigned i = 0; i < container->nb_streams; i++) {
        container->streams[i]->discard = static_cast<int>(i) == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
        AVCodecParameters* copy = allocated(avcodec_parameters_alloc());
        m_tracks.emplace_back(copy, FreeByAddress<avcodec_parameters_free>());
        avCheck(avcodec_parameters_copy(copy, container->streams[i]->codecpar), "Cannot read " + shown);
    }
    m_stream = container->streams[index];
}

void Decoder::openCodec() {
    const AVCodec* codec = findDecoder(*m_stream);
    if (codec == nullptr) {
        throw MediaError(fmt::format("The video in {} is coded as {}, which cannot be decoded here.",
                                     displayName(m_input), avcodec_get_name(m_stream->codecpar->codec_id)));
    }
    m_codec.reset(allocated(avcodec_alloc_context3(codec)));
    avCheck(avcodec_parameters_to_context(m_codec.get(), m_stream->codecpar), "Cannot decode " + displayName(m_input));
    m_codec->pkt_timebase = m_stream->time_base;
    m_codec->thread_count = m_input.threads;
    if (isStill() && codec->id != AV_CODEC_ID_TIFF) {
        // A picture file is whole or it is not; errors are not worth concealing. TIFF's decoder tells of missing rows
        // anyway, and this strictness would have it refuse what this very library writes.
        m_codec->err_recognition = AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER | AV_EF_EXPLODE;
    }
    avCheck(avcodec_open2(m_codec.get(), codec, nullptr), "Cannot decode " + displayName(m_input));
}

void Decoder::failDamaged(int error) const {
    const std::string reason = error == AVERROR_INVALIDDATA || error == AVERROR_EOF || error == AVERROR(EIO)
                                   ? "the file is damaged or ends too early"
                                   : avErrorText(error);
    throw MediaError(m_anyFrame
                         ? fmt::format("Cannot read {} after {:.2f} s: {}.", displayName(m_input), m_endSeconds, reason)
                         : fmt::format("Cannot read {}: {}.", displayName(m_input), reason));
}

// Feeds the decoder once; false when it has been told of the end.
bool Decoder::sendPacket() {
    int result = av_read_frame(m_container.get(), m_packet.get());
    const AVIOContext* io = m_container->pb;
    if (result == AVERROR_EOF && io != nullptr && io->error < 0 && io->error != AVERROR_EOF) {
        result = io->error;
    }
    if (result == AVERROR_EOF) {
        avcodec_send_packet(m_codec.get(), nullptr);
        return false;
    }
    if (result < 0) {
        failDamaged(result);
    }
    if (m_packet->stream_index == m_stream->index) {
        // Broadcast streams mark packets for reasons that decoders take in their stride.
        const bool broadcast = std::string(m_container->iformat->name) == "mpegts";
        if ((m_packet->flags & AV_PKT_FLAG_CORRUPT) != 0 && !broadcast) {
            failDamaged(AVERROR_INVALIDDATA);
        }
        m_read = {m_packet->pos, m_packet->size};
        const int sent = avcodec_send_packet(m_codec.get(), m_packet.get());
        if (sent < 0 && (m_anyFrame || isStill())) {
            failDamaged(sent);
        }
    }
    av_packet_unref(m_packet.get());
    return true;
}

const AVFrame* Decoder::next() {
    while (true) {
        const int result = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (result == AVERROR_EOF) {
            if (!m_anyFrame) {
                failDamaged(AVERROR_INVALIDDATA);
            }
            if (endsTooEarly(*m_container, *m_stream, m_read)) {
                failDamaged(AVERROR_EOF);
            }
            return nullptr;
        }
        if (result == AVERROR(EAGAIN)) {
            if (!m_flushed) {
                m_flushed = !sendPacket();
            }
            continue;
        }
        // Streams cut out of broadcasts begin with pictures whose references are missing; later errors are damage.
        const bool damaged = result < 0 || (m_frame->flags & AV_FRAME_FLAG_CORRUPT) != 0 ||
                             (m_frame->decode_error_flags &
                              (FF_DECODE_ERROR_INVALID_BITSTREAM | FF_DECODE_ERROR_CONCEALMENT_ACTIVE)) != 0;
        if (damaged && (m_anyFrame || isStill())) {
            failDamaged(result < 0 ? result : AVERROR_INVALIDDATA);
        }
        if (!damaged) {
            m_anyFrame = true;
            const std::int64_t pts = m_frame->best_effort_timestamp;
            if (pts != AV_NOPTS_VALUE) {
                const std::int64_t start = m_stream->start_time == AV_NOPTS_VALUE ? 0 : m_stream->start_time;
                m_endSeconds = static_cast<double>(pts - start) * av_q2d(m_stream->time_base);
            }
            return m_frame.get();
        }
    }
}

bool Decoder::seek(std::int64_t pts) {
    if (av_seek_frame(m_container.get(), m_stream->index, pts, AVSEEK_FLAG_BACKWARD) < 0) {
        return false;
    }
    avcodec_flush_buffers(m_codec.get());
    m_anyFrame = false;
    m_flushed = false;
    return true;
}

}  // namespace lumiset::media
