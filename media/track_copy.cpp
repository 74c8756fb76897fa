#include "media/track_copy.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "media/track_transcoder.h"

namespace lumiset::media {
namespace {

constexpr AVRational kMicroseconds{1, AV_TIME_BASE};

void write(AVFormatContext* output, AVPacket& packet, AVStream& stream, AVRational timeBase) {
    av_packet_rescale_ts(&packet, timeBase, stream.time_base);
    packet.stream_index = stream.index;
    packet.pos = -1;
    avCheck(av_interleaved_write_frame(output, &packet), "Cannot write what goes with the pictures");
}

bool isMatroska(const AVOutputFormat& container) {
    return std::string(container.name) == "matroska";
}

bool isQuickTime(const AVOutputFormat& container) {
    const std::string name = container.name;
    return name == "mp4" || name == "mov";
}

bool holdsTimecode(const AVOutputFormat& container) {
    return isMatroska(container) || isQuickTime(container) || std::string(container.name) == "mxf";
}

bool holds(const AVOutputFormat& container, AVCodecID id) {
    // The library does not tell what transport streams hold.
    constexpr AVCodecID kOfTransportStreams[] = {AV_CODEC_ID_AAC,  AV_CODEC_ID_AC3,         AV_CODEC_ID_EAC3,
                                                 AV_CODEC_ID_MP2,  AV_CODEC_ID_MP3,         AV_CODEC_ID_DTS,
                                                 AV_CODEC_ID_OPUS, AV_CODEC_ID_DVB_SUBTITLE};
    const bool told =
        std::string(container.name) == "mpegts" &&
        std::find(std::begin(kOfTransportStreams), std::end(kOfTransportStreams), id) != std::end(kOfTransportStreams);
    return told || avformat_query_codec(&container, id, FF_COMPLIANCE_NORMAL) == 1;
}

// ISO 639-2 has two codes for some languages, and QuickTime's table knows the bibliographic ones alone.
void nameForQuickTime(AVDictionary*& metadata) {
    constexpr std::pair<std::string_view, const char*> kBibliographic[] = {
        {"bod", "tib"}, {"ces", "cze"}, {"cym", "wel"}, {"deu", "ger"}, {"ell", "gre"}, {"eus", "baq"}, {"fas", "per"},
        {"fra", "fre"}, {"hye", "arm"}, {"isl", "ice"}, {"kat", "geo"}, {"mkd", "mac"}, {"mya", "bur"}, {"msa", "may"},
        {"nld", "dut"}, {"ron", "rum"}, {"slk", "slo"}, {"sqi", "alb"}, {"zho", "chi"}};
    const AVDictionaryEntry* language = av_dict_get(metadata, "language", nullptr, 0);
    for (const auto& [code, bibliographic] : kBibliographic) {
        if (language != nullptr && code == language->value) {
            av_dict_set(&metadata, "language", bibliographic, 0);
            return;
        }
    }
}

// Notes that would be the same are told once.
void tell(std::vector<std::string>& notes, const std::string& note) {
    if (std::find(notes.begin(), notes.end(), note) == notes.end()) {
        notes.push_back(note);
    }
}

// Finding out what tracks are means decoding some of them. The source has done that; in files whose header tells the
// times of all packets nothing else is to be found.
void takeTracks(AVFormatContext& input, const Source::Origin& origin) {
    const std::string_view demuxer = input.iformat->name;
    const bool timed = demuxer.starts_with("mov,") || demuxer.starts_with("matroska,");
    if (!timed || input.nb_streams != origin.tracks.size()) {
        avCheck(avformat_find_stream_info(&input, nullptr), "Cannot read the sound");
        return;
    }
    for (unsigned i = 0; i < input.nb_streams; i++) {
        avCheck(avcodec_parameters_copy(input.streams[i]->codecpar, origin.tracks[i].get()), "Cannot read the sound");
    }
}

}  // namespace

// One stream on its way.
class TrackCopy::Track {
public:
    /// Packets go as they are without a transcoder.
    Track(const AVStream& source, AVFormatContext* output, std::unique_ptr<TrackTranscoder> anew)
        : index(source.index), transcoder(std::move(anew)), m_timeBase(source.time_base) {
        m_stream = allocated(avformat_new_stream(output, nullptr));
        if (transcoder) {
            avCheck(avcodec_parameters_from_context(m_stream->codecpar, &transcoder->encoder()),
                    "Cannot describe a track");
            m_stream->time_base = transcoder->encoder().time_base;
        } else {
            avCheck(avcodec_parameters_copy(m_stream->codecpar, source.codecpar), "Cannot describe a track");
            m_stream->codecpar->codec_tag = 0;  // the container's own
            m_stream->time_base = source.time_base;
        }
        m_stream->disposition = source.disposition;
        av_dict_copy(&m_stream->metadata, source.metadata, 0);
        if (std::string_view(output->oformat->name) == "mov") {
            nameForQuickTime(m_stream->metadata);
        }
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
    const std::unique_ptr<TrackTranscoder> transcoder;

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
    takeTracks(*input, origin);
    const int video = av_find_best_stream(input, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video >= 0) {
        copyMetadata(*input->streams[video], origin, notes);
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
    switch (codec.codec_type) {
        case AVMEDIA_TYPE_AUDIO:
            if (m_output->oformat->audio_codec == AV_CODEC_ID_NONE) {
                tell(notes, "The sound is left out, as this kind of file holds none.");
            } else {
                addTrack(stream, "sound", &soundTranscoder, notes);
            }
            return;
        case AVMEDIA_TYPE_SUBTITLE:
            addTrack(stream, "subtitles", &subtitleTranscoder, notes);
            return;
        case AVMEDIA_TYPE_ATTACHMENT:
            if (isMatroska(*m_output->oformat)) {
                AVStream* copy = allocated(avformat_new_stream(m_output, nullptr));
                avCheck(avcodec_parameters_copy(copy->codecpar, &codec), "Cannot describe an attachment");
                av_dict_copy(&copy->metadata, stream.metadata, 0);
            } else {
                tell(notes, "The attachments are left out, as this kind of file holds none.");
            }
            return;
        case AVMEDIA_TYPE_VIDEO:
            if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) {
                tell(notes, "Only the first video track is rendered; the others are left out.");
            } else if (!addCover(stream)) {
                tell(notes, "The cover picture is left out, as this kind of file holds none.");
            }
            return;
        default:
            // Tracks of time code and of chapters' names are written anew from what they tell.
            if (codec.codec_tag != MKTAG('t', 'm', 'c', 'd') &&
                (codec.codec_tag != MKTAG('t', 'e', 'x', 't') || m_input->nb_chapters == 0)) {
                tell(notes, fmt::format("A track of data ({}) is left out.", avcodec_get_name(codec.codec_id)));
            }
    }
}

void TrackCopy::addTrack(const AVStream& stream, const char* what,
                         std::unique_ptr<TrackTranscoder> (*transcoderFor)(const AVStream&, const AVOutputFormat&),
                         std::vector<std::string>& notes) {
    const AVOutputFormat& container = *m_output->oformat;
    const AVCodecID id = stream.codecpar->codec_id;
    std::unique_ptr<TrackTranscoder> transcoder;
    if (!holds(container, id)) {
        transcoder = transcoderFor(stream, container);
        if (!transcoder) {
            tell(notes, fmt::format("The {} ({}) are left out, as this kind of file cannot hold them.", what,
                                    avcodec_get_name(id)));
            return;
        }
        tell(notes, fmt::format("The {} ({}) {} written anew as {}, as this kind of file cannot hold {}.", what,
                                avcodec_get_name(id), stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO ? "is" : "are",
                                avcodec_get_name(transcoder->encoder().codec_id),
                                stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO ? "it" : "them"));
    }
    m_tracks.push_back(std::make_unique<Track>(stream, m_output, std::move(transcoder)));
}

// MP4 files have covers as tracks of one picture, Matroska's as attachments. QuickTime's own have no place for them.
bool TrackCopy::addCover(const AVStream& stream) {
    const AVPacket& picture = stream.attached_pic;
    const AVCodecID id = stream.codecpar->codec_id;
    const char* type = id == AV_CODEC_ID_PNG ? "png" : id == AV_CODEC_ID_MJPEG ? "jpeg" : nullptr;
    const bool matroska = isMatroska(*m_output->oformat);
    if (picture.size <= 0 || type == nullptr || !(matroska || std::string(m_output->oformat->name) == "mp4")) {
        return false;
    }
    AVStream* copy = allocated(avformat_new_stream(m_output, nullptr));
    av_dict_copy(&copy->metadata, stream.metadata, 0);
    if (!matroska) {
        avCheck(avcodec_parameters_copy(copy->codecpar, stream.codecpar), "Cannot describe the cover");
        copy->codecpar->codec_tag = 0;
        copy->disposition = AV_DISPOSITION_ATTACHED_PIC;
        AvPacket packet(allocated(av_packet_clone(&picture)));
        packet->stream_index = copy->index;
        m_covers.push_back(std::move(packet));
        return true;
    }
    const auto size = static_cast<std::size_t>(picture.size);
    copy->codecpar->codec_type = AVMEDIA_TYPE_ATTACHMENT;
    copy->codecpar->codec_id = id;
    copy->codecpar->extradata = static_cast<std::uint8_t*>(allocated(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE)));
    copy->codecpar->extradata_size = picture.size;
    std::copy_n(picture.data, size, copy->codecpar->extradata);
    av_dict_set(&copy->metadata, "mimetype", fmt::format("image/{}", type).c_str(), 0);
    if (av_dict_get(copy->metadata, "filename", nullptr, 0) == nullptr) {
        av_dict_set(&copy->metadata, "filename", id == AV_CODEC_ID_PNG ? "cover.png" : "cover.jpg", 0);
    }
    return true;
}

void TrackCopy::copyMetadata(const AVStream& video, const Source::Origin& origin, std::vector<std::string>& notes) {
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
    if (timecode != nullptr && !holdsTimecode(*m_output->oformat)) {
        tell(notes, fmt::format("The time code ({}) is left out, as this kind of file holds none.", timecode->value));
        return;
    }
    AVTimecode first;
    const AVRational rate = avRational(origin.frameRate);
    if (timecode != nullptr && rate.num > 0 &&
        av_timecode_init_from_string(&first, rate, timecode->value, nullptr) >= 0) {
        char text[AV_TIMECODE_STR_SIZE];
        av_timecode_make_string(&first, text, static_cast<int>(std::llround(origin.startSeconds * av_q2d(rate))));
        av_dict_set(metadata, "timecode", text, 0);
    }
}

void TrackCopy::copyChapters(std::vector<std::string>& notes) {
    if (m_input->nb_chapters == 0) {
        return;
    }
    const AVOutputFormat& container = *m_output->oformat;
    if (!isQuickTime(container) && !isMatroska(container) && std::string(container.name) != "webm") {
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
    for (const AvPacket& cover : m_covers) {
        avCheck(av_interleaved_write_frame(m_output, cover.get()), "Cannot write the cover");
    }
    m_covers.clear();
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
