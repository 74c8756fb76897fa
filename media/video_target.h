#pragma once

#include "media/av.h"

namespace lumiset::media {

/// A stream of encoded pictures.
struct EncodedVideo {
    const AVCodecParameters* codec = nullptr;
    AVRational timeBase{1, 25};  ///< of the packets' times
    Rational frameRate{25, 1};
    std::int64_t filmBegin = 0;  ///< the source's time of time 0, in its own units
};

/// Where encoded pictures go. What was not finished leaves nothing.
class VideoTarget {
public:
    virtual ~VideoTarget() = default;
    /// Comes once, before the first packet.
    virtual void begin(const EncodedVideo& video) = 0;
    virtual void write(AVPacket& packet) = 0;
    virtual void finish() = 0;
};

}  // namespace lumiset::media
