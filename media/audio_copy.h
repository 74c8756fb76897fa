#pragma once

#include <vector>

#include "media/av.h"

namespace lumiset::media {

/// Carries the sound of a source file into an output beside the video: packets as they are where the container can hold
/// their codec, encoded anew as its usual codec where not.
class AudioCopy {
public:
    /// Adds the streams to `output`, whose header is not yet written. `baseSeconds` is the container's own time of the
    /// output's time 0. Sound outside of the source's start and end is left out.
    AudioCopy(const Source::Origin& origin, double baseSeconds, AVFormatContext* output,
              std::vector<std::string>& notes);
    ~AudioCopy();

    /// Writes all packets up to a time of the output.
    void copyUntil(double seconds);
    /// Writes what is left.
    void finish();

private:
    class Track;
    bool fetch();
    double secondsOf(const AVPacket& packet) const;
    Track* trackOf(const AVPacket& packet) const;

    AvInput m_input;
    AVFormatContext* m_output;
    AvPacket m_packet;
    bool m_waiting = false;  ///< a packet has been read and not yet written
    bool m_ended = false;
    double m_base;
    double m_from;
    double m_until;
    std::vector<std::unique_ptr<Track>> m_tracks;
};

}  // namespace lumiset::media
