#pragma once

#include <vector>

#include "media/av.h"

namespace lumiset::media {

class TrackTranscoder;

/// Carries what a source file has beside its video into an output: sound, subtitles, chapters, attachments, metadata.
/// Packets go as they are where the container can hold their codec; sound and subtitles of text are written anew as its
/// usual codec where not. A note tells of what cannot be kept.
class TrackCopy {
public:
    /// Adds the streams to `output`, whose header is not yet written. `baseSeconds` is the container's own time of the
    /// output's time 0. What lies outside of the source's start and end is left out. Stream 0 of the output is the
    /// video.
    TrackCopy(const Source::Origin& origin, double baseSeconds, AVFormatContext* output,
              std::vector<std::string>& notes);
    ~TrackCopy();

    /// Writes all packets up to a time of the output.
    void copyUntil(double seconds);
    /// Writes what is left.
    void finish();

private:
    class Track;
    void addStream(const AVStream& stream, std::vector<std::string>& notes);
    void addTrack(const AVStream& stream, const char* what,
                  std::unique_ptr<TrackTranscoder> (*transcoderFor)(const AVStream&, const AVOutputFormat&),
                  std::vector<std::string>& notes);
    bool addCover(const AVStream& stream);
    void copyMetadata(const AVStream& video, const Source::Origin& origin, std::vector<std::string>& notes);
    void copyChapters(std::vector<std::string>& notes);
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
    std::vector<AvPacket> m_covers;  ///< still to be written
};

}  // namespace lumiset::media
