#pragma once

#include <utility>

#include "media/av.h"

namespace lumiset::media {

/// How pictures are going to be encoded.
struct VideoPlan {
    const AVCodec* codec = nullptr;
    AVPixelFormat format = AV_PIX_FMT_NONE;
    int profile = FF_PROFILE_UNKNOWN;
    int qscale = -1;            ///< fixed quantiser, -1: the options tell
    bool codesFields = false;   ///< interlaced pictures are coded as such
    bool constantRate = false;  ///< every picture lasts as long as the next
    Rational frameRate{0, 1};   ///< the nearest of those that the codec has; numerator 0: any will do
    bool fullRange = false;     ///< YUV as in JPEG
    bool keepsRange = false;    ///< the stream can tell its range and the place of its chroma
    std::vector<std::pair<const char*, std::string>> options;
    std::vector<std::string> notes;
};

/// What is known before the codec is chosen.
struct PictureKind {
    VideoFormat format;
    bool alpha = false;  ///< alpha is wanted
    int bits = 8;        ///< a sample that are wanted

    bool deep() const { return bits > 8; }
};

/// What is wanted of pictures of a depth: as many bits as the options say, or for floats as many as their source has.
inline int wantedBits(const SinkOptions& options, const VideoFormat& format, Depth depth) {
    return options.bits > 0 ? options.bits : depth == Depth::kFloat ? format.bitDepth : 8;
}

/// Codec and settings for a container of the FFmpeg libraries. Throws MediaError, naming `fileName`.
VideoPlan planVideo(const AVOutputFormat& container, const std::string& fileName, const SinkOptions& options,
                    const PictureKind& kind);

/// The same for a picture file, by its extension.
VideoPlan planStill(const std::string& fileName, const SinkOptions& options, const PictureKind& kind);

}  // namespace lumiset::media
