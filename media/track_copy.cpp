#include "media/track_copy.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace lumiset::media {
namespace {

constexpr AVRational kMicroseconds{1, AV_TIME_BASE};

void write(AVFormatContext* output, AVPacket& packet, AVStream& stream, AVRational timeBase) {
    av_packet_rescale_ts(&packet, timeBase, stream.time_base);
    packet.stream_index = stream.index;
    packet.pos = -1;
    avCheck(av_interleaved_write_frame(output, &packet), "Cannot write the sound");
}

// Notes that would be the same are told once.
void tell(std::vector<std::string>& notes, const std::string& note) {
    if (std::find(notes.begin(), notes.end(), note) == notes.end()) {
        notes.push_back(note);
    }
}

// Decodes packets and encodes them as another codec. Gaps in the source become silence.
class Transcoder {
public:
    Transcoder(const AVStream& source, const AVOutputFormat& container) {
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

    const AVCodecContext& encoder() const { return *m_encoder; }

    // A null packet ends the stream. `baseSeconds` is taken off all times.
    template <class Take>
    void transcode(const AVPacket* packet, double baseSeconds, Take take) {
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

    template <class Take>
    void encodeReady(bool everything, Take take) {
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

    template <class Take>
    void receive(Take take) {
        while (avcodec_receive_packet(m_encoder.get(), m_packet.get()) >= 0) {
            take(*m_packet);
            av_packet_unref(m_packet.get());
        }
    }

    AvCodecContext m_decoder;
    AvCodecContext m_encoder;
    AvResampler m_resampler;
    AvFrame m_frame{allocated(av_frame_alloc())};
    AvPacket m_packet{allocated(av_packet_alloc())};
    std::int64_t m_nextSample = 0;
    bool m_started = false;
};

}  // namespace

// One stream of sound on its way.
class TrackCopy::Track {
public:
    Track(const AVStream& source, AVFormatContext* output) : index(source.index), m_timeBase(source.time_base) {
        const AVCodecID id = source.codecpar->codec_id;
        const bool holds = avformat_query_codec(output->oformat, id, FF_COMPLIANCE_NORMAL) == 1;
        if (!holds) {
            transcoder = std::make_unique<Transcoder>(source, *output->oformat);
        }
        m_stream = allocated(avformat_new_stream(output, nullptr));
        if (transcoder) {
            avCheck(avcodec_parameters_from_context(m_stream->codecpar, &transcoder->encoder()),
                    "Cannot describe the sound");
            m_stream->time_base = transcoder->encoder().time_base;
        } else {
            avCheck(avcodec_parameters_copy(m_stream->codecpar, source.codecpar), "Cannot describe the sound");
            m_stream->codecpar->codec_tag = 0;  // the container's own
            m_stream->time_base = source.time_base;
        }
        m_stream->disposition = source.disposition;
        av_dict_copy(&m_stream->metadata, source.metadata, 0);
    }

    void add(AVPacket* packet, double base, AVFormatContext* output) {
        if (transcoder) {
            transcoder->transcode(packet, base, [&](AVPacket& coded) {
                write(output, coded, *m_stream, transcoder->encoder().time_base);
            });
        } else if (packet != nullptr) {
            const std::int64_t shift = av_rescale_q(std::llround(base * AV_TIME_BASE), kMicroseconds, m_timeBase);
            if (packet->dts == AV_NOPTS_VALUE) {
                packet->dts = packet->pts;
            }
            packet->pts -= shift;
            packet->dts -= shift;
            write(output, *packet, *m_stream, m_timeBase);
        }
    }

    const int index;
    std::unique_ptr<Transcoder> transcoder;

private:
    AVRational m_timeBase;
    AVStream* m_stream = nullptr;
};

TrackCopy::TrackCopy(const Source::Origin& origin, double baseSeconds, AVFormatContext* output,
                     std::vector<std::string>& notes)
    : m_output(output), m_packet(allocated(av_packet_alloc())), m_base(baseSeconds) {
    AVFormatContext* input = nullptr;
    avCheck(avformat_open_input(&input, origin.path.c_str(), nullptr, nullptr), "Cannot read the sound");
    m_input.reset(input);
    avCheck(avformat_find_stream_info(input, nullptr), "Cannot read the sound");
    const int video = av_find_best_stream(input, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video >= 0) {
        copyMetadata(*input->streams[video], origin.startSeconds);
    }

    // Before the first picture there is nothing to hear, save where the container can say so: there encoders' lead-in
    // belongs. A run that begins later begins with its picture.
    const bool leadIn = origin.startSeconds <= 0 && (output->oformat->flags & AVFMT_TS_NEGATIVE) != 0;
    m_from = leadIn ? -std::numeric_limits<double>::infinity() : -1e-4;
    m_until = origin.firstPictureSeconds + origin.endSeconds - baseSeconds;
    for (unsigned i = 0; i < input->nb_streams; i++) {
        const std::size_t tracks = m_tracks.size();
        if (static_cast<int>(i) != video) {
            addStream(*input->streams[i], notes);
        }
        if (m_tracks.size() == tracks) {
            input->streams[i]->discard = AVDISCARD_ALL;
        }
    }
    copyChapters(notes);
    m_ended = m_tracks.empty();
    if (origin.startSeconds > 1 && !m_ended) {
        // Packets before the start are dropped anyway; this only saves reading them.
        av_seek_frame(input, -1, std::llround((baseSeconds - 1) * AV_TIME_BASE), AVSEEK_FLAG_BACKWARD);
    }
}

void TrackCopy::addStream(const AVStream& stream, std::vector<std::string>& notes) {
    const AVCodecParameters& codec = *stream.codecpar;
    const char* name = avcodec_get_name(codec.codec_id);
    const bool holds = avformat_query_codec(m_output->oformat, codec.codec_id, FF_COMPLIANCE_NORMAL) == 1;
    switch (codec.codec_type) {
        case AVMEDIA_TYPE_AUDIO:
            if (m_output->oformat->audio_codec == AV_CODEC_ID_NONE) {
                tell(notes, "The sound is left out, as this kind of file holds none.");
                return;
            }
            m_tracks.push_back(std::make_unique<Track>(stream, m_output));
            if (m_tracks.back()->transcoder) {
                tell(notes, fmt::format("The sound is encoded anew as {}, as this kind of file cannot hold {}.",
                                        avcodec_get_name(m_output->oformat->audio_codec), name));
            }
            return;
        case AVMEDIA_TYPE_SUBTITLE:
            if (holds) {
                m_tracks.push_back(std::make_unique<Track>(stream, m_output));
            } else {
                tell(notes,
                     fmt::format("The subtitles ({}) are left out, as this kind of file cannot hold them.", name));
            }
            return;
        case AVMEDIA_TYPE_ATTACHMENT:
            if (std::string(m_output->oformat->name) == "matroska") {
                AVStream* copy = allocated(avformat_new_stream(m_output, nullptr));
                avCheck(avcodec_parameters_copy(copy->codecpar, &codec), "Cannot describe an attachment");
                av_dict_copy(&copy->metadata, stream.metadata, 0);
            } else {
                tell(notes, "The attachments are left out, as this kind of file holds none.");
            }
            return;
        case AVMEDIA_TYPE_VIDEO:
            tell(notes, (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0
                            ? "The cover picture is left out."
                            : "Only the first video track is rendered; the others are left out.");
            return;
        default:
            // A track of time code is written anew from the metadata.
            if (codec.codec_tag != MKTAG('t', 'm', 'c', 'd')) {
                tell(notes, "A track of data is left out.");
            }
    }
}

void TrackCopy::copyMetadata(const AVStream& video, double startSeconds) {
    av_dict_copy(&m_output->metadata, m_input->metadata, 0);
    // These speak of the file as it was.
    for (const char* key : {"encoder", "major_brand", "minor_version", "compatible_brands", "duration", "timecode"}) {
        av_dict_set(&m_output->metadata, key, nullptr, 0);
    }
    AVDictionary** metadata = &m_output->streams[0]->metadata;
    for (const char* key : {"language", "title", "reel_name", "creation_time"}) {
        if (const AVDictionaryEntry* entry = av_dict_get(video.metadata, key, nullptr, 0)) {
            av_dict_set(metadata, key, entry->value, 0);
        }
    }
    const AVDictionaryEntry* timecode = av_dict_get(video.metadata, "timecode", nullptr, 0);
    if (timecode == nullptr) {
        timecode = av_dict_get(m_input->metadata, "timecode", nullptr, 0);
    }
    AVTimecode first;
    const AVRational rate = video.avg_frame_rate;
    if (timecode != nullptr && rate.num > 0 &&
        av_timecode_init_from_string(&first, rate, timecode->value, nullptr) >= 0) {
        char text[AV_TIMECODE_STR_SIZE];
        av_timecode_make_string(&first, text, static_cast<int>(std::llround(startSeconds * av_q2d(rate))));
        av_dict_set(metadata, "timecode", text, 0);
    }
}

void TrackCopy::copyChapters(std::vector<std::string>& notes) {
    if (m_input->nb_chapters == 0) {
        return;
    }
    const std::string container = m_output->oformat->name;
    if (container != "mp4" && container != "mov" && container != "matroska" && container != "webm") {
        tell(notes, "The chapters are left out, as this kind of file holds none.");
        return;
    }
    for (unsigned i = 0; i < m_input->nb_chapters; i++) {
        const AVChapter& from = *m_input->chapters[i];
        const double begin = static_cast<double>(from.start) * av_q2d(from.time_base) - m_base;
        const double end = std::min(static_cast<double>(from.end) * av_q2d(from.time_base) - m_base, m_until);
        if (end <= 0 || begin >= m_until) {
            continue;
        }
        auto* chapter = static_cast<AVChapter*>(allocated(av_mallocz(sizeof(AVChapter))));
        int count = static_cast<int>(m_output->nb_chapters);
        av_dynarray_add(&m_output->chapters, &count, chapter);
        m_output->nb_chapters = static_cast<unsigned>(count);
        chapter->id = from.id;
        chapter->time_base = {1, 1000};
        chapter->start = std::llround(std::max(begin, 0.0) * 1000);
        chapter->end = std::llround(end * 1000);
        av_dict_copy(&chapter->metadata, from.metadata, 0);
    }
}

TrackCopy::~TrackCopy() = default;

TrackCopy::Track* TrackCopy::trackOf(const AVPacket& packet) const {
    for (const auto& track : m_tracks) {
        if (track->index == packet.stream_index) {
            return track.get();
        }
    }
    return nullptr;
}

double TrackCopy::secondsOf(const AVPacket& packet) const {
    const AVStream& stream = *m_input->streams[packet.stream_index];
    return static_cast<double>(packet.pts) * av_q2d(stream.time_base) - m_base;
}

// Reads on to the next packet that belongs into the output.
bool TrackCopy::fetch() {
    while (!m_waiting && !m_ended) {
        av_packet_unref(m_packet.get());
        if (av_read_frame(m_input.get(), m_packet.get()) < 0) {
            m_ended = true;
        } else if (trackOf(*m_packet) != nullptr && m_packet->pts != AV_NOPTS_VALUE) {
            const double seconds = secondsOf(*m_packet);
            // Streams are interleaved to within some seconds.
            m_ended = seconds > m_until + 10;
            m_waiting = seconds >= m_from && seconds < m_until;
        }
    }
    return m_waiting;
}

void TrackCopy::copyUntil(double seconds) {
    while (fetch() && secondsOf(*m_packet) <= seconds) {
        m_waiting = false;
        trackOf(*m_packet)->add(m_packet.get(), m_base, m_output);
    }
}

void TrackCopy::finish() {
    copyUntil(std::numeric_limits<double>::infinity());
    for (const auto& track : m_tracks) {
        track->add(nullptr, m_base, m_output);
    }
}

}  // namespace lumiset::media
