#pragma once

#include <optional>
#include <string>
#include <vector>

#include "media/pending_file.h"
#include "media/track_copy.h"
#include "media/video_target.h"

namespace lumiset::media {

/// A file of the libraries' containers with encoded pictures, and with what goes with them from their source: sound,
/// metadata, side data. Throws MediaError.
class VideoFile final : public VideoTarget {
public:
    /// "-" is y4m on standard output. `format` is the pictures', `copyFrom` may be null. Notes go to `notes`, which
    /// outlives this.
    VideoFile(const std::string& output, const VideoFormat& format, const Source* copyFrom,
              std::vector<std::string>& notes);
    ~VideoFile() override;
    void begin(const EncodedVideo& video) override;
    void write(AVPacket& packet) override;
    void finish() override;

private:
    void addSideData();
    std::string failure() const { return "Cannot write " + m_shownName; }

    std::string m_shownName;  ///< in a sentence behind "write"
    VideoFormat m_format;
    Source::Origin m_origin;
    std::vector<std::string>& m_notes;
    std::optional<PendingFile> m_file;
    AvOutput m_output;
    std::unique_ptr<TrackCopy> m_tracks;
    AVStream* m_stream = nullptr;
    AVRational m_timeBase{1, 25};
};

/// What kind of file the libraries make of the name, y4m for "-"; null: none.
[[nodiscard]] const AVOutputFormat* containerOf(const std::string& output);

}  // namespace lumiset::media
