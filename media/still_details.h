#pragma once

#include "media/media.h"

namespace lumiset::media {

/// Finds what a PNG, JPEG or TIFF file tells about its picture beside the samples. Nothing in files of other kinds.
StillDetails readStillDetails(const std::vector<std::uint8_t>& file);

/// Adds details and a colour profile (may be empty) to an encoded PNG or JPEG picture, save the resolution of PNG,
/// which is the encoder's to write. False, the picture unchanged, for other kinds.
bool addStillDetails(std::vector<std::uint8_t>& file, const StillDetails& details,
                     const std::vector<std::uint8_t>& profile);

}  // namespace lumiset::media
