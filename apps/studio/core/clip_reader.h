#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "media/media.h"

namespace lumiset::studio {

/// The frames of a clip by number, in any order; in turn is the fastest. Used from one thread at a time.
class ClipReader {
public:
    /// Throws media::MediaError.
    explicit ClipReader(std::string path);

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] const media::VideoFormat& format() const { return m_format; }
    /// Where its sound is.
    [[nodiscard]] media::Source::Origin origin() const { return m_source->origin(); }
    /// At least 1; what the file says may be wrong by a few.
    [[nodiscard]] std::int64_t frameCount() const;
    /// The picture that shows at the time of a frame, with its own time. Past the end, the last one. Throws
    /// media::MediaError. The picture is good until the next call.
    [[nodiscard]] const media::Picture& read(std::int64_t frame);

private:
    void restartBefore(double seconds);

    std::string m_path;
    std::unique_ptr<media::Source> m_source;
    media::VideoFormat m_format;  ///< of the whole clip; the source's changes with where it starts
    media::RawPicture m_next;
    bool m_hasNext = false;
    media::Picture m_current;
    bool m_hasCurrent = false;
};

/// The time of a frame of a clip with an even rate.
[[nodiscard]] double secondsOf(std::int64_t frame, const media::VideoFormat& format);

}  // namespace lumiset::studio
