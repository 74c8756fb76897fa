#include <optional>

#include <fmt/format.h>

#include "media/pending_file.h"
#include "media/sinks.h"
#include "media/video_encoder.h"

namespace lumiset::media {
namespace {

// Picture files are an encoder's packets as they are. One encoder serves a whole sequence, so that it can work on
// several pictures at once.
class StillSink final : public Sink {
public:
    StillSink(const std::string& output, const std::optional<SequenceName>& sequence, const VideoFormat& format,
              const SinkOptions& options)
        : m_output(output), m_sequence(sequence), m_format(format), m_options(options) {
        silenceLibraries();
        m_number = sequence ? sequence->first.value_or(format.firstNumber) : 0;
        planStill(nameOf(m_number), options, {format, format.color.hasAlpha(), false});
        m_file.emplace(nameOf(m_number));  // fails early in a folder that is closed
    }

    void write(const Picture& picture) override {
        if (!m_sequence && m_written > 0) {
            throw MediaError(fmt::format("'{}' holds one picture only; for a video write '{}', or a video file.",
                                         m_output, suggestedPattern()));
        }
        const bool alpha = m_alpha || m_format.color.hasAlpha() || !isOpaque(picture);
        if (!m_encoder || alpha != m_alpha) {
            finishEncoder();
            m_alpha = alpha;
            const bool deep = picture.depth == Depth::kFloat && m_format.bitDepth > 8;
            VideoFormat format = m_format;
            format.color = {};  // pictures are taken for sRGB; tags would have viewers change them
            format.interlaced = false;
            m_encoder = std::make_unique<VideoEncoder>(planStill(nameOf(m_number), m_options, {format, alpha, deep}),
                                                       format, av_inv_q(avRational(m_format.frameRate)),
                                                       m_sequence ? m_options.threads : 1, false, m_output);
        }
        m_encoder->send(m_encoder->frameOf(picture), m_written++);
        m_encoder->receive([this](AVPacket& packet) { save(packet); });
    }

    void finish() override {
        finishEncoder();
        if (m_written == 0) {
            throw MediaError(fmt::format("There was no picture to write to '{}'.", m_output));
        }
        if (m_file) {
            m_file->commit();
        }
    }

private:
    std::string nameOf(int number) const { return m_sequence ? m_sequence->fileName(number) : m_output; }

    std::string suggestedPattern() const {
        const std::size_t dot = m_output.rfind('.');
        return m_output.substr(0, dot) + "_%04d" + m_output.substr(dot);
    }

    void finishEncoder() {
        if (m_encoder) {
            m_encoder->sendEnd();
            m_encoder->receive([this](AVPacket& packet) { save(packet); });
            m_encoder.reset();
        }
    }

    void save(const AVPacket& packet) {
        if (!m_file) {
            m_file.emplace(nameOf(m_number));
        }
        m_file->write({reinterpret_cast<const char*>(packet.data), static_cast<std::size_t>(packet.size)});
        // A sequence's pictures stand one by one; a picture by itself takes its place when the run is over.
        if (m_sequence) {
            m_file->commit();
            m_file.reset();
            m_number++;
        }
    }

    std::string m_output;
    std::optional<SequenceName> m_sequence;
    VideoFormat m_format;
    SinkOptions m_options;
    int m_number = 0;  ///< of the next file
    std::int64_t m_written = 0;
    bool m_alpha = false;
    std::unique_ptr<VideoEncoder> m_encoder;
    std::optional<PendingFile> m_file;
};

}  // namespace

std::unique_ptr<Sink> openStillSink(const std::string& output, const std::optional<SequenceName>& sequence,
                                    const VideoFormat& format, const SinkOptions& options) {
    return std::make_unique<StillSink>(output, sequence, format, options);
}

}  // namespace lumiset::media
