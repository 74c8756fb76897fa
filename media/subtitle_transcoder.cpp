#include <cmath>
#include <vector>

#include "media/track_transcoder.h"

namespace lumiset::media {
namespace {

bool isText(AVCodecID id) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(id);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_TEXT_SUB) != 0;
}

struct Subtitle : AVSubtitle {
    Subtitle() : AVSubtitle{} {}
    ~Subtitle() { avsubtitle_free(this); }
    Subtitle(const Subtitle&) = delete;
    Subtitle& operator=(const Subtitle&) = delete;
};

class SubtitleTranscoder final : public TrackTranscoder {
public:
    SubtitleTranscoder(const AVStream& source, const AVCodec& decoder, const AVCodec& encoder) {
        const std::string failure = "The subtitles cannot be written anew";
        m_decoder.reset(allocated(avcodec_alloc_context3(&decoder)));
        avCheck(avcodec_parameters_to_context(m_decoder.get(), source.codecpar), failure);
        m_decoder->pkt_timebase = source.time_base;
        avCheck(avcodec_open2(m_decoder.get(), &decoder, nullptr), failure);
        m_encoder.reset(allocated(avcodec_alloc_context3(&encoder)));
        m_encoder->time_base = {1, 1000};
        // The styles that all texts share.
        m_encoder->subtitle_header = static_cast<std::uint8_t*>(
            allocated(av_mallocz(static_cast<std::size_t>(m_decoder->subtitle_header_size) + 1)));
        m_encoder->subtitle_header_size = m_decoder->subtitle_header_size;
        if (m_decoder->subtitle_header_size > 0) {
            std::copy_n(m_decoder->subtitle_header, m_decoder->subtitle_header_size, m_encoder->subtitle_header);
        }
        avCheck(avcodec_open2(m_encoder.get(), &encoder, nullptr), failure);
    }

    void transcode(const AVPacket* packet, double baseSeconds, const Take& take) override {
        if (packet == nullptr) {
            return;  // every packet is a text by itself
        }
        Subtitle subtitle;
        int decoded = 0;
        const AvPacket copy(allocated(av_packet_clone(packet)));
        if (avcodec_decode_subtitle2(m_decoder.get(), &subtitle, &decoded, copy.get()) < 0 || decoded == 0 ||
            subtitle.num_rects == 0) {
            return;
        }
        const double timeBase = av_q2d(m_decoder->pkt_timebase);
        const double begin = static_cast<double>(packet->pts) * timeBase - baseSeconds;
        const double length = static_cast<double>(packet->duration) * timeBase;
        subtitle.pts = std::llround(begin * AV_TIME_BASE);
        subtitle.start_display_time = 0;
        subtitle.end_display_time = static_cast<std::uint32_t>(std::llround(length * 1000));
        constexpr int kMostBytes = 1 << 20;
        m_bytes.resize(kMostBytes);
        const int size = avcodec_encode_subtitle(m_encoder.get(), m_bytes.data(), kMostBytes, &subtitle);
        if (size <= 0) {
            return;
        }
        const AvPacket written(allocated(av_packet_alloc()));
        avCheck(av_new_packet(written.get(), size), "No memory for subtitles");
        std::copy_n(m_bytes.data(), size, written->data);
        written->pts = written->dts = std::llround(begin * 1000);
        written->duration = subtitle.end_display_time;
        take(*written);
    }

private:
    std::vector<std::uint8_t> m_bytes;
};

}  // namespace

std::unique_ptr<TrackTranscoder> subtitleTranscoder(const AVStream& source, const AVOutputFormat& container) {
    const AVCodec* decoder = avcodec_find_decoder(source.codecpar->codec_id);
    const std::string name = container.name;
    const bool quickTime = name == "mp4" || name == "mov";  // of which the library does not tell
    const AVCodec* encoder = avcodec_find_encoder(quickTime ? AV_CODEC_ID_MOV_TEXT : container.subtitle_codec);
    if (decoder == nullptr || encoder == nullptr || !isText(decoder->id) || !isText(encoder->id)) {
        return nullptr;
    }
    return std::make_unique<SubtitleTranscoder>(source, *decoder, *encoder);
}

}  // namespace lumiset::media
