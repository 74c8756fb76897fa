#include <atomic>
#include <cmath>

#include <fmt/format.h>

#include "media/part_file.h"
#include "media/sinks.h"
#include "media/video_encoder.h"
#include "media/video_file.h"

namespace lumiset::media {
namespace {

class VideoSink final : public Sink {
public:
    VideoSink(const std::string& output, const VideoFormat& format, const SinkOptions& options, const Source* copyFrom);

    void write(const Picture& picture) override;
    bool prepare(const Picture& picture, ReadyPicture& ready) override;
    void write(const ReadyPicture& ready) override;
    void finish() override;
    std::vector<std::string> notes() const override { return m_notes; }

private:
    void begin(const Picture& first);
    std::int64_t placeOf(std::int64_t pts) const;
    void repeatUntil(std::int64_t place);
    void writeReadyPackets();
    void writePacket(AVPacket& packet);

    std::string m_name;
    std::string m_shownName;  ///< in a sentence behind "write"
    VideoFormat m_format;
    SinkOptions m_options;
    std::vector<std::string> m_notes;
    std::unique_ptr<VideoTarget> m_target;
    const AVOutputFormat* m_container = nullptr;
    std::unique_ptr<VideoEncoder> m_encoder;
    std::atomic<bool> m_begun = false;  ///< the encoder is there to prepare pictures for
    VideoPlan m_plan;
    std::int64_t m_filmBegin = 0;  ///< the source's time that becomes 0
    std::int64_t m_begin = 0;      ///< of this part of it, in the encoder's units; where the encoder has 0
    std::int64_t m_next = 0;       ///< likewise; the earliest that is still free
    std::int64_t m_tooClose = 0;   ///< pictures that a constant rate has no time for
};

VideoSink::VideoSink(const std::string& output, const VideoFormat& format, const SinkOptions& options,
                     const Source* copyFrom)
    : m_name(output == "-" ? "standard output" : output),
      m_shownName(output == "-" ? "to standard output" : "to '" + output + "'"),
      m_format(format),
      m_options(options) {
    if (options.part) {
        m_target = std::make_unique<PartWriter>(*options.part);
    } else {
        m_target = std::make_unique<VideoFile>(output, format, copyFrom, m_notes);
    }
    m_container = containerOf(output);
    // Fails early where the container, the codec or the folder will not do; alpha and depth do not decide about that.
    planVideo(*m_container, output, options, {format, format.color.hasAlpha()});
}

void VideoSink::begin(const Picture& first) {
    const bool alpha = m_options.alpha.value_or(m_format.color.hasAlpha() || !isOpaque(first));
    m_plan =
        planVideo(*m_container, m_name, m_options, {m_format, alpha, wantedBits(m_options, m_format, first.depth)});
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
    const bool globalHeader = (m_container->flags & AVFMT_GLOBALHEADER) != 0;
    m_encoder = std::make_unique<VideoEncoder>(m_plan, m_format, timeBase, m_options.threads, globalHeader, m_name);

    m_filmBegin = m_options.part ? m_options.part->record.filmBegin : first.pts;
    m_begin = placeOf(first.pts);
    m_next = m_begin;
    const auto described = [this](AVCodecParameters* codec) {
        avCheck(avcodec_parameters_from_context(codec, &m_encoder->context()), "Cannot write " + m_shownName);
        return codec;
    };
    const std::unique_ptr<AVCodecParameters, FreeByAddress<avcodec_parameters_free>> codec(
        described(allocated(avcodec_parameters_alloc())));
    m_target->begin({codec.get(), timeBase, m_format.frameRate, m_filmBegin});
}

std::int64_t VideoSink::placeOf(std::int64_t pts) const {
    return m_plan.constantRate ? slotOf(pts - m_filmBegin, m_format.timeBase, m_format.frameRate) : pts - m_filmBegin;
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
    std::int64_t place = placeOf(ready.pts);
    if (m_plan.constantRate) {
        if (place < m_next) {
            ++m_tooClose;
            return;
        }
        repeatUntil(place);
    }
    place = std::max(place, m_next);
    m_next = place + 1;
    m_encoder->send(ready.frame, place - m_begin);
    writeReadyPackets();
}

// At a constant rate a picture lasts until the next one.
void VideoSink::repeatUntil(std::int64_t place) {
    for (; m_next < place; m_next++) {
        m_encoder->repeat(m_next - m_begin);
        writeReadyPackets();
    }
}

void VideoSink::writeReadyPackets() {
    m_encoder->receive([this](AVPacket& packet) { writePacket(packet); });
}

void VideoSink::writePacket(AVPacket& packet) {
    if (packet.duration == 0) {
        packet.duration = std::max<std::int64_t>(
            1, av_rescale_q(1, av_inv_q(avRational(m_format.frameRate)), m_encoder->context().time_base));
    }
    packet.pts += m_begin;
    packet.dts += m_begin;
    m_target->write(packet);
}

void VideoSink::finish() {
    if (!m_encoder && !m_options.part) {
        throw MediaError(fmt::format("There was no picture to write {}.", m_shownName));
    }
    if (m_encoder) {
        if (m_options.part && m_options.part->record.next && m_plan.constantRate) {
            repeatUntil(placeOf(m_options.part->record.next->pts));
        }
        m_encoder->sendEnd();
        writeReadyPackets();
    }
    if (m_tooClose > 0) {
        m_notes.push_back(fmt::format("{} of the input's pictures {} left out, as {:.5g} a second are written here.",
                                      m_tooClose, m_tooClose == 1 ? "is" : "are", m_format.frameRate.value()));
    }
    m_target->finish();
}

}  // namespace

std::unique_ptr<Sink> openVideoSink(const std::string& output, const VideoFormat& format, const SinkOptions& options,
                                    const Source* copyFrom) {
    return std::make_unique<VideoSink>(output, format, options, copyFrom);
}

}  // namespace lumiset::media
