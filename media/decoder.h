#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "media/av.h"
#include "media/completeness.h"
#include "media/input_name.h"
#include "media/standard_input.h"

namespace lumiset::media {

/// What to open: a file, a numbered sequence of them, or standard input.
struct Input {
    std::string name;  ///< as the user wrote it
    std::optional<SequenceName> sequence;
    Rational sequenceRate{25, 1};
    int threads = 0;

    bool isPipe() const { return name == "-"; }
    /// The name for the libraries, which would otherwise take a colon for the end of a protocol.
    std::string url() const {
        if (sequence && sequence->glob) {
            return std::filesystem::absolute(sequence->pattern).string();  // matched as it stands
        }
        return isPipe() ? "pipe:0" : "file:" + (sequence ? sequence->pattern : name);
    }
};

/// Decodes the main video stream of a file, frame by frame, and throws MediaError where it is damaged.
class Decoder {
public:
    explicit Decoder(const Input& input);

    /// The next frame, valid until the next call; null at the end.
    const AVFrame* next();
    /// Moves to the last key frame at or before a time in the stream's units; false when the file cannot.
    bool seek(std::int64_t pts);

    AVFormatContext* container() const { return m_container.get(); }
    const std::vector<std::shared_ptr<const AVCodecParameters>>& tracks() const { return m_tracks; }
    AVStream* stream() const { return m_stream; }
    /// True for a picture file, or a sequence of them.
    bool isStill() const;
    /// The file that the first picture is in.
    std::string firstFile() const {
        return m_input.sequence ? m_input.sequence->fileName(*m_input.sequence->first) : m_input.name;
    }

private:
    void openContainer();
    void openCodec();
    bool sendPacket();
    [[noreturn]] void failDamaged(int error) const;

    Input m_input;
    std::unique_ptr<StandardInput> m_standardInput;
    AvInput m_container;
    AvCodecContext m_codec;
    AVStream* m_stream = nullptr;
    std::vector<std::shared_ptr<const AVCodecParameters>> m_tracks;
    AvFrame m_frame;
    AvPacket m_packet;
    bool m_anyFrame = false;
    bool m_flushed = false;
    ReadSoFar m_read;
    double m_endSeconds = 0;  ///< time of the latest frame
};

}  // namespace lumiset::media
