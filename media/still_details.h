#pragma once

#include "media/media.h"

namespace lumiset::media {

/// Finds what a PNG, JPEG, TIFF or WebP file tells about its picture beside the samples. Nothing in files of other
/// kinds.
StillDetails readStillDetails(const std::vector<std::uint8_t>& file);

/// What of the details a file holds, if there was any.
struct KeptDetails {
    bool exif = false;
    bool profile = false;
    bool resolution = false;
};

/// Adds details and a colour profile (may be empty) to an encoded PNG, JPEG, TIFF or WebP picture, save the resolution
/// of PNG and TIFF, which is the encoder's to write.
KeptDetails addStillDetails(std::vector<std::uint8_t>& file, const StillDetails& details,
                            const std::vector<std::uint8_t>& profile);

}  // namespace lumiset::media
