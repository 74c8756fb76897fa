#include <filesystem>
#include <optional>

#include <fmt/format.h>

#include "media/part_file.h"
#include "media/pending_file.h"
#include "media/sinks.h"
#include "media/still_details.h"
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
        planStill(nameOf(m_number), options, {format, format.color.hasAlpha()});
        if (options.part) {
            m_number += static_cast<int>(options.part->record.firstNumber);
            options.part->record.firstNumber = m_number;
            m_part = std::make_unique<PartWriter>(*options.part);
            markPartBegun(options.part->file);
        } else {
            m_file.emplace(nameOf(m_number));  // fails early in a folder that is closed
        }
    }

    void write(const Picture& picture) override {
        if (!m_sequence && m_written > 0) {
            throw MediaError(fmt::format("'{}' holds one picture only; for a video write '{}', or a video file.",
                                         m_output, suggestedPattern()));
        }
        const bool alpha = m_alpha || m_options.alpha.value_or(m_format.color.hasAlpha()) || !isOpaque(picture);
        if (!m_encoder || alpha != m_alpha) {
            finishEncoder();
            m_alpha = alpha;
            VideoFormat format = m_format;
            format.color = {};  // pictures are taken for sRGB; tags would have viewers change them
            format.interlaced = false;
            const VideoPlan plan =
                planStill(nameOf(m_number), m_options, {format, alpha, wantedBits(m_options, m_format, picture.depth)});
            if (m_written == 0) {
                m_notes = plan.notes;
                tellHdr();
            }
            m_encoder = std::make_unique<VideoEncoder>(plan, format, av_inv_q(avRational(m_format.frameRate)),
                                                       m_sequence ? m_options.threads : 1, false, m_output);
        }
        m_encoder->send(m_encoder->frameOf(picture), m_written++);
        m_encoder->receive([this](AVPacket& packet) { save(packet); });
    }

    void finish() override {
        finishEncoder();
        if (m_written == 0 && !m_part) {
            throw MediaError(fmt::format("There was no picture to write to '{}'.", m_output));
        }
        if (m_file) {
            m_file->commit();
        }
        if (m_part) {
            m_part->finish();
        }
    }

    std::vector<std::string> notes() const override { return m_notes; }

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
        std::vector<std::uint8_t> bytes(packet.data, packet.data + packet.size);
        const std::vector<std::uint8_t> profile = colorProfile();
        const StillDetails& details = m_format.details;
        const KeptDetails kept = addStillDetails(bytes, details, profile);
        if (m_saved == 0) {
            tellLosses(details, profile, kept);
        }
        m_saved++;
        if (m_part) {
            keepPart(bytes.size());
        }
        m_file->write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        // A sequence's pictures stand one by one; a picture by itself takes its place when the run is over.
        if (m_sequence) {
            m_file->commit();
            m_file.reset();
            m_number++;
        }
    }

    // What an earlier attempt at the part has left gives way, other pictures only when they may.
    void keepPart(std::size_t size) {
        if (!m_options.part->replace && std::filesystem::exists(nameOf(m_number))) {
            throw MediaError(fmt::format("'{}' exists; --overwrite replaces what is there.", nameOf(m_number)));
        }
        m_options.part->record.fileSizes.push_back(size);
    }

    std::vector<std::uint8_t> colorProfile() const {
        for (const SideData& side : m_format.sideData) {
            if (side.type == AV_PKT_DATA_ICC_PROFILE) {
                return side.bytes;
            }
        }
        return {};
    }

    void tellHdr() {
        if (m_format.color.isHdr()) {
            m_notes.push_back(
                fmt::format("The pictures are HDR ({}): their code values are kept as they stand, but '{}' "
                            "has no place to tell what they mean.",
                            m_format.color.transfer == AVCOL_TRC_SMPTE2084 ? "PQ" : "HLG", m_output));
        }
    }

    void tellLosses(const StillDetails& details, const std::vector<std::uint8_t>& profile, const KeptDetails& kept) {
        const auto tell = [&](bool lost, const std::string& what) {
            if (lost) {
                m_notes.push_back(fmt::format("The input's {} is not written to a file like '{}'.", what, m_output));
            }
        };
        tell(!profile.empty() && !kept.profile, "colour profile (ICC)");
        tell(!details.exif.empty() && !kept.exif, "Exif data");
        tell(details.dotsPerInch > 0 && !kept.resolution, "resolution");
        for (const SideData& side : m_format.sideData) {
            tell(side.type != AV_PKT_DATA_ICC_PROFILE,
                 av_packet_side_data_name(static_cast<AVPacketSideDataType>(side.type)));
        }
    }

    std::string m_output;
    std::optional<SequenceName> m_sequence;
    VideoFormat m_format;
    SinkOptions m_options;
    int m_number = 0;  ///< of the next file
    std::int64_t m_written = 0;
    std::int64_t m_saved = 0;
    std::vector<std::string> m_notes;
    bool m_alpha = false;
    std::unique_ptr<PartWriter> m_part;
    std::unique_ptr<VideoEncoder> m_encoder;
    std::optional<PendingFile> m_file;
};

}  // namespace

std::unique_ptr<Sink> openStillSink(const std::string& output, const std::optional<SequenceName>& sequence,
                                    const VideoFormat& format, const SinkOptions& options) {
    return std::make_unique<StillSink>(output, sequence, format, options);
}

}  // namespace lumiset::media
