#include "tests/media/media_clip.h"

#include <cmath>
#include <stdexcept>

#include "media/av.h"
#include "tests/media/media_fixture.h"

namespace lumiset::media {
namespace {

constexpr int kRate = 48000;

void require(int result) {
    if (result < 0) {
        throw std::runtime_error(avErrorText(result));
    }
}

AvInput openInput(const std::string& path) {
    AVFormatContext* input = nullptr;
    require(avformat_open_input(&input, path.c_str(), nullptr, nullptr));
    AvInput owned(input);
    require(avformat_find_stream_info(input, nullptr));
    return owned;
}

AvOutput openOutput(const std::string& path) {
    AVFormatContext* output = nullptr;
    require(avformat_alloc_output_context2(&output, nullptr, nullptr, path.c_str()));
    AvOutput owned(output);
    require(avio_open(&output->pb, path.c_str(), AVIO_FLAG_WRITE));
    return owned;
}

void copyVideo(AVFormatContext& input, AVFormatContext& output) {
    const AvPacket packet(av_packet_alloc());
    while (av_read_frame(&input, packet.get()) >= 0) {
        av_packet_rescale_ts(packet.get(), input.streams[0]->time_base, output.streams[0]->time_base);
        require(av_interleaved_write_frame(&output, packet.get()));
    }
}

void writeBeep(AVFormatContext& output, int track) {
    const AVStream& stream = *output.streams[track];
    for (int begin = 0; begin < 2 * kRate; begin += kRate / 50) {
        const AvPacket packet(av_packet_alloc());
        require(av_new_packet(packet.get(), kRate / 50 * 2));
        for (int i = 0; i < kRate / 50; i++) {
            const int sample = begin + i;
            const bool loud = sample >= kRate && sample < kRate + kRate / 10;
            const int value = loud ? static_cast<int>(20000 * std::sin(sample * 0.13)) : 0;
            packet->data[2 * i] = static_cast<std::uint8_t>(value & 0xFF);
            packet->data[2 * i + 1] = static_cast<std::uint8_t>(value >> 8 & 0xFF);
        }
        packet->pts = packet->dts = av_rescale_q(begin, {1, kRate}, stream.time_base);
        packet->duration = av_rescale_q(kRate / 50, {1, kRate}, stream.time_base);
        packet->stream_index = track;
        require(av_interleaved_write_frame(&output, packet.get()));
    }
}

// Calls `take(seconds, loudness 0..1)` for every sample of the first channel.
template <class Take>
void decodeSound(const std::string& path, Take take) {
    const AvInput input = openInput(path);
    const int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    require(index);
    const int video = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    const double origin =
        static_cast<double>(input->streams[video]->start_time) * av_q2d(input->streams[video]->time_base);
    const AVStream& stream = *input->streams[index];
    const AvCodecContext codec(avcodec_alloc_context3(avcodec_find_decoder(stream.codecpar->codec_id)));
    require(avcodec_parameters_to_context(codec.get(), stream.codecpar));
    codec->pkt_timebase = stream.time_base;
    require(avcodec_open2(codec.get(), codec->codec, nullptr));
    const AvPacket packet(av_packet_alloc());
    const AvFrame frame(av_frame_alloc());
    bool more = true;
    while (more) {
        more = av_read_frame(input.get(), packet.get()) >= 0;
        if (more && packet->stream_index != index) {
            av_packet_unref(packet.get());
            continue;
        }
        require(avcodec_send_packet(codec.get(), more ? packet.get() : nullptr));
        av_packet_unref(packet.get());
        while (avcodec_receive_frame(codec.get(), frame.get()) >= 0) {
            const double begin = static_cast<double>(frame->best_effort_timestamp) * av_q2d(stream.time_base) - origin;
            const bool floats = codec->sample_fmt == AV_SAMPLE_FMT_FLTP || codec->sample_fmt == AV_SAMPLE_FMT_FLT;
            for (int i = 0; i < frame->nb_samples; i++) {
                const double value = floats ? static_cast<double>(reinterpret_cast<float*>(frame->data[0])[i])
                                            : reinterpret_cast<std::int16_t*>(frame->data[0])[i] / 32768.0;
                take(begin + static_cast<double>(i) / frame->sample_rate, std::abs(value));
            }
        }
    }
}

}  // namespace

void writeFlashAndBeep(const std::string& path) {
    std::vector<Picture> pictures;
    for (int i = 0; i < 50; i++) {
        const bool flash = i >= 25 && i < 28;
        const double level = flash ? 250 : 5;
        pictures.push_back(flatPicture(32, 32, level, level, level));
    }
    const std::string silent = path + ".silent.mkv";
    writePictures(silent, formatOf(pictures[0], false), pictures);

    const AvInput input = openInput(silent);
    const AvOutput output = openOutput(path);
    AVStream* video = avformat_new_stream(output.get(), nullptr);
    require(avcodec_parameters_copy(video->codecpar, input->streams[0]->codecpar));
    for (int track = 1; track <= 2; track++) {
        AVStream* sound = avformat_new_stream(output.get(), nullptr);
        sound->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
        sound->codecpar->codec_id = AV_CODEC_ID_PCM_S16LE;
        sound->codecpar->format = AV_SAMPLE_FMT_S16;
        sound->codecpar->sample_rate = kRate;
        sound->codecpar->bits_per_coded_sample = 16;
        av_channel_layout_default(&sound->codecpar->ch_layout, 1);
        sound->time_base = {1, kRate};
    }
    require(avformat_write_header(output.get(), nullptr));
    copyVideo(*input, *output);
    writeBeep(*output, 1);
    writeBeep(*output, 2);
    require(av_write_trailer(output.get()));
    avio_closep(&output->pb);
    std::filesystem::remove(silent);
}

double firstLoudSecond(const std::string& path) {
    double first = -1;
    decodeSound(path, [&](double seconds, double loudness) {
        if (first < 0 && loudness > 0.2) {
            first = seconds;
        }
    });
    return first;
}

double soundLength(const std::string& path) {
    double first = 1e9;
    double last = -1e9;
    decodeSound(path, [&](double seconds, double) {
        first = std::min(first, seconds);
        last = std::max(last, seconds);
    });
    return last - first;
}

void remuxTurned(const std::string& from, const std::string& to) {
    const auto pictures = readAll(from);
    // MOV does not hold the lossless codec of Matroska; QuickTime's own takes its place.
    SinkOptions options;
    options.codec = "qtrle";
    const std::string upright = from + ".mov";
    writePictures(upright, formatOf(pictures.at(0), false), pictures, options);
    const AvInput input = openInput(upright);
    const AvOutput output = openOutput(to);
    AVStream* video = avformat_new_stream(output.get(), nullptr);
    require(avcodec_parameters_copy(video->codecpar, input->streams[0]->codecpar));
    auto* matrix = reinterpret_cast<std::int32_t*>(
        av_stream_new_side_data(video, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
    // Right becomes down, down becomes left, in 16.16; the last number is in 2.30.
    const std::int32_t clockwise[9] = {0, 1 << 16, 0, -(1 << 16), 0, 0, 0, 0, 1 << 30};
    std::copy_n(clockwise, 9, matrix);
    require(avformat_write_header(output.get(), nullptr));
    copyVideo(*input, *output);
    require(av_write_trailer(output.get()));
    avio_closep(&output->pb);
}

void writeFullClip(const std::string& path) {
    const std::string plain = path + ".plain.mkv";
    writePictures(plain, formatOf(flatPicture(32, 32, 0, 0, 0), false),
                  std::vector<Picture>(50, flatPicture(32, 32, 9, 9, 9)));
    const AvInput input = openInput(plain);
    const AvOutput output = openOutput(path);
    AVStream* video = avformat_new_stream(output.get(), nullptr);
    require(avcodec_parameters_copy(video->codecpar, input->streams[0]->codecpar));
    av_dict_set(&video->metadata, "timecode", "01:00:00:00", 0);
    video->avg_frame_rate = {25, 1};
    AVStream* subtitles = avformat_new_stream(output.get(), nullptr);
    subtitles->codecpar->codec_type = AVMEDIA_TYPE_SUBTITLE;
    subtitles->codecpar->codec_id = AV_CODEC_ID_SUBRIP;
    const auto attach = [&](const char* name, const char* type, AVCodecID id, const std::string& bytes) {
        AVStream* attachment = avformat_new_stream(output.get(), nullptr);
        attachment->codecpar->codec_type = AVMEDIA_TYPE_ATTACHMENT;
        attachment->codecpar->codec_id = id;
        attachment->codecpar->extradata =
            static_cast<std::uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
        attachment->codecpar->extradata_size = static_cast<int>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), attachment->codecpar->extradata);
        av_dict_set(&attachment->metadata, "filename", name, 0);
        av_dict_set(&attachment->metadata, "mimetype", type, 0);
    };
    attach("note.txt", "text/plain", AV_CODEC_ID_TEXT, "note");
    const std::string cover = path + ".cover.png";
    writePictures(cover, formatOf(flatPicture(8, 8, 0, 0, 0), false), {flatPicture(8, 8, 1, 2, 3)});
    std::ifstream coverFile(cover, std::ios::binary);
    attach("cover.png", "image/png", AV_CODEC_ID_PNG, {std::istreambuf_iterator<char>(coverFile), {}});
    std::filesystem::remove(cover);
    for (const std::int64_t second : {0, 1}) {
        auto* chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
        chapter->id = second + 1;
        chapter->time_base = {1, 1};
        chapter->start = second;
        chapter->end = second + 1;
        int count = static_cast<int>(output->nb_chapters);
        av_dynarray_add(&output->chapters, &count, chapter);
        output->nb_chapters = static_cast<unsigned>(count);
    }
    require(avformat_write_header(output.get(), nullptr));
    const AvPacket text(av_packet_alloc());
    require(av_new_packet(text.get(), 5));
    std::copy_n("Hello", 5, text->data);
    text->pts = text->dts = av_rescale_q(1, {1, 1}, subtitles->time_base);
    text->duration = text->pts;
    text->stream_index = 1;
    require(av_interleaved_write_frame(output.get(), text.get()));
    copyVideo(*input, *output);
    require(av_write_trailer(output.get()));
    avio_closep(&output->pb);
    std::filesystem::remove(plain);
}

Contents contentsOf(const std::string& path) {
    const AvInput input = openInput(path);
    Contents contents;
    for (unsigned i = 0; i < input->nb_chapters; i++) {
        const AVChapter& chapter = *input->chapters[i];
        contents.chapters.push_back(static_cast<double>(chapter.start) * av_q2d(chapter.time_base));
    }
    for (unsigned i = 0; i < input->nb_streams; i++) {
        const AVMediaType type = input->streams[i]->codecpar->codec_type;
        contents.attachments += type == AVMEDIA_TYPE_ATTACHMENT ? 1 : 0;
        contents.sounds += type == AVMEDIA_TYPE_AUDIO ? 1 : 0;
        const AVPacket& cover = input->streams[i]->attached_pic;
        contents.cover.append(reinterpret_cast<const char*>(cover.data), static_cast<std::size_t>(cover.size));
        if (const AVDictionaryEntry* entry = av_dict_get(input->streams[i]->metadata, "timecode", nullptr, 0)) {
            contents.timecode = entry->value;
        }
    }
    const AvPacket packet(av_packet_alloc());
    while (contents.subtitle.empty() && av_read_frame(input.get(), packet.get()) >= 0) {
        const AVStream& stream = *input->streams[packet->stream_index];
        // QuickTime's tracks have empty texts between the others.
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE && packet->size > 2) {
            contents.subtitle.assign(reinterpret_cast<const char*>(packet->data),
                                     static_cast<std::size_t>(packet->size));
            contents.subtitleSeconds = static_cast<double>(packet->pts) * av_q2d(stream.time_base);
        }
        av_packet_unref(packet.get());
    }
    return contents;
}

}  // namespace lumiset::media
