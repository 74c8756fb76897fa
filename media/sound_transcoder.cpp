#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "media/track_transcoder.h"

namespace lumiset::media {
namespace {

class SoundTranscoder final : public TrackTranscoder {
public:
    SoundTranscoder(const AVStream& source, const AVOutputFormat& container) {
        const AVCodec* decoder = avcodec_find_decoder(source.codecpar->codec_id);
        const AVCodec* encoder = avcodec_find_encoder(container.audio_codec);
        if (decoder == nullptr || encoder == nullptr) {
            throw MediaError(fmt::format("The sound, coded as {}, cannot be written to this kind of file.",
                                         avcodec_get_name(source.codecpar->codec_id)));
        }
        const std::string failure = "The sound cannot be encoded anew";
        m_decoder.reset(allocated(avcodec_alloc_context3(decoder)));
        avCheck(avcodec_parameters_to_context(m_decoder.get(), source.codecpar), failure);
        m_decoder->pkt_timebase = source.time_base;
        avCheck(avcodec_open2(m_decoder.get(), decoder, nullptr), failure);

        m_encoder.reset(allocated(avcodec_alloc_context3(encoder)));
        m_encoder->sample_fmt = encoder->sample_fmts != nullptr ? encoder->sample_fmts[0] : AV_SAMPLE_FMT_S16;
        m_encoder->sample_rate = supportedRate(*encoder, m_decoder->sample_rate);
        const int channels = std::max(1, m_decoder->ch_layout.nb_channels);
        if (channels <= 2 || m_decoder->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
            av_channel_layout_default(&m_encoder->ch_layout, std::min(channels, 2));
        } else {
            avCheck(av_channel_layout_copy(&m_encoder->ch_layout, &m_decoder->ch_layout), failure);
        }
        m_encoder->time_base = {1, m_encoder->sample_rate};
        m_encoder->bit_rate = 96000 * m_encoder->ch_layout.nb_channels;
        m_encoder->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
        if ((container.flags & AVFMT_GLOBALHEADER) != 0) {
            m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        }
        avCheck(avcodec_open2(m_encoder.get(), encoder, nullptr), failure);
    }

    void transcode(const AVPacket* packet, double baseSeconds, const Take& take) override {
        if (avcodec_send_packet(m_decoder.get(), packet) < 0 && packet != nullptr) {
            return;  // a damaged packet leaves a gap
        }
        while (avcodec_receive_frame(m_decoder.get(), m_frame.get()) >= 0) {
            resample(*m_frame, baseSeconds);
            encodeReady(false, take);
        }
        if (packet == nullptr) {
            encodeReady(true, take);
            avcodec_send_frame(m_encoder.get(), nullptr);
            receive(take);
        }
    }

private:
    static int supportedRate(const AVCodec& codec, int rate) {
        int best = 0;
        for (const int* r = codec.supported_samplerates; r != nullptr && *r != 0; r++) {
            if (best == 0 || std::abs(*r - rate) < std::abs(best - rate)) {
                best = *r;
            }
        }
        return best == 0 ? rate : best;
    }

    void resample(const AVFrame& frame, double baseSeconds) {
        if (!m_resampler) {
            SwrContext* resampler = nullptr;
            AVChannelLayout layout = frame.ch_layout;
            if (layout.order == AV_CHANNEL_ORDER_UNSPEC) {
                av_channel_layout_default(&layout, layout.nb_channels);
            }
            avCheck(
                swr_alloc_set_opts2(&resampler, &m_encoder->ch_layout, m_encoder->sample_fmt, m_encoder->sample_rate,
                                    &layout, static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr),
                "The sound cannot be converted");
            m_resampler.reset(resampler);
            avCheck(swr_init(resampler), "The sound cannot be converted");
        }
        if (frame.best_effort_timestamp != AV_NOPTS_VALUE) {
            const double seconds =
                static_cast<double>(frame.best_effort_timestamp) * av_q2d(m_decoder->pkt_timebase) - baseSeconds;
            const std::int64_t waiting = swr_get_delay(m_resampler.get(), m_encoder->sample_rate);
            const std::int64_t samples = std::llround(seconds * m_encoder->sample_rate);
            if (!m_started) {
                m_started = true;
                m_nextSample = samples;
            }
            const std::int64_t gap = samples - (m_nextSample + waiting);
            if (gap > m_encoder->sample_rate / 20) {
                swr_inject_silence(m_resampler.get(), static_cast<int>(gap));
            }
        }
        avCheck(swr_convert(m_resampler.get(), nullptr, 0, const_cast<const std::uint8_t**>(frame.extended_data),
                            frame.nb_samples),
                "The sound cannot be converted");
    }

    void encodeReady(bool everything, const Take& take) {
        const int whole = m_encoder->frame_size > 0 ? m_encoder->frame_size : 1024;
        while (m_resampler && swr_get_delay(m_resampler.get(), m_encoder->sample_rate) >= (everything ? 1 : whole)) {
            AvFrame frame(allocated(av_frame_alloc()));
            frame->nb_samples = whole;
            frame->format = m_encoder->sample_fmt;
            frame->sample_rate = m_encoder->sample_rate;
            avCheck(av_channel_layout_copy(&frame->ch_layout, &m_encoder->ch_layout), "No memory for sound");
            avCheck(av_frame_get_buffer(frame.get(), 0), "No memory for sound");
            const int made = swr_convert(m_resampler.get(), frame->extended_data, whole, nullptr, 0);
            if (made <= 0) {
                break;
            }
            frame->nb_samples = made;
            frame->pts = m_nextSample;
            m_nextSample += made;
            avCheck(avcodec_send_frame(m_encoder.get(), frame.get()), "The sound cannot be encoded anew");
            receive(take);
        }
    }

    void receive(const Take& take) {
        while (avcodec_receive_packet(m_encoder.get(), m_packet.get()) >= 0) {
            take(*m_packet);
            av_packet_unref(m_packet.get());
        }
    }

    AvResampler m_resampler;
    AvFrame m_frame{allocated(av_frame_alloc())};
    AvPacket m_packet{allocated(av_packet_alloc())};
    std::int64_t m_nextSample = 0;
    bool m_started = false;
};

}  // namespace

std::unique_ptr<TrackTranscoder> soundTranscoder(const AVStream& source, const AVOutputFormat& container) {
    return std::make_unique<SoundTranscoder>(source, container);
}

}  // namespace lumiset::media
