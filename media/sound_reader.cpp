#include "media/sound_reader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "media/av.h"

namespace lumiset::media {
namespace {

constexpr const char* kFailure = "The sound cannot be played";

class FileSound final : public SoundReader {
public:
    FileSound(AvInput container, AVStream* stream, double firstPictureSeconds)
        : m_container(std::move(container)), m_stream(stream), m_base(firstPictureSeconds) {
        const AVCodec* decoder = avcodec_find_decoder(stream->codecpar->codec_id);
        if (decoder == nullptr) {
            throw MediaError("The sound is of an unknown kind.");
        }
        m_decoder.reset(allocated(avcodec_alloc_context3(decoder)));
        avCheck(avcodec_parameters_to_context(m_decoder.get(), stream->codecpar), kFailure);
        m_decoder->pkt_timebase = stream->time_base;
        avCheck(avcodec_open2(m_decoder.get(), decoder, nullptr), kFailure);
        for (unsigned i = 0; i < m_container->nb_streams; ++i) {
            m_container->streams[i]->discard = m_container->streams[i] == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
        }
    }

    void seek(double seconds) override {
        m_waiting.clear();
        m_taken = 0;
        m_ended = false;
        m_resampler.reset();
        m_next = std::llround(seconds * kSoundRate);
        // Decoders of lossy sound need a packet or two before what comes out is right.
        constexpr double kRunUp = 0.2;
        const auto place = static_cast<std::int64_t>((seconds + m_base - kRunUp) / av_q2d(m_stream->time_base));
        if (av_seek_frame(m_container.get(), m_stream->index, std::max<std::int64_t>(0, place), AVSEEK_FLAG_BACKWARD) <
            0) {
            avformat_seek_file(m_container.get(), -1, INT64_MIN, 0, 0, 0);
        }
        avcodec_flush_buffers(m_decoder.get());
    }

    std::int64_t read(float* frames, std::int64_t count) override {
        std::int64_t done = 0;
        while (done < count) {
            const auto ready = static_cast<std::int64_t>(m_waiting.size() / kSoundChannels) - m_taken;
            if (ready > 0) {
                const std::int64_t part = std::min(ready, count - done);
                std::copy_n(m_waiting.begin() + kSoundChannels * m_taken, kSoundChannels * part,
                            frames + kSoundChannels * done);
                m_taken += part;
                done += part;
                m_next += part;
            } else if (m_ended || !decode()) {
                m_ended = true;
                std::fill(frames + kSoundChannels * done, frames + kSoundChannels * count, 0.0F);
                break;
            }
        }
        return done;
    }

private:
    /// Puts the next decoded samples where `m_next` wants them; false at the end.
    bool decode() {
        m_waiting.clear();
        m_taken = 0;
        while (m_waiting.empty()) {
            const int got = avcodec_receive_frame(m_decoder.get(), m_frame.get());
            if (got == 0) {
                take(*m_frame);
            } else if (got != AVERROR(EAGAIN)) {
                return false;
            } else {
                feed();
            }
        }
        return true;
    }

    void feed() {
        for (;;) {
            if (av_read_frame(m_container.get(), m_packet.get()) < 0) {
                avcodec_send_packet(m_decoder.get(), nullptr);
                return;
            }
            const bool ours = m_packet->stream_index == m_stream->index;
            if (ours) {
                avcodec_send_packet(m_decoder.get(), m_packet.get());  // a damaged packet leaves a gap
            }
            av_packet_unref(m_packet.get());
            if (ours) {
                return;
            }
        }
    }

