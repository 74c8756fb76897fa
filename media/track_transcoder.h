#pragma once

#include <functional>

#include "media/av.h"

namespace lumiset::media {

/// Decodes a track's packets and encodes them as another codec.
class TrackTranscoder {
public:
    using Take = std::function<void(AVPacket&)>;
    virtual ~TrackTranscoder() = default;
    /// A null packet ends the track. `baseSeconds` is taken off all times; packets come in the encoder's time base.
    virtual void transcode(const AVPacket* packet, double baseSeconds, const Take& take) = 0;
    const AVCodecContext& encoder() const { return *m_encoder; }

protected:
    AvCodecContext m_decoder;
    AvCodecContext m_encoder;
};

/// Sound as the container's usual codec. Gaps in the source become silence. Throws MediaError.
std::unique_ptr<TrackTranscoder> soundTranscoder(const AVStream& source, const AVOutputFormat& container);

/// Subtitles of text as the container's usual ones; null where it has none, and for subtitles that are pictures.
std::unique_ptr<TrackTranscoder> subtitleTranscoder(const AVStream& source, const AVOutputFormat& container);

}  // namespace lumiset::media
