#include "media/video_file.h"

#include <algorithm>

#include <fmt/format.h>

#include "media/input_name.h"

namespace lumiset::media {

const AVOutputFormat* containerOf(const std::string& output) {
    const bool pipe = output == "-";
    const char* muxer = pipe ? "yuv4mpegpipe" : lowerExtension(output) == "m4v" ? "mp4" : nullptr;
    return av_guess_format(muxer, output.c_str(), nullptr);
}

VideoFile::VideoFile(const std::string& output, const VideoFormat& format, const Source* copyFrom,
                     std::vector<std::string>& notes)
    : m_shownName(output == "-" ? "to standard output" : "'" + output + "'"), m_format(format), m_notes(notes) {
    silenceLibraries();
    if (copyFrom != nullptr) {
        m_origin = copyFrom->origin();
    }
    if (output != "-") {
        m_file.emplace(output);
    }
    const std::string url = m_file ? "file:" + m_file->path() : "pipe:1";
    AVFormatContext* context = nullptr;
    avCheck(avformat_alloc_output_context2(&context, containerOf(output), nullptr, url.c_str()), failure());
    m_output.reset(context);
    avCheck(avio_open2(&m_output->pb, url.c_str(), AVIO_FLAG_WRITE, nullptr, nullptr), failure());
}

VideoFile::~VideoFile() {
    avio_closep(&m_output->pb);
}

void VideoFile::begin(const EncodedVideo& video) {
    m_timeBase = video.timeBase;
    m_stream = allocated(avformat_new_stream(m_output.get(), nullptr));
    avCheck(avcodec_parameters_copy(m_stream->codecpar, video.codec), failure());
    m_stream->time_base = video.timeBase;
    m_stream->avg_frame_rate = avRational(video.frameRate);
    m_stream->sample_aspect_ratio = avRational(m_format.pixelAspect);
    addSideData();
    if (!m_origin.path.empty()) {
        const double base =
            m_origin.firstPictureSeconds + static_cast<double>(video.filmBegin) * m_format.timeBase.value();
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

void VideoFile::addSideData() {
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

void VideoFile::write(AVPacket& packet) {
    if (m_tracks) {
        m_tracks->copyUntil(static_cast<double>(packet.dts) * av_q2d(m_timeBase));
    }
    av_packet_rescale_ts(&packet, m_timeBase, m_stream->time_base);
    packet.stream_index = m_stream->index;
    avCheck(av_interleaved_write_frame(m_output.get(), &packet), failure());
}

void VideoFile::finish() {
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

}  // namespace lumiset::media
