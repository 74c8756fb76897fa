#pragma once

#include "media/av.h"

namespace lumiset::media {

/// How a frame's samples are coded. What its tags leave open is settled as every player does it: the matrix by the
/// size, the range by the pixel format, the place of chroma by the range.
PictureColor colorOf(const AVFrame& frame);

/// The same from tags that a stream or a user gives; matrix and range are those of RGB for an RGB format.
PictureColor settledColor(PictureColor color, AVPixelFormat format, int width, int height);

/// Writes a description into the tags of a frame or of an encoder.
template <class Tagged>
void setColor(Tagged& tagged, const PictureColor& color) {
    tagged.colorspace = static_cast<AVColorSpace>(color.matrix);
    tagged.color_primaries = static_cast<AVColorPrimaries>(color.primaries);
    tagged.color_trc = static_cast<AVColorTransferCharacteristic>(color.transfer);
    tagged.color_range = color.range == ColorRange::kFull      ? AVCOL_RANGE_JPEG
                         : color.range == ColorRange::kLimited ? AVCOL_RANGE_MPEG
                                                               : AVCOL_RANGE_UNSPECIFIED;
}

/// The libraries count from the place of H.273, type 0, which is 1.
constexpr AVChromaLocation chromaLocation(const PictureColor& color) {
    return static_cast<AVChromaLocation>(color.chromaPosition + 1);
}

}  // namespace lumiset::media
