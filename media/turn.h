#pragma once

#include "media/media.h"

namespace lumiset::media {

/// Turns a picture by a display matrix (the libraries' nine words), in steps of 90 degrees, mirrored or not.
/// `isTurned` tells whether width and height change places.
bool isUpright(const std::int32_t* displayMatrix);
bool isTurned(const std::int32_t* displayMatrix);
void turnUpright(const Picture& from, const std::int32_t* displayMatrix, Picture& to);

}  // namespace lumiset::media
