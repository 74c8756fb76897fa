#include <algorithm>
#include <atomic>
#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "media/pending_file.h"
#include "media/sinks.h"
#include "media/track_copy.h"
#include "media/video_encoder.h"

namespace lumiset::media {
namespace {

class VideoSink final : public Sink {
public:
    VideoSink(const std::string& output, const VideoFormat& format, const SinkOptions& options, const Source* copyFrom);
    ~VideoSink() override { avio_closep(&m_output->pb); }

    void write(const Picture& picture) override;
    bool prepare(const Picture& picture, ReadyPicture& ready) override;
    void write(const ReadyPicture& ready) override;
    void finish() override;
    std::vector<std::string> notes() const override { return m_notes; }

private:
    void begin(const Picture& first);
    void addSideData();
    void writeReadyPackets();
    void writePacket(AVPacket& packet);
    std::string failure() const { return "Cannot write " + m_shownName; }

    bool m_pipe;
    std::string m_name;
    std::string m_shownName;  ///< in a sentence behind "write"
    VideoFormat m_format;
    SinkOptions m_options;
    Source::Origin m_origin;
    std::optional<PendingFile> m_file;
    AvOutput m_output;
    std::unique_ptr<VideoEncoder> m_encoder;
    std::atomic<bool> m_begun = false;  ///< the encoder is there to prepare pictures for
    std::unique_ptr<TrackCopy> m_tracks;
    AVStream* m_stream = nullptr;
    VideoPlan m_plan;
    std::int64_t m_firstPts = 0;
    std::int64_t m_nextPts = 0;   ///< in the encoder's units; the earliest that is still free
    std::int64_t m_tooClose = 0;  ///< pictures that a constant rate has no time for
    std::vector<std::string> m_notes;
};

VideoSink::VideoSink(const std::string& output, const VideoFormat& format, const SinkOptions& options,
                     const Source* copyFrom)
    : m_pipe(output == "-"),
      m_name(m_pipe ? "standard output" : output),
      m_shownName(m_pipe ? "to standard output" : "'" + output + "'"),
      m_format(format),
      m_options(options) {
    silenceLibraries();
    if (copyFrom != nullptr) {
        m_origin = copyFrom->origin();
    }
    const std::string extension = lowerExtension(output);
    const char* muxer = m_pipe ? "yuv4mpegpipe" : extension == "m4v" ? "mp4" : nullptr;
    const AVOutputFormat* container = av_guess_format(muxer, output.c_str(), nullptr);
    if (!m_pipe) {
        m_file.emplace(output);
    }
    const std::string url = m_pipe ? "pipe:1" : "file:" + m_file->path();
    AVFormatContext* context = nullptr;
    avCheck(avformat_alloc_output_context2(&context, container, nullptr, url.c_str()), failure());
    m_output.reset(context);
    // Fails early where the container, the codec or the folder will not do; alpha and depth do not decide about that.
    planVideo(*container, output, options, {format, format.color.hasAlpha()});
    const int opened = avio_open2(&context->pb, url.c_str(), AVIO_FLAG_WRITE, nullptr, nullptr);
    avCheck(opened, failure());
}

void VideoSink::begin(const Picture& first) {
    const bool alpha = m_format.color.hasAlpha() || !isOpaque(first);
    m_plan = planVideo(*m_output->oformat, m_name, m_options,
                       {m_format, alpha, wantedBits(m_options, m_format, first.depth)});
    m_notes.insert(m_notes.end(), m_plan.notes.begin(), m_plan.notes.end());
    if (m_format.color.isHdr()) {
        m_notes.push_back(fmt::format("The pictures are HDR ({}): effects work on the code values as they stand.",
                                      m_format.color.transfer == 16 ? "PQ" : "HLG"));
    }
    if (m_plan.frameRate.num > 0) {
        m_format.frameRate = m_plan.frameRate;
    }
    const AVRational timeBase =
        m_plan.constantRate ? av_inv_q(avRational(m_format.frameRate)) : avRational(m_format.timeBase);
    const bool globalHeader = (m_output->oformat->flags & AVFMT_GLOBALHEADER) != 0;
    m_encoder = std::make_unique<VideoEncoder>(m_plan, m_format, timeBase, m_options.threads, globalHeader, m_name);

    m_stream = allocated(avformat_new_stream(m_output.get(), nullptr));
    avCheck(avcodec_parameters_from_context(m_stream->codecpar, &m_encoder->context()), failure());
    m_stream->time_base = timeBase;
    m_stream->avg_frame_rate = avRational(m_format.frameRate);
    m_stream->sample_aspect_ratio = avRational(m_format.pixelAspect);
    addSideData();
    m_firstPts = first.pts;
    if (!m_origin.path.empty()) {
        const double base = m_origin.firstPictureSeconds + static_cast<double>(m_firstPts) * m_format.timeBase.value();
        m_tracks = std::make_unique<TrackCopy>(m_origin, base, m_output.get(), m_notes);
    }

    AVDictionary* options = nullptr;
    av_dict_set(&options, "strict", "unofficial", 0);
    const std::string container = m_output->oformat->name;
    if (container == "matroska" || container == "webm") {
        // Identifiers that are drawn by lot would make every file another one. They are for files that refer to others.
        m_output->flags |= AVFMT_FLAG_BITEXACT;
    }
    if (container == "mp4" || container == "mov") {
        av_dict_set(&options, "movflags", "+faststart+write_colr", 0);  // plays while it is still loading
    }
    const int result = avformat_write_header(m_output.get(), &options);
    av_dict_free(&options);
    avCheck(result, failure());
}

void VideoSink::addSideData() {
    const std::string container = m_output->oformat->name;
    const bool matroska = container == "matroska" || container == "webm";
    const bool quickTime = container == "mp4" || container == "mov";
    for (const SideData& side : m_format.sideData) {
        if ((matroska || quickTime) && side.type != AV_PKT_DATA_ICC_PROFILE) {
            std::uint8_t* bytes =
                av_stream_new_side_data(m_stream, static_cast<AVPacketSideDataType>(side.type), side.bytes.size());
            std::copy(side.bytes.begin(), side.bytes.end(), allocated(bytes));
        } else {
            const char* name = av_packet_side_data_name(static_cast<AVPacketSideDataType>(side.type));
            m_notes.push_back(
                fmt::format("The input's {} is left out, as this kind of file has no place for it.", name));
        }
    }
    const bool untold = container == "yuv4mpegpipe" && m_format.color.transfer > AVCOL_TRC_UNSPECIFIED &&
                        m_format.color.transfer != AVCOL_TRC_SMPTE170M;
    if (untold) {
        m_notes.emplace_back("The input's colour tags are left out, as y4m has no place for them.");
    }
}

void VideoSink::write(const Picture& picture) {
    if (!m_encoder) {
        begin(picture);
        m_begun.store(true, std::memory_order_release);
    }
    write({picture.pts, m_encoder->frameOf(picture)});
}

bool VideoSink::prepare(const Picture& picture, ReadyPicture& ready) {
    if (!m_begun.load(std::memory_order_acquire)) {
        return false;
    }
    ready = {picture.pts, m_encoder->frameOf(picture)};
    return true;
}

void VideoSink::write(const ReadyPicture& ready) {
    std::int64_t pts = ready.pts - m_firstPts;
    if (m_plan.constantRate) {
        pts = std::llround(static_cast<double>(pts) * m_format.timeBase.value() * m_format.frameRate.value());
        if (pts < m_nextPts) {
            ++m_tooClose;
            return;
        }
        // The picture before lasts until this one.
        for (; m_nextPts < pts; m_nextPts++) {
            m_encoder->repeat(m_nextPts);
            writeReadyPackets();
        }
    }
    pts = std::max(pts, m_nextPts);
    m_nextPts = pts + 1;
    m_encoder->send(ready.frame, pts);
    writeReadyPackets();
}

void VideoSink::writeReadyPackets() {
    m_encoder->receive([this](AVPacket& packet) { writePacket(packet); });
}

void VideoSink::writePacket(AVPacket& packet) {
    const AVRational timeBase = m_encoder->context().time_base;
    if (packet.duration == 0) {
        packet.duration =
            std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(avRational(m_format.frameRate)), timeBase));
    }
    if (m_tracks) {
        m_tracks->copyUntil(static_cast<double>(packet.dts) * av_q2d(timeBase));
    }
    av_packet_rescale_ts(&packet, timeBase, m_stream->time_base);
    packet.stream_index = m_stream->index;
    avCheck(av_interleaved_write_frame(m_output.get(), &packet), failure());
}

void VideoSink::finish() {
    if (!m_encoder) {
        throw MediaError(fmt::format("There was no picture to write {}.", m_pipe ? m_shownName : "to " + m_shownName));
    }
    m_encoder->sendEnd();
    writeReadyPackets();
    if (m_tooClose > 0) {
        m_notes.push_back(fmt::format("{} of the input's pictures {} left out, as {:.5g} a second are written here.",
                                      m_tooClose, m_tooClose == 1 ? "is" : "are", m_format.frameRate.value()));
    }
    if (m_tracks) {
        m_tracks->finish();
    }
    avCheck(av_write_trailer(m_output.get()), failure());
    // A full disk may tell only now.
    avCheck(avio_closep(&m_output->pb), failure());
    if (m_file) {
        m_file->commit();
    }
}

}  // namespace

std::unique_ptr<Sink> openVideoSink(const std::string& output, const VideoFormat& format, const SinkOptions& options,
                                    const Source* copyFrom) {
    return std::make_unique<VideoSink>(output, format, options, copyFrom);
}

}  // namespace lumiset::media
