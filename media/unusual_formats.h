#pragma once

#include "media/av.h"

namespace lumiset::media {

/// Converts frames of one geometry with libswscale, for the formats that zimg has no word for: palettes, Bayer
/// patterns, bits, XYZ. RGB on one side; a YUV side goes by its frame's matrix and range.
class UnusualFormats {
public:
    void convert(const AVFrame& from, AVFrame& to);

private:
    AvScaler m_scaler;
};

}  // namespace lumiset::media