    // Streams may change in the middle.
    void startResampler(const AVFrame& frame) {
        SwrContext* resampler = nullptr;
        AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
        AVChannelLayout layout = frame.ch_layout;
        if (layout.order == AV_CHANNEL_ORDER_UNSPEC) {
            av_channel_layout_default(&layout, layout.nb_channels);
        }
        avCheck(swr_alloc_set_opts2(&resampler, &stereo, AV_SAMPLE_FMT_FLT, kSoundRate, &layout,
                                    static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr),
                kFailure);
        m_resampler.reset(resampler);
        avCheck(swr_init(resampler), kFailure);
        m_format = frame.format;
        m_rate = frame.sample_rate;
        m_channels = frame.ch_layout.nb_channels;
        m_place = frame.best_effort_timestamp == AV_NOPTS_VALUE ? m_next : placeOf(frame);
    }

    void take(const AVFrame& frame) {
        if (!m_resampler || frame.format != m_format || frame.sample_rate != m_rate ||
            frame.ch_layout.nb_channels != m_channels) {
            startResampler(frame);
        }
        // Gaps in the track stay gaps.
        if (frame.best_effort_timestamp != AV_NOPTS_VALUE) {
            const std::int64_t gap = placeOf(frame) - (m_place + swr_get_delay(m_resampler.get(), kSoundRate));
            if (gap > kSoundRate / 20) {
                swr_inject_silence(m_resampler.get(), static_cast<int>(std::min<std::int64_t>(gap, INT32_MAX)));
            }
        }
        const std::int64_t room = swr_get_out_samples(m_resampler.get(), frame.nb_samples);
        std::vector<float> samples(static_cast<std::size_t>(kSoundChannels * room));
        auto* target = reinterpret_cast<std::uint8_t*>(samples.data());
        const int made = avCheck(swr_convert(m_resampler.get(), &target, static_cast<int>(room),
                                             const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples),
                                 kFailure);
        samples.resize(static_cast<std::size_t>(kSoundChannels) * static_cast<std::size_t>(made));
        // What lies before the wanted moment is left out, and a track that begins later begins with silence.
        const std::int64_t late = m_place - m_next;
        if (late > 0) {
            samples.insert(
                samples.begin(),
                static_cast<std::size_t>(kSoundChannels * std::min<std::int64_t>(late, std::int64_t{600} * kSoundRate)),
                0.0F);
        } else if (late < 0) {
            const std::int64_t early = std::min<std::int64_t>(-late, made);
            samples.erase(samples.begin(), samples.begin() + kSoundChannels * early);
        }
        m_place += made;
        m_waiting = std::move(samples);
    }

    [[nodiscard]] std::int64_t placeOf(const AVFrame& frame) const {
        return std::llround((static_cast<double>(frame.best_effort_timestamp) * av_q2d(m_stream->time_base) - m_base) *
                            kSoundRate);
    }

    AvInput m_container;
    AVStream* m_stream;
    double m_base;  ///< the container's time of the first picture
    AvCodecContext m_decoder;
    AvResampler m_resampler;
    int m_format = 0;  ///< of what goes into it
    int m_rate = 0;
    int m_channels = 0;
    AvFrame m_frame{allocated(av_frame_alloc())};
    AvPacket m_packet{allocated(av_packet_alloc())};
    std::vector<float> m_waiting;  ///< interleaved, from `m_next` on
    std::int64_t m_taken = 0;      ///< frames of it
    std::int64_t m_next = 0;       ///< the frame that is read next, counted from the first picture
    std::int64_t m_place = 0;      ///< of what the resampler gives next
    bool m_ended = false;
};

}  // namespace

std::unique_ptr<SoundReader> openSound(const Source::Origin& origin) {
    if (origin.path.empty()) {
        return nullptr;
    }
    silenceLibraries();
    AVFormatContext* opened = nullptr;
    avCheck(avformat_open_input(&opened, origin.path.c_str(), nullptr, nullptr), kFailure);
    AvInput container(opened);
    avCheck(avformat_find_stream_info(opened, nullptr), kFailure);
    const int track = av_find_best_stream(opened, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (track < 0) {
        return nullptr;
    }
    auto sound = std::make_unique<FileSound>(std::move(container), opened->streams[track], origin.firstPictureSeconds);
    sound->seek(0.0);
    return sound;
}

}  // namespace lumiset::media
